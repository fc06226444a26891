#include "Tuning/TuningSteps.h"

#include <unistd.h>

#include <algorithm>
#include <array>

#include "Terminal/LabelTable.h"
#include "Terminal/PrintableText.h"
#include "Terminal/ShellText.h"
#include "Terminal/TextWidth.h"

namespace neb::nebsc {

namespace {

using nlohmann::ordered_json;

constexpr std::array<LabelRow<StepState>, 7> stateLabels{{
    {StepState::planned, "planned", Colour::yellow},
    {StepState::applied, "applied", Colour::green},
    {StepState::declined, "declined", Colour::none},
    {StepState::failed, "failed", Colour::boldRed},
    {StepState::left, "left", Colour::none},
    {StepState::undone, "undone", Colour::green},
    {StepState::undoable, "undoable", Colour::yellow},
}};

std::string textOf(const std::optional<Timing>& timing) {
    return timing ? textOf(*timing) : "not measured";
}

/// Returns the lines of a step, without its name and state.
std::vector<std::string> linesOf(const TuningStep& step) {
    std::vector<std::string> lines;
    for (const Comparison& one : step.comparisons) {
        lines.push_back(one.command.label + ": " + textOf(one.before) + " before, " +
                        textOf(one.after) + " after");
    }
    if (lines.empty() && !step.text.empty()) {
        lines.push_back(step.text);
    }
    if (!step.message.empty()) {
        lines.push_back(step.message);
    }
    if (step.state == StepState::planned) {
        lines.insert(lines.end(), step.commands.begin(), step.commands.end());
    }
    return lines;
}

ordered_json millisecondsOf(const std::optional<Timing>& timing) {
    return timing ? ordered_json(timing->time.count()) : ordered_json();
}

ordered_json measurementsOf(const TuningStep& step) {
    auto array = ordered_json::array();
    for (const Measurement& one : step.measurements) {
        array.push_back({{"command", one.command.label},
                         {"milliseconds", one.now.time.count()},
                         {"isCut", one.now.isCut},
                         {"estimateWithout", one.without.count()}});
    }
    return array;
}

ordered_json comparisonsOf(const TuningStep& step) {
    auto array = ordered_json::array();
    for (const Comparison& one : step.comparisons) {
        array.push_back({{"command", one.command.label},
                         {"before", millisecondsOf(one.before)},
                         {"after", millisecondsOf(one.after)}});
    }
    return array;
}

}  // namespace

TuningStep plannedStep(const SlowFinding& finding) {
    const SlowCause& cause = *finding.cause;
    TuningStep step{
        .cause = std::string(cause.name),
        .state = finding.slowness.obstacle.empty() ? StepState::planned : StepState::left,
        .text = finding.slowness.text + ": " + textOf(finding.measurements),
        .message = finding.slowness.obstacle,
        .measurements = finding.measurements};
    if (step.state == StepState::left) {
        return step;
    }
    for (const std::vector<std::string>& call : cause.calls(finding.slowness.formerState)) {
        std::string command = "git";
        for (const std::string& argument : call) {
            command += " " + shellQuoted(argument);
        }
        step.commands.push_back(std::move(command));
    }
    for (const GitSetting& setting : cause.settings) {
        step.commands.push_back(
            std::string("git config ").append(setting.key).append(" ").append(setting.value));
    }
    return step;
}

std::string questionAbout(const TuningStep& step, std::string_view remedy) {
    std::string text = step.text + "\n";
    for (const std::string& command : step.commands) {
        text += "    " + command + "\n";
    }
    return text + "Do you want to " + std::string(remedy) + "?";
}

std::string textOf(const std::vector<TuningStep>& steps, bool isColoured) {
    constexpr std::size_t stateColumns = 10;
    std::size_t causeColumns = 0;
    for (const TuningStep& step : steps) {
        causeColumns = std::max(causeColumns, step.cause.size() + 2);
    }
    const std::size_t indent = stateColumns + causeColumns;
    std::string text;
    for (const TuningStep& step : steps) {
        std::string start =
            paddedLabel(labelOf(stateLabels, step.state), stateColumns, isColoured) + step.cause;
        std::size_t startColumns = stateColumns + step.cause.size();
        for (const std::string& line : linesOf(step)) {
            text += start + std::string(indent - startColumns, ' ') +
                    wrapped(STDOUT_FILENO, indent, printable(line)) + "\n";
            start.clear();
            startColumns = 0;
        }
        text += start.empty() ? "" : start + "\n";
    }
    return text;
}

ordered_json jsonOf(const std::vector<TuningStep>& steps) {
    const auto orNull = [](const std::string& text) {
        return text.empty() ? ordered_json() : ordered_json(text);
    };
    auto array = ordered_json::array();
    for (const TuningStep& step : steps) {
        array.push_back({{"cause", step.cause},
                         {"state", labelOf(stateLabels, step.state).text},
                         {"text", orNull(step.text)},
                         {"message", orNull(step.message)},
                         {"commands", step.commands},
                         {"measurements", measurementsOf(step)},
                         {"comparisons", comparisonsOf(step)}});
    }
    return array;
}

}  // namespace neb::nebsc
