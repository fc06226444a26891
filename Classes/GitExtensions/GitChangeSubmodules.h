// GitChangeSubmodules.h - request type 1016 (submodules), the actions that change them; see init
// and update in git-submodule(1).
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "GitExtensions/GitChange.h"

namespace neb {

/// Does what NEBSourceControlRequestOptionAction says with the submodules below the files of the
/// request, which GitSubmodulesOperation can list; without files with all.
///
/// - "init": registers their addresses in the configuration of the repository.
/// - "update": fetches those that are initialized, and checks out the commits in the index.
/// Options:
///   NEBSourceControlRequestOptionInitialize, NEBSourceControlRequestOptionRecursive,
///   NEBSourceControlRequestOptionFollowBranch, and NEBSourceControlRequestOptionForce, which
///   throws away local changes in the submodules.
///
/// The result has the records of these submodules as GitSubmodulesOperation makes them. It is an
/// error if one that the files name could not be updated.
class GitChangeSubmodulesOperation : public GitChangeComposite {
public:
    using GitChangeComposite::GitChangeComposite;

    [[nodiscard]] std::string className() const override { return "GitChangeSubmodulesOperation"; }

protected:
    void perform() override;

private:
    /// Returns the records below the files, or all without files. Absent if the composite does not
    /// go on: a file has no submodule at or below it.
    [[nodiscard]] std::optional<NEBSourceControlResult> queriedSubmodules();
    /// Returns whether the settings say that git never updates the submodule.
    [[nodiscard]] bool isNeverUpdated(const NEBDictionary& submodule);
    /// Fails for submodules that the files name and that were left as they were.
    void checkUpdated(const NEBSourceControlResult& submodules);
};

}  // namespace neb
