// WatchParams.h - the params of the methods "sourceControl/watch" and "sourceControl/unwatch".
#pragma once

#include <string>

#include "JSON/JSONText.h"

namespace neb::nebsc {

struct WatchParams {
    /// As the client wrote it.
    std::string location{};
    /// The absolute path that the location names.
    std::string path{};
    bool withWorkingTree = false;
    /// One sentence that names the invalid member; empty if all are valid.
    std::string refusal{};
};

/// Reads {"sourceTree": {"location": "/path"}, "workingTree": true}. Thread-safe.
[[nodiscard]] WatchParams watchParamsFromJSON(const JSONNode& params);

struct UnwatchParams {
    std::string watch{};
    /// As above.
    std::string refusal{};
};

/// Reads {"watch": "1"}. Thread-safe.
[[nodiscard]] UnwatchParams unwatchParamsFromJSON(const JSONNode& params);

}  // namespace neb::nebsc
