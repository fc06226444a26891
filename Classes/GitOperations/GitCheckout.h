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
    /// A checkout of what git knows neither as a revision nor as a file is told as that, though git
    /// speaks of a path; a hook that fails after the checkout, whatever its words, as that; and a
    /// file that git left as it was is an error though git ends with 0.
    [[nodiscard]] std::optional<NEBSourceControlError> errorFromErrorMessage(
        const std::optional<std::string>& message) override;
};

}  // namespace neb
