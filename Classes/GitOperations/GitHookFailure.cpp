#include "GitOperations/GitHookFailure.h"

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

namespace neb {

std::string_view gitLastLine(std::string_view text) {
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    if (last == std::string_view::npos) {
        return {};
    }
    const std::string_view lines = text.substr(0, last + 1);
    return lines.substr(lines.rfind('\n') + 1);
}

NEBSourceControlError gitErrorOfHook(const std::string& description, std::string_view stderrText) {
    auto refusal =
        NEBSourceControlError::withDescription(NEBSourceControlGenericError, description);
    refusal.errorClass = NEBSourceControlLocalHookRefusedErrorClass;
    if (!gitLastLine(stderrText).empty()) {
        refusal.text = stderrText;
    }
    return refusal;
}

}  // namespace neb
