// Trust.h - the trust in the repository of a request, and its name in JSON.
#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "NEBFoundation/NEBSourceControlRequest.h"

namespace neb::nebsc {

/// Returns the trust with the name, "trusted" or "inspect"; absent for any other text.
[[nodiscard]] inline std::optional<NEBSourceControlTrust> trustWithName(std::string_view name) {
    if (name == "trusted") {
        return NEBSourceControlTrust::trusted;
    }
    return name == "inspect" ? std::optional(NEBSourceControlTrust::inspect) : std::nullopt;
}

/// Lets the request only inspect its repository. A request without a source tree gets one without
/// a location, which means the same.
inline void inspectOnly(NEBSourceControlRequest& request) {
    if (!request.sourceTree) {
        request.sourceTree = std::make_shared<NEBSourceControlWorkingTree>();
    }
    request.sourceTree->trust = NEBSourceControlTrust::inspect;
}

}  // namespace neb::nebsc
