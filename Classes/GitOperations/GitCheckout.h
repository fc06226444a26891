// GitCheckout.h - request types 14 (checkout) and 7 (revert).
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitOperation.h"

namespace neb {

/// A checkout switches the working copy to the destination, a branch or revision, carrying local
/// changes over by a three-way merge. A revert throws away the changes of the files that are not
/// staged.
///
/// The result is one record with NEBSourceControlOperationContentKey, what git said on standard
/// error: a notice such as "Switched to branch 'topic'", as a rule nothing for a revert.
class GitCheckoutOperation : public GitOperation {
public:
    explicit GitCheckoutOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitCheckoutOperation"; }
    void parseData() override;
    /// A file that git left as it was is an error although git ends with status 0.
    [[nodiscard]] std::optional<NEBSourceControlError> errorFromErrorMessage(
        const std::optional<std::string>& message) override;

protected:
    /// Recognises a hook that fails after the checkout, whatever it prints, and a destination that
    /// is neither a revision nor a file, although git speaks of a path.
    [[nodiscard]] std::optional<NEBSourceControlError> diagnoseFailure(
        std::string_view text) const override;
};

}  // namespace neb
