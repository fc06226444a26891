// GitMergeChange.h - the base of the operations that merge: they stop at every conflict.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "GitExtensions/GitChange.h"

namespace neb {

/// A composite that runs "merge", "rebase", "cherry-pick" or "revert". These settings of the user
/// can make git take one side of a conflict and report success, and are overridden then:
///
/// - `pull.twohead`, the strategy of all four commands, unless it is "ort" or "recursive";
/// - `branch.NAME.mergeOptions`, the options of "merge".
class GitMergeComposite : public GitChangeComposite {
public:
    using GitChangeComposite::GitChangeComposite;

protected:
    /// A command of git.
    struct MergeCommand {
        /// Options of git, in front of the name: "-c", "NAME=VALUE".
        std::vector<std::string> settings;
        std::string name;
        /// What follows the name.
        std::vector<std::string> arguments;
    };

    /// Runs the command without these settings; see runStoppable().
    void runMerge(const MergeCommand& command);

private:
    /// Returns the command without these settings. Absent if the composite does not go on.
    [[nodiscard]] std::optional<MergeCommand> withoutSides(MergeCommand command);
};

}  // namespace neb
