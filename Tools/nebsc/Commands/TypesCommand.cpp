#include <unistd.h>

#include <algorithm>
#include <array>

#include "Commands/Commands.h"
#include "JSON/OutcomeJSON.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Session/ReportCapture.h"
#include "Terminal/Presentation.h"
#include "Terminal/TextTable.h"

namespace neb::nebsc {

namespace {

struct NeedWords {
    std::string_view condition, words;
};

/// What the conditions that a plug-in reports mean to a person.
constexpr std::array<NeedWords, 14> needWords{{
    {"request.destination", "destination"},
    {"(request.destination) != nil", "destination"},
    {"(self.request.destination) != nil", "destination"},
    {"[request.files count] > 0", "at least one file"},
    {"[request.files count] == 1", "exactly one file"},
    {"[relativePathString length] != 0", "at least one file"},
    {"request.startingRevision", "starting revision"},
    {"(startingRevision) != nil", "starting revision"},
    {"(endingRevision) != nil", "ending revision"},
    {"request.sourceTree.location", "source tree location"},
    {"((request.remote)) != nil", "remote"},
    {"[request.options objectForKey:NEBSourceControlRequestOptionBranch]", "branch option"},
    {"([request.options objectForKey:NEBSourceControlRequestOptionBranch]) != nil",
     "branch option"},
    {"([request.options objectForKey:NEBSourceControlRequestOptionRemoteName]) != nil",
     "remote name option"},
}};
constexpr NeedWords repositoryNeed{
    "request.sourceTree || [request.options "
    "objectForKey:NEBSourceControlRequestOptionRepositoryPath]",
    "source tree or repository path option"};

struct TypeDescription {
    std::int32_t type = 0;
    std::string name;
    /// The class's name; absent when the type has no operation.
    std::optional<std::string> operation;
    bool authentication = false;
    std::vector<std::string> needs;
};

std::string wordsOfCondition(const std::string& condition) {
    const auto* row = std::find_if(
        needWords.begin(), needWords.end(),
        [&condition](const NeedWords& candidate) { return candidate.condition == condition; });
    if (row != needWords.end()) {
        return std::string(row->words);
    }
    return condition == repositoryNeed.condition ? std::string(repositoryNeed.words) : condition;
}

/// Asks the plug-in with a request that holds nothing but its type.
TypeDescription describe(const NEBSourceControlProtocol& controller, std::int32_t type) {
    const ReportCapture capture;
    const auto request = NEBSourceControlRequest::initWithType(type, nullptr, {}, {});
    TypeDescription description{
        .type = type,
        .name = std::string(NEBSourceControlRequestTypeName(type).value_or("")),
        .operation = std::nullopt,
        .authentication = controller.authenticationRequiredForRequest(*request),
        .needs = {},
    };
    if (const auto operation = controller.operationForRequest(request)) {
        description.operation = operation->className();
    }
    for (const LOMAssertionReport& report : capture.reports()) {
        std::string need = wordsOfCondition(report.condition);
        auto& needs = description.needs;
        if (std::find(needs.begin(), needs.end(), need) == needs.end()) {
            needs.push_back(std::move(need));
        }
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

std::vector<std::string> rowOf(const TypeDescription& type) {
    constexpr std::size_t numberColumns = 4;
    const std::string number = std::to_string(type.type);
    return {std::string(numberColumns - std::min(number.size(), numberColumns), ' ') + number,
            printable(type.name), printable(type.operation.value_or("none")),
            type.authentication ? "may need it" : "no", printable(joined(type.needs))};
}

nlohmann::ordered_json jsonOf(const TypeDescription& type) {
    return {{"type", type.type},
            {"name", type.name},
            {"operation", type.operation ? nlohmann::ordered_json(*type.operation) : nullptr},
            {"authentication", type.authentication},
            {"needs", type.needs}};
}

CommandOutput run(const CommandCall& call) {
    std::vector<std::vector<std::string>> rows{
        {"type", "name", "operation", "authentication", "needs"}};
    auto array = nlohmann::ordered_json::array();
    for (auto type = NEBSourceControlFirstRequestType; type <= NEBSourceControlLastRequestType;
         ++type) {
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
    .summary = "List the types of request and what each needs",
    .details =
        "The types called \"unsupported\" have no operation: a request of such a type fails.\n\n"
        "Examples:\n"
        "  nebsc types           a table\n"
        "  nebsc types --json    the same for a program to read\n",
    .run = run,
};

}  // namespace neb::nebsc
