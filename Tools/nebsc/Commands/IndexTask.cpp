#include "Commands/IndexTask.h"

#include <unistd.h>

#include <algorithm>

#include "CommandFrame/RecordNames.h"
#include "Commands/HunkDialogue.h"
#include "Platform/Text.h"
#include "Terminal/IgnoredSignals.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

/// Whether a record is of a submodule with the same commit on both sides: only its files differ.
bool isOnlyDirtySubmodule(const NEBDictionary& record) {
    const std::string_view id = record.text(NEBSourceControlOperationOldObjectIDKey);
    return !id.empty() && id == record.text(NEBSourceControlOperationNewObjectIDKey) &&
           record.text(NEBSourceControlOperationNewModeKey) == "160000";
}

}  // namespace

std::optional<CommandOutput> IndexTask::validate() {
    if (arguments().has(all) != paths(files).empty()) {
        throw invalidArguments("expected either FILE or --all");
    }
    return std::nullopt;
}

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
            choices.emplace_back(record, _use.use);
        }
    }
    return choices;
}

std::string HunkTask::askForPatch(std::vector<FileChoices>& choices) {
    // The reader of the hunks may end.
    const IgnoredSignals ignored({SIGPIPE});
    HunkDialogue dialogue(git(), _use.verb, isJSON() ? STDERR_FILENO : STDOUT_FILENO, isInColour());
    auto result = HunkDialogue::Result::answered;
    std::string patch;
    for (FileChoices& file : choices) {
        if (result == HunkDialogue::Result::answered) {
            result = dialogue.ask(file);
            patch += file.patch();
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

}  // namespace neb::nebsc
