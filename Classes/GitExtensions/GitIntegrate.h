// GitIntegrate.h - request type 1013 (integrate); see git-fetch(1), git-merge(1), git-rebase(1).
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "GitExtensions/GitMergeChange.h"

namespace neb {

/// Integrates a branch into the current one: the revision `destination`; or the branch
/// NEBSourceControlRequestOptionBranch of the remote NEBSourceControlRequestOptionRemoteName, which
/// is fetched first; or, without these, the upstream branch, which is fetched, too.
/// NEBSourceControlRequestOptionStrategy is "merge" (the default), "rebase" or "fast-forward". A
/// merge or rebase stops at conflicts, and chooses no side: GitFinishOperation continues or aborts
/// it. Local changes are never stashed. A branch without commits is fast-forwarded. No setting of
/// the user changes this; see also GitMergeComposite. The result is that of
/// GitChangeComposite::runStoppable(); both ids are equal if there was nothing new.
class GitIntegrateOperation : public GitMergeComposite {
public:
    using GitMergeComposite::GitMergeComposite;

    [[nodiscard]] std::string className() const override { return "GitIntegrateOperation"; }

protected:
    void perform() override;

private:
    /// Returns the command of a strategy, without the revision. Absent for an unknown one.
    [[nodiscard]] static std::optional<MergeCommand> commandOfStrategy(std::string_view name);
    /// Fetches what the request names, and returns the revision to integrate. Absent if the
    /// composite does not go on.
    [[nodiscard]] std::optional<std::string> fetchedRevision();
    /// Fetches, and returns the upstream branch. Absent if the composite does not go on.
    [[nodiscard]] std::optional<std::string> fetchedUpstream();
    /// Fails because no branch is checked out, as the query reports.
    void failWithoutBranch(const NEBSourceControlOperation& query);
    /// Fails because the upstream branch does not exist, even after a fetch.
    void failWithoutUpstream();
};

}  // namespace neb
