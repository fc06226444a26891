#include "Server/Watch/RepositoryWatch.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <utility>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlUnexpectedError.h"
#include "Platform/SignalFreeThread.h"

namespace neb::nebsc {

namespace {

WatchFailure failureOfCurrentException() {
    const NEBSourceControlError error = NEBSourceControlErrorOfCurrentException();
    return {.errorClass = error.errorClass.value_or("unknown"),
            .sentence = error.localizedDescription().value_or("")};
}

}  // namespace

/// A git that stop() cancels.
class RepositoryWatch::GitRun {
public:
    explicit GitRun(RepositoryWatch& watch) : _watch(watch) {
        const MutexLock lock(watch._mutex);
        watch._git = &process;
        if (watch._isStopped) {
            process.cancel();
        }
    }
    GitRun(const GitRun&) = delete;
    GitRun& operator=(const GitRun&) = delete;
    ~GitRun() {
        const MutexLock lock(_watch._mutex);
        _watch._git = nullptr;
    }

    ChildProcess process;

private:
    RepositoryWatch& _watch;
};

RepositoryWatch::~RepositoryWatch() {
    stop();
    join();
}

std::optional<WatchFailure> RepositoryWatch::prepare() {
    auto failure = findAndWatchFolders();
    if (failure) {
        _folders.reset();
    }
    return failure;
}

std::optional<WatchFailure> RepositoryWatch::findAndWatchFolders() {
    RepositoryFoldersResult found;
    {
        GitRun git(*this);
        found = findRepositoryFolders(git.process, _trace, _location);
    }
    if (found.failure) {
        return found.failure;
    }
    if (_withWorkingTree && !found.folders.top) {
        return WatchFailure{
            .errorClass = std::string(NEBSourceControlNoWorkTreeErrorClass.text()),
            .sentence = "The repository has no working tree; watch it without 'workingTree'."};
    }
    _folders.emplace(_trace, std::move(found.folders), _withWorkingTree);
    GitRun git(*this);
    return _folders->watchAll(git.process);
}

void RepositoryWatch::begin() {
    {
        const MutexLock lock(_mutex);
        if (_isStopped) {
            return;
        }
        _thread = startSignalFreeThread([this] { run(); });
        if (_thread.joinable()) {
            return;
        }
    }
    _folders.reset();
    _observer.ended({.errorClass = std::string(NEBSourceControlSystemLimitErrorClass.text()),
                     .sentence = "The system could not start another thread."});
}

void RepositoryWatch::stop() {
    {
        const MutexLock lock(_mutex);
        _isStopped = true;
        if (_git != nullptr) {
            _git->cancel();
        }
    }
    _wake.wake();
}

bool RepositoryWatch::isStopped() const {
    const MutexLock lock(_mutex);
    return _isStopped;
}

void RepositoryWatch::join() {
    std::thread thread;
    {
        const MutexLock lock(_mutex);
        thread.swap(_thread);
    }
    if (thread.joinable()) {
        thread.join();
    }
}

void RepositoryWatch::run() {
    try {
        reportUntilStopped();
    } catch (const std::exception&) {
        _folders.reset();
        _observer.ended(failureOfCurrentException());
    }
    _folders.reset();
}

void RepositoryWatch::reportUntilStopped() {
    std::uint32_t changes = changedNothing;
    std::optional<Clock::time_point> firstChange;
    std::optional<Clock::time_point> due;
    while (wait(due)) {
        const Clock::time_point now = Clock::now();
        if (due && now >= *due) {
            changes |= _folders->takeChanges();
            if (!report(std::exchange(changes, changedNothing))) {
                return;
            }
            firstChange.reset();
            due.reset();
            continue;
        }
        changes |= _folders->takeChanges();
        firstChange = firstChange.value_or(now);
        due = std::min(now + quietTime, *firstChange + longestDelay);
    }
}

bool RepositoryWatch::wait(std::optional<Clock::time_point> due) {
    std::array<pollfd, 2> descriptors{
        {{.fd = _folders->descriptor(), .events = POLLIN, .revents = 0},
         {.fd = _wake.descriptor(), .events = POLLIN, .revents = 0}}};
    int count = 0;
    do {
        int timeout = -1;
        if (due) {
            const auto left =
                std::chrono::ceil<std::chrono::milliseconds>(*due - Clock::now()).count();
            timeout = static_cast<int>(std::max<std::int64_t>(left, 0));
        }
        count = ::poll(descriptors.data(), descriptors.size(), timeout);
    } while (count < 0);  // a signal or no memory: try again
    return descriptors[1].revents == 0;
}

bool RepositoryWatch::report(std::uint32_t changes) {
    std::optional<WatchFailure> failure;
    {
        GitRun git(*this);
        failure = _folders->update(git.process);
    }
    if (isStopped()) {
        return false;
    }
    if (failure) {
        _folders.reset();
        _observer.ended(*failure);
        return false;
    }
    if (changes != changedNothing) {
        _observer.changed(changes);
    }
    return true;
}

}  // namespace neb::nebsc
