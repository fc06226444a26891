#include "Session/GitDirectoryGuard.h"

#include <filesystem>
#include <system_error>
#include <vector>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlGitDirectory.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Platform/Interceptor.h"
#include "Platform/PathString.h"
#include "Platform/Text.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view gitName = ".git";

/// Returns the paths that the request reads as a whole or writes to, absolute unless the request
/// has no location.
std::vector<std::string> pathsOf(const NEBSourceControlRequest& request) {
    std::vector<const NEBValue*> values;
    if (request.type == NEBSourceControlRequestCopy ||
        request.type == NEBSourceControlRequestMove) {
        values = {&request.destination};
        if (request.fileCount() > 0) {
            values.push_back(&request.files->front());
        }
    } else if (request.type == NEBSourceControlRequestMakeDirectory) {
        values = {&request.destination};
    }
    const auto& location = request.sourceTree ? request.sourceTree->location : std::nullopt;
    const std::string folder = location ? pathOfLocation(*location).value_or("") : "";
    std::vector<std::string> paths;
    for (const NEBValue* value : values) {
        const std::string path(value->string().value_or(""));
        if (!path.empty()) {
            paths.push_back(isAbsolutePath(path) ? path : pathByAppendingComponent(folder, path));
        }
    }
    return paths;
}

}  // namespace

std::optional<std::string> gitDirectoryAround(const std::string& path) {
    const fs::path named = fs::path(path).lexically_normal();
    const fs::path last = named.has_filename() ? named.filename() : named.parent_path().filename();
    if (equalIgnoringASCIICase(last.string(), gitName)) {
        return named.string();
    }
    std::error_code failure;
    const fs::path resolved = fs::weakly_canonical(named, failure);
    const std::string whole = failure ? named.string() : resolved.string();
    const auto repository = NEBSourceControlFindGitDirectory(whole);
    if (!repository) {
        return std::nullopt;
    }
    for (const std::string& folder : {repository->path, repository->commonPath}) {
        // A linked worktree may lie in the git directory.
        const std::string& top = repository->workingCopy;
        const bool isInWorktree = !top.empty() && liesWithin(top, folder);
        if (liesWithin(whole, folder) && !isInWorktree) {
            return folder;
        }
    }
    return std::nullopt;
}

std::optional<NEBSourceControlError> errorOfChangeInGitDirectory(
    const NEBSourceControlRequest& request) {
    for (const std::string& path : pathsOf(request)) {
        std::optional<std::string> folder;
        if (interceptedFact("is in git directory", path, [&path, &folder] {
                folder = gitDirectoryAround(path);
                return folder.has_value();
            })) {
            auto error = NEBSourceControlError::withDescription(
                NEBSourceControlGenericError, "\"" + path + "\" is inside the git directory \"" +
                                                  folder.value_or(path) +
                                                  "\"; nothing was changed.");
            error.errorClass = NEBSourceControlPathInvalidErrorClass;
            return error;
        }
    }
    return std::nullopt;
}

}  // namespace neb::nebsc
