// MergingTask.h - the frame of the commands that merge by a strategy which never stops at lines
// that both sides have changed: it keeps those of one side. The frame finds out in which files that
// was.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "BranchTask.h"
#include "Outcome.h"

namespace neb::nebsc {

class MergingTask : public BranchTask {
public:
    using BranchTask::BranchTask;

protected:
    /// What a person is told of the two sides.
    struct SideNames {
        std::string_view kept, leftOut;
    };

    /// Remembers the commits that are about to be merged, in look(). Of two revisions of which one
    /// is no commit nothing is found out.
    void setSides(const std::string& kept, const std::string& leftOut);
    /// Finds the settled conflicts by repeating the merge in memory: neither a reference nor a file
    /// changes, and no merge driver or filter of the user runs. Its failure is no failure of the
    /// command.
    void complete(Outcome& outcome) override;
    /// Names the files of the settled conflicts, or says that they are not known.
    void noteSettledConflicts(const Outcome& outcome, SideNames names, Reply& reply) const;

private:
    /// Full commit ids.
    struct Sides {
        std::string kept, leftOut;
    };

    [[nodiscard]] std::optional<std::string> commitId(const std::string& revision);
    /// Whether one side holds the other, so that no lines can meet.
    [[nodiscard]] bool isOneSideContained();
    [[nodiscard]] SettledConflicts findSettledConflicts();
    /// The options of git that replace the user's programs for merges and filters; absent where
    /// they cannot all be replaced.
    [[nodiscard]] std::optional<std::vector<std::string>> optionsAgainstPrograms();

    std::optional<Sides> _sides;
};

}  // namespace neb::nebsc
