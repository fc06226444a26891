// RequestSchema.h - requests, outcomes and records as a JSON Schema
// (json-schema.org/draft/2020-12), made from the tables of request types.
#pragma once

#include <nlohmann/json.hpp>

namespace neb::nebsc {

/// Returns the schema. Its "$defs" has "request", "outcome", and for each type N with an operation
/// "request-N" and "record-N". "x-effect" and "x-authentication" are of
/// NEBSourceControlRequestTypeDescription. Thread-safe.
[[nodiscard]] nlohmann::ordered_json requestSchema();

}  // namespace neb::nebsc
