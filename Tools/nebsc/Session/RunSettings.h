// RunSettings.h - what a request says about the run of its operation, beside its values.
#pragma once

#include <memory>

#include "NEBFoundation/NEBSourceControlLimits.h"
#include "NEBFoundation/NEBSourceControlOperation.h"
#include "Session/Credentials/CredentialService.h"

namespace neb::nebsc {

struct RunSettings {
    /// An absent limit is no limit.
    NEBSourceControlLimits limits = {};
    /// Whether no user waits for the result; see NEBSourceControlOperation::isBackgroundWork().
    bool isBackgroundWork = false;
    /// Lets the children ask the user for passwords; null if that is not possible.
    std::shared_ptr<const CredentialService::Grant> credentials = nullptr;

    /// Prepares an operation that has not started.
    void applyTo(NEBSourceControlOperation& operation) const {
        operation.setLimits(limits);
        operation.setBackgroundWork(isBackgroundWork);
        if (credentials) {
            operation.setChildVariables(
                credentials->variables(CredentialService::Precedence::beforeUsersPrograms));
        }
    }
};

}  // namespace neb::nebsc
