// The command "worktree" and its subcommands.

#include <unistd.h>

#include "CommandFrame/CommandTask.h"
#include "CommandFrame/RecordNames.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/PrintableText.h"
#include "Terminal/TextTable.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view pathParameter = "PATH";
constexpr std::string_view revisionParameter = "REVISION";
constexpr NameKeys worktreeKeys{NEBSourceControlOperationWorktreeKey,
                                NEBSourceControlOperationWorktreeBytesKey};
constexpr NameKeys branchKeys{NEBSourceControlOperationBranchKey,
                              NEBSourceControlOperationBranchBytesKey};

/// Returns the path of the worktree, printable.
std::string shownWorktree(const NEBDictionary& record) {
    return printable(bytesOfName(record, worktreeKeys));
}

/// Returns what is checked out: "main", "(detached)".
std::string shownBranch(const NEBDictionary& record) {
    if (record.contains(NEBSourceControlOperationIsBareKey)) {
        return "(bare)";
    }
    const std::string branch(bytesOfName(record, branchKeys));
    return branch.empty() ? "(detached)" : printable(withoutPrefix(branch, localBranchPrefix));
}

/// Returns why the worktree is special: "locked: REASON", "missing"; empty for an ordinary one.
std::string shownCondition(const NEBDictionary& record) {
    if (record.contains(NEBSourceControlOperationIsLockedKey)) {
        const std::string_view reason = record.text(NEBSourceControlOperationLockReasonKey);
        return reason.empty() ? "locked" : "locked: " + printable(reason);
    }
    return record.contains(NEBSourceControlOperationIsPrunableKey) ? "missing" : "";
}

// ---- list -------------------------------------------------------------------------------------

class WorktreeListTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return newRequest(NEBSourceControlRequestWorktrees);
    }
    std::string textOfResult(const NEBSourceControlResult& result) override {
        constexpr std::size_t digits = 12;
        std::vector<std::vector<std::string>> rows;
        for (const NEBDictionary& record : result) {
            const std::string_view id = record.text(NEBSourceControlOperationObjectIDKey);
            rows.push_back({shownWorktree(record), printable(id.substr(0, digits)),
                            shownBranch(record), shownCondition(record)});
        }
        return tableLines(STDOUT_FILENO, rows);
    }
};

constinit const Command listCommand{
    .name = "list",
    .group = subcommandGroup,
    .summary = "List the worktrees with commit and branch, the main one first",
    .details =
        "Example:\n"
        "  nebsc worktree list\n",
    .activity = "Reading",
    .isPaged = true,
    .run = runTask<WorktreeListTask>,
};

// ---- changes ----------------------------------------------------------------------------------

/// Makes a request that changes worktrees.
class WorktreeChangeTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override { return refusalOutsideRepository(git()); }
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> newChangeRequest(
        const char* action) const {
        auto request = newRequest(NEBSourceControlRequestWorktrees);
        if (!paths(pathParameter).empty()) {
            request->destination = paths(pathParameter).front();
        }
        request->options = NEBDictionary{{NEBSourceControlRequestOptionAction, action}};
        return request;
    }
    /// Queries for branches and commits that do not exist print nothing.
    SilentFailure silentFailure() const override { return SilentFailure::isIgnored; }
    /// Returns "Removed worktree '/home/ann/topic'" for the only record of the outcome.
    [[nodiscard]] static std::string sentence(const char* verb, const Outcome& outcome) {
        return std::string(verb) + " worktree " +
               inQuotes(outcome.result && !outcome.result->empty()
                            ? shownWorktree(outcome.result->front())
                            : "");
    }
};

class WorktreeAddTask : public WorktreeChangeTask {
public:
    using WorktreeChangeTask::WorktreeChangeTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    std::string adviceFor(const NEBSourceControlError& error) const override;
    void report(const Outcome& outcome, CommandOutput& output) override;
};

std::optional<CommandOutput> WorktreeAddTask::validate() {
    const bool isDetached = arguments().has("--detach");
    if (isDetached && arguments().has("--branch")) {
        throw invalidArguments("expected only one of --branch and --detach");
    }
    if (!isDetached && !arguments().has("--branch") && !arguments().has(revisionParameter)) {
        throw invalidArguments("expected a branch, or one of --branch and --detach");
    }
    return WorktreeChangeTask::validate();
}

/// REVISION is the branch unless the worktree gets a new branch or none.
std::shared_ptr<NEBSourceControlRequest> WorktreeAddTask::makeRequest() {
    auto request = newChangeRequest("add");
    const auto revision = arguments().value(revisionParameter);
    const auto newBranch = arguments().value("--branch");
    if (newBranch) {
        request->options->set(NEBSourceControlRequestOptionBranch, *newBranch);
        request->options->set(NEBSourceControlRequestOptionCreateBranch, true);
    } else if (!arguments().has("--detach")) {
        request->options->set(NEBSourceControlRequestOptionBranch, *revision);
        return request;
    }
    if (revision) {
        request->startingRevision = *revision;
    }
    return request;
}

std::string WorktreeAddTask::adviceFor(const NEBSourceControlError& error) const {
    return error.errorClass == NEBSourceControlBranchUnknownErrorClass
               ? "'nebsc worktree add --branch NAME PATH' creates a branch; with --detach, any "
                 "commit can be checked out."
               : "";
}

void WorktreeAddTask::report(const Outcome& outcome, CommandOutput& output) {
    const NEBSourceControlResult records = outcome.result.value_or(NEBSourceControlResult());
    output.standardOutput = sentence("Added", outcome) + " with " +
                            (records.empty() ? "" : shownBranch(records.front())) + ".\n";
}

constexpr Parameter addParameters[] = {
    {pathParameter, "The folder of the new worktree; must not exist, or be empty", Takes::folder,
     Occurs::once},
    {revisionParameter,
     "The branch to check out; with --branch or --detach any revision, default: HEAD",
     Takes::revision},
    {"-b,--branch", "Create a branch, which starts at REVISION", Takes::text, Occurs::optionally,
     "NAME"},
    {"--detach", "Check out no branch"},
};

constinit const Command addCommandOfWorktree{
    .name = "add",
    .group = subcommandGroup,
    .summary = "Check out a branch in another folder",
    .details =
        "The worktree shares commits, branches and settings with this working copy. A\n"
        "branch can be checked out in one of them only.\n"
        "\n"
        "Examples:\n"
        "  nebsc worktree add ../topic topic                  an existing branch\n"
        "  nebsc worktree add -b fix ../fix origin/main       a new branch\n"
        "  nebsc worktree add --detach ../release v1.0        a tag\n",
    .parameters = addParameters,
    .activity = "Checking out",
    .run = runTask<WorktreeAddTask>,
};

// ---- remove -----------------------------------------------------------------------------------

class WorktreeRemoveTask : public WorktreeChangeTask {
public:
    using WorktreeChangeTask::WorktreeChangeTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        auto request = newChangeRequest("remove");
        if (arguments().has("--force")) {
            request->options->set(NEBSourceControlRequestOptionForce, true);
        }
        if (arguments().has("--dry-run")) {
            request->options->set(NEBSourceControlRequestOptionDryRun, true);
        }
        return request;
    }
    std::string textOfResult(const NEBSourceControlResult& result) override;
    std::string adviceFor(const NEBSourceControlError& error) const override;
    void report(const Outcome& outcome, CommandOutput& output) override {
        if (!arguments().has("--dry-run")) {
            output.standardOutput = sentence("Removed", outcome) + ".\n";
        }
    }
};

std::string WorktreeRemoveTask::textOfResult(const NEBSourceControlResult& result) {
    if (!arguments().has("--dry-run")) {
        return {};
    }
    std::vector<std::vector<std::string>> rows;
    for (const NEBDictionary& record : result) {
        const std::string path = printable(bytesOfName(record, pathKeys));
        rows.push_back(
            {path.empty() ? "commit" : printable(record.text(NEBSourceControlOperationStateKey)),
             path.empty() ? printable(record.text(NEBSourceControlOperationObjectIDKey)) : path});
    }
    return rows.empty() ? "Nothing would be lost.\n" : tableLines(STDOUT_FILENO, rows);
}

std::string WorktreeRemoveTask::adviceFor(const NEBSourceControlError& error) const {
    return error.errorClass == NEBSourceControlLocalChangesErrorClass ||
                   error.errorClass == NEBSourceControlBranchNotMergedErrorClass
               ? "'nebsc worktree remove --force' removes it anyway; --dry-run lists what would be "
                 "lost."
               : "";
}

constexpr Parameter removeParameters[] = {
    {pathParameter, "The folder of the worktree", Takes::folder, Occurs::once},
    {"--force", "Remove the worktree even if work is lost"},
    {"--dry-run", "List what would be lost, and change nothing"},
};

constinit const Command removeCommandOfWorktree{
    .name = "remove",
    .group = subcommandGroup,
    .summary = "Delete a worktree and its folder",
    .details =
        "Refuses to lose changed and untracked files, and commits that no branch, tag or\n"
        "remote branch contains, unless --force is given. Ignored files are deleted.\n"
        "\n"
        "Examples:\n"
        "  nebsc worktree remove ../topic\n"
        "  nebsc worktree remove --dry-run ../topic    list what would be lost\n",
    .parameters = removeParameters,
    .activity = "Deleting",
    .run = runTask<WorktreeRemoveTask>,
};

// ---- prune ------------------------------------------------------------------------------------

class WorktreePruneTask : public WorktreeChangeTask {
public:
    using WorktreeChangeTask::WorktreeChangeTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return newChangeRequest("prune");
    }
    std::string textOfResult(const NEBSourceControlResult& result) override {
        std::string lines;
        for (const NEBDictionary& record : result) {
            lines += "Forgot worktree " + inQuotes(shownWorktree(record)) + ".\n";
        }
        return lines;
    }
};

constinit const Command pruneCommand{
    .name = "prune",
    .group = subcommandGroup,
    .summary = "Forget the worktrees whose folder is missing",
    .details =
        "Their branches can be checked out elsewhere then.\n"
        "\n"
        "Example:\n"
        "  nebsc worktree prune\n",
    .activity = "Deleting",
    .run = runTask<WorktreePruneTask>,
};

constexpr const Command* worktreeCommands[] = {
    &listCommand,
    &addCommandOfWorktree,
    &removeCommandOfWorktree,
    &pruneCommand,
};

}  // namespace

constinit const Command worktreeCommand{
    .name = "worktree",
    .group = branchesGroup,
    .summary = "List, add and remove further working copies of the repository",
    .details =
        "Examples:\n"
        "  nebsc worktree                           list the worktrees\n"
        "  nebsc worktree add ../topic topic        check out a branch in another folder\n"
        "  nebsc worktree remove ../topic           delete it again\n",
    .activity = "Reading",
    .commands = worktreeCommands,
    .run = runTask<WorktreeListTask>,
};

}  // namespace neb::nebsc
