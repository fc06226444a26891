// NEBSourceControlGuardedPrincipalClass.h - a plug-in's principal class that throws nothing.
#pragma once

#include <memory>
#include <optional>

#include "NEBFoundation/NEBSourceControlProtocol.h"

namespace neb {

/// Passes each call on to the plug-in's principal class. An exception refuses the request, is the
/// error of the operation, or answers that credentials may be needed.
class NEBSourceControlGuardedPrincipalClass final : public NEBSourceControlProtocol {
public:
    /// Calls `make`. Null where that returns null; where it throws, the object refuses all
    /// requests.
    static std::unique_ptr<NEBSourceControlProtocol> madeBy(NEBSourceControlProtocol* (*make)());

    [[nodiscard]] bool authenticationRequiredForRequest(
        const NEBSourceControlRequest& request) const override;
    [[nodiscard]] bool validateRequest(const NEBSourceControlRequest& request,
                                       std::optional<NEBSourceControlError>* error) const override;
    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> operationForRequest(
        const std::shared_ptr<NEBSourceControlRequest>& request) const override;

private:
    std::unique_ptr<NEBSourceControlProtocol> _principal;  // absent where it could not be made
    std::optional<NEBSourceControlError> _failure;         // why not
};

}  // namespace neb
