// The commands "add", "rm" and "revert".

#include "CommandFrame/CommandTask.h"
#include "CommandFrame/RecordNames.h"
#include "Commands/Commands.h"
#include "Commands/KeptSubmodules.h"
#include "Commands/PickCommands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlStatus.h"
#include "Session/GitProgram.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view files = "FILE";

// ---- add --------------------------------------------------------------------------------------

class AddTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override {
        if (isAll() != paths(files).empty()) {
            throw invalidArguments("expected either FILE or --all");
        }
        return std::nullopt;
    }
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return isAll() ? newRequest(NEBSourceControlRequestAdd)
                       : newRequest(NEBSourceControlRequestAddFiles, paths(files));
    }

private:
    [[nodiscard]] bool isAll() const { return arguments().has("--all"); }
};

constexpr Parameter addParameters[] = {
    {files, "A file or a folder with everything in it, deleted files included", Takes::path,
     Occurs::anyNumber},
    {"--all", "Stage all changes in the working copy"},
};

// ---- rm ---------------------------------------------------------------------------------------

/// The request deletes by force, so the command checks first what would be lost.
class RemoveTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return newRequest(NEBSourceControlRequestRemove, paths(files));
    }

private:
    /// Stores the paths of the files with uncommitted changes. Returns the output of a failure.
    [[nodiscard]] std::optional<CommandOutput> findChanged(std::vector<std::string>& changed);
    /// The same with requests alone.
    [[nodiscard]] std::optional<CommandOutput> findChangedByRequest(
        std::vector<std::string>& changed);
};

std::optional<CommandOutput> RemoveTask::validate() {
    if (arguments().has("--force")) {
        return std::nullopt;
    }
    std::vector<std::string> changed;
    if (auto failed = mayRunGit() ? findChanged(changed) : findChangedByRequest(changed)) {
        return failed;
    }
    if (changed.empty()) {
        return std::nullopt;
    }
    CommandOutput refused = refusalAboutFiles(
        workingCopy(), "Nothing was deleted, because uncommitted changes would be lost:", changed,
        NEBSourceControlLocalChangesErrorClass);
    addAdvice(refused, "'nebsc rm --force' deletes the files anyway.");
    return refused;
}

std::optional<CommandOutput> RemoveTask::findChanged(std::vector<std::string>& changed) {
    std::vector<std::string> query{"status",
                                   "--porcelain",
                                   "-z",
                                   "--no-renames",
                                   "--untracked-files=no",
                                   "--ignore-submodules=none",
                                   "--"};
    query.insert(query.end(), paths(files).begin(), paths(files).end());
    const ChildOutcome status = git().run(std::move(query));
    if (!status.status.isSuccess()) {
        return failureOfQuery(git(), status, paths(files));
    }
    for (const std::string& line : splitAtNUL(status.output)) {
        constexpr std::size_t stateLength = 3;
        // A file that is only deleted has nothing left to lose.
        if (line.size() > stateLength && !line.starts_with(" D ") && !line.starts_with("D  ")) {
            changed.push_back(line.substr(stateLength));
        }
    }
    return std::nullopt;
}

std::optional<CommandOutput> RemoveTask::findChangedByRequest(std::vector<std::string>& changed) {
    for (const std::string& file : paths(files)) {
        auto request = newRequest(NEBSourceControlRequestStatus);
        request->destination = file;
        RequestResult status = performRequest(request);
        rejectRefusedValue(status);
        CommandOutput failed;
        if (addFailureOf(*status.outcome, SilentFailure::isError, failed)) {
            return failed;
        }
        for (const NEBDictionary& record :
             status.outcome->result.value_or(NEBSourceControlResult())) {
            const std::int64_t state = record.value(NEBSourceControlOperationWCStatusKey)
                                           .integer()
                                           .value_or(NEBSourceControlStatusOther);
            if (state != NEBSourceControlStatusDeleted &&
                state != NEBSourceControlStatusUntracked) {
                changed.emplace_back(bytesOfName(record, pathKeys));
            }
        }
    }
    return std::nullopt;
}

constexpr Parameter removeParameters[] = {
    {files, "A file or a folder with all tracked files in it", Takes::path, Occurs::oneOrMore},
    {"--force", "Delete files with uncommitted changes too; the changes are lost"},
};

// ---- revert -----------------------------------------------------------------------------------

class RevertTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override {
        if (paths(files).empty() || arguments().has("--mainline")) {
            throw invalidArguments("expected FILE, or --commit with at most --mainline");
        }
        return std::nullopt;
    }
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return newRequest(NEBSourceControlRequestRevert, paths(files));
    }
    void finish(Outcome& outcome) override {
        if (mayRunGit()) {
            outcome.error = errorOfKeptSubmodules(git(), paths(files));
        }
    }
    std::string adviceFor(const NEBSourceControlError& error) const override {
        return adviceOnKeptSubmodules(workingCopy(), error);
    }
};

constexpr Parameter revertParameters[] = {
    {files, "A file or a folder with all tracked files in it", Takes::path, Occurs::anyNumber},
    {"--commit", "Commit the opposite of this commit", Takes::revision, Occurs::optionally,
     "COMMIT"},
    {"--mainline", "Of a merge, revert the changes to this parent, from 1", Takes::text,
     Occurs::optionally, "NUMBER"},
};

CommandOutput runRevert(const CommandCall& call) {
    return call.arguments.has("--commit") ? runRevertOfCommit(call) : RevertTask(call).run();
}

}  // namespace

constinit const Command addCommand{
    .name = "add",
    .group = changeGroup,
    .summary = "Stage files for the next commit",
    .details =
        "Examples:\n"
        "  nebsc add src/main.c    stage a file\n"
        "  nebsc add .             stage all changes in the current folder and below\n"
        "  nebsc add --all         stage all changes in the working copy\n",
    .parameters = addParameters,
    .activity = "Adding",
    .run = runTask<AddTask>,
};

constinit const Command removeCommand{
    .name = "rm",
    .group = changeGroup,
    .summary = "Delete files from disk and from the next commit",
    .details =
        "Refuses files with uncommitted changes unless --force is given.\n"
        "\n"
        "Examples:\n"
        "  nebsc rm old.c            delete a file\n"
        "  nebsc rm --force old.c    delete it even if it has uncommitted changes\n",
    .parameters = removeParameters,
    .activity = "Deleting",
    .run = runTask<RemoveTask>,
};

constinit const Command revertCommand{
    .name = "revert",
    .group = changeGroup,
    .summary = "Discard changes of files, or revert a commit",
    .details =
        "Restores what was staged last, or the latest commit if nothing is staged:\n"
        "changes that are not staged are lost. Staged changes and files in conflict are\n"
        "left alone. 'nebsc discard' asks for --force first. With --commit, does what\n"
        "'git revert' does: commits the opposite of a commit, and stops at conflicts.\n"
        "\n"
        "Examples:\n"
        "  nebsc revert src/main.c    discard the changes of a file\n"
        "  nebsc revert .             discard the changes in the current folder and below\n"
        "  nebsc revert --commit HEAD~1    undo a commit by another one\n",
    .parameters = revertParameters,
    .activity = "Reverting",
    .run = runRevert,
};

}  // namespace neb::nebsc
