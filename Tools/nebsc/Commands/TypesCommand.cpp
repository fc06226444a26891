#include <unistd.h>

#include <algorithm>
#include <array>

#include "Commands/Commands.h"
#include "JSON/OutcomeJSON.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Session/ReportCapture.h"
#include "Terminal/PrintableText.h"
#include "Terminal/TextTable.h"

namespace neb::nebsc {

namespace {

struct TypeDescription {
    const NEBSourceControlRequestTypeDescription& type;
    /// The class name; absent if the type has no operation.
    std::optional<std::string> operation;
    std::vector<std::string> needs;
};

/// Returns the class that the plug-in uses for a type. The request has no values, so that the
/// plug-in reports broken preconditions, which are of no interest here.
std::optional<std::string> operationClass(const NEBSourceControlProtocol& controller,
                                          std::int32_t type) {
    const ReportCapture capture;
    const auto operation =
        controller.operationForRequest(NEBSourceControlRequest::initWithType(type, nullptr));
    return operation ? std::optional(operation->className()) : std::nullopt;
}

TypeDescription describe(const NEBSourceControlProtocol& controller,
                         const NEBSourceControlRequestTypeDescription& type) {
    TypeDescription description{type, operationClass(controller, type.type), {}};
    for (const NEBSourceControlRequirement requirement : type.requirements) {
        description.needs.emplace_back(NEBSourceControlRequirementName(requirement));
    }
    return description;
}

std::string joined(const std::vector<std::string>& texts) {
    std::string line;
    for (const std::string& text : texts) {
        line.append(line.empty() ? "" : ", ").append(text);
    }
    return line;
}

std::vector<std::string> rowOf(const TypeDescription& description) {
    constexpr std::size_t numberColumns = 4;
    const auto& [type, operation, needs] = description;
    const std::string number = std::to_string(type.type);
    return {std::string(numberColumns - std::min(number.size(), numberColumns), ' ') + number,
            std::string(type.name), printable(operation.value_or("none")),
            type.mayAuthenticate ? "may need it" : "no", joined(needs)};
}

nlohmann::ordered_json jsonOf(const TypeDescription& description) {
    const auto& [type, operation, needs] = description;
    return {{"type", type.type},
            {"name", type.name},
            {"operation", operation ? nlohmann::ordered_json(*operation) : nullptr},
            {"authentication", type.mayAuthenticate},
            {"needs", needs}};
}

CommandOutput run(const CommandCall& call) {
    std::vector<std::vector<std::string>> rows{
        {"type", "name", "operation", "authentication", "needs"}};
    auto array = nlohmann::ordered_json::array();
    for (const auto& type : NEBSourceControlAllRequestTypes()) {
        const TypeDescription description = describe(call.session.controller(), type);
        rows.push_back(rowOf(description));
        array.push_back(jsonOf(description));
    }
    return {.standardOutput = call.isJSON ? lineOfJSON(array) : tableLines(STDOUT_FILENO, rows),
            .standardError = {},
            .exitStatus = exitDone};
}

}  // namespace

constinit const Command typesCommand{
    .name = "types",
    .group = requestsGroup,
    .summary = "List the request types and what each needs",
    .details =
        "Types named 'unsupported' have no operation; their requests fail.\n"
        "\n"
        "Examples:\n"
        "  nebsc types           a table\n"
        "  nebsc types --json    for a program to read\n",
    .run = run,
};

}  // namespace neb::nebsc
