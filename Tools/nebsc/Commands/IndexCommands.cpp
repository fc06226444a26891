// The commands "stage", "unstage" and "discard".

#include "CommandFrame/FileStates.h"
#include "Commands/Commands.h"
#include "Commands/IndexTask.h"
#include "Commands/KeptSubmodules.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/PathString.h"
#include "Session/Paths.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

using Flag = IndexParameters;

constexpr Parameter byHunkParameter{"-p,--patch", "Show each change, and ask whether to take it"};

// ---- stage ------------------------------------------------------------------------------------

constexpr HunkUse staging{NEBSourceControlRequestStage, "Stage", "stage", PatchUse::forward};

class StageTask : public HunkTask {
public:
    explicit StageTask(const CommandCall& call) : HunkTask(call, staging) {}

protected:
    std::string adviceFor(const NEBSourceControlError& error) const override {
        return error.errorClass == NEBSourceControlPathIgnoredErrorClass
                   ? "'nebsc stage --force' stages ignored files."
                   : "";
    }
};

constexpr Parameter stageParameters[] = {
    {Flag::files, "A file or a folder with everything in it, deleted files included", Takes::path,
     Occurs::anyNumber},
    {Flag::all, "Stage all changes in the working copy"},
    byHunkParameter,
    {Flag::force, "Stage ignored files too"},
};

// ---- unstage ----------------------------------------------------------------------------------

constexpr HunkUse unstaging{NEBSourceControlRequestUnstage, "Unstage", "unstage",
                            PatchUse::reverse};

class UnstageTask : public HunkTask {
public:
    explicit UnstageTask(const CommandCall& call) : HunkTask(call, unstaging) {}

protected:
    std::string adviceFor(const NEBSourceControlError& error) const override {
        return error.errorClass == NEBSourceControlConflictUnresolvedErrorClass
                   ? "'nebsc unstage --force' unstages the files anyway."
                   : "";
    }
};

constexpr Parameter unstageParameters[] = {
    {Flag::files, "A file or a folder with everything in it", Takes::path, Occurs::anyNumber},
    {Flag::all, "Unstage everything"},
    byHunkParameter,
    {Flag::force, "Unstage files in conflict too; the versions of both sides are lost"},
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
    std::string adviceFor(const NEBSourceControlError& error) const override;
    void report(const Outcome& outcome, CommandOutput& output) override;
    /// Lists what was discarded although changes of submodules stay.
    void reportFailure(const Outcome& outcome, CommandOutput& output) override {
        output.standardOutput += discardedLines(outcome);
    }

private:
    /// Returns the files that were discarded, with a heading; empty without files.
    [[nodiscard]] std::string discardedLines(const Outcome& outcome) const;
    [[nodiscard]] std::string linesOf(const Outcome& outcome) const {
        return fileStateLines(workingCopy(), outcome.result.value_or(NEBSourceControlResult()),
                              NEBSourceControlOperationStateKey);
    }
    /// Names the untracked repositories among the files, which git never deletes.
    void noteSeparateRepositories(CommandOutput& output) const;
};

void DiscardTask::noteSeparateRepositories(CommandOutput& output) const {
    for (const std::string& path : paths(Flag::files)) {
        if (path != workingCopy().location &&
            isAnythingAt(pathByAppendingComponent(path, ".git")) && !git().isTracked(path)) {
            output.standardError += printable(inQuotes(pathAsSeen(workingCopy(), path))) +
                                    " is a separate git repository, which is not deleted.\n";
        }
    }
}

std::string DiscardTask::adviceFor(const NEBSourceControlError& error) const {
    if (error.errorClass == NEBSourceControlConflictUnresolvedErrorClass) {
        return "'nebsc unstage --force' ends the conflict; after that, changes can be discarded.";
    }
    return adviceOnKeptSubmodules(workingCopy(), error);
}

std::string DiscardTask::discardedLines(const Outcome& outcome) const {
    const std::string lines = linesOf(outcome);
    const bool isDryRun = arguments().has(dryRun);
    return lines.empty() ? "" : (isDryRun ? "Would discard:\n" : "Discarded:\n") + lines;
}

void DiscardTask::report(const Outcome& outcome, CommandOutput& output) {
    const std::string lines = linesOf(outcome);
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
        output.standardOutput = discardedLines(outcome);
    }
    if (!outcome.error) {
        noteSeparateRepositories(output);
    }
}

constexpr Parameter discardParameters[] = {
    {Flag::files, "A file or a folder with everything in it", Takes::path, Occurs::anyNumber},
    {Flag::all, "Discard the changes of the whole working copy"},
    {Flag::untracked, "Delete untracked files too, except ignored ones"},
    {Flag::force, "Throw changes away; without it, only deleted files come back"},
    {Flag::dryRun, "Change nothing, and list what would be discarded"},
};

}  // namespace

constinit const Command stageCommand{
    .name = "stage",
    .group = changeGroup,
    .summary = "Stage files for the next commit, as 'add' does, or ignored files",
    .details =
        "A file in conflict becomes resolved.\n"
        "\n"
        "With --patch, shows each change of tracked files and asks whether to stage it:\n"
        "y (yes), n (no), a (this and all later ones in the file), d (none of them),\n"
        "j and k (go to the next or previous undecided change), J and K (also to decided\n"
        "ones), g (go to a number), / (search), s (split into smaller changes), e (edit\n"
        "the change in your editor), q (quit) or ? (help). Everything is staged at the\n"
        "end, also after q; Ctrl-C changes nothing. Leaves out binary files.\n"
        "\n"
        "Examples:\n"
        "  nebsc stage src/main.c          stage a file\n"
        "  nebsc stage --all               stage all changes in the working copy\n"
        "  nebsc stage -p src              stage some of the changes in a folder\n"
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
        "given. --patch asks about each staged change, as 'nebsc stage --patch' does.\n"
        "\n"
        "Examples:\n"
        "  nebsc unstage src/main.c    unstage a file\n"
        "  nebsc unstage -p            unstage some of the changes\n"
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
        "conflict are refused. Changes of submodules stay: 'nebsc submodule update\n"
        "--force' discards them.\n"
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
