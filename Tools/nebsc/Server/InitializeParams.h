// InitializeParams.h - what a client says about itself with "initialize".
#pragma once

#include <optional>

#include "JSON/JSONText.h"
#include "NEBFoundation/NEBSourceControlTrust.h"

namespace neb::nebsc {

/// Returns whether the params have {"capabilities": {"credentials": true}}.
[[nodiscard]] bool declaresCredentials(const JSONNode& params);

/// Returns the value of the member "trust", by default NEBSourceControlTrust::trusted; absent if it
/// is not the name of a trust.
[[nodiscard]] std::optional<NEBSourceControlTrust> declaredTrust(const JSONNode& params);

}  // namespace neb::nebsc
