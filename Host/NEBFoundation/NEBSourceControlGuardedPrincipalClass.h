// NEBSourceControlGuardedPrincipalClass.h - a wrapper of a principal class that catches exceptions.
#pragma once

#include <memory>
#include <optional>

#include "NEBFoundation/NEBSourceControlProtocol.h"

namespace neb {

/// Forwards each call to the principal class of a plug-in. An exception refuses the request,
/// becomes the error of the operation, or means that credentials may be needed. Thread-safe.
class NEBSourceControlGuardedPrincipalClass final : public NEBSourceControlProtocol {
public:
    /// Wraps the object that `make` returns; null if that returns null. If it throws, the wrapper
    /// refuses all requests.
    static std::unique_ptr<NEBSourceControlProtocol> create(NEBSourceControlProtocol* (*make)());

    [[nodiscard]] bool authenticationRequiredForRequest(
        const NEBSourceControlRequest& request) const override;
    [[nodiscard]] bool validateRequest(const NEBSourceControlRequest& request,
                                       std::optional<NEBSourceControlError>* error) const override;
    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> operationForRequest(
        const std::shared_ptr<NEBSourceControlRequest>& request) const override;

private:
    std::unique_ptr<NEBSourceControlProtocol> _principal;  // null if it could not be made
    std::optional<NEBSourceControlError> _failure;         // why it could not be made
};

}  // namespace neb
