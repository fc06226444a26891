#include "nebsc/JSON/Schema/SchemaValidator.h"

#include <algorithm>
#include <functional>
#include <map>

namespace neb::test {

namespace {

using JSON = nlohmann::ordered_json;

/// A check of a keyword: root, keyword's value, the schema around it, value, path.
using Check = std::function<std::string(const JSON&, const JSON&, const JSON&, const JSON&,
                                        const std::string&)>;

bool isOfType(const JSON& value, const std::string& type) {
    return (type == "null" && value.is_null()) || (type == "boolean" && value.is_boolean()) ||
           (type == "integer" && value.is_number_integer()) ||
           (type == "number" && value.is_number()) || (type == "string" && value.is_string()) ||
           (type == "array" && value.is_array()) || (type == "object" && value.is_object());
}

std::string failure(const std::string& path, const std::string& reason) {
    return (path.empty() ? "the value" : path) + " " + reason;
}

std::string checkType(const JSON& /*root*/, const JSON& types, const JSON& /*schema*/,
                      const JSON& value, const std::string& path) {
    const JSON all = types.is_array() ? types : JSON::array({types});
    const bool isValid = std::any_of(all.begin(), all.end(), [&value](const JSON& type) {
        return isOfType(value, type.get<std::string>());
    });
    return isValid ? "" : failure(path, "is not of the type " + types.dump());
}

std::string checkProperties(const JSON& root, const JSON& properties, const JSON& /*schema*/,
                            const JSON& value, const std::string& path) {
    for (const auto& [name, schema] : properties.items()) {
        if (value.is_object() && value.contains(name)) {
            const auto violation =
                schemaViolation(root, schema, value[name], path.empty() ? name : path + "." + name);
            if (!violation.empty()) {
                return violation;
            }
        }
    }
    return {};
}

std::string checkOtherProperties(const JSON& root, const JSON& others, const JSON& schema,
                                 const JSON& value, const std::string& path) {
    if (!value.is_object()) {
        return {};
    }
    for (const auto& [name, member] : value.items()) {
        if (schema.contains("properties") && schema["properties"].contains(name)) {
            continue;
        }
        if (others.is_boolean()) {
            return failure(path, "has the unknown member " + name);
        }
        if (auto violation = schemaViolation(root, others, member, name); !violation.empty()) {
            return violation;
        }
    }
    return {};
}

std::string checkRequired(const JSON& /*root*/, const JSON& names, const JSON& /*schema*/,
                          const JSON& value, const std::string& path) {
    for (const JSON& name : names) {
        if (value.is_object() && !value.contains(name.get<std::string>())) {
            return failure(path, "lacks the member " + name.dump());
        }
    }
    return {};
}

std::string checkItems(const JSON& root, const JSON& items, const JSON& /*schema*/,
                       const JSON& value, const std::string& path) {
    for (std::size_t i = 0; value.is_array() && i < value.size(); ++i) {
        const auto violation =
            schemaViolation(root, items, value[i], path + "[" + std::to_string(i) + "]");
        if (!violation.empty()) {
            return violation;
        }
    }
    return {};
}

std::string checkAnyOf(const JSON& root, const JSON& schemas, const JSON& /*schema*/,
                       const JSON& value, const std::string& path) {
    std::string violations;
    for (const JSON& schema : schemas) {
        const std::string violation = schemaViolation(root, schema, value, path);
        if (violation.empty()) {
            return {};
        }
        violations += (violations.empty() ? "" : "; ") + violation;
    }
    return violations;
}

std::string checkAllOf(const JSON& root, const JSON& schemas, const JSON& /*schema*/,
                       const JSON& value, const std::string& path) {
    for (const JSON& schema : schemas) {
        if (auto violation = schemaViolation(root, schema, value, path); !violation.empty()) {
            return violation;
        }
    }
    return {};
}

std::string checkReference(const JSON& root, const JSON& reference, const JSON& /*schema*/,
                           const JSON& value, const std::string& path) {
    const std::string target = reference.get<std::string>();
    return schemaViolation(root, root.at(JSON::json_pointer(target.substr(1))), value, path);
}

/// Returns a check that the value, or the size of an array, is what `isValid` says.
template <typename IsValid>
Check limit(const IsValid& isValid) {
    return [isValid](const JSON& /*root*/, const JSON& bound, const JSON& /*schema*/,
                     const JSON& value, const std::string& path) {
        return isValid(value, bound) ? "" : failure(path, "exceeds the limit " + bound.dump());
    };
}

const std::map<std::string, Check>& checks() {
    static const Check noCheck = [](const JSON&, const JSON&, const JSON&, const JSON&,
                                    const std::string&) { return std::string(); };
    static const std::map<std::string, Check> table{
        {"type", checkType},
        {"properties", checkProperties},
        {"additionalProperties", checkOtherProperties},
        {"required", checkRequired},
        {"items", checkItems},
        {"anyOf", checkAnyOf},
        {"allOf", checkAllOf},
        {"$ref", checkReference},
        {"const", limit([](const JSON& value, const JSON& bound) { return value == bound; })},
        {"enum", limit([](const JSON& value, const JSON& bound) {
             return std::find(bound.begin(), bound.end(), value) != bound.end();
         })},
        {"minimum", limit([](const JSON& value, const JSON& bound) {
             return !value.is_number() || value >= bound;
         })},
        {"minItems", limit([](const JSON& value, const JSON& bound) {
             return !value.is_array() || value.size() >= bound.get<std::size_t>();
         })},
        {"maxItems", limit([](const JSON& value, const JSON& bound) {
             return !value.is_array() || value.size() <= bound.get<std::size_t>();
         })},
        {"title", noCheck},
        {"format", noCheck},
        {"x-effect", noCheck},
        {"x-authentication", noCheck},
    };
    return table;
}

}  // namespace

std::string schemaViolation(const JSON& root, const JSON& schema, const JSON& value,
                            const std::string& path) {
    for (const auto& [keyword, argument] : schema.items()) {
        const auto check = checks().find(keyword);
        if (check == checks().end()) {
            return "the keyword " + keyword + " is unknown";
        }
        if (auto violation = check->second(root, argument, schema, value, path);
            !violation.empty()) {
            return violation;
        }
    }
    return {};
}

}  // namespace neb::test
