// SlowCause.h - the table of what can make a repository slow: one row per cause, for `nebsc doctor`
// and `nebsc tune`.
#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace neb::nebsc {

class SpeedExamination;

/// A git command whose duration is measured.
struct TimedCommand {
    /// What a user calls the command: "git log of one file".
    std::string label;
    std::vector<std::string> arguments;
};

/// A git command whose duration shows the effect of a cause. It runs no program that the
/// configuration names, such as a filter.
struct Probe {
    TimedCommand command;
    /// The part of the duration that is expected to remain without the cause, as
    /// "scripts/benchmark tuning" measures it; a part of what exceeds the floor.
    double remainingPart = 1;
    /// A git command that does the rest of the work; by default, one that only starts git.
    std::vector<std::string> floor = {"version"};
};

/// What --undo has to know about the former state of the repository: names and values.
using FormerState = std::map<std::string, std::string>;

/// Returns a value of the former state; empty without one.
[[nodiscard]] std::string valueIn(const FormerState& formerState, const std::string& name);

/// A cause that applies to the repository.
struct Slowness {
    /// A clause: "there is no commit-graph".
    std::string text;
    std::vector<Probe> probes;
    /// What `nebsc tune` measures before and after; empty for the commands of the probes. These
    /// commands may run filters.
    std::vector<TimedCommand> comparisons = {};
    /// Why `nebsc tune` does not remove the cause, and what does: a sentence. Empty if it can.
    std::string obstacle = {};
    FormerState formerState = {};
};

/// Lists of arguments of git commands, in order.
using GitCalls = std::vector<std::vector<std::string>>;

struct GitSetting {
    std::string_view key, value;
};

struct SlowCause {
    /// The name in output, JSON and the record for --undo.
    std::string_view name;
    /// What `nebsc tune` does, in the imperative; empty if it does nothing about the cause.
    std::string_view remedy;
    /// Whether the cause concerns the index of a working copy.
    bool isInWorkingCopy = false;
    /// Returns how the cause applies to the repository; absent if it does not.
    std::optional<Slowness> (*detect)(SpeedExamination& speed) = nullptr;
    /// The commands that remove the cause.
    GitCalls (*calls)(const FormerState& formerState) = nullptr;
    /// The settings of the repository that are changed after the commands have succeeded.
    std::span<const GitSetting> settings = {};
    /// The files that the commands may create, relative to the common folder of the repository.
    /// --undo removes those that did not exist before. git can do without them.
    std::span<const std::string_view> files = {};
    /// The commands of --undo, which run after the settings are restored.
    GitCalls (*undoCalls)(const FormerState& formerState) = nullptr;
    /// What --undo does not undo: a clause. Empty if it undoes everything.
    std::string_view lasting = {};
};

/// Returns all causes, in the order in which they are examined and removed.
[[nodiscard]] std::span<const SlowCause> slowCauses();
/// Returns the row with the name, or null.
[[nodiscard]] const SlowCause* slowCauseNamed(std::string_view name);

// ---- the functions of the rows, in a source file for each subject

[[nodiscard]] std::optional<Slowness> detectMissingCommitGraph(SpeedExamination& speed);
[[nodiscard]] GitCalls callsForCommitGraph(const FormerState& formerState);
[[nodiscard]] GitCalls undoCallsForCommitGraph(const FormerState& formerState);

[[nodiscard]] std::optional<Slowness> detectLooseObjects(SpeedExamination& speed);
[[nodiscard]] std::optional<Slowness> detectManyPacks(SpeedExamination& speed);

[[nodiscard]] std::optional<Slowness> detectMissingUntrackedCache(SpeedExamination& speed);
[[nodiscard]] std::optional<Slowness> detectOldIndexVersion(SpeedExamination& speed);
[[nodiscard]] GitCalls undoCallsForIndexVersion(const FormerState& formerState);
[[nodiscard]] std::optional<Slowness> detectUnusedFileSystemMonitor(SpeedExamination& speed);

}  // namespace neb::nebsc
