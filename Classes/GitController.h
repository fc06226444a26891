// GitController.h - the principal class of the plug-in: validates requests, makes operations.
#pragma once

#include "NEBFoundation/NEBSourceControlProtocol.h"

namespace neb {

/// Stateless; results depend on the request alone. Thread-safe.
class GitController final : public NEBSourceControlProtocol {
public:
    [[nodiscard]] bool authenticationRequiredForRequest(
        const NEBSourceControlRequest& request) const override;
    [[nodiscard]] bool validateRequest(const NEBSourceControlRequest& request,
                                       std::optional<NEBSourceControlError>* error) const override;
    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> operationForRequest(
        const std::shared_ptr<NEBSourceControlRequest>& request) const override;
};

}  // namespace neb
