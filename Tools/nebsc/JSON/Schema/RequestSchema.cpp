#include "JSON/Schema/RequestSchema.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

#include "JSON/Schema/TypeMembers.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Platform/Text.h"

namespace neb::nebsc {

namespace {

using JSON = nlohmann::ordered_json;

JSON reference(const std::string& name) {
    return {{"$ref", "#/$defs/" + name}};
}

JSON ofType(std::string_view type) {
    return {{"type", type}};
}

/// Returns the schema of a value that may be null.
JSON orNull(JSON schema) {
    return {{"anyOf", JSON::array({std::move(schema), ofType("null")})}};
}

JSON arrayOf(JSON items) {
    return {{"type", "array"}, {"items", std::move(items)}};
}

/// Calls `visit` with each name in a list with blanks.
template <typename Visit>
void forEachName(std::string_view names, const Visit& visit) {
    forEachField(names, ' ', [&visit](std::string_view name) {
        if (!name.empty()) {
            visit(name);
        }
    });
}

const ValueDescription* find(std::span<const ValueDescription> table, std::string_view name) {
    const auto row =
        std::find_if(table.begin(), table.end(),
                     [name](const ValueDescription& other) { return other.name == name; });
    return row != table.end() ? &*row : nullptr;
}

// ---- values -----------------------------------------------------------------------------------

JSON schemaOfRecord(std::string_view names);

JSON schemaOf(const ValueDescription& value) {
    switch (value.kind) {
        case ValueKind::string:
            return ofType("string");
        case ValueKind::integer:
            return ofType("integer");
        case ValueKind::boolean:
            return ofType("boolean");
        case ValueKind::date:
            return {{"type", "string"}, {"format", "date-time"}};
        case ValueKind::bytes:
            return reference("bytes");
        case ValueKind::text:
            return reference("text");
        case ValueKind::booleanOrString:
            return {{"type", JSON::array({"boolean", "string"})}};
        case ValueKind::strings:
            return arrayOf(reference("text"));
        case ValueKind::records:
            return arrayOf(schemaOfRecord(value.nested));
        case ValueKind::statesOfPaths:
            return {{"type", "object"}, {"additionalProperties", ofType("integer")}};
    }
    return JSON::object();
}

std::string keyOf(std::string_view name) {
    return "NEBSourceControlOperation" + std::string(name) + "Key";
}

void addKey(JSON& properties, std::string_view name) {
    if (const ValueDescription* value = find(describedRecordKeys(), name)) {
        properties[keyOf(name)] = schemaOf(*value);
    }
}

JSON schemaOfRecord(std::string_view names) {
    JSON properties = JSON::object();
    forEachName(names, [&properties](std::string_view name) {
        addKey(properties, name);
        addKey(properties, std::string(name) + "Bytes");
    });
    return {{"type", "object"}, {"properties", std::move(properties)}};
}

// ---- requests ---------------------------------------------------------------------------------

JSON schemaOfSourceTree() {
    return {{"type", "object"},
            {"properties",
             {{"class",
               {{"enum", JSON::array({"NEBSourceControlWorkingTree", "NEBSourceControlRepository",
                                      nullptr})}}},
              {"location", orNull(reference("text"))},
              {"name", orNull(reference("text"))},
              {"reachable", orNull(ofType("boolean"))},
              {"isValid", orNull(ofType("boolean"))},
              {"isRemoteDistributedRepository", orNull(ofType("boolean"))}}},
            {"additionalProperties", false}};
}

JSON schemaOfLimits() {
    const JSON limit = orNull({{"type", "integer"}, {"minimum", 1}});
    const JSON time = orNull({{"type", "integer"},
                              {"minimum", 0},
                              {"maximum", std::numeric_limits<std::int32_t>::max()}});
    return {{"type", "object"},
            {"properties",
             {{"silenceMilliseconds", limit},
              {"totalMilliseconds", limit},
              {"outputBytes", limit},
              {"lockWaitMilliseconds", time}}},
            {"additionalProperties", false}};
}

JSON schemaOfOptions() {
    JSON properties = JSON::object();
    for (const ValueDescription& option : describedOptions()) {
        properties["NEBSourceControlRequestOption" + std::string(option.name)] =
            orNull(schemaOf(option));
    }
    return {
        {"type", "object"}, {"properties", std::move(properties)}, {"additionalProperties", false}};
}

JSON schemaOfRequests() {
    const JSON scalar = orNull(reference("scalar"));
    return {{"type", "object"},
            {"properties",
             {{"type", ofType("integer")},
              {"sourceTree", orNull(reference("sourceTree"))},
              {"repositoryToAuthenticate", orNull(reference("sourceTree"))},
              {"destination", scalar},
              {"files", orNull(arrayOf(reference("scalar")))},
              {"startingRevision", scalar},
              {"endingRevision", scalar},
              {"remote",
               orNull({{"type", "object"},
                       {"properties", {{"representsGitSVNBridge", orNull(ofType("boolean"))}}},
                       {"additionalProperties", false}})},
              {"options", orNull(reference("options"))},
              {"limits", orNull(reference("limits"))},
              {"background", orNull(ofType("boolean"))},
              {"trust", {{"enum", JSON::array({"trusted", "inspect", nullptr})}}}}},
            {"required", JSON::array({"type"})},
            {"additionalProperties", false}};
}

std::string_view nameOf(NEBSourceControlRequestEffect effect) {
    switch (effect) {
        case NEBSourceControlRequestEffect::reads:
            return "reads";
        case NEBSourceControlRequestEffect::changes:
            return "changes";
        case NEBSourceControlRequestEffect::exports:
            break;
    }
    return "exports";
}

/// Adds what the schema requires for a requirement of the type.
void addRequirement(JSON& schema, NEBSourceControlRequirement requirement) {
    using Requirement = NEBSourceControlRequirement;
    const auto require = [&schema](const char* member) { schema["required"].push_back(member); };
    const auto requireOption = [&schema, &require](NEBConstant option) {
        require("options");
        schema["properties"]["options"]["required"].push_back(option.text());
    };
    switch (requirement) {
        case Requirement::destination:
            return require("destination");
        case Requirement::atLeastOneFile:
            require("files");
            schema["properties"]["files"]["minItems"] = 1;
            return;
        case Requirement::exactlyOneFile:
            require("files");
            schema["properties"]["files"]["minItems"] = 1;
            schema["properties"]["files"]["maxItems"] = 1;
            return;
        case Requirement::startingRevision:
            return require("startingRevision");
        case Requirement::endingRevision:
            return require("endingRevision");
        case Requirement::sourceTreeLocation:
        case Requirement::sourceTreeOrRepositoryPath:
            return;  // one of two, or a member of a member: the request is refused without it
        case Requirement::remote:
            return require("remote");
        case Requirement::remoteName:
            return requireOption(NEBSourceControlRequestOptionRemoteName);
        case Requirement::branch:
            return requireOption(NEBSourceControlRequestOptionBranch);
    }
}

/// Returns the members that the type reads. Others are accepted, too, and have no effect.
JSON schemaOfRequest(const NEBSourceControlRequestTypeDescription& type) {
    const TypeMembers& members = membersOfType(type.type);
    JSON options = JSON::object();
    forEachName(members.options, [&options](std::string_view name) {
        if (const ValueDescription* option = find(describedOptions(), name)) {
            options["NEBSourceControlRequestOption" + std::string(name)] =
                orNull(schemaOf(*option));
        }
    });
    JSON schema{{"title", type.name},
                {"x-effect", nameOf(type.effect)},
                {"x-authentication", type.mayAuthenticate},
                {"allOf", JSON::array({reference("request")})},
                {"properties", {{"type", {{"const", type.type}}}}},
                {"required", JSON::array({"type"})}};
    forEachName(members.request, [&schema](std::string_view name) {
        schema["properties"][std::string(name)] = JSON::object();
    });
    schema["properties"]["options"] = {{"properties", std::move(options)}};
    for (const NEBSourceControlRequirement requirement : type.requirements) {
        addRequirement(schema, requirement);
    }
    return schema;
}

// ---- outcomes ---------------------------------------------------------------------------------

JSON schemaOfCommand() {
    return {{"type", "object"},
            {"properties",
             {{"launchPath", ofType("string")},
              {"arguments", arrayOf(reference("text"))},
              {"currentDirectoryPath", orNull(reference("text"))},
              {"pipeTo", orNull(reference("command"))},
              {"terminationStatus", orNull(ofType("integer"))},
              {"milliseconds", ofType("number")}}},
            {"required", JSON::array({"launchPath", "arguments"})}};
}

JSON schemaOfError() {
    return {{"type", "object"},
            {"properties",
             {{"domain", ofType("string")},
              {"code", ofType("integer")},
              {"class", orNull(ofType("string"))},
              {"terminationStatus", {{"type", JSON::array({"integer", "string", "null"})}}},
              {"text", orNull(reference("text"))},
              {"hints", arrayOf(reference("text"))},
              {"remoteLines", arrayOf(reference("text"))},
              {"files", arrayOf(reference("text"))},
              {"localizedDescription", orNull(reference("text"))},
              {"localizedRecoverySuggestion", orNull(reference("text"))},
              {"userInfo", ofType("object")}}},
            {"required", JSON::array({"domain", "code", "class"})}};
}

JSON schemaOfOutcome() {
    return {
        {"type", "object"},
        {"properties",
         {{"type", orNull(ofType("integer"))},
          {"name", orNull(ofType("string"))},
          {"authenticationRequired", ofType("boolean")},
          {"valid", ofType("boolean")},
          {"operation", orNull(ofType("string"))},
          {"command", orNull(reference("command"))},
          {"commands", arrayOf(reference("command"))},
          {"reports", arrayOf(ofType("object"))},
          {"result", orNull(arrayOf(ofType("object")))},
          {"error", orNull(reference("error"))},
          {"recordCount", ofType("integer")},
          {"omittedRevisions", arrayOf(ofType("string"))},
          {"switchedOff", arrayOf(reference("text"))},
          {"settledConflicts", orNull(arrayOf(ofType("string")))}}},
        {"required", JSON::array({"type", "name", "authenticationRequired", "valid", "operation",
                                  "command", "commands", "reports", "result", "error"})}};
}

}  // namespace

JSON requestSchema() {
    JSON definitions{
        {"bytes",
         {{"type", "object"},
          {"properties", {{"base64", ofType("string")}}},
          {"required", JSON::array({"base64"})},
          {"additionalProperties", false}}},
        {"text", {{"anyOf", JSON::array({ofType("string"), reference("bytes")})}}},
        {"scalar",
         {{"anyOf", JSON::array({{{"type", JSON::array({"string", "boolean", "number"})}},
                                 reference("bytes")})}}},
        {"sourceTree", schemaOfSourceTree()},
        {"limits", schemaOfLimits()},
        {"options", schemaOfOptions()},
        {"request", schemaOfRequests()},
        {"command", schemaOfCommand()},
        {"error", schemaOfError()},
        {"outcome", schemaOfOutcome()},
    };
    for (const auto& type : NEBSourceControlAllRequestTypes()) {
        if (membersOfType(type.type).type != type.type) {
            continue;  // without an operation
        }
        const std::string number = std::to_string(type.type);
        definitions["request-" + number] = schemaOfRequest(type);
        definitions["record-" + number] = schemaOfRecord(membersOfType(type.type).record);
    }
    return {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
            {"title", "Requests and outcomes of NEBGit"},
            {"$defs", std::move(definitions)}};
}

}  // namespace neb::nebsc
