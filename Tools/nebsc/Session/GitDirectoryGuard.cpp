#include "Session/GitDirectoryGuard.h"

#include <filesystem>
#include <iterator>
#include <string_view>
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

/// A path of a request, and whether the request changes the target of a symbolic link there or the
/// link itself.
struct ChangedPath {
    std::string path;
    LastLink last;
};

/// Appends the path as the operations read it. To git, "~" is a name; NEBGit expands it.
void append(std::vector<ChangedPath>& paths, const std::string& folder, const NEBValue& value,
            LastLink last) {
    const std::string path(value.string().value_or(""));
    if (path.starts_with('~')) {
        paths.push_back({pathByExpandingTilde(path), last});
    }
    if (path.starts_with('/')) {
        paths.push_back({path, last});
    } else if (!path.empty()) {
        paths.push_back({pathByAppendingComponent(folder, path), last});
    }
}

/// Returns the paths that the request reads as a whole or writes to, absolute unless the request
/// has no location.
std::vector<ChangedPath> pathsOf(const NEBSourceControlRequest& request) {
    const bool hasSource =
        request.type == NEBSourceControlRequestCopy || request.type == NEBSourceControlRequestMove;
    const auto& location = request.sourceTree ? request.sourceTree->location : std::nullopt;
    const std::string folder =
        location ? pathByExpandingTilde(pathOfLocation(*location).value_or(*location)) : "";
    std::vector<ChangedPath> paths;
    if (hasSource || request.type == NEBSourceControlRequestMakeDirectory) {
        append(paths, folder, request.destination, LastLink::isFollowed);
    }
    if (hasSource && request.fileCount() > 0) {
        append(paths, folder, request.files->front(), LastLink::isKept);
    }
    return paths;
}

/// Resolves one component after the other, as the system does when "new/../link/.." is created:
/// fs::weakly_canonical() leaves links after a missing folder as they are.
fs::path withoutLinks(const fs::path& path, LastLink last) {
    std::error_code failure;
    fs::path resolved = path.is_absolute() ? path.root_path() : fs::current_path(failure);
    for (auto name = path.begin(); name != path.end(); ++name) {
        if (name->empty()) {
            continue;  // after a "/" at the end
        }
        fs::path next = resolved / *name;
        if (last == LastLink::isKept && std::next(name) == path.end() && *name != "." &&
            *name != "..") {
            return next;
        }
        resolved = fs::weakly_canonical(next, failure);
        if (failure) {
            resolved = next.lexically_normal();
        }
    }
    return resolved;
}

/// Returns the first folder with the name ".git" on the way from the top to the path inside it.
std::optional<std::string> folderNamedGit(const fs::path& top, const fs::path& path) {
    fs::path folder = top;
    for (const fs::path& name : path.lexically_relative(top)) {
        folder /= name;
        if (equalIgnoringASCIICase(name.string(), gitName)) {
            return folder.string();
        }
    }
    return std::nullopt;
}

NEBSourceControlError errorOfPath(const std::string& path, const std::string& folder) {
    auto error = NEBSourceControlError::withDescription(
        NEBSourceControlGenericError,
        "\"" + path + "\" is inside the git directory \"" + folder + "\"; nothing was changed.");
    error.errorClass = NEBSourceControlPathInvalidErrorClass;
    return error;
}

}  // namespace

std::optional<std::string> gitDirectoryAround(const std::string& path, LastLink last) {
    const fs::path named = fs::path(path).lexically_normal();
    const fs::path name = named.has_filename() ? named.filename() : named.parent_path().filename();
    if (equalIgnoringASCIICase(name.string(), gitName)) {
        return named.string();
    }
    const fs::path whole = withoutLinks(path, last);
    std::error_code ignored;
    const bool isLink = fs::is_symlink(fs::symlink_status(whole, ignored));
    const auto repository =
        NEBSourceControlFindGitDirectory((isLink ? whole.parent_path() : whole).string());
    if (!repository) {
        return folderNamedGit(whole.root_path(), whole);
    }
    const std::string& top = repository->workingCopy;
    for (const std::string& folder : {repository->path, repository->commonPath}) {
        // A linked worktree may lie in the git directory.
        const bool isInWorktree = !top.empty() && liesWithin(top, folder);
        if (liesWithin(whole.string(), folder) && !isInWorktree) {
            return folder;
        }
    }
    return folderNamedGit(top.empty() ? whole.root_path() : fs::path(top), whole);
}

std::optional<NEBSourceControlError> errorOfChangeInGitDirectory(
    const NEBSourceControlRequest& request) {
    for (const ChangedPath& changed : pathsOf(request)) {
        const std::string& path = changed.path;
        const std::string folder = interceptedText("git directory around", path, [&changed] {
            return gitDirectoryAround(changed.path, changed.last).value_or("");
        });
        if (!folder.empty()) {
            return errorOfPath(path, folder);
        }
    }
    return std::nullopt;
}

}  // namespace neb::nebsc
