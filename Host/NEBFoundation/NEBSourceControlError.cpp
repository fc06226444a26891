#include "NEBFoundation/NEBSourceControlError.h"

#include "LOMFoundation/LOMPasswordRedaction.h"

namespace neb {

namespace {

std::optional<std::string> stringOf(const NEBValue& value) {
    const auto string = value.string();
    return string ? std::optional(std::string(*string)) : std::nullopt;
}

}  // namespace

NEBSourceControlError NEBSourceControlError::withDescription(
    std::int64_t code, const std::string& description,
    const std::optional<std::string>& suggestion) {
    NEBSourceControlError error;
    error.code = code;
    error.userInfo.set(NEBLocalizedDescriptionKey, description);
    if (suggestion) {
        error.userInfo.set(NEBLocalizedRecoverySuggestionKey, *suggestion);
    }
    return error;
}

std::optional<std::string> NEBSourceControlError::localizedDescription() const {
    return stringOf(userInfo.value(NEBLocalizedDescriptionKey));
}

std::optional<std::string> NEBSourceControlError::localizedRecoverySuggestion() const {
    return stringOf(userInfo.value(NEBLocalizedRecoverySuggestionKey));
}

void NEBSourceControlError::hidePasswords() {
    if (text) {
        text = textWithoutPasswords(*text);
    }
    for (std::vector<std::string>* lines : {&hints, &remoteLines}) {
        for (std::string& line : *lines) {
            line = textWithoutPasswords(line);
        }
    }
    NEBDictionary shown;
    for (const NEBDictionary::Entry& entry : userInfo) {
        const auto string = stringOf(entry.value());
        shown.set(std::string(entry.key()),
                  string ? NEBValue(textWithoutPasswords(*string)) : entry.value());
    }
    userInfo = std::move(shown);
}

}  // namespace neb
