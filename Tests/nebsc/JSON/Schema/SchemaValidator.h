// SchemaValidator.h - checks JSON against a schema with the keywords that nebsc uses.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace neb::test {

/// Returns why the value does not match the schema; empty if it does. `root` has the "$defs".
/// Returns a reason, too, for a keyword that it does not know.
[[nodiscard]] std::string schemaViolation(const nlohmann::ordered_json& root,
                                          const nlohmann::ordered_json& schema,
                                          const nlohmann::ordered_json& value,
                                          const std::string& path = "");

}  // namespace neb::test
