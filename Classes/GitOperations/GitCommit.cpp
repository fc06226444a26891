#include "GitOperations/GitCommit.h"

#include <array>

#include "GitOperations/GitRevision.h"
#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlText.h"

namespace neb {

namespace {

std::string_view trimmed(std::string_view text, std::string_view characters) {
    const std::size_t first = text.find_first_not_of(characters);
    return first == std::string_view::npos
               ? std::string_view{}
               : text.substr(first, text.find_last_not_of(characters) + 1 - first);
}

/// The text between the first blank and the second; nothing without a blank.
std::optional<std::string_view> secondWord(std::string_view text) {
    const std::size_t blank = text.find(' ');
    if (blank == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view rest = text.substr(blank + 1);
    return rest.substr(0, rest.find(' '));
}

/// Whether a line of the text is one in which git itself says why it failed.
bool tellsCauseOfGitsOwn(std::string_view text) {
    constexpr std::array<std::string_view, 2> beginnings{"error: ", "fatal: "};
    while (!text.empty()) {
        for (const std::string_view beginning : beginnings) {
            if (text.starts_with(beginning)) {
                return true;
            }
        }
        const std::size_t end = text.find('\n');
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return false;
}

}  // namespace

GitCommitOperation::GitCommitOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    std::vector<std::string> arguments{"commit"};
    const NEBSourceControlRequest& asked = *this->request();
    if (asked.option(NEBSourceControlRequestOptionAllowEmptyCommit).boolValue()) {
        arguments.emplace_back("--allow-empty");
    }
    const NEBValue& message = asked.option(NEBSourceControlRequestOptionMessage);
    if (message.isPresent()) {
        arguments.insert(arguments.end(), {"-m", message.description(), "--"});
        appendFiles(arguments);
    }
    setArgumentsBehindDefaults(arguments);
}

void GitCommitOperation::parseData() {
    if (!data() || data()->empty()) {
        return;
    }
    const std::string text = *_nebsc_stringFromData(data());
    const auto word = secondWord(text);
    if (!word) {
        setResult(std::nullopt);
        return;
    }
    NEBDictionary record;
    record.set(NEBSourceControlOperationRevisionKey, gitAbbreviatedRevision(trimmed(*word, "[] ")));
    setResult({{std::move(record)}});
}

/// git itself prints nothing then, and ends with 1; what the hook printed, on whichever stream,
/// comes on standard error.
std::optional<NEBSourceControlError> GitCommitOperation::errorFromUnknownFailure(
    std::optional<NEBSourceControlError> error) {
    const std::string words = _nebsc_stringFromData(errorData()).value_or("");
    const bool isSilent = !data() || data()->empty();
    if (terminationStatus()->exitStatus() != 1 || !isSilent || tellsCauseOfGitsOwn(words)) {
        return error;
    }
    auto refusal = NEBSourceControlError::withDescription(
        NEBSourceControlGenericError,
        error ? "A hook of the repository refused the commit."
              : "A hook of the repository refused the commit and did not say why.");
    refusal.errorClass = NEBSourceControlLocalHookErrorClass;
    return refusal;
}

}  // namespace neb
