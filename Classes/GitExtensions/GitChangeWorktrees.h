// GitChangeWorktrees.h - request type 1017 (worktrees), the actions that change them; see
// git-worktree(1).
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "GitExtensions/GitChange.h"

namespace neb {

/// Does what NEBSourceControlRequestOptionAction says with the worktree at the path `destination`.
/// Requires git 2.36 or later.
///
/// - "add": makes a worktree with the branch NEBSourceControlRequestOptionBranch; with
///   NEBSourceControlRequestOptionCreateBranch that is a new one, which starts at the starting
///   revision. Without a branch, checks out the starting revision, and no branch. The default of
///   the starting revision is HEAD.
/// - "remove": deletes the worktree and its folder. Refuses to lose changed and untracked files, or
///   commits that no branch, tag or remote branch contains, unless the request has
///   NEBSourceControlRequestOptionForce. With NEBSourceControlRequestOptionDryRun, returns a record
///   per such file instead: NEBSourceControlOperationPathKey (from the top of the worktree) and
///   NEBSourceControlOperationStateKey; and one per commit: NEBSourceControlOperationObjectIDKey.
/// - "prune": forgets the worktrees whose folder is missing.
///
/// The result has the records, as GitWorktreesOperation makes them, of the new worktree, or of
/// those that were removed.
class GitChangeWorktreesOperation : public GitChangeComposite {
public:
    using GitChangeComposite::GitChangeComposite;

    [[nodiscard]] std::string className() const override { return "GitChangeWorktreesOperation"; }

protected:
    void perform() override;

private:
    void add();
    void remove();
    void prune();
    /// Returns the arguments of "add" before the path, "--", the path, and those after it. Absent
    /// if the composite does not go on.
    [[nodiscard]] std::optional<std::vector<std::string>> queriedAddition();
    /// Returns all records. Absent if the composite does not go on.
    [[nodiscard]] std::optional<NEBSourceControlResult> queriedWorktrees();
    /// Returns whether a worktree can be made at `destination`; otherwise the error is set. git
    /// finds that out after it has created the branch.
    [[nodiscard]] bool hasRoom();
    /// Returns the record of the worktree at `destination`; null without one.
    [[nodiscard]] const NEBDictionary* worktreeIn(const NEBSourceControlResult& worktrees) const;
    /// Returns the record of the worktree at `destination`. Absent if the composite does not go on:
    /// no worktree is there.
    [[nodiscard]] std::optional<NEBDictionary> queriedWorktree();
    /// Returns what a removal loses, as above. Absent if the composite does not go on.
    [[nodiscard]] std::optional<NEBSourceControlResult> queriedLosses(
        const NEBDictionary& worktree);
    /// Returns whether the worktree may be removed; otherwise the error is set.
    [[nodiscard]] bool losesNothing(const NEBDictionary& worktree);
    /// Returns the absolute path of `destination`, without symbolic links.
    [[nodiscard]] std::string absolutePath() const;
    /// Returns `destination` as git takes it.
    [[nodiscard]] std::string path() const;
};

}  // namespace neb
