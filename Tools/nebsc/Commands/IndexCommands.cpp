// The commands "stage", "unstage" and "discard".

#include "CommandFrame/CommandTask.h"
#include "CommandFrame/FileStates.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view files = "FILE";
constexpr std::string_view all = "--all";
constexpr std::string_view force = "--force";
constexpr std::string_view dryRun = "--dry-run";
constexpr std::string_view untracked = "--untracked";

/// A command for either files or everything.
class IndexTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override {
        if (arguments().has(all) != paths(files).empty()) {
            throw invalidArguments("expected either FILE or --all");
        }
        return std::nullopt;
    }
    /// Returns a request with the files, and with those options that are given.
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> newIndexRequest(std::int32_t type) const;
};

std::shared_ptr<NEBSourceControlRequest> IndexTask::newIndexRequest(std::int32_t type) const {
    constexpr std::pair<std::string_view, NEBConstant> flags[] = {
        {force, NEBSourceControlRequestOptionForce},
        {dryRun, NEBSourceControlRequestOptionDryRun},
        {untracked, NEBSourceControlRequestOptionIncludeUntracked},
    };
    auto request = newRequest(type, paths(files));
    request->options.emplace();
    for (const auto& [flag, option] : flags) {
        if (arguments().has(flag)) {
            request->options->set(option, true);
        }
    }
    return request;
}

// ---- stage ------------------------------------------------------------------------------------

class StageTask : public IndexTask {
public:
    using IndexTask::IndexTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return newIndexRequest(NEBSourceControlRequestStage);
    }
    std::string adviceFor(const NEBSourceControlError& error) const override {
        return error.errorClass == NEBSourceControlPathIgnoredErrorClass
                   ? "'nebsc stage --force' stages ignored files."
                   : "";
    }
};

constexpr Parameter stageParameters[] = {
    {files, "A file or a folder with everything in it, deleted files included", Takes::path,
     Occurs::anyNumber},
    {all, "Stage all changes in the working copy"},
    {force, "Stage ignored files too"},
};

// ---- unstage ----------------------------------------------------------------------------------

class UnstageTask : public IndexTask {
public:
    using IndexTask::IndexTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return newIndexRequest(NEBSourceControlRequestUnstage);
    }
    std::string adviceFor(const NEBSourceControlError& error) const override {
        return error.errorClass == NEBSourceControlConflictUnresolvedErrorClass
                   ? "'nebsc unstage --force' unstages the files anyway."
                   : "";
    }
};

constexpr Parameter unstageParameters[] = {
    {files, "A file or a folder with everything in it", Takes::path, Occurs::anyNumber},
    {all, "Unstage everything"},
    {force, "Unstage files in conflict too; the versions of both sides are lost"},
};

// ---- discard ----------------------------------------------------------------------------------

class DiscardTask : public IndexTask {
public:
    using IndexTask::IndexTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return newIndexRequest(NEBSourceControlRequestDiscard);
    }
    bool isHandled(const NEBSourceControlError& error) const override {
        return error.errorClass == NEBSourceControlLocalChangesErrorClass;
    }
    void report(const Outcome& outcome, CommandOutput& output) override;
};

void DiscardTask::report(const Outcome& outcome, CommandOutput& output) {
    const std::string lines =
        fileStateLines(workingCopy(), outcome.result.value_or(NEBSourceControlResult()),
                       NEBSourceControlOperationStateKey);
    if (outcome.error) {
        CommandOutput refused =
            refusal("Nothing was discarded, because changes would be lost:", exitFailed,
                    NEBSourceControlLocalChangesErrorClass);
        refused.standardError += lines;
        addAdvice(refused, "'nebsc discard --force' throws them away.");
        addFailure(output, refused);
    } else if (lines.empty()) {
        output.standardOutput = "Nothing to discard.\n";
    } else {
        output.standardOutput = (arguments().has(dryRun) ? "Would discard:\n" : "Discarded:\n");
        output.standardOutput += lines;
    }
}

constexpr Parameter discardParameters[] = {
    {files, "A file or a folder with everything in it", Takes::path, Occurs::anyNumber},
    {all, "Discard the changes of the whole working copy"},
    {untracked, "Delete untracked files too, except ignored ones"},
    {force, "Throw changes away; without it, only deleted files come back"},
    {dryRun, "Change nothing, and list what would be discarded"},
};

}  // namespace

constinit const Command stageCommand{
    .name = "stage",
    .group = changeGroup,
    .summary = "Stage files for the next commit, as 'add' does, or ignored files",
    .details =
        "A file in conflict becomes resolved.\n"
        "\n"
        "Examples:\n"
        "  nebsc stage src/main.c          stage a file\n"
        "  nebsc stage --all               stage all changes in the working copy\n"
        "  nebsc stage --force debug.log   stage an ignored file\n",
    .parameters = stageParameters,
    .activity = "Staging",
    .run = runTask<StageTask>,
};

constinit const Command unstageCommand{
    .name = "unstage",
    .group = changeGroup,
    .summary = "Undo the staging of files",
    .details =
        "The files on disk stay as they are. Refuses files in conflict unless --force is\n"
        "given.\n"
        "\n"
        "Examples:\n"
        "  nebsc unstage src/main.c    unstage a file\n"
        "  nebsc unstage --all         unstage everything\n",
    .parameters = unstageParameters,
    .activity = "Unstaging",
    .run = runTask<UnstageTask>,
};

constinit const Command discardCommand{
    .name = "discard",
    .group = changeGroup,
    .summary = "Throw away changes that are not staged",
    .details =
        "Restores what was staged last, or the latest commit if nothing is staged.\n"
        "Unlike 'nebsc revert', refuses to lose changes unless --force is given. Files in\n"
        "conflict are refused.\n"
        "\n"
        "Examples:\n"
        "  nebsc discard --dry-run --all              list what would be lost\n"
        "  nebsc discard --force src/main.c           throw the changes of a file away\n"
        "  nebsc discard --force --untracked build    also delete new files in a folder\n",
    .parameters = discardParameters,
    .activity = "Discarding",
    .run = runTask<DiscardTask>,
};

}  // namespace neb::nebsc
