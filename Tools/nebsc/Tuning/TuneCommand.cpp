#include <unistd.h>

#include <algorithm>

#include "Commands/Commands.h"
#include "Doctor/Checks.h"
#include "JSON/OutcomeJSON.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlLimits.h"
#include "Session/OperationRun.h"
#include "Session/Paths.h"
#include "Terminal/Colour.h"
#include "Terminal/ProgressIndicator.h"
#include "Tuning/Question.h"
#include "Tuning/Tuner.h"
#include "Tuning/TuningSteps.h"

namespace neb::nebsc {

namespace {

constexpr SpeedLimits limits{.whole = std::chrono::minutes(2),
                             .probe = std::chrono::seconds(20),
                             .repetition = std::chrono::seconds(1)};

/// One run of the command.
class TuneRun {
public:
    TuneRun(const CommandCall& call, const std::string& folder)
        : _call(call), _folder(folder), _examination(_interruption, call.session.trace(), folder) {}

    [[nodiscard]] CommandOutput run();

private:
    [[nodiscard]] std::optional<CommandOutput> findRepository();
    /// Plans, asks, applies and measures. Returns why nothing was changed, although it should.
    [[nodiscard]] std::optional<std::string> tune();
    void plan();
    void askUser();
    void apply(Tuner& tuner);
    /// Measures the commands that planned steps make faster.
    void measureBefore();
    /// Measures them again after all steps, because several steps affect the same commands.
    void measureAfter();
    [[nodiscard]] std::optional<std::string> undo();
    void undoSteps(Tuner& tuner);
    [[nodiscard]] CommandOutput outputFor(const std::optional<std::string>& failure) const;
    [[nodiscard]] std::string textWithoutSteps() const;

    [[nodiscard]] bool has(const char* option) const { return _call.arguments.has(option); }
    [[nodiscard]] bool hasStep(StepState state) const;
    /// Shows progress while the object exists.
    [[nodiscard]] ProgressIndicator progress(std::string_view activity) const {
        return {activity, !_call.session.trace().isOn()};
    }

    const CommandCall& _call;
    const std::string& _folder;
    Interruption _interruption{_call.timeLimit};
    Examination _examination;
    SpeedReport _report;
    /// Without --undo, one for each finding of the report.
    std::vector<TuningStep> _steps;
};

bool TuneRun::hasStep(StepState state) const {
    return std::any_of(_steps.begin(), _steps.end(),
                       [state](const TuningStep& step) { return step.state == state; });
}

CommandOutput TuneRun::run() {
    std::optional<CommandOutput> refused = findRepository();
    std::optional<std::string> failure;
    if (!refused) {
        failure = has("--undo") ? undo() : tune();
    }
    const std::optional<int> signalNumber = _interruption.end();
    if (const auto timeLimit = _interruption.exceededTimeLimit()) {
        failure = NEBSourceControlTimedOutError(*timeLimit).localizedDescription();
        refused.reset();
    }
    CommandOutput output = refused ? std::move(*refused) : outputFor(failure);
    noteInterruption(output, signalNumber);
    if (_interruption.hasOccurred() && hasStep(StepState::failed)) {
        output.standardError += diagnostic("'nebsc tune --undo' undoes the interrupted step");
    }
    return output;
}

std::optional<CommandOutput> TuneRun::findRepository() {
    checkRepository(_examination);
    if (_examination.repository) {
        return std::nullopt;
    }
    const Finding finding = _examination.takeFindings().back();
    CommandOutput refused = refusal(
        finding.text, exitFailed,
        finding.health == Health::note
            ? std::optional<std::string_view>(NEBSourceControlNotARepositoryErrorClass.text())
            : std::nullopt);
    if (_call.isJSON) {
        Outcome outcome;
        outcome.error = refused.error;
        refused.standardOutput = textOfOutcome(outcome) + "\n";
        refused.standardError.clear();
    }
    return refused;
}

// ---- tune -------------------------------------------------------------------------------------

void TuneRun::plan() {
    const ProgressIndicator indicator = progress("Measuring");
    _report = SpeedExamination(_examination, limits)
                  .report(has("--all") ? std::chrono::milliseconds(0) : leastGainOfTuning);
    for (const SlowFinding& finding : _report.findings) {
        _steps.push_back(plannedStep(finding));
    }
}

void TuneRun::askUser() {
    for (std::size_t i = 0; i < _steps.size(); ++i) {
        TuningStep& step = _steps[i];
        if (step.state == StepState::planned &&
            !ask(_interruption, questionAbout(step, _report.findings[i].cause->remedy))
                 .value_or(false)) {
            step.state = StepState::declined;
        }
    }
}

void TuneRun::apply(Tuner& tuner) {
    const ProgressIndicator indicator = progress("Tuning");
    for (std::size_t i = 0; i < _steps.size(); ++i) {
        TuningStep& step = _steps[i];
        if (step.state != StepState::planned || _interruption.hasOccurred()) {
            continue;
        }
        const SlowFinding& finding = _report.findings[i];
        const std::optional<std::string> failure = tuner.apply(*finding.cause, finding.slowness);
        step.state = failure ? StepState::failed : StepState::applied;
        step.message = failure.value_or("");
    }
}

void TuneRun::measureBefore() {
    const ProgressIndicator indicator = progress("Measuring");
    SpeedExamination speed(_examination, limits);
    for (std::size_t i = 0; i < _steps.size(); ++i) {
        if (_steps[i].state != StepState::planned) {
            continue;
        }
        const SlowFinding& finding = _report.findings[i];
        for (const TimedCommand& command : finding.slowness.comparisons) {
            _steps[i].comparisons.push_back({command, speed.timeOf(command.arguments), {}});
        }
        if (finding.slowness.comparisons.empty()) {
            for (const Measurement& measurement : finding.measurements) {
                _steps[i].comparisons.push_back({measurement.command, measurement.now, {}});
            }
        }
    }
}

void TuneRun::measureAfter() {
    const ProgressIndicator indicator = progress("Measuring");
    SpeedExamination speed(_examination, limits);
    for (TuningStep& step : _steps) {
        if (step.state != StepState::applied) {
            step.comparisons.clear();
        }
        for (Comparison& comparison : step.comparisons) {
            comparison.after = speed.timeOf(comparison.command.arguments);
        }
    }
}

std::optional<std::string> TuneRun::tune() {
    plan();
    if (has("--dry-run") || !hasStep(StepState::planned)) {
        return std::nullopt;
    }
    if (!has("--yes")) {
        if (!canAsk()) {
            return "nothing was changed, because there is no terminal to ask at; '--yes' applies "
                   "all planned steps, '--dry-run' only shows them";
        }
        askUser();
    }
    Tuner tuner(_interruption, _call.session.trace(), *_examination.repository, _folder);
    if (auto failure = tuner.open()) {
        return failure;
    }
    measureBefore();
    apply(tuner);
    measureAfter();
    return hasStep(StepState::failed) ? std::optional<std::string>("not every step succeeded")
                                      : std::nullopt;
}

// ---- undo -------------------------------------------------------------------------------------

void TuneRun::undoSteps(Tuner& tuner) {
    const ProgressIndicator indicator = progress("Restoring");
    const std::vector<StepRecord> latestFirst(tuner.steps().rbegin(), tuner.steps().rend());
    for (const StepRecord& record : latestFirst) {
        if (has("--dry-run")) {
            _steps.push_back({.cause = record.cause, .state = StepState::undoable});
            continue;
        }
        const UndoResult result = tuner.undo(record);
        TuningStep step{.cause = record.cause,
                        .state = result.failure ? StepState::failed : StepState::undone,
                        .message = result.failure.value_or("")};
        for (const std::string& note : result.notes) {
            step.message.append(step.message.empty() ? "" : "; ").append(note);
        }
        _steps.push_back(std::move(step));
    }
}

std::optional<std::string> TuneRun::undo() {
    Tuner tuner(_interruption, _call.session.trace(), *_examination.repository, _folder);
    if (auto failure = tuner.open()) {
        return failure;
    }
    undoSteps(tuner);
    return hasStep(StepState::failed) ? std::optional<std::string>("not every step was undone")
                                      : std::nullopt;
}

// ---- output -----------------------------------------------------------------------------------

std::string TuneRun::textWithoutSteps() const {
    if (has("--undo")) {
        return "There is nothing to undo.\n";
    }
    return _report.unchecked.empty() ? "There is nothing to tune.\n" : "";
}

CommandOutput TuneRun::outputFor(const std::optional<std::string>& failure) const {
    CommandOutput output;
    output.exitStatus = failure ? exitFailed : exitDone;
    if (_call.isJSON) {
        output.standardOutput = lineOfJSON(
            {{"steps", jsonOf(_steps)},
             {"unchecked", _report.unchecked},
             {"error", failure ? nlohmann::ordered_json(*failure) : nlohmann::ordered_json()}});
        return output;
    }
    output.standardOutput = _steps.empty() && !failure
                                ? textWithoutSteps()
                                : textOf(_steps, wantsColour(_call.colours, STDOUT_FILENO));
    for (const std::string_view name : _report.unchecked) {
        output.standardError += diagnostic("no time was left to measure " + std::string(name));
    }
    output.standardError += failure ? diagnostic(*failure) : "";
    return output;
}

CommandOutput run(const CommandCall& call) {
    const PathSearch folder = findCurrentFolder();
    return folder.path ? TuneRun(call, *folder.path).run() : refusal(folder.failure, exitFailed);
}

constexpr Parameter parameters[] = {
    {"--yes", "Apply all steps without asking"},
    {"--dry-run", "Only show the steps and their commands"},
    {"--all", "Also offer steps that save less than 20 ms"},
    {"--undo", "Undo the steps that were applied earlier"},
};

}  // namespace

constinit const Command tuneCommand{
    .name = "tune",
    .group = changeGroup,
    .summary = "Make git faster in the repository, and undo that",
    .details =
        "Measures what makes git slow in the repository, as nebsc doctor does: a missing\n"
        "commit-graph or one without changed paths, a missing untracked cache, an old\n"
        "version of the index, loose objects, and packs without a common index. Shows\n"
        "what it would change, asks for each step, and measures again. Leaves alone what\n"
        "git's own maintenance takes care of and what a setting forbids.\n"
        "\n"
        "--undo restores the former settings and removes the files that were created. The\n"
        "file nebsc-tune.json of the repository lists the changes until then.\n"
        "\n"
        "Examples:\n"
        "  nebsc tune             ask for each step; without a terminal, change nothing\n"
        "  nebsc tune --dry-run   only show what would be changed\n"
        "  nebsc tune --yes       apply all steps\n"
        "  nebsc tune --undo      restore the former state\n",
    .parameters = parameters,
    .activity = "Measuring",
    .needsPlugIn = false,
    .run = run,
};

}  // namespace neb::nebsc
