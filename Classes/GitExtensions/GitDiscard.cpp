#include "GitExtensions/GitDiscard.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "GitExtensions/GitRecordFields.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/Interceptor.h"
#include "Platform/PathString.h"

namespace neb {

namespace {

/// Removes repeated paths: `git ls-files` lists a path in conflict once for each version.
void removeRepeated(std::vector<std::string>& paths) {
    paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
}

/// Returns the path of an entry of `git ls-files -t --stage`: "TAG MODE ID STAGE TAB PATH".
std::string pathOfEntry(const std::string& entry) {
    return entry.substr(entry.find('\t') + 1);
}

/// Returns the path from the top of the working copy. `prefix` is the working directory from there,
/// empty or with a slash at its end.
std::string pathFromTop(const std::string& prefix, const std::string& path) {
    return std::filesystem::path(prefix + path).lexically_normal().native();
}

/// Returns whether a folder that is no submodule lies in place of a file.
bool isReplacedByFolder(const NEBSourceControlRequest& request, const std::string& file) {
    const auto& location = request.sourceTree ? request.sourceTree->location : std::nullopt;
    const auto folder = location ? pathOfLocation(*location) : std::nullopt;
    const std::string path =
        pathByAppendingComponent(pathByExpandingTilde(folder.value_or("")), file);
    return interceptedFact("is folder without repository", path, [&path] {
        std::error_code ignored;
        return std::filesystem::is_directory(std::filesystem::symlink_status(path, ignored)) &&
               !std::filesystem::exists(path + "/.git", ignored);
    });
}

}  // namespace

std::optional<std::vector<std::string>> GitDiscardOperation::queriedPaths(
    std::initializer_list<const char*> options) {
    std::vector<std::string> arguments{"ls-files", "-z"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.emplace_back("--");
    const auto names = gitFileNames(*request());
    arguments.insert(arguments.end(), names.begin(), names.end());
    const auto query = runQuery(request(), arguments);
    if (!goesOnAfter(*query)) {
        return std::nullopt;
    }
    auto paths = gitNULSeparatedPieces(query->output());
    removeRepeated(paths);
    return paths;
}

bool GitDiscardOperation::hasNoConflict(const std::vector<std::string>& entries) {
    std::vector<std::string> conflicts;
    for (const std::string& entry : entries) {
        if (entry.starts_with("M ")) {
            conflicts.push_back(pathOfEntry(entry));
        }
    }
    removeRepeated(conflicts);
    if (!conflicts.empty()) {
        fail(NEBSourceControlConflictUnresolvedErrorClass,
             "Changes of files in conflict cannot be discarded.", std::move(conflicts));
    }
    return !error();
}

std::optional<std::vector<std::string>> GitDiscardOperation::queriedModified(
    const std::vector<std::string>& submodules) {
    auto modified = queriedPaths({"--modified"});
    if (modified) {
        std::erase_if(*modified, [&submodules](const std::string& path) {
            return std::ranges::find(submodules, path) != submodules.end();
        });
    }
    return modified;
}

std::optional<GitDiscardOperation::Losses> GitDiscardOperation::queriedLosses() {
    Losses losses;
    const bool hasUntracked = hasOption(NEBSourceControlRequestOptionIncludeUntracked);
    // A path that git does not know is an error.
    const auto known = hasUntracked ? queriedPaths({"-t", "--stage", "--others", "--error-unmatch"})
                                    : queriedPaths({"-t", "--stage", "--error-unmatch"});
    auto submodules = known && hasNoConflict(*known) ? queriedSubmodules(*known) : std::nullopt;
    const auto modified = submodules ? queriedModified(*submodules) : std::nullopt;
    auto deleted = modified ? queriedPaths({"--deleted"}) : std::nullopt;
    if (!deleted) {
        return std::nullopt;
    }
    losses.submodules = *std::move(submodules);
    losses.deleted = *std::move(deleted);
    const std::set<std::string, std::less<>> isDeleted(losses.deleted.begin(),
                                                       losses.deleted.end());
    for (const std::string& path : *modified) {
        if (!isDeleted.contains(path)) {
            const bool isReplaced = isReplacedByFolder(*request(), path);
            (isReplaced ? losses.deleted : losses.modified).push_back(path);
        }
    }
    auto obstacles = queriedObstacles(losses.deleted, PathOrigin::workingDirectory);
    if (!obstacles) {
        return std::nullopt;
    }
    losses.obstacles = *std::move(obstacles);
    if (hasUntracked) {
        auto untracked = queriedPaths({"--others", "--exclude-standard"});
        if (!untracked) {
            return std::nullopt;
        }
        std::erase_if(*untracked, [&losses](const std::string& path) {
            return path.ends_with('/') ||
                   std::ranges::find(losses.obstacles, path) != losses.obstacles.end();
        });
        losses.untracked = *std::move(untracked);
    }
    return losses;
}

std::optional<std::vector<std::string>> GitDiscardOperation::queriedSubmodules(
    const std::vector<std::string>& entries) {
    std::vector<std::string> submodules;
    for (const std::string& entry : entries) {
        if (entry.starts_with("H 160000 ")) {
            submodules.push_back(pathOfEntry(entry));
        }
    }
    if (submodules.empty()) {
        return submodules;
    }
    const auto prefix = queriedLine({"rev-parse", "--show-prefix"});
    if (!prefix) {
        return std::nullopt;
    }
    std::vector<std::string> arguments{
        "--literal-pathspecs",           "diff-files", "--name-only", "-z", "--diff-filter=M",
        "--ignore-submodules=untracked", "--"};
    arguments.insert(arguments.end(), submodules.begin(), submodules.end());
    const auto query = runQuery(request(), arguments);
    if (!goesOnAfter(*query)) {
        return std::nullopt;
    }
    const std::vector<std::string> paths = gitNULSeparatedPieces(query->output());
    const std::set<std::string> changed(paths.begin(), paths.end());
    std::erase_if(submodules, [&](const std::string& path) {
        return !changed.contains(pathFromTop(*prefix, path));
    });
    return submodules;
}

void GitDiscardOperation::reportKept(const std::vector<std::string>& submodules) {
    if (!submodules.empty() && !error()) {
        fail(NEBSourceControlPathInSubmoduleErrorClass,
             "The changes of submodules were not discarded.", submodules);
    }
}

void GitDiscardOperation::addRecords(const std::vector<std::string>& paths,
                                     std::string_view state) {
    NEBSourceControlResult records = result().value_or(NEBSourceControlResult());
    for (const std::string& path : paths) {
        NEBDictionary& record = records.emplace_back();
        gitSetName(record, gitPathKeys, path);
        record.set(NEBSourceControlOperationStateKey, state);
    }
    setResult(std::move(records));
}

bool GitDiscardOperation::mayThrowAway(const std::vector<std::string>& lost) {
    if (hasOption(NEBSourceControlRequestOptionDryRun)) {
        return false;
    }
    if (lost.empty() || hasOption(NEBSourceControlRequestOptionForce)) {
        return true;
    }
    fail(NEBSourceControlLocalChangesErrorClass,
         "Local changes would be lost. The request does not allow to throw them away.", lost);
    return false;
}

void GitDiscardOperation::discardPatch() {
    const std::vector<std::string> reversed{"--reverse"};
    if (!patchFits(reversed)) {
        return;
    }
    const auto counts = runOperation(std::make_shared<GitChangeOperation>(
        request(), std::vector<std::string>{"apply", "--reverse", "--numstat", "-z", "-"},
        patch()));
    if (!goesOnAfter(*counts)) {
        return;
    }
    std::vector<std::string> paths;
    for (const std::string& entry : gitNULSeparatedPieces(counts->data().value_or(Data()))) {
        // "ADDED TAB DELETED TAB PATH"
        paths.push_back(entry.substr(entry.find('\t', entry.find('\t') + 1) + 1));
    }
    addRecords(paths, "modified");
    if (mayThrowAway(paths)) {
        applyFittingPatch(reversed);
    }
}

void GitDiscardOperation::perform() {
    if (hasPatch()) {
        discardPatch();
        return;
    }
    const auto losses = queriedLosses();
    if (!losses) {
        return;
    }
    addRecords(losses->modified, "modified");
    addRecords(losses->deleted, "deleted");
    std::vector<std::string> lost = losses->modified;
    for (const auto* untracked : {&losses->obstacles, &losses->untracked}) {
        addRecords(*untracked, "untracked");
        lost.insert(lost.end(), untracked->begin(), untracked->end());
    }
    if (mayThrowAway(lost) && restore(*losses)) {
        deleteUntracked(losses->untracked);
    }
    reportKept(losses->submodules);
}

bool GitDiscardOperation::restore(const Losses& losses) {
    std::string paths;
    for (const auto* some : {&losses.modified, &losses.deleted}) {
        for (const std::string& path : *some) {
            paths.append(path).append(1, '\0');
        }
    }
    return paths.empty() || runChange({"--literal-pathspecs", "restore", "--pathspec-from-file=-",
                                       "--pathspec-file-nul"},
                                      Data(paths));
}

/// A command line can have a few thousand paths, and `git clean` reads none from its input.
void GitDiscardOperation::deleteUntracked(const std::vector<std::string>& paths) {
    constexpr std::size_t most = 200;
    for (std::size_t start = 0; start < paths.size(); start += most) {
        std::vector<std::string> arguments{
            "--literal-pathspecs", "clean", "--force", "-d", "--quiet", "--"};
        const std::size_t end = std::min(start + most, paths.size());
        arguments.insert(arguments.end(), paths.begin() + static_cast<std::ptrdiff_t>(start),
                         paths.begin() + static_cast<std::ptrdiff_t>(end));
        if (!runChange(arguments)) {
            return;
        }
    }
}

}  // namespace neb
