// Tuner.h - changes a repository as a row of the table of slow causes says, and undoes that.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Doctor/Examination.h"
#include "Platform/FileDescriptor.h"
#include "Tuning/TuningRecord.h"

namespace neb::nebsc {

/// What undoing a step has achieved.
struct UndoResult {
    /// Why the step is not undone, or not completely; absent on success.
    std::optional<std::string> failure;
    /// What stays, and why; clauses.
    std::vector<std::string> notes;
};

/// Changes one repository. Only one process at a time can use a Tuner for it. Not thread-safe.
class Tuner {
public:
    /// All must outlive the object. git runs in the folder, which must be in the repository.
    Tuner(Interruption& interruption, const Trace& trace, const RepositoryLayout& repository,
          const std::string& folder)
        : _interruption(interruption), _trace(trace), _repository(repository), _folder(folder) {}

    /// Locks the repository against other processes and reads its record. Returns a sentence on
    /// failure. Must succeed before any other function is called.
    [[nodiscard]] std::optional<std::string> open();

    /// Returns the steps that can be undone.
    [[nodiscard]] const std::vector<StepRecord>& steps() const { return _record.steps; }

    /// Removes a cause that was found. Returns a clause on failure, after which the repository is
    /// as before, unless an interruption ended the step: then only undo() restores it.
    [[nodiscard]] std::optional<std::string> apply(const SlowCause& cause,
                                                   const Slowness& slowness);
    /// Restores what a step has changed. After a failure, the step stays recorded.
    [[nodiscard]] UndoResult undo(const StepRecord& step);

private:
    /// Returns the record of a step that was not taken before; absent if git cannot read a setting.
    [[nodiscard]] std::optional<StepRecord> newRecord(const SlowCause& cause,
                                                      const Slowness& slowness,
                                                      const std::string& folder);
    [[nodiscard]] std::optional<std::string> change(const SlowCause& cause,
                                                    const FormerState& formerState);
    [[nodiscard]] std::optional<std::string> restore(const SlowCause& cause, const StepRecord& step,
                                                     UndoResult& result);
    [[nodiscard]] std::optional<std::string> restoreSetting(const GitSetting& setting,
                                                            const SettingRecord& former,
                                                            UndoResult& result);
    /// Removes what the step has created. Returns whether all files are as the step has left them.
    bool removeFiles(const SlowCause& cause, const StepRecord& step, UndoResult& result) const;
    /// Returns the values of a setting of the repository, empty without one; absent if git cannot
    /// read it.
    [[nodiscard]] std::optional<std::vector<std::string>> valuesOf(const std::string& key);
    /// Runs git and returns why it failed; absent on success.
    [[nodiscard]] std::optional<std::string> run(std::vector<std::string> arguments,
                                                 const std::string& folder);
    [[nodiscard]] ChildOutcome outcomeOf(std::vector<std::string> arguments,
                                         const std::string& folder);
    [[nodiscard]] std::optional<std::string> save() const;

    Interruption& _interruption;
    const Trace& _trace;
    const RepositoryLayout& _repository;
    const std::string& _folder;
    FileDescriptor _lock;
    TuningRecord _record;
};

}  // namespace neb::nebsc
