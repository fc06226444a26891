// GitStage.h - request types 1005 (stage) and 1006 (unstage); see git-add(1), git-restore(1) and
// git-apply(1).
#pragma once

#include <string>

#include "GitExtensions/GitPatchChange.h"

namespace neb {

/// Stages the files, deleted ones as deletions; or the patch
/// NEBSourceControlRequestOptionPatch, so that parts of a file can be staged; or, without both, all
/// changes of the working copy. With NEBSourceControlRequestOptionForce also ignored files. No
/// result.
class GitStageOperation : public GitPatchComposite {
public:
    using GitPatchComposite::GitPatchComposite;

    [[nodiscard]] std::string className() const override { return "GitStageOperation"; }

protected:
    void perform() override;
};

/// Makes the index like HEAD for the files; or for the patch, which is applied in reverse; or,
/// without both, for everything. The files of the working copy stay as they are. Before the first
/// commit, the index becomes empty for them. A path in conflict is refused, because its versions
/// would be lost, unless NEBSourceControlRequestOptionForce is set. No result.
class GitUnstageOperation : public GitPatchComposite {
public:
    using GitPatchComposite::GitPatchComposite;

    [[nodiscard]] std::string className() const override { return "GitUnstageOperation"; }

protected:
    void perform() override;

private:
    /// Returns whether no path in conflict would lose its versions; otherwise the error is set.
    [[nodiscard]] bool keepsConflicts();
};

}  // namespace neb
