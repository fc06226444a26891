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

/// The nearest folder at or above the path that holds a ".git"; the path itself where none does.
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

std::optional<std::string> writtenPlaceOf(const NEBSourceControlRequest& request) {
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

void RepositoryScheduler::add(std::optional<std::string> place, std::function<void()> work) {
    if (!place) {
        _queue.addBlock(std::move(work));
        return;
    }
    // Made before the work is in the list: what is there must run.
    std::function<void()> next = [this, place = *place] { runNext(place); };
    bool isFirst = false;
    {
        const MutexLock lock(_mutex);
        auto& waiting = _waiting[*place];
        isFirst = waiting.empty();
        waiting.push_back(std::move(work));
    }
    if (!isFirst) {
        return;
    }
    try {
        _queue.addBlock(std::move(next));
    } catch (...) {
        if (dropFirst(*place)) {
            runNext(*place);  // of another thread, which counts on this one
        }
        throw;
    }
}

/// What waits takes its place at the end of the queue anew, so that no working copy keeps the
/// others waiting; without memory for that it is done at once.
void RepositoryScheduler::runNext(const std::string& place) {
    while (runFirst(place)) {
        try {
            _queue.addBlock([this, place] { runNext(place); });
            return;
        } catch (const std::bad_alloc&) {
            continue;
        }
    }
}

bool RepositoryScheduler::runFirst(const std::string& place) {
    std::function<void()> work;
    {
        const MutexLock lock(_mutex);
        work = std::move(_waiting.find(place)->second.front());
    }
    work();
    work = nullptr;
    return dropFirst(place);
}

bool RepositoryScheduler::dropFirst(const std::string& place) {
    const MutexLock lock(_mutex);
    const auto waiting = _waiting.find(place);
    waiting->second.pop_front();
    if (waiting->second.empty()) {
        _waiting.erase(waiting);
        return false;
    }
    return true;
}

}  // namespace neb::nebsc
