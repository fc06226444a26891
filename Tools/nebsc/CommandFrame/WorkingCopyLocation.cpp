#include "CommandFrame/WorkingCopyLocation.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/PathString.h"
#include "Session/GitProgram.h"
#include "Session/Paths.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

/// Returns the position of the "/" that ends the last component that both absolute paths have in
/// common.
std::size_t endOfCommonFolder(std::string_view path, std::string_view folder) {
    const auto [inPath, inFolder] =
        std::mismatch(path.begin(), path.end(), folder.begin(), folder.end());
    const bool endsPath = inPath == path.end() && (inFolder == folder.end() || *inFolder == '/');
    const bool endsFolder = inFolder == folder.end() && inPath != path.end() && *inPath == '/';
    const auto common = static_cast<std::size_t>(inPath - path.begin());
    return endsPath || endsFolder ? common : path.substr(0, common).rfind('/');
}

/// Both paths must be absolute, without "." and ".." and "//", and without a "/" at the end.
std::string relativePath(std::string_view path, std::string_view folder) {
    if (path == folder) {
        return ".";
    }
    folder = folder == "/" ? std::string_view() : folder;
    const std::size_t common = endOfCommonFolder(path, folder);
    std::string relative;
    const std::string_view left = folder.substr(common);
    for (auto count = std::count(left.begin(), left.end(), '/'); count > 0; --count) {
        relative.append(relative.empty() ? ".." : "/..");
    }
    if (common < path.size()) {
        relative.append(relative.empty() ? "" : "/").append(path.substr(common + 1));
    }
    return relative;
}

/// gitrepository-layout(5): a bare repository, or the ".git" of a working copy.
bool isGitDirectory(const std::string& folder) {
    constexpr std::string_view names[] = {"HEAD", "objects", "refs"};
    return std::all_of(std::begin(names), std::end(names), [&folder](std::string_view name) {
        return isAnythingAt(pathByAppendingComponent(folder, name));
    });
}

}  // namespace

WorkingCopyLocation findWorkingCopy(Interruption& interruption, const Trace& trace,
                                    const std::string& currentFolder, const std::string& folder,
                                    const RepositoryQuestions& questions,
                                    NEBSourceControlTrust trust) {
    ChildOutcome outcome =
        runGit(interruption, trace, argumentsFor(questions, folder), folder, trust);
    RepositoryAnswers answers = answersIn(outcome, questions, folder);
    return {.location = answers.top.value_or(folder),
            .currentFolder = currentFolder,
            .isWorkingCopy = answers.top.has_value(),
            .isRepository = answers.isRepository,
            .hasCommits = answers.hasCommits,
            .revisions = std::move(answers.revisions),
            .discovery = std::move(outcome)};
}

std::optional<WorkingCopyLocation> probableWorkingCopy(const std::string& currentFolder) {
    std::string folder = currentFolder;
    while (true) {
        const bool isTop = isAnythingAt(pathByAppendingComponent(folder, ".git"));
        if (isTop || isGitDirectory(folder)) {
            return WorkingCopyLocation{.location = isTop ? folder : currentFolder,
                                       .currentFolder = currentFolder,
                                       .isWorkingCopy = isTop,
                                       .isRepository = true};
        }
        if (folder == "/") {
            return std::nullopt;
        }
        folder = pathByDeletingLastComponent(folder);
    }
}

WorkingCopyLocation workingCopyInResult(const std::optional<NEBSourceControlResult>& result,
                                        const std::string& currentFolder,
                                        const std::string& folder) {
    WorkingCopyLocation found{.location = folder, .currentFolder = currentFolder};
    if (result && !result->empty()) {
        found.location = result->front().text(NEBSourceControlOperationRepositoryRootKey);
        found.isWorkingCopy = true;
        found.isRepository = true;
    }
    return found;
}

std::string repositoryLocation(const std::string& currentFolder, const std::string& url) {
    const std::size_t colon = url.find(':');
    const bool hasHost = colon != std::string::npos && url.find('/') > colon;
    const PathSearch search = findAbsolutePath(currentFolder, url);
    const bool isPath = !url.empty() && !url.starts_with('-') && search.path &&
                        (!hasHost || isAnythingAt(*search.path));
    return isPath ? *search.path : url;
}

std::string pathAsSeen(const WorkingCopyLocation& workingCopy, const std::string& path) {
    if (!path.empty() && !path.starts_with('/') &&
        workingCopy.currentFolder == workingCopy.location) {
        return path;
    }
    std::string absolute =
        path.starts_with('/') ? path : pathByAppendingComponent(workingCopy.location, path);
    if (absolute == "/" || !liesWithin(workingCopy.currentFolder, workingCopy.location)) {
        return absolute;
    }
    const bool isFolder = absolute.ends_with('/');
    absolute.resize(absolute.size() - (isFolder ? 1 : 0));
    std::string relative = relativePath(absolute, workingCopy.currentFolder);
    return isFolder ? relative.append("/") : relative;
}

std::string shownPath(const WorkingCopyLocation& workingCopy, const std::string& path) {
    return printable(pathAsSeen(workingCopy, path));
}

std::string pathFromTop(const WorkingCopyLocation& workingCopy, const std::string& path) {
    if (!path.starts_with('/')) {
        return path;
    }
    const std::string& top = workingCopy.location;
    return path == top ? std::string() : path.substr(top == "/" ? 1 : top.size() + 1);
}

}  // namespace neb::nebsc
