#include "NEBFoundation/NEBSourceControlOperation.h"

#include <exception>

#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"

namespace neb {

NEBSourceControlOperation::NEBSourceControlOperation(
    std::shared_ptr<NEBSourceControlRequest> request)
    : _request(std::move(request)) {}

void NEBSourceControlOperation::start() {
    try {
        if (isCancelled()) {
            setError(NEBSourceControlCancelledError());
        } else {
            main();
        }
    } catch (const std::exception& exception) {
        auto error = NEBSourceControlError::withDescription(
            NEBSourceControlGenericError,
            std::string("The operation could not be completed: ") + exception.what() + ".");
        error.errorClass = NEBSourceControlUnknownErrorClass;
        setError(std::move(error));
    }
    setFinished();
}

std::string NEBSourceControlOperation::descriptionForAssertionMessage() const {
    return "<" + className() + ">";
}

NEBSourceControlError NEBSourceControlCancelledError() {
    auto error = NEBSourceControlError::withDescription(NEBSourceControlGenericError,
                                                        "The operation was cancelled.");
    error.errorClass = NEBSourceControlCancelledErrorClass;
    return error;
}

}  // namespace neb
