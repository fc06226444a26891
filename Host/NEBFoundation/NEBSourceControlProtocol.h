// NEBSourceControlProtocol.h - what a plug-in's principal class answers.
#pragma once

#include <memory>
#include <optional>

#include "NEBFoundation/NEBSourceControlError.h"
#include "NEBFoundation/NEBSourceControlOperation.h"
#include "NEBFoundation/NEBSourceControlRequest.h"
#include "Platform/Export.h"

namespace neb {

/// Every answer depends on the request alone; the calls may come from any thread. The request must
/// be there. No call throws: a failure of the plug-in's own refuses the request, or is the error of
/// the operation.
class NEB_EXPORT NEBSourceControlProtocol {
public:
    NEBSourceControlProtocol() = default;
    NEBSourceControlProtocol(const NEBSourceControlProtocol&) = delete;
    NEBSourceControlProtocol& operator=(const NEBSourceControlProtocol&) = delete;
    virtual ~NEBSourceControlProtocol() = default;

    /// Whether the request may need credentials.
    [[nodiscard]] virtual bool authenticationRequiredForRequest(
        const NEBSourceControlRequest& request) const = 0;
    /// Whether the request may run now. On refusal the reason is stored at `error`, unless that is
    /// null.
    [[nodiscard]] virtual bool validateRequest(
        const NEBSourceControlRequest& request,
        std::optional<NEBSourceControlError>* error) const = 0;
    /// A new, unstarted operation that carries the request out, or nothing when there is none for
    /// its type. Broken preconditions are reported as failed assertions and refuse nothing.
    [[nodiscard]] virtual std::shared_ptr<NEBSourceControlOperation> operationForRequest(
        const std::shared_ptr<NEBSourceControlRequest>& request) const = 0;
};

}  // namespace neb
