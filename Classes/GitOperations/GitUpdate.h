// GitUpdate.h - request type 13 (update).
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitComposite.h"

namespace neb {

/// Updates a working copy in one of three ways: over the Subversion bridge with a rebase, of which
/// only an error is passed on; with the option NEBSourceControlRequestOptionPullByFastForwarding
/// with a pull, otherwise with a merge, whose result and error become those of this operation. A
/// source tree that is not a working tree is reported.
class GitUpdateOperation : public GitComposite<NEBSourceControlOperation> {
public:
    using GitComposite::GitComposite;

    [[nodiscard]] std::string className() const override { return "GitUpdateOperation"; }
    void main() override;

private:
    template <typename Op>
    void delegateTo();
};

}  // namespace neb
