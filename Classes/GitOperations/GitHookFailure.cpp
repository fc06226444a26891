#include "GitOperations/GitHookFailure.h"

#include <array>

#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlText.h"

namespace neb {

namespace {

/// From here on git says that it died, or was called wrongly.
constexpr int firstStatusOfGitsOwn = 128;

/// Whether a line of the text is one in which git itself says why it failed.
bool tellsCauseOfGitsOwn(std::string_view text) {
    constexpr std::array<std::string_view, 3> beginnings{"error: ", "fatal: ", "usage: "};
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

std::optional<NEBSourceControlError> gitErrorOfHook(const NEBSourceControlTaskOperation& operation,
                                                    std::optional<NEBSourceControlError> error,
                                                    std::string description) {
    const int status = operation.terminationStatus()->exitStatus().value_or(firstStatusOfGitsOwn);
    const bool hasOutput = operation.data() && !operation.data()->empty();
    const std::string words = _nebsc_stringFromData(operation.errorData()).value_or("");
    if (status >= firstStatusOfGitsOwn || hasOutput || tellsCauseOfGitsOwn(words)) {
        return error;
    }
    auto refusal = NEBSourceControlError::withDescription(NEBSourceControlGenericError,
                                                          std::move(description));
    refusal.errorClass = NEBSourceControlLocalHookErrorClass;
    return refusal;
}

}  // namespace neb
