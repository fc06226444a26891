// The commands "stage", "unstage" and "discard".

#include <unistd.h>

#include <algorithm>

#include "CommandFrame/CommandTask.h"
#include "CommandFrame/FileChoices.h"
#include "CommandFrame/FileStates.h"
#include "CommandFrame/RecordNames.h"
#include "Commands/Commands.h"
#include "Commands/HunkDialogue.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/Text.h"
#include "Terminal/IgnoredSignals.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view files = "FILE";
constexpr std::string_view all = "--all";
constexpr std::string_view force = "--force";
constexpr std::string_view byHunk = "--patch";
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

// ---- by hunk ----------------------------------------------------------------------------------

/// How the hunks that the user chooses are applied.
struct HunkUse {
    std::int32_t type;
    /// For the questions: "Stage".
    std::string_view verb;
    /// The command, for advice.
    std::string_view command;
    PatchUse use;
};

/// A command for files, everything, or the hunks that the user chooses.
class HunkTask : public IndexTask {
public:
    HunkTask(const CommandCall& call, const HunkUse& use) : IndexTask(call), _use(use) {}

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return newIndexRequest(_use.type);
    }
    RequestResult perform() override;
    void report(const Outcome& outcome, CommandOutput& output) override;

private:
    [[nodiscard]] bool isByHunk() const { return arguments().has(byHunk); }
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> makeChangesRequest() const;
    /// Runs a query about the files of the arguments. Its failure is why nothing is changed.
    ChildOutcome askAboutFiles(std::vector<std::string> query);
    void findConflicts();
    /// Returns what the user can choose from, and notes what is left out.
    [[nodiscard]] std::vector<FileChoices> choicesIn(const NEBSourceControlResult& records);
    /// Asks the user, and returns the patch of what is chosen; empty if nothing is to be done.
    [[nodiscard]] std::string askForPatch(std::vector<FileChoices>& files);

    const HunkUse& _use;
    bool _hasChoices = false;
    /// Why nothing was changed.
    std::optional<CommandOutput> _failure;
    /// Paths from the top of the working copy.
    std::vector<std::string> _binaryFiles, _conflicts;
};

std::optional<CommandOutput> HunkTask::validate() {
    if (!isByHunk()) {
        return IndexTask::validate();
    }
    for (const std::string_view option : {all, force}) {
        if (arguments().has(option)) {
            throw invalidArguments("option '" + std::string(byHunk) +
                                   "' cannot be combined with '" + std::string(option) + "'");
        }
    }
    return std::nullopt;
}

/// The usual number of context lines, so that git finds the place of each hunk whatever the
/// settings are.
std::shared_ptr<NEBSourceControlRequest> HunkTask::makeChangesRequest() const {
    constexpr std::int64_t usualContext = 3;
    auto request = newRequest(NEBSourceControlRequestChanges, paths(files));
    request->options.emplace();
    request->options->set(NEBSourceControlRequestOptionContextLines, usualContext);
    if (_use.use == PatchUse::reverse) {
        request->options->set(NEBSourceControlRequestOptionStaged, true);
    }
    return request;
}

/// Whether a record is of a submodule with the same commit on both sides: only its files differ.
bool isOnlyDirtySubmodule(const NEBDictionary& record) {
    const std::string_view id = record.text(NEBSourceControlOperationOldObjectIDKey);
    return !id.empty() && id == record.text(NEBSourceControlOperationNewObjectIDKey) &&
           record.text(NEBSourceControlOperationNewModeKey) == "160000";
}

ChildOutcome HunkTask::askAboutFiles(std::vector<std::string> query) {
    query.insert(query.end(), paths(files).begin(), paths(files).end());
    ChildOutcome outcome = git().run(std::move(query));
    if (!outcome.status.isSuccess()) {
        _failure = failureOfQuery(git(), outcome, paths(files));
    }
    return outcome;
}

void HunkTask::findConflicts() {
    const ChildOutcome unmerged =
        askAboutFiles({"diff", "--name-only", "--diff-filter=U", "-z", "--"});
    forEachField(unmerged.output.bytes(), '\0', [this](std::string_view path) {
        if (!path.empty()) {
            _conflicts.emplace_back(path);
        }
    });
}

std::vector<FileChoices> HunkTask::choicesIn(const NEBSourceControlResult& records) {
    std::vector<FileChoices> choices;
    for (const NEBDictionary& record : records) {
        const std::string path(bytesOfName(record, pathKeys));
        if (std::ranges::find(_conflicts, path) != _conflicts.end() ||
            isOnlyDirtySubmodule(record)) {
            continue;
        }
        if (record.value(NEBSourceControlOperationIsBinaryKey).isPresent()) {
            _binaryFiles.push_back(path);
        } else if (choices.empty() || !choices.back().addHalfOfTypeChange(record)) {
            choices.emplace_back(record);
        }
    }
    return choices;
}

std::string HunkTask::askForPatch(std::vector<FileChoices>& choices) {
    // The reader of the hunks may end.
    const IgnoredSignals ignored({SIGPIPE});
    HunkDialogue dialogue(git().interruption(), _use.verb, isJSON() ? STDERR_FILENO : STDOUT_FILENO,
                          isInColour());
    auto result = HunkDialogue::Result::answered;
    std::string patch;
    for (FileChoices& file : choices) {
        if (result == HunkDialogue::Result::answered) {
            result = dialogue.ask(file);
            patch += file.patch(_use.use);
        }
    }
    if (result == HunkDialogue::Result::failed) {
        _failure = refusal("the changes could not be shown; nothing was changed.", exitFailed);
    }
    return _failure || result == HunkDialogue::Result::interrupted ? "" : patch;
}

RequestResult HunkTask::perform() {
    if (!isByHunk()) {
        return IndexTask::perform();
    }
    RequestResult changes = performRequest(makeChangesRequest());
    if (changes.refusedValue || changes.outcome->error) {
        return changes;
    }
    findConflicts();
    endProgress();
    std::vector<FileChoices> choices =
        choicesIn(changes.outcome->result.value_or(NEBSourceControlResult()));
    _hasChoices = !choices.empty();
    const bool hasNothing = !_hasChoices && _binaryFiles.empty() && _conflicts.empty();
    if (hasNothing && !paths(files).empty()) {
        askAboutFiles({"ls-files", "--error-unmatch", "-z", "--"});
    }
    if (_failure) {
        return changes;
    }
    const std::string patch = askForPatch(choices);
    if (patch.empty()) {
        return changes;
    }
    auto request = newRequest(_use.type);
    request->options.emplace();
    request->options->set(NEBSourceControlRequestOptionPatch, NEBValue::ofBytes(Data(patch)));
    return performRequest(request);
}

void HunkTask::report(const Outcome& /*outcome*/, CommandOutput& output) {
    if (!isByHunk()) {
        return;
    }
    if (_failure) {
        addFailure(output, *_failure);
    } else if (!_hasChoices) {
        output.standardOutput = "No changes.\n";
    }
    for (const std::string& path : _conflicts) {
        output.standardError += inQuotes(shown(path)) + " is in conflict and was left out.\n";
    }
    for (const std::string& path : _binaryFiles) {
        output.standardError += inQuotes(shown(path)) + " is binary and was left out; 'nebsc " +
                                std::string(_use.command) + "' takes the whole file.\n";
    }
}

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
    {files, "A file or a folder with everything in it, deleted files included", Takes::path,
     Occurs::anyNumber},
    {all, "Stage all changes in the working copy"},
    byHunkParameter,
    {force, "Stage ignored files too"},
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
    {files, "A file or a folder with everything in it", Takes::path, Occurs::anyNumber},
    {all, "Unstage everything"},
    byHunkParameter,
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
    std::string adviceFor(const NEBSourceControlError& error) const override {
        return error.errorClass == NEBSourceControlConflictUnresolvedErrorClass
                   ? "'nebsc unstage --force' ends the conflict; after that, changes can be "
                     "discarded."
                   : "";
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
        "With --patch, shows each change of tracked files and asks whether to stage it:\n"
        "y (yes), n (no), a (this and all later ones in the file), d (none of them),\n"
        "s (split into smaller changes), q (quit) or ? (help). Everything is staged at\n"
        "the end, also after q; Ctrl-C changes nothing. Leaves out binary files.\n"
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
