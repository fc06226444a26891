#include "GitOperations/GitCheckout.h"

#include "GitOperations/GitHookFailure.h"
#include "LOMFoundation/LOMFormat.h"
#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "NEBFoundation/NEBSourceControlText.h"

namespace neb {

GitCheckoutOperation::GitCheckoutOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    std::vector<std::string> arguments{"checkout"};
    const NEBSourceControlRequest& asked = *this->request();
    if (asked.type == NEBSourceControlRequestCheckout) {
        if (asked.destination.isPresent()) {
            arguments.push_back(asked.destination.description());
        }
        arguments.emplace_back("--merge");
    } else {
        arguments.insert(arguments.end(), {"-f", "--"});
        appendFiles(arguments);
    }
    setArguments(std::move(arguments));
}

void GitCheckoutOperation::parseData() {
    if (!data()) {
        return;
    }
    NEBDictionary record;
    if (auto notice = _nebsc_stringFromData(errorData())) {
        record.set(NEBSourceControlOperationContentKey, std::move(*notice));
    }
    setResult({{std::move(record)}});
}

std::optional<NEBSourceControlError> GitCheckoutOperation::errorFromErrorMessage(
    const std::optional<std::string>& message) {
    auto error = GitOperation::errorFromErrorMessage(message);
    if (!error || request()->type != NEBSourceControlRequestCheckout ||
        error->errorClass != NEBSourceControlPathUnknownErrorClass) {
        return error;
    }
    auto unknownRevision = NEBSourceControlError::withDescription(
        NEBSourceControlFileMissingAtRevisionError,
        formattedText("There is no branch or revision \"%@\".",
                      {request()->destination.description()}));
    unknownRevision.errorClass = NEBSourceControlRevisionUnknownErrorClass;
    return unknownRevision;
}

std::optional<NEBSourceControlError> GitCheckoutOperation::errorFromUnknownFailure(
    std::optional<NEBSourceControlError> error) {
    return gitErrorOfHook(*this, std::move(error),
                          "The checkout was made, but a hook of the repository failed after it.");
}

}  // namespace neb
