#include "GitOperations/GitCheckout.h"

#include <algorithm>
#include <array>

#include "GitOperations/GitHookFailure.h"
#include "LOMFoundation/LOMFormat.h"
#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Platform/Text.h"

namespace neb {

namespace {

template <std::size_t Count>
bool hasLineThatBegins(std::string_view text,
                       const std::array<std::string_view, Count>& beginnings) {
    bool isThere = false;
    forEachPiece(text, '\n', [&](std::string_view line) {
        isThere = isThere ||
                  std::any_of(beginnings.begin(), beginnings.end(),
                              [line](std::string_view words) { return line.starts_with(words); });
    });
    return isThere;
}

/// git says one of these once it has switched; what fails then is the hook that runs after it.
bool isCheckoutMade(std::string_view text) {
    constexpr std::array<std::string_view, 6> notices{"Switched to branch '",
                                                      "Switched to a new branch '",
                                                      "Switched to and reset branch '",
                                                      "Note: switching to '",
                                                      "HEAD is now at ",
                                                      "Already on '"};
    return hasLineThatBegins(text, notices);
}

/// git ends with 0 although it has left a file as it was.
bool isSomethingLeftUndone(std::string_view text) {
    constexpr std::array<std::string_view, 4> signs{"error: unable to create file ",
                                                    "error: unable to unlink ",
                                                    "error: unable to read ", "warning: path '"};
    return hasLineThatBegins(text, signs);
}

}  // namespace

GitCheckoutOperation::GitCheckoutOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    setMayRunHooks(true);
    std::vector<std::string> arguments{"checkout"};
    const NEBSourceControlRequest& asked = *this->request();
    if (asked.type == NEBSourceControlRequestCheckout) {
        appendIfPresent(arguments, asked.destination);
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
        record.set(NEBSourceControlOperationContentKey, *notice);
    }
    setResult({{std::move(record)}});
}

std::optional<NEBSourceControlError> GitCheckoutOperation::errorFromErrorMessage(
    const std::optional<std::string>& message) {
    const std::string words = message.value_or("");
    if (terminationStatus() && terminationStatus()->isSuccess()) {
        return isSomethingLeftUndone(words)
                   ? std::optional(NEBSourceControlErrorFromText(words, *request()))
                   : std::nullopt;
    }
    if (isCheckoutMade(words)) {
        return gitErrorOfHook(
            "The checkout was made, but a hook of the repository failed after it.", words);
    }
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

}  // namespace neb
