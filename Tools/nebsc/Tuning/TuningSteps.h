// TuningSteps.h - the steps of a run of `nebsc tune`, and their output as text and JSON.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "Doctor/SpeedExamination.h"

namespace neb::nebsc {

enum class StepState {
    /// Would be applied.
    planned,
    applied,
    /// The user has said no.
    declined,
    failed,
    /// nebsc leaves the cause to git or to the user.
    left,
    undone,
    /// Would be undone.
    undoable,
};

/// The durations of a command before and after all steps; absent if they could not be measured.
struct Comparison {
    TimedCommand command;
    std::optional<Timing> before;
    std::optional<Timing> after;
};

struct TuningStep {
    std::string cause;
    StepState state;
    /// What was found: a clause; empty for a step that is undone.
    std::string text = {};
    /// Why the step failed or is left, or what it does not undo; may be empty.
    std::string message = {};
    /// The commands, for a shell.
    std::vector<std::string> commands = {};
    /// What the cause costs, and the estimate without it.
    std::vector<Measurement> measurements = {};
    /// Only for an applied step.
    std::vector<Comparison> comparisons = {};
};

/// Returns a step that removes a cause: planned, or left.
[[nodiscard]] TuningStep plannedStep(const SlowFinding& finding);

/// Returns the question whether to apply a planned step.
[[nodiscard]] std::string questionAbout(const TuningStep& step, std::string_view remedy);

/// Returns lines for a user.
[[nodiscard]] std::string textOf(const std::vector<TuningStep>& steps, bool isColoured);

/// Returns an array with an object for each step. Durations are in milliseconds.
[[nodiscard]] nlohmann::ordered_json jsonOf(const std::vector<TuningStep>& steps);

}  // namespace neb::nebsc
