// HgController.h - the principal class: validates requests and makes their operations.
#pragma once

#include <NEBFoundation/NEBPlugIn.h>

#include <memory>
#include <optional>

/// Stateless; results depend on the request alone. Thread-safe.
class HgController final : public neb::NEBSourceControlProtocol {
public:
    [[nodiscard]] bool authenticationRequiredForRequest(
        const neb::NEBSourceControlRequest& request) const override;
    [[nodiscard]] bool validateRequest(
        const neb::NEBSourceControlRequest& request,
        std::optional<neb::NEBSourceControlError>* error) const override;
    [[nodiscard]] std::shared_ptr<neb::NEBSourceControlOperation> operationForRequest(
        const std::shared_ptr<neb::NEBSourceControlRequest>& request) const override;
};
