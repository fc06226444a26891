#include "OutcomeJSON.h"

#include <string.h>

#include <chrono>
#include <cmath>

#include "GitQuoting.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "NEBFoundation/NEBSourceControlUnexpectedError.h"

namespace neb::nebsc {

namespace {

using JSON = nlohmann::ordered_json;

template <typename Value>
JSON orNull(const std::optional<Value>& value) {
    return value ? JSON(*value) : JSON(nullptr);
}

JSON jsonOfDictionary(const NEBDictionary& dictionary);

JSON jsonOfValue(const NEBValue& value) {
    if (const auto boolean = value.boolean()) {
        return *boolean;
    }
    if (const auto integer = value.integer()) {
        return *integer;
    }
    if (const auto string = value.string()) {
        return *string;
    }
    if (const auto date = value.date()) {
        return textOfDate(*date);
    }
    if (const auto* path = value.filePath()) {
        return path->pathString();
    }
    if (const auto* dictionary = value.dictionary()) {
        return jsonOfDictionary(*dictionary);
    }
    if (const auto* object = value.object()) {
        return object->descriptionForAssertionMessage();
    }
    return nullptr;
}

JSON jsonOfDictionary(const NEBDictionary& dictionary) {
    // Keys are different from each other already; the object's own look-up, one by one, would make
    // a large dictionary slow.
    JSON::object_t object;
    for (const NEBDictionary::Entry& entry : dictionary) {
        object.Container::emplace_back(std::string(entry.key()), jsonOfValue(entry.value()));
    }
    return object;
}

JSON jsonOfCommand(const NEBSourceControlCommand& command) {
    return {{"launchPath", command.launchPath},
            {"arguments", command.arguments},
            {"currentDirectoryPath", orNull(command.currentDirectoryPath)},
            {"pipeTo", command.pipeTo ? jsonOfCommand(*command.pipeTo) : JSON(nullptr)}};
}

JSON millisecondsOf(std::chrono::nanoseconds duration) {
    constexpr double tenthsInOne = 10;
    using Tenths = std::chrono::duration<double, std::ratio<1, 10000>>;
    return std::round(Tenths(duration).count()) / tenthsInOne;
}

JSON jsonOfRun(const NEBSourceControlCommandRun& run) {
    return {{"launchPath", run.launchPath},
            {"arguments", run.arguments},
            {"currentDirectoryPath", orNull(run.currentDirectoryPath)},
            {"terminationStatus", orNull(run.terminationStatus)},
            {"milliseconds", run.duration ? millisecondsOf(*run.duration) : JSON(nullptr)}};
}

JSON jsonOfReport(const LOMAssertionReport& report) {
    return {{"function", report.function},
            {"file", report.file},
            {"line", report.line},
            {"message", report.message},
            {"condition", report.condition}};
}

/// A signal by its name, so that it is not taken for an exit status.
JSON jsonOfEnd(const std::optional<TerminationStatus>& status) {
    if (const auto signalNumber = status ? status->signalNumber() : std::nullopt) {
        const char* name = ::sigabbrev_np(*signalNumber);
        return "SIG" + (name != nullptr ? name : std::to_string(*signalNumber));
    }
    return orNull(status ? status->exitStatus() : std::nullopt);
}

JSON jsonOfError(const NEBSourceControlError& error) {
    return {{"domain", error.domain},
            {"code", error.code},
            {"class", orNull(error.errorClass)},
            {"terminationStatus", jsonOfEnd(error.terminationStatus)},
            {"text", orNull(error.text)},
            {"hints", JSON(error.hints)},
            {"remoteLines", JSON(error.remoteLines)},
            {"files", JSON(error.files)},
            {"localizedDescription", orNull(error.localizedDescription())},
            {"localizedRecoverySuggestion", orNull(error.localizedRecoverySuggestion())},
            {"userInfo", jsonOfDictionary(error.userInfo)}};
}

template <typename Values, typename Function>
JSON arrayOf(const Values& values, Function function) {
    JSON array = JSON::array();
    for (const auto& value : values) {
        array.push_back(function(value));
    }
    return array;
}

}  // namespace

JSON jsonOfOutcome(const Outcome& outcome) {
    JSON json{
        {"type", orNull(outcome.type)},
        {"name",
         orNull(outcome.type ? NEBSourceControlRequestTypeName(*outcome.type) : std::nullopt)},
        {"authenticationRequired", outcome.authenticationRequired},
        {"valid", outcome.valid},
        {"operation", orNull(outcome.operation)},
        {"command", outcome.command ? jsonOfCommand(*outcome.command) : JSON(nullptr)},
        {"commands", arrayOf(outcome.commands, jsonOfRun)},
        {"reports", arrayOf(outcome.reports, jsonOfReport)},
        {"result", outcome.result ? arrayOf(*outcome.result, jsonOfDictionary) : JSON(nullptr)},
        {"error", outcome.error ? jsonOfError(*outcome.error) : JSON(nullptr)}};
    if (!outcome.omittedRevisions.empty()) {
        json["omittedRevisions"] = outcome.omittedRevisions;
    }
    if (const auto& conflicts = outcome.settledConflicts) {
        json["settledConflicts"] =
            conflicts->files ? arrayOf(*conflicts->files, textOfName) : JSON(nullptr);
    }
    return json;
}

std::string writtenOutcome(Outcome& outcome,
                           const std::function<std::string(const Outcome&)>& write) {
    try {
        return write(outcome);
    } catch (const std::exception&) {
        outcome.error = NEBSourceControlErrorOfCurrentException();
    }
    outcome.result.reset();
    return write(outcome);
}

std::string lineOfJSON(const JSON& json) {
    return json.dump(-1, ' ', false, JSON::error_handler_t::replace) + "\n";
}

}  // namespace neb::nebsc
