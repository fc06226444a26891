// RequestText.h - the JSON of a request, as RequestJSON.h reads it.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "NEBFoundation/NEBSourceControlRequest.h"

namespace neb::nebsc {

/// Returns the JSON of a request, without limits and background. Absent members are left out.
/// Thread-safe, like the functions below.
[[nodiscard]] nlohmann::ordered_json jsonOfRequest(const NEBSourceControlRequest& request);

/// Returns a string, or {"base64": "…"} for bytes that are not UTF-8.
[[nodiscard]] nlohmann::ordered_json jsonOfBytes(std::string_view bytes);

/// Returns the bytes of such JSON. Throws an exception of the JSON library for other JSON.
[[nodiscard]] std::string bytesOfJSON(const nlohmann::ordered_json& json);

}  // namespace neb::nebsc
