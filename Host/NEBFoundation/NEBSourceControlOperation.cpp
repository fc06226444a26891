#include "NEBFoundation/NEBSourceControlOperation.h"

#include <exception>

#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlErrorClasses.h"

namespace neb {

namespace {

/// Where the calling thread reports while the object lives; as before without a sink.
class SinkHere {
public:
    explicit SinkHere(const LOMAssertionSink& sink) : _former(LOMAssertionSinkOfThread()) {
        if (sink) {
            LOMSetAssertionSinkOfThread(sink);
        }
    }
    SinkHere(const SinkHere&) = delete;
    SinkHere& operator=(const SinkHere&) = delete;
    ~SinkHere() { LOMSetAssertionSinkOfThread(_former); }

private:
    LOMAssertionSink _former;
};

}  // namespace

NEBSourceControlOperation::NEBSourceControlOperation(
    std::shared_ptr<NEBSourceControlRequest> request)
    : _request(std::move(request)), _reportSink(LOMAssertionSinkOfThread()) {}

void NEBSourceControlOperation::start() {
    const SinkHere sink(_reportSink);
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

void NEBSourceControlOperation::setError(std::optional<NEBSourceControlError> error) {
    _error = std::move(error);
    if (_error) {
        NEBSourceControlAddAdvice(*_error);
        _error->hidePasswords();
    }
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
