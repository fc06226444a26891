#include "GitOperations/GitCheckout.h"

#include <algorithm>
#include <array>

#include "GitOperations/GitErrorTable.h"
#include "GitOperations/GitHookFailure.h"
#include "LOMFoundation/LOMFormat.h"
#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Platform/Text.h"

namespace neb {

namespace {

/// Returns the position of the first line that begins with one of these; npos if no line does.
template <std::size_t Count>
std::size_t findLineWithPrefix(std::string_view text,
                               const std::array<std::string_view, Count>& beginnings) {
    std::size_t position = std::string_view::npos;
    forEachField(text, '\n', [&](std::string_view line) {
        const bool begins =
            std::any_of(beginnings.begin(), beginnings.end(),
                        [line](std::string_view prefix) { return line.starts_with(prefix); });
        if (begins && position == std::string_view::npos) {
            position = static_cast<std::size_t>(line.data() - text.data());
        }
    });
    return position;
}

/// Returns the text before the notice that git prints after it has switched, which precedes the
/// output of the hook; the whole text if there is no notice.
std::string_view textBeforeNotice(std::string_view text) {
    constexpr std::array<std::string_view, 6> notices{"Switched to branch '",
                                                      "Switched to a new branch '",
                                                      "Switched to and reset branch '",
                                                      "Note: switching to '",
                                                      "HEAD is now at ",
                                                      "Already on '"};
    return text.substr(0, findLineWithPrefix(text, notices));
}

/// git exits with status 0 although it did not change a file.
bool reportsIncompleteCheckout(std::string_view text) {
    constexpr std::array<std::string_view, 4> signs{"error: unable to create file ",
                                                    "error: unable to unlink ",
                                                    "error: unable to read ", "warning: path '"};
    return findLineWithPrefix(text, signs) != std::string_view::npos;
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
    const bool isSuccess = terminationStatus() && terminationStatus()->isSuccess();
    if (!isSuccess || !message) {
        return GitOperation::errorFromErrorMessage(message);
    }
    const std::string_view text = textBeforeNotice(*message);
    if (!reportsIncompleteCheckout(text)) {
        return std::nullopt;
    }
    GitErrorTranslation translation = gitErrorTableLookUp(text, *request());
    return translation.isKnown ? translation.error
                               : NEBSourceControlErrorFromText(*message, *request());
}

std::optional<NEBSourceControlError> GitCheckoutOperation::diagnoseFailure(
    std::string_view text) const {
    if (textBeforeNotice(text).size() < text.size()) {
        return gitErrorOfHook(
            "The checkout was made, but a hook of the repository failed after it.", text);
    }
    if (request()->type != NEBSourceControlRequestCheckout ||
        NEBSourceControlErrorClassOfText(text) != NEBSourceControlPathUnknownErrorClass) {
        return std::nullopt;
    }
    auto unknownRevision = NEBSourceControlError::withDescription(
        NEBSourceControlFileMissingAtRevisionError,
        formattedText("There is no branch or revision \"%@\".",
                      {request()->destination.description()}));
    unknownRevision.errorClass = NEBSourceControlRevisionUnknownErrorClass;
    return unknownRevision;
}

}  // namespace neb
