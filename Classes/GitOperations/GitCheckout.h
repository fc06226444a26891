// GitCheckout.h - request types 14 (checkout) and 7 (revert).
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitOperation.h"

namespace neb {

/// A checkout switches the working copy to the destination, a branch or revision, and merges local
/// changes into it. A revert discards the unstaged changes of the files.
///
/// The result is one record with NEBSourceControlOperationContentKey, the standard error of git: a
/// notice such as "Switched to branch 'topic'", usually empty for a revert.
class GitCheckoutOperation : public GitOperation {
public:
    explicit GitCheckoutOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitCheckoutOperation"; }
    void parseData() override;
    /// A file that git did not change is an error, although git exits with status 0.
    [[nodiscard]] std::optional<NEBSourceControlError> errorFromErrorMessage(
        const std::optional<std::string>& message) override;

protected:
    /// Recognises a hook that fails after the checkout, and a destination that is neither a
    /// revision nor a file.
    [[nodiscard]] std::optional<NEBSourceControlError> diagnoseFailure(
        std::string_view text) const override;
};

}  // namespace neb
