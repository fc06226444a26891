// CursorParams.h - the params of the methods "sourceControl/open", "next" and "close".
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "JSON/JSONText.h"

namespace neb::nebsc {

/// The most records of a page.
constexpr std::int64_t largestPage = 10000;

/// The members that a client sent; a method decides which it needs.
struct CursorParams {
    std::optional<nlohmann::ordered_json> progressToken;
    std::optional<JSONNode> request;
    std::optional<std::string> cursor;
    /// From 1 to largestPage.
    std::optional<std::int64_t> pageSize;
    /// One sentence that names the invalid member; empty if all are valid.
    std::string refusal;
};

/// Moves the members out of the params. Thread-safe.
[[nodiscard]] CursorParams takeCursorParams(JSONNode& params);

}  // namespace neb::nebsc
