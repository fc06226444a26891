// GitPick.h - request type 1014 (pick); see git-cherry-pick(1), git-revert(1), git-reset(1).
#pragma once

#include <optional>
#include <string>

#include "GitExtensions/GitMergeChange.h"

namespace neb {

/// Does with the starting revision what NEBSourceControlRequestOptionAction says:
///
/// - "cherry-pick", the default, commits its changes again; "revert" commits the opposite. Of a
///   merge, these are the changes to the parent NEBSourceControlRequestOptionMainline. A conflict
///   stops them, whatever the settings of the user are, and GitFinishOperation continues or aborts.
/// - "reset" moves HEAD and its branch to it. NEBSourceControlRequestOptionResetMode says what
///   changes beside: "soft", "mixed" (the default) or "hard". A hard reset that would throw away
///   uncommitted changes is refused with the class "local-changes", one that would overwrite
///   untracked files with "untracked-in-the-way", and a mixed one that would end a conflict with
///   "conflict-unresolved", unless NEBSourceControlRequestOptionForce is set. With
///   NEBSourceControlRequestOptionDryRun, nothing changes; the result has a record for each file
///   with changes that a hard reset throws away, and each untracked file that it overwrites:
///   NEBSourceControlOperationPathKey (from the top) and NEBSourceControlOperationStateKey.
///
/// The result is otherwise that of GitChangeComposite::runStoppable().
class GitPickOperation : public GitMergeComposite {
public:
    using GitMergeComposite::GitMergeComposite;

    [[nodiscard]] std::string className() const override { return "GitPickOperation"; }

protected:
    void perform() override;

private:
    void applyCommit(const std::string& command, const std::string& commit);
    void reset(const std::string& commit);
    /// Adds a record for each untracked file that a hard reset to the commit overwrites. Returns
    /// whether the composite goes on.
    [[nodiscard]] bool addOverwrittenFiles(const std::string& commit,
                                           NEBSourceControlResult& changes);
    /// Return whether the reset throws nothing away; otherwise the error is set.
    [[nodiscard]] bool losesNoChanges(const NEBSourceControlResult& changes);
    [[nodiscard]] bool overwritesNoFiles(const std::string& commit);
    [[nodiscard]] bool endsNoConflict();
};

}  // namespace neb
