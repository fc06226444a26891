// GitController.h - the plug-in's principal class: whether a request may run, and what runs it.
#pragma once

#include "NEBFoundation/NEBSourceControlProtocol.h"

namespace neb {

/// Holds no state; every answer depends on the request alone.
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
