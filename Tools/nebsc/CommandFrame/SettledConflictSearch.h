// SettledConflictSearch.h - the files in which a merge kept the lines of one side.
//
// The merge strategy of "merge" and "update" never stops at lines that both sides have changed: it
// keeps those of one side. git does not report in which files that was.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "CommandFrame/GitQueries.h"
#include "NEBFoundation/NEBSourceControlError.h"
#include "Session/Outcome.h"
#include "Terminal/CommandOutput.h"

namespace neb::nebsc {

/// What messages call the two sides of a merge.
struct SideNames {
    std::string_view kept, leftOut;
};

class SettledConflictSearch {
public:
    /// `git` must outlive the object.
    explicit SettledConflictSearch(const GitQueries& git) : _git(git) {}

    /// Notes the commits that are about to be merged, found with one git process. If one of the
    /// revisions is no commit, no search takes place.
    void setSides(const std::string& kept, const std::string& leftOut);
    /// Returns whether both revisions are commits.
    [[nodiscard]] bool hasSides() const { return _sides.has_value(); }
    /// Returns whether the kept side contains the other one, so that nothing is merged.
    [[nodiscard]] bool isMergedAlready() const {
        return _sides && _sides->contained == _sides->leftOut;
    }
    /// Forgets the sides: no search takes place.
    void forgetSides() { _sides.reset(); }
    /// Returns whether a merge that ended with the error has settled conflicts in other files: it
    /// stopped at a file, or a hook refused the commit.
    [[nodiscard]] bool hasMerged(const NEBSourceControlError& error) const;
    /// Searches by repeating the merge in memory, and notes the result in the outcome. Changes
    /// neither references nor files, and runs no merge driver or filter of the user. Its failure is
    /// no failure of the command.
    void run(Outcome& outcome) const;
    /// Adds the files, or says that they are not known.
    void report(const Outcome& outcome, const SideNames& names, CommandOutput& output) const;

private:
    /// Full commit ids.
    struct Sides {
        std::string kept, leftOut;
        /// The side that the other one contains; absent if the sides have diverged.
        std::optional<std::string> contained{};
        /// Whether an earlier merge was unfinished when the sides were set.
        bool wasMerging = false;
    };

    [[nodiscard]] static std::optional<Sides> sidesIn(const std::vector<std::string>& lines);
    [[nodiscard]] SettledConflicts search() const;
    /// Removes the files that the index holds in several versions: they are still in conflict.
    void removeUnsettled(SettledConflicts& conflicts) const;
    /// Returns git options that replace the user's programs for merges and filters; absent if they
    /// cannot all be replaced.
    [[nodiscard]] std::optional<std::vector<std::string>> optionsDisablingPrograms() const;

    const GitQueries& _git;
    std::optional<Sides> _sides;
};

}  // namespace neb::nebsc
