// GitDiscard.h - request type 1007 (discard); see git-restore(1), git-clean(1) and git-apply(1).
#pragma once

#include <string>
#include <vector>

#include "GitExtensions/GitPatchChange.h"

namespace neb {

/// Makes the files like the index; or, without files, everything below the location of the request;
/// or applies the patch NEBSourceControlRequestOptionPatch in reverse. With
/// NEBSourceControlRequestOptionIncludeUntracked, untracked files are deleted, but not ignored ones
/// and not those of other repositories.
///
/// If a change would be lost, the request is refused with an error of the class "local-changes",
/// unless NEBSourceControlRequestOptionForce is set. The file of a deletion comes back without it,
/// unless an untracked file is in place of its folder, or a folder in its own place.
///
/// A request for a file in conflict is refused with the class "conflict-unresolved".
///
/// Changes of submodules stay: other commits, and changes of their tracked files. Everything else
/// is discarded, and then an error of the class "path-in-submodule" has these submodules as its
/// files, also with NEBSourceControlRequestOptionDryRun.
///
/// The result has a record for each file that is, or with NEBSourceControlRequestOptionDryRun would
/// be, restored or deleted: NEBSourceControlOperationPathKey (from the working directory; in a
/// patch from the top), and NEBSourceControlOperationStateKey: "modified", "deleted" or
/// "untracked".
class GitDiscardOperation : public GitPatchComposite {
public:
    using GitPatchComposite::GitPatchComposite;

    [[nodiscard]] std::string className() const override { return "GitDiscardOperation"; }

protected:
    void perform() override;

private:
    /// The paths of the request that are in these states, and what blocks the deleted ones.
    struct Losses {
        std::vector<std::string> modified, deleted, untracked, obstacles, submodules;
    };

    /// Returns the paths that `git ls-files` lists with this option. Absent if the composite does
    /// not go on.
    [[nodiscard]] std::optional<std::vector<std::string>> queriedPaths(
        std::initializer_list<const char*> options);
    /// Returns whether no path is in conflict; otherwise the error is set. The entries are those of
    /// `git ls-files -t --stage`.
    [[nodiscard]] bool hasNoConflict(const std::vector<std::string>& entries);
    /// Returns the submodules among the entries that have changes. Absent if the composite does not
    /// go on.
    [[nodiscard]] std::optional<std::vector<std::string>> queriedSubmodules(
        const std::vector<std::string>& entries);
    /// Returns the modified or deleted paths, without the submodules. Absent if the composite does
    /// not go on.
    [[nodiscard]] std::optional<std::vector<std::string>> queriedModified(
        const std::vector<std::string>& submodules);
    /// Sets the error if changes of submodules stay.
    void reportKept(const std::vector<std::string>& submodules);
    [[nodiscard]] std::optional<Losses> queriedLosses();
    /// Sets the result. Returns whether the request allows to throw away `lost`, and to change
    /// anything; otherwise the error is set, unless it asks only what would be lost.
    [[nodiscard]] bool mayThrowAway(const std::vector<std::string>& lost);
    void addRecords(const std::vector<std::string>& paths, std::string_view state);
    void discardPatch();
    /// Returns whether the composite goes on.
    [[nodiscard]] bool restore(const Losses& losses);
    void deleteUntracked(const std::vector<std::string>& paths);
};

}  // namespace neb
