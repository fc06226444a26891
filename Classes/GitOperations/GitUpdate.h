// GitUpdate.h - request type 13.
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitComposite.h"

namespace neb {

/// Brings a working copy up to date with its remote by one of three operations: over the Subversion
/// bridge a rebase, of which only an error is passed on; with the option
/// NEBSourceControlRequestOptionPullByFastForwarding a pull, otherwise a merge, of which the result
/// and the error are this operation's. A source tree that is no working tree is reported.
class GitUpdateOperation : public GitComposite<NEBSourceControlOperation> {
public:
    using GitComposite::GitComposite;

    [[nodiscard]] std::string className() const override { return "GitUpdateOperation"; }
    void main() override;

private:
    template <typename Op>
    void runAndTakeOver();
};

}  // namespace neb
