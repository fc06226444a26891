#include "JSON/OutcomeJSON.h"

#include <chrono>
#include <cmath>

#include "JSON/Base64.h"
#include "NEBFoundation/NEBSourceControlPathQuoting.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "NEBFoundation/NEBSourceControlUnexpectedError.h"
#include "Session/SignalName.h"

namespace neb::nebsc {

namespace {

using JSON = nlohmann::ordered_json;

template <typename Value>
JSON orNull(const std::optional<Value>& value) {
    return value ? JSON(*value) : JSON(nullptr);
}

/// Replaces bytes that are not UTF-8 by U+FFFD.
std::string textOf(const JSON& json) {
    return json.dump(-1, ' ', false, JSON::error_handler_t::replace);
}

/// Returns the JSON of a value that is neither a dictionary nor an array nor bytes.
JSON leafOf(const NEBValue& value) {
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
    if (const auto* object = value.object()) {
        return object->descriptionForAssertionMessage();
    }
    return nullptr;
}

void append(std::string& text, const NEBValue& value);

/// Appends the dictionary as text. A result can be so large that memory is almost used up.
/// Therefore it is not converted to a JSON object first: the destructor of the library's objects
/// allocates memory, and terminates the program if that fails.
void append(std::string& text, const NEBDictionary& dictionary) {
    char separator = '{';
    for (const NEBDictionary::Entry& entry : dictionary) {
        text.append(1, separator).append(textOf(std::string(entry.key()))).append(1, ':');
        separator = ',';
        append(text, entry.value());
    }
    text += separator == '{' ? "{}" : "}";
}

void append(std::string& text, const std::vector<NEBValue>& array) {
    char separator = '[';
    for (const NEBValue& element : array) {
        text += separator;
        separator = ',';
        append(text, element);
    }
    text += separator == '[' ? "[]" : "]";
}

void append(std::string& text, const NEBValue& value) {
    if (const auto* dictionary = value.dictionary()) {
        append(text, *dictionary);
    } else if (const auto* array = value.array()) {
        append(text, *array);
    } else if (const auto* bytes = value.bytes()) {
        text += R"({"base64":")";
        appendBase64(text, *bytes);
        text += "\"}";
    } else {
        text += textOf(leafOf(value));
    }
}

JSON jsonOfDictionary(const NEBDictionary& dictionary) {
    std::string text;
    append(text, dictionary);
    return JSON::parse(text);
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

/// Returns the exit status, or the name of a signal, so that the two cannot be confused.
JSON jsonOfTermination(const std::optional<TerminationStatus>& status) {
    if (const auto signalNumber = status ? status->signalNumber() : std::nullopt) {
        return signalName(*signalNumber);
    }
    return orNull(status ? status->exitStatus() : std::nullopt);
}

JSON jsonOfError(const NEBSourceControlError& error) {
    return {{"domain", error.domain},
            {"code", error.code},
            {"class", orNull(error.errorClass)},
            {"terminationStatus", jsonOfTermination(error.terminationStatus)},
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

JSON membersBeforeResult(const Outcome& outcome) {
    return {{"type", orNull(outcome.type)},
            {"name",
             orNull(outcome.type ? NEBSourceControlRequestTypeName(*outcome.type) : std::nullopt)},
            {"authenticationRequired", outcome.authenticationRequired},
            {"valid", outcome.valid},
            {"operation", orNull(outcome.operation)},
            {"command", outcome.command ? jsonOfCommand(*outcome.command) : JSON(nullptr)},
            {"commands", arrayOf(outcome.commands, jsonOfRun)},
            {"reports", arrayOf(outcome.reports, jsonOfReport)}};
}

JSON membersFromErrorOn(const Outcome& outcome) {
    JSON json{{"error", outcome.error ? jsonOfError(*outcome.error) : JSON(nullptr)}};
    if (outcome.recordCount) {
        json["recordCount"] = *outcome.recordCount;
    }
    if (!outcome.omittedRevisions.empty()) {
        json["omittedRevisions"] = outcome.omittedRevisions;
    }
    if (outcome.switchedOff) {
        json["switchedOff"] = *outcome.switchedOff;
    }
    if (const auto& conflicts = outcome.settledConflicts) {
        json["settledConflicts"] =
            conflicts->files ? arrayOf(*conflicts->files, NEBSourceControlPathText) : JSON(nullptr);
    }
    return json;
}

}  // namespace

std::string lineOfStreamedOutcome(const Outcome& outcome) {
    return R"({"outcome":)" + textOfOutcome(outcome) + "}\n";
}

std::string textOfRecord(const NEBDictionary& record) {
    std::string text;
    append(text, record);
    return text;
}

std::string textOfRecords(const NEBSourceControlResult& records) {
    std::string text = "[";
    for (const NEBDictionary& record : records) {
        text += text.size() > 1 ? "," : "";
        append(text, record);
    }
    text += "]";
    return text;
}

std::string textOfOutcome(const Outcome& outcome) {
    const std::string result = outcome.result ? textOfRecords(*outcome.result) : "null";
    std::string text = textOf(membersBeforeResult(outcome));
    text.pop_back();  // the closing brace
    const std::string end = textOf(membersFromErrorOn(outcome));
    return text.append(",\"result\":").append(result).append(",").append(end, 1);
}

std::string writtenOutcome(Outcome& outcome,
                           const std::function<std::string(const Outcome&)>& write) {
    try {
        return write(outcome);
    } catch (const std::exception&) {
        outcome.result.reset();
        outcome.error = NEBSourceControlErrorOfCurrentException();
    }
    return write(outcome);
}

std::string lineOfJSON(const JSON& json) {
    return textOf(json) + "\n";
}

}  // namespace neb::nebsc
