// GitFinish.h - request type 1020 (finish): continues, skips or aborts a merge, rebase,
// cherry-pick, revert or series of patches; see the manual pages of these commands and git-am(1).
#pragma once

#include <string>

#include "GitExtensions/GitChange.h"

namespace neb {

/// Does with the operation that is under way what NEBSourceControlRequestOptionAction says:
/// "continue" after the conflicts are resolved and staged, "skip" the current commit, or "abort",
/// which restores the state before it and throws away what was resolved. A merge cannot be skipped.
/// No editor opens: messages stay as they are. GitUnfinishedOperation says what is under way. The
/// result is that of GitChangeComposite::runStoppable().
class GitFinishOperation : public GitChangeComposite {
public:
    using GitChangeComposite::GitChangeComposite;

    [[nodiscard]] std::string className() const override { return "GitFinishOperation"; }

protected:
    void perform() override;
};

}  // namespace neb
