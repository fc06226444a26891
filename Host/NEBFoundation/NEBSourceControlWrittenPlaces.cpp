// The places that requests write to, for the scheduler.

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <system_error>

#include "NEBFoundation/NEBSourceControlGitDirectory.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "NEBFoundation/NEBSourceControlScheduler.h"
#include "Platform/PathString.h"

namespace neb {

namespace {

/// The types with the effect `changes` that change only files and the index.
constexpr std::int32_t typesThatChangeOnlyIndex[] = {
    NEBSourceControlRequestAdd,     NEBSourceControlRequestIgnore,
    NEBSourceControlRequestRemove,  NEBSourceControlRequestAddFiles,
    NEBSourceControlRequestRevert,  NEBSourceControlRequestMakeDirectory,
    NEBSourceControlRequestCopy,    NEBSourceControlRequestMove,
    NEBSourceControlRequestStage,   NEBSourceControlRequestUnstage,
    NEBSourceControlRequestDiscard,
};

bool changesOnlyIndex(const NEBSourceControlRequest& request) {
    return std::ranges::find(typesThatChangeOnlyIndex, request.type) !=
           std::end(typesThatChangeOnlyIndex);
}

std::string withoutLinks(const std::string& path) {
    std::error_code failure;
    const std::filesystem::path whole = std::filesystem::weakly_canonical(path, failure);
    return failure ? path : whole.string();
}

/// Returns the folder in which the request works; absent without one.
std::optional<std::string> folderOf(const NEBSourceControlRequest& request) {
    if (NEBSourceControlDescriptionOfRequestType(request.type).worksInDestination) {
        return request.destination.description();
    }
    const NEBValue& repository = request.option(NEBSourceControlRequestOptionRepositoryPath);
    if (repository.isPresent()) {
        return pathByExpandingTilde(repository.description());
    }
    if (request.sourceTree && request.sourceTree->location) {
        const std::string& location = *request.sourceTree->location;
        return pathByExpandingTilde(pathOfLocation(location).value_or(location));
    }
    return std::nullopt;
}

/// Returns the folder with the references of the repository; for a submodule, of the outermost
/// repository that contains it. git keeps submodules in the folder "modules" of the git directory.
std::string sharedFolderOf(const NEBSourceControlGitDirectory& repository) {
    constexpr std::string_view modules = "/modules/";
    const std::string& path = repository.commonPath;
    for (std::size_t end = path.find(modules); end != std::string::npos;
         end = path.find(modules, end + 1)) {
        const auto outer = NEBSourceControlFindGitDirectory(path.substr(0, end));
        if (outer && outer->path == path.substr(0, end)) {
            return outer->commonPath;
        }
    }
    return path;
}

}  // namespace

std::vector<std::string> NEBSourceControlWrittenPlaces(const NEBSourceControlRequest& request) {
    const auto effect = NEBSourceControlEffectOfRequest(request);
    if (effect == NEBSourceControlRequestEffect::reads) {
        return {};
    }
    if (effect == NEBSourceControlRequestEffect::exports) {
        return request.destination.isPresent()
                   ? std::vector{withoutLinks(request.destination.description())}
                   : std::vector<std::string>();
    }
    const auto folder = folderOf(request);
    if (!folder) {
        return {""};
    }
    const auto repository = NEBSourceControlFindGitDirectory(*folder);
    if (!repository) {
        return {withoutLinks(*folder)};
    }
    const std::string shared = sharedFolderOf(*repository);
    const bool isSubmodule = shared != repository->commonPath;
    std::vector<std::string> places{repository->path + "/index"};
    if (isSubmodule || !changesOnlyIndex(request)) {
        places.push_back(shared + "/refs");
    }
    return places;
}

}  // namespace neb
