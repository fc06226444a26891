#include "NEBFoundation/NEBSourceControlGuardedPrincipalClass.h"

#include "NEBFoundation/NEBSourceControlFailingOperation.h"
#include "NEBFoundation/NEBSourceControlUnexpectedError.h"

namespace neb {

std::unique_ptr<NEBSourceControlProtocol> NEBSourceControlGuardedPrincipalClass::create(
    NEBSourceControlProtocol* (*make)()) {
    auto guarded = std::make_unique<NEBSourceControlGuardedPrincipalClass>();
    try {
        guarded->_principal.reset(make());
        if (!guarded->_principal) {
            return nullptr;
        }
    } catch (...) {
        guarded->_failure = NEBSourceControlErrorOfCurrentException();
    }
    return guarded;
}

bool NEBSourceControlGuardedPrincipalClass::authenticationRequiredForRequest(
    const NEBSourceControlRequest& request) const {
    try {
        return !_principal || _principal->authenticationRequiredForRequest(request);
    } catch (...) {
        NEBSourceControlStoreCurrentException(nullptr);
        return true;
    }
}

bool NEBSourceControlGuardedPrincipalClass::validateRequest(
    const NEBSourceControlRequest& request, std::optional<NEBSourceControlError>* error) const {
    try {
        if (_principal) {
            return _principal->validateRequest(request, error);
        }
        if (error != nullptr) {
            *error = _failure;
        }
    } catch (...) {
        NEBSourceControlStoreCurrentException(error);
    }
    return false;
}

std::shared_ptr<NEBSourceControlOperation>
NEBSourceControlGuardedPrincipalClass::operationForRequest(
    const std::shared_ptr<NEBSourceControlRequest>& request) const {
    try {
        return _principal ? _principal->operationForRequest(request)
                          : NEBSourceControlFailingOperation(request, *_failure);
    } catch (...) {
        return NEBSourceControlOperationOfCurrentException(request);
    }
}

}  // namespace neb
