// IndexTask.h - what the commands that stage, unstage and discard share.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "CommandFrame/CommandTask.h"
#include "CommandFrame/FileChoices.h"

namespace neb::nebsc {

/// The parameters of these commands.
struct IndexParameters {
    static constexpr std::string_view files = "FILE";
    static constexpr std::string_view all = "--all";
    static constexpr std::string_view force = "--force";
    static constexpr std::string_view byHunk = "--patch";
    static constexpr std::string_view dryRun = "--dry-run";
    static constexpr std::string_view untracked = "--untracked";
};

/// A command for either files or everything.
class IndexTask : public CommandTask, protected IndexParameters {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override;
    /// Returns a request with the files, and with those options that are given.
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> newIndexRequest(std::int32_t type) const;
};

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

}  // namespace neb::nebsc
