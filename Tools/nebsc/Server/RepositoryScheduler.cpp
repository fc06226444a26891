#include "Server/RepositoryScheduler.h"

#include <filesystem>
#include <new>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Platform/PathString.h"

namespace neb::nebsc {

namespace {

std::string withoutLinks(const std::string& path) {
    std::error_code failure;
    const std::filesystem::path whole = std::filesystem::weakly_canonical(path, failure);
    return failure ? path : whole.string();
}

/// Returns the nearest folder at or above the path that contains ".git"; the path itself without
/// one.
std::string topOfWorkingCopy(const std::string& path) {
    std::error_code failure;
    const std::filesystem::path whole = withoutLinks(path);
    for (std::filesystem::path folder = whole; !folder.empty(); folder = folder.parent_path()) {
        if (std::filesystem::exists(folder / ".git", failure)) {
            return folder.string();
        }
        if (folder == folder.parent_path()) {
            break;
        }
    }
    return whole.string();
}

}  // namespace

std::optional<std::string> writtenLocationOf(const NEBSourceControlRequest& request) {
    const auto effect = NEBSourceControlEffectOfRequest(request);
    if (effect == NEBSourceControlRequestEffect::reads) {
        return std::nullopt;
    }
    if (effect == NEBSourceControlRequestEffect::exports) {
        return request.destination.isPresent()
                   ? std::optional(withoutLinks(request.destination.description()))
                   : std::nullopt;
    }
    if (NEBSourceControlDescriptionOfRequestType(request.type).worksInDestination) {
        return topOfWorkingCopy(request.destination.description());
    }
    const NEBValue& repository = request.option(NEBSourceControlRequestOptionRepositoryPath);
    if (repository.isPresent()) {
        return topOfWorkingCopy(pathByExpandingTilde(repository.description()));
    }
    if (request.sourceTree && request.sourceTree->location) {
        return topOfWorkingCopy(
            pathOfLocation(*request.sourceTree->location).value_or(*request.sourceTree->location));
    }
    return "";
}

void RepositoryScheduler::add(WorkPlace place, std::function<void()> work) {
    OperationQueue& queue = queueFor(place.isBackground);
    if (!place.location) {
        queue.addBlock(std::move(work));
        return;
    }
    // Created before the work is in the list: once there, it must run.
    std::function<void()> next = [this, location = *place.location] { runNext(location); };
    bool isFirst = false;
    {
        const MutexLock lock(_mutex);
        auto& waiting = _waiting[*place.location];
        isFirst = waiting.empty();
        insert(waiting, {.run = std::move(work), .isBackground = place.isBackground});
    }
    if (!isFirst) {
        return;
    }
    try {
        queue.addBlock(std::move(next));
    } catch (...) {
        if (popFirst(*place.location)) {
            runNext(*place.location);  // added meanwhile by another thread
        }
        throw;
    }
}

/// Foreground work overtakes background work, but never the first one, which is running.
void RepositoryScheduler::insert(std::deque<Work>& waiting, Work work) {
    std::size_t position = waiting.size();
    while (!work.isBackground && position > 1 && waiting[position - 1].isBackground &&
           waiting[position - 1].overtakings < mostOvertakings) {
        --position;
    }
    waiting.insert(waiting.begin() + static_cast<std::ptrdiff_t>(position), std::move(work));
    for (std::size_t i = position + 1; i < waiting.size(); ++i) {
        ++waiting[i].overtakings;
    }
}

void RepositoryScheduler::waitUntilAllWorkIsDone() {
    // The end of work in one queue can add work for the same location to the other queue.
    bool isLastRound = false;
    while (!isLastRound) {
        isLastRound = !hasWorkForLocations();
        _queue.waitUntilAllOperationsAreFinished();
        _backgroundQueue.waitUntilAllOperationsAreFinished();
    }
}

bool RepositoryScheduler::hasWorkForLocations() {
    const MutexLock lock(_mutex);
    return !_waiting.empty();
}

/// Runs one block and adds the next one at the end of its queue, so that no working copy blocks the
/// others. If memory for that is missing, runs the next block at once.
void RepositoryScheduler::runNext(const std::string& location) {
    while (const std::optional<bool> isNextInBackground = runFirst(location)) {
        try {
            queueFor(*isNextInBackground).addBlock([this, location] { runNext(location); });
            return;
        } catch (const std::bad_alloc&) {
            continue;
        }
    }
}

std::optional<bool> RepositoryScheduler::runFirst(const std::string& location) {
    std::function<void()> run;
    {
        const MutexLock lock(_mutex);
        run = std::move(_waiting.find(location)->second.front().run);
    }
    run();
    run = nullptr;
    return popFirst(location);
}

std::optional<bool> RepositoryScheduler::popFirst(const std::string& location) {
    const MutexLock lock(_mutex);
    const auto waiting = _waiting.find(location);
    waiting->second.pop_front();
    if (waiting->second.empty()) {
        _waiting.erase(waiting);
        return std::nullopt;
    }
    return waiting->second.front().isBackground;
}

}  // namespace neb::nebsc
