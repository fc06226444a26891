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
    const auto& type = NEBSourceControlDescriptionOfRequestType(request.type);
    if (type.effect == NEBSourceControlRequestEffect::reads) {
        return std::nullopt;
    }
    if (type.effect == NEBSourceControlRequestEffect::exports) {
        return request.destination.isPresent()
                   ? std::optional(withoutLinks(request.destination.description()))
                   : std::nullopt;
    }
    if (type.worksInDestination) {
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

void RepositoryScheduler::add(std::optional<std::string> location, std::function<void()> work) {
    if (!location) {
        _queue.addBlock(std::move(work));
        return;
    }
    // Created before the work is in the list: once there, it must run.
    std::function<void()> next = [this, location = *location] { runNext(location); };
    bool isFirst = false;
    {
        const MutexLock lock(_mutex);
        auto& waiting = _waiting[*location];
        isFirst = waiting.empty();
        waiting.push_back(std::move(work));
    }
    if (!isFirst) {
        return;
    }
    try {
        _queue.addBlock(std::move(next));
    } catch (...) {
        if (popFirst(*location)) {
            runNext(*location);  // added meanwhile by another thread
        }
        throw;
    }
}

/// Runs one block and adds the next one at the end of the queue, so that no working copy blocks the
/// others. If memory for that is missing, runs the next block at once.
void RepositoryScheduler::runNext(const std::string& location) {
    while (runFirst(location)) {
        try {
            _queue.addBlock([this, location] { runNext(location); });
            return;
        } catch (const std::bad_alloc&) {
            continue;
        }
    }
}

bool RepositoryScheduler::runFirst(const std::string& location) {
    std::function<void()> work;
    {
        const MutexLock lock(_mutex);
        work = std::move(_waiting.find(location)->second.front());
    }
    work();
    work = nullptr;
    return popFirst(location);
}

bool RepositoryScheduler::popFirst(const std::string& location) {
    const MutexLock lock(_mutex);
    const auto waiting = _waiting.find(location);
    waiting->second.pop_front();
    if (waiting->second.empty()) {
        _waiting.erase(waiting);
        return false;
    }
    return true;
}

}  // namespace neb::nebsc
