// TuningRecord.h - what `nebsc tune` has changed in a repository, kept for `nebsc tune --undo`.
//
// The record is the file "nebsc-tune.json" in the common folder of the repository:
//
//     { "version": 1,
//       "steps": [ { "cause": "untracked-cache", "folder": "/home/me/project", "isComplete": true,
//                    "formerState": {},
//                    "settings": [ { "key": "core.untrackedCache", "formerValues": [] } ],
//                    "files": [] },
//                  { "cause": "commit-graph", "folder": "", "isComplete": true,
//                    "formerState": { "changedPaths": "yes", "former": "none" },
//                    "settings": [],
//                    "files": [ { "path": "objects/info/commit-graph", "existed": false,
//                                 "fingerprint": "1a2b…" } ] } ] }
//
// It is written before each step and again after it, each time completely or not at all. It does
// not exist if there is nothing to undo.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "Doctor/SlowCause.h"

namespace neb::nebsc {

struct SettingRecord {
    std::string key;
    /// Empty if the repository had no such setting.
    std::vector<std::string> formerValues;
};

struct FileRecord {
    /// Relative to the common folder.
    std::string path;
    bool existed = false;
    /// fingerprintOf() the created file; empty before the step is complete, or without a file.
    std::string fingerprint;
};

struct StepRecord {
    /// The name of the row in the table of causes.
    std::string cause;
    /// The top of the working copy whose index was changed; empty if the step changed no index.
    std::string folder;
    /// False from before the step until it has succeeded.
    bool isComplete = false;
    FormerState formerState;
    std::vector<SettingRecord> settings;
    std::vector<FileRecord> files;
};

struct TuningRecord {
    /// In the order in which they were taken.
    std::vector<StepRecord> steps;

    /// Returns the record of a step, or null.
    [[nodiscard]] StepRecord* find(std::string_view cause, std::string_view folder);
};

/// Returns the path of the record of a repository.
[[nodiscard]] std::string pathOfTuningRecord(const std::string& commonFolder);

/// Reads the record; an empty one if there is no file. Returns a sentence if the file cannot be
/// read or is damaged.
[[nodiscard]] std::variant<TuningRecord, std::string> readTuningRecord(const std::string& path);

/// Replaces the file, or removes it if the record is empty. Returns a sentence on failure, after
/// which the former file is unchanged.
[[nodiscard]] std::optional<std::string> writeTuningRecord(const std::string& path,
                                                           const TuningRecord& record);

/// Returns a text that identifies the contents of a file of git by its size and the hash at its
/// end; empty if there is no file.
[[nodiscard]] std::string fingerprintOf(const std::string& path);

}  // namespace neb::nebsc
