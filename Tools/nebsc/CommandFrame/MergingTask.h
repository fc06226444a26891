// MergingTask.h - the frame of the commands that merge by a strategy which never stops at lines
// that both sides have changed: it keeps those of one side. The frame finds out in which files that
// was.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "CommandFrame/BranchTask.h"
#include "Session/Outcome.h"

namespace neb::nebsc {

class MergingTask : public BranchTask {
public:
    using BranchTask::BranchTask;

protected:
    struct SideNames {
        std::string_view kept, leftOut;
    };

    /// Remembers the commits that are about to be merged, in validate(). Of two revisions of which
    /// one is no commit nothing is found out.
    void setSides(const std::string& kept, const std::string& leftOut);
    /// The names of the two sides in messages.
    [[nodiscard]] virtual SideNames sideNames() const {
        return {.kept = "the current branch's", .leftOut = "the other side's"};
    }
    /// A merge that stops at one file, or that a hook keeps from being committed, has settled the
    /// conflicts of the other files.
    [[nodiscard]] bool isCompletedAfter(const NEBSourceControlError& error) override;
    /// Finds the settled conflicts by repeating the merge in memory: neither a reference nor a file
    /// changes, and no merge driver or filter of the user runs. Its failure is no failure of the
    /// command.
    void finish(Outcome& outcome) override;
    /// Names the files of the settled conflicts, or says that they are not known.
    void noteSettledConflicts(const Outcome& outcome, CommandOutput& output) const;
    void concludeFailure(const Outcome& outcome, CommandOutput& output) override {
        noteSettledConflicts(outcome, output);
    }

private:
    /// Full commit ids.
    struct Sides {
        std::string kept, leftOut;
    };

    [[nodiscard]] std::optional<std::string> commitId(const std::string& revision);
    /// Whether one side holds the other, so that no lines can meet.
    [[nodiscard]] bool isOneSideContained();
    [[nodiscard]] SettledConflicts findSettledConflicts();
    /// Removes the files that the index does not hold in one version: they are in conflict still.
    void removeUnsettled(SettledConflicts& conflicts);
    /// The options of git that replace the user's programs for merges and filters; absent where
    /// they cannot all be replaced.
    [[nodiscard]] std::optional<std::vector<std::string>> optionsAgainstPrograms();

    std::optional<Sides> _sides;
    /// Whether an earlier merge was not finished when the sides were set.
    bool _wasMerging = false;
};

}  // namespace neb::nebsc
