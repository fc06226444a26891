// NEBSourceControlProtocol.h - the interface of the principal class of a plug-in.
//
//     const std::unique_ptr<NEBSourceControlProtocol> controller =
//         load.plugIn->makePrincipalClass();
//     std::optional<NEBSourceControlError> error;
//     if (!controller->validateRequest(*request, &error)) {
//         show(error->localizedDescription());
//     } else if (const auto operation = controller->operationForRequest(request)) {
//         queue.addOperation(operation);
//     }
#pragma once

#include <memory>
#include <optional>

#include "NEBFoundation/NEBSourceControlError.h"
#include "NEBFoundation/NEBSourceControlOperation.h"
#include "NEBFoundation/NEBSourceControlRequest.h"
#include "Platform/Export.h"

namespace neb {

/// Checks requests and makes their operations. Stateless: results depend on the request alone.
/// Thread-safe. No method throws: a failure within the plug-in refuses the request, or becomes the
/// error of the operation.
class NEB_EXPORT NEBSourceControlProtocol {
public:
    NEBSourceControlProtocol() = default;
    NEBSourceControlProtocol(const NEBSourceControlProtocol&) = delete;
    NEBSourceControlProtocol& operator=(const NEBSourceControlProtocol&) = delete;
    virtual ~NEBSourceControlProtocol() = default;

    /// Returns whether the request contacts a server that may ask for credentials.
    [[nodiscard]] virtual bool authenticationRequiredForRequest(
        const NEBSourceControlRequest& request) const = 0;
    /// Returns whether the request may run now. If not, stores the reason in `error`, unless that
    /// is null.
    [[nodiscard]] virtual bool validateRequest(
        const NEBSourceControlRequest& request,
        std::optional<NEBSourceControlError>* error) const = 0;
    /// Returns a new operation, not started, that carries out the request; null when its type has
    /// none. Broken preconditions are reported as failed assertions; they do not prevent the
    /// operation.
    [[nodiscard]] virtual std::shared_ptr<NEBSourceControlOperation> operationForRequest(
        const std::shared_ptr<NEBSourceControlRequest>& request) const = 0;
};

}  // namespace neb
