#include "NEBFoundation/NEBSourceControlRecordCursor.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "Platform/SignalFreeThread.h"

namespace neb {

namespace {

/// While fewer records wait, the operation continues, so that the next page is there when it is
/// asked for.
constexpr std::size_t readAheadCount = 64;

}  // namespace

NEBSourceControlRecordCursor::NEBSourceControlRecordCursor(
    const std::shared_ptr<NEBSourceControlOperation>& operation)
    : NEBSourceControlRecordCursor(
          [operation](const NEBSourceControlRecordSink& sink) {
              operation->setRecordSink(sink);
              operation->start();
          },
          [operation] { operation->cancel(); }) {}

NEBSourceControlRecordCursor::NEBSourceControlRecordCursor(Work work,
                                                           std::function<void()> cancelWork)
    : _work(std::move(work)), _cancelWork(std::move(cancelWork)) {}

NEBSourceControlRecordCursor::~NEBSourceControlRecordCursor() {
    close();
}

NEBSourceControlRecordCursor::Page NEBSourceControlRecordCursor::next(std::size_t pageSize) {
    const std::size_t wanted = std::max<std::size_t>(pageSize, 1);
    start();
    MutexLock lock(_mutex);
    _wantedCount = wanted;
    _changed.notify_all();
    _changed.wait(lock, [this, wanted]() NEB_REQUIRES(_mutex) {
        return _isFinished || (!_isCancelled && _records.size() >= wanted);
    });
    _wantedCount = 0;
    if (_failure) {
        std::rethrow_exception(_failure);
    }
    Page page;
    if (!_isCancelled) {
        const auto end =
            _records.begin() + static_cast<std::ptrdiff_t>(std::min(wanted, _records.size()));
        page.records.assign(std::make_move_iterator(_records.begin()),
                            std::make_move_iterator(end));
        _records.erase(_records.begin(), end);
    }
    page.isLast = _isFinished && _records.empty();
    _changed.notify_all();
    return page;
}

void NEBSourceControlRecordCursor::cancel() {
    {
        const MutexLock lock(_mutex);
        _isCancelled = true;
        _records.clear();
    }
    _changed.notify_all();
    _cancelWork();
}

bool NEBSourceControlRecordCursor::isCancelled() const {
    const MutexLock lock(_mutex);
    return _isCancelled;
}

void NEBSourceControlRecordCursor::close() {
    cancel();
    if (_thread.joinable()) {
        _thread.join();
    }
}

void NEBSourceControlRecordCursor::start() {
    if (std::exchange(_hasStarted, true)) {
        return;
    }
    _thread = startSignalFreeThread([this] { run(); });
    if (!_thread.joinable()) {
        {
            const MutexLock lock(_mutex);
            _keepsAll = true;
        }
        run();
    }
}

void NEBSourceControlRecordCursor::run() {
    std::exception_ptr failure;
    try {
        _work([this](NEBSourceControlResult records) { add(std::move(records)); });
    } catch (...) {
        failure = std::current_exception();
    }
    const MutexLock lock(_mutex);
    _failure = failure;
    _isFinished = true;
    _changed.notify_all();
}

/// The sink of the operation.
void NEBSourceControlRecordCursor::add(NEBSourceControlResult records) {
    MutexLock lock(_mutex);
    if (_isCancelled) {
        return;
    }
    std::move(records.begin(), records.end(), std::back_inserter(_records));
    _changed.notify_all();
    _changed.wait(lock, [this]() NEB_REQUIRES(_mutex) {
        return _keepsAll || _isCancelled ||
               _records.size() < std::max(_wantedCount, readAheadCount);
    });
}

}  // namespace neb
