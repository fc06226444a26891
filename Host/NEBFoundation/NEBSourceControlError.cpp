#include "NEBFoundation/NEBSourceControlError.h"

namespace neb {

namespace {

std::optional<std::string> stringOf(const NEBValue& value) {
    const std::string* string = value.string();
    return string != nullptr ? std::optional(*string) : std::nullopt;
}

}  // namespace

NEBSourceControlError NEBSourceControlError::withDescription(
    std::int64_t code, std::string description, std::optional<std::string> suggestion) {
    NEBSourceControlError error;
    error.code = code;
    error.userInfo.set(NEBLocalizedDescriptionKey, std::move(description));
    if (suggestion) {
        error.userInfo.set(NEBLocalizedRecoverySuggestionKey, std::move(*suggestion));
    }
    return error;
}

std::optional<std::string> NEBSourceControlError::localizedDescription() const {
    return stringOf(userInfo.value(NEBLocalizedDescriptionKey));
}

std::optional<std::string> NEBSourceControlError::localizedRecoverySuggestion() const {
    return stringOf(userInfo.value(NEBLocalizedRecoverySuggestionKey));
}

}  // namespace neb
