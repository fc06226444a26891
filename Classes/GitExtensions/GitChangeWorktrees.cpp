#include "GitExtensions/GitChangeWorktrees.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "GitExtensions/GitRecordFields.h"
#include "GitExtensions/GitStatusEntries.h"
#include "GitExtensions/GitWorktrees.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/Interceptor.h"
#include "Platform/PathString.h"
#include "Platform/Text.h"

namespace neb {

namespace {

/// Returns the absolute path without symbolic links, as git prints it.
std::string realPath(const std::string& path) {
    std::string text = interceptedText("real path", path, [&path] {
        std::error_code failure;
        const auto real = std::filesystem::weakly_canonical(path, failure);
        return failure ? path : real.string();
    });
    while (text.size() > 1 && text.ends_with('/')) {
        text.pop_back();
    }
    return text;
}

std::string pathOf(const NEBDictionary& worktree) {
    const NEBValue& bytes = worktree.value(NEBSourceControlOperationWorktreeBytesKey);
    return std::string(gitBytesOfValue(bytes.isPresent()
                                           ? bytes
                                           : worktree.value(NEBSourceControlOperationWorktreeKey))
                           .value_or(Data())
                           .bytes());
}

}  // namespace

void GitChangeWorktreesOperation::perform() {
    struct Row {
        std::string_view action;
        void (GitChangeWorktreesOperation::*carryOut)();
    };
    constexpr Row rows[] = {
        {"add", &GitChangeWorktreesOperation::add},
        {"remove", &GitChangeWorktreesOperation::remove},
        {"prune", &GitChangeWorktreesOperation::prune},
    };
    const auto* row = std::ranges::find(rows, action(""), &Row::action);
    if (row == std::end(rows)) {
        failForOption(NEBSourceControlRequestOptionAction);
    } else if (row->action != "prune" && path().empty()) {
        fail(NEBSourceControlRequestInvalidErrorClass,
             "The request lacks the path of the worktree.");
    } else {
        (this->*row->carryOut)();
    }
}

std::string GitChangeWorktreesOperation::path() const {
    return std::string(gitBytesOfValue(request()->destination).value_or(Data()).bytes());
}

std::optional<NEBSourceControlResult> GitChangeWorktreesOperation::queriedWorktrees() {
    const auto list = run<GitWorktreesOperation>(request());
    return goesOnAfter(*list) ? std::optional(list->result().value_or(NEBSourceControlResult()))
                              : std::nullopt;
}

std::string GitChangeWorktreesOperation::absolutePath() const {
    const auto& location = request()->sourceTree ? request()->sourceTree->location : std::nullopt;
    const auto folder = location ? pathOfLocation(*location) : std::nullopt;
    return realPath(
        path().starts_with('/') ? path() : pathByAppendingComponent(folder.value_or("."), path()));
}

const NEBDictionary* GitChangeWorktreesOperation::worktreeIn(
    const NEBSourceControlResult& worktrees) const {
    const std::string wanted = absolutePath();
    const auto found = std::ranges::find_if(worktrees, [&wanted](const NEBDictionary& worktree) {
        return realPath(pathOf(worktree)) == wanted;
    });
    return found != worktrees.end() ? &*found : nullptr;
}

std::optional<NEBDictionary> GitChangeWorktreesOperation::queriedWorktree() {
    const auto worktrees = queriedWorktrees();
    if (!worktrees) {
        return std::nullopt;
    }
    if (const NEBDictionary* worktree = worktreeIn(*worktrees)) {
        return *worktree;
    }
    fail(NEBSourceControlPathUnknownErrorClass,
         "There is no worktree of the repository at \"" + path() + "\".", {},
         "\"git worktree list\" lists the worktrees.");
    return std::nullopt;
}

// ---- add --------------------------------------------------------------------------------------

std::optional<std::vector<std::string>> GitChangeWorktreesOperation::queriedAddition() {
    const auto branch = gitBytesOfValue(request()->option(NEBSourceControlRequestOptionBranch));
    const std::string name(branch.value_or(Data()).bytes());
    const auto start = gitBytesOfValue(request()->startingRevision);
    const bool isNew = hasOption(NEBSourceControlRequestOptionCreateBranch);
    std::vector<std::string> arguments{"worktree", "add"};
    if (isNew ? name.empty() : branch && start) {
        fail(NEBSourceControlRequestInvalidErrorClass,
             isNew ? "The request lacks the name of the new branch."
                   : "Only a new branch can have a starting revision.");
        return std::nullopt;
    }
    if (branch && !isNew) {
        // git would create the branch if a remote has one of this name, and take any revision.
        const std::string fullName = "refs/heads/" + name;
        const auto found = queriedLine({"for-each-ref", "--format=%(refname)", fullName});
        if (found && *found != fullName) {
            fail(NEBSourceControlBranchUnknownErrorClass, "There is no branch \"" + name + "\".");
        }
        arguments.insert(arguments.end(), {"--", path(), name});
    } else {
        const auto commit = queriedCommit(start ? request()->startingRevision : NEBValue("HEAD"));
        if (isNew) {
            arguments.insert(arguments.end(), {"-b", name, "--", path()});
            // By its name, as a remote branch becomes the upstream branch.
            arguments.emplace_back(start ? std::string(start->bytes()) : "HEAD");
        } else {
            arguments.insert(arguments.end(), {"--detach", "--", path(), commit.value_or("")});
        }
    }
    return error() ? std::nullopt : std::optional(std::move(arguments));
}

bool GitChangeWorktreesOperation::hasRoom() {
    const auto worktrees = queriedWorktrees();
    if (!worktrees) {
        return false;
    }
    const std::string folder = absolutePath();
    const bool isFree = interceptedFact("is missing or empty", folder, [&folder] {
        std::error_code failure;
        return !std::filesystem::exists(folder, failure) ||
               (std::filesystem::is_directory(folder, failure) &&
                std::filesystem::is_empty(folder, failure));
    });
    if (worktreeIn(*worktrees) != nullptr) {
        fail(NEBSourceControlDestinationExistsErrorClass,
             "The repository has a worktree at \"" + path() + "\" already.");
    } else if (!isFree) {
        fail(NEBSourceControlDestinationExistsErrorClass,
             "\"" + path() + "\" exists already, and is not an empty folder.");
    }
    return !error();
}

void GitChangeWorktreesOperation::add() {
    const auto arguments = hasRoom() ? queriedAddition() : std::nullopt;
    const auto worktree = arguments && runChange(*arguments) ? queriedWorktree() : std::nullopt;
    if (worktree) {
        setResult({{*worktree}});
    }
}

// ---- remove -----------------------------------------------------------------------------------

std::optional<NEBSourceControlResult> GitChangeWorktreesOperation::queriedLosses(
    const NEBDictionary& worktree) {
    NEBSourceControlResult losses;
    if (!worktree.contains(NEBSourceControlOperationIsPrunableKey)) {
        const std::vector<std::string> arguments{"status", "--porcelain", "-z", "--no-renames",
                                                 "--untracked-files=all"};
        const auto status = std::make_shared<GitQueryOperation>(request(), arguments);
        status->setArguments(arguments);
        status->setCurrentDirectoryPath(pathOf(worktree));
        if (!goesOnAfter(*runOperation(status))) {
            return std::nullopt;
        }
        for (const GitStatusEntry& entry : gitStatusEntries(status->output())) {
            NEBDictionary& record = losses.emplace_back();
            gitSetName(record, gitPathKeys, entry.path);
            if (entry.isUntracked()) {
                record.set(NEBSourceControlOperationStateKey, "untracked");
            } else {
                gitSetState(record, NEBSourceControlOperationStateKey,
                            std::string(1, entry.letterOfIndex()));
            }
        }
    }
    if (worktree.contains(NEBSourceControlOperationIsDetachedKey) &&
        worktree.contains(NEBSourceControlOperationObjectIDKey)) {
        const auto commits =
            runQuery(request(),
                     {"rev-list", std::string(worktree.text(NEBSourceControlOperationObjectIDKey)),
                      "--not", "--branches", "--tags", "--remotes"});
        if (!goesOnAfter(*commits)) {
            return std::nullopt;
        }
        forEachLine(commits->output(), [&losses](std::string_view id) {
            gitSetObjectID(losses.emplace_back(), NEBSourceControlOperationObjectIDKey, id);
        });
    }
    return losses;
}

bool GitChangeWorktreesOperation::losesNothing(const NEBDictionary& worktree) {
    const auto losses = queriedLosses(worktree);
    if (!losses || losses->empty()) {
        return losses.has_value();
    }
    std::vector<std::string> files;
    for (const NEBDictionary& loss : *losses) {
        if (loss.contains(NEBSourceControlOperationPathKey)) {
            files.emplace_back(loss.text(NEBSourceControlOperationPathKey));
        }
    }
    if (!files.empty()) {
        fail(NEBSourceControlLocalChangesErrorClass,
             "The worktree has changed or untracked files, which would be lost.", std::move(files));
    } else {
        fail(NEBSourceControlBranchNotMergedErrorClass,
             "The worktree has commits that no branch contains, and that would be lost: " +
                 std::to_string(losses->size()) + ", the latest one " +
                 std::string(losses->front().text(NEBSourceControlOperationObjectIDKey)) + ".");
    }
    return false;
}

void GitChangeWorktreesOperation::remove() {
    const auto worktree = queriedWorktree();
    if (!worktree) {
        return;
    }
    if (worktree->contains(NEBSourceControlOperationIsMainKey)) {
        fail(NEBSourceControlRequestInvalidErrorClass, "The main worktree cannot be removed.");
        return;
    }
    if (hasOption(NEBSourceControlRequestOptionDryRun)) {
        if (auto losses = queriedLosses(*worktree)) {
            setResult(*std::move(losses));
        }
        return;
    }
    if (worktree->contains(NEBSourceControlOperationIsLockedKey)) {
        const std::string reason(worktree->text(NEBSourceControlOperationLockReasonKey));
        fail(NEBSourceControlWorktreeLockedErrorClass,
             "The worktree is locked" + (reason.empty() ? "." : " (" + reason + ")."));
        return;
    }
    std::vector<std::string> arguments{"worktree", "remove"};
    if (hasOption(NEBSourceControlRequestOptionForce)) {
        arguments.emplace_back("--force");
    } else if (!losesNothing(*worktree)) {
        return;
    }
    arguments.insert(arguments.end(), {"--", pathOf(*worktree)});
    if (runChange(arguments)) {
        setResult({{*worktree}});
    }
}

// ---- prune ------------------------------------------------------------------------------------

void GitChangeWorktreesOperation::prune() {
    const auto worktrees = queriedWorktrees();
    if (!worktrees || !runChange({"worktree", "prune"})) {
        return;
    }
    NEBSourceControlResult pruned;
    std::ranges::copy_if(*worktrees, std::back_inserter(pruned), [](const NEBDictionary& worktree) {
        return worktree.contains(NEBSourceControlOperationIsPrunableKey);
    });
    setResult(std::move(pruned));
}

}  // namespace neb
