#include "GitController.h"

#include "GitDispatch.h"
#include "LOMFoundation/LOMFormat.h"
#include "NEBFoundation/NEBSourceControlFailingOperation.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "NEBFoundation/NEBSourceControlUnexpectedError.h"

namespace neb {

bool GitController::authenticationRequiredForRequest(const NEBSourceControlRequest& request) const {
    return NEBSourceControlRequestMayAuthenticate(request);
}

bool GitController::validateRequest(const NEBSourceControlRequest& request,
                                    std::optional<NEBSourceControlError>* error) const try {
    if (!authenticationRequiredForRequest(request)) {
        return true;
    }
    const auto isReachable = [](const std::shared_ptr<NEBSourceControlSourceTree>& tree) {
        return tree && tree->reachable;
    };
    if (isReachable(request.sourceTree) && isReachable(request.repositoryToAuthenticate)) {
        return true;
    }
    if (error != nullptr) {
        *error = NEBSourceControlError::withDescription(
            NEBSourceControlNotReachableError,
            formattedText("The operation could not be performed because the repository \"%@\" "
                          "could not be reached.",
                          {request.sourceTreeName()}));
    }
    return false;
} catch (...) {
    NEBSourceControlStoreCurrentException(error);
    return false;
}

std::shared_ptr<NEBSourceControlOperation> GitController::operationForRequest(
    const std::shared_ptr<NEBSourceControlRequest>& request) const try {
    if (!request) {
        return nullptr;
    }
    gitReportBrokenPreconditions(*request);
    return gitMakeOperation(request);
} catch (...) {
    return NEBSourceControlOperationOfCurrentException(request);
}

}  // namespace neb
