#include "Recording/RecordingReader.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <unordered_map>
#include <utility>

#include "JSON/OutcomeJSON.h"
#include "Platform/ErrnoText.h"
#include "Recording/RecordingFile.h"
#include "Recording/RecordingMember.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

using JSON = nlohmann::ordered_json;

TerminationStatus statusOf(const RecordingMember& status) {
    constexpr int mostExitStatus = 255;
    constexpr int mostSignal = 127;  // what wait(2) has room for
    if (const auto exit = status.find("exit")) {
        return TerminationStatus::exited(exit->integer(0, mostExitStatus));
    }
    if (const auto signal = status.find("signal")) {
        return TerminationStatus::signalled(signal->integer(1, mostSignal));
    }
    const auto unknown = status.find("unknown");
    return unknown ? TerminationStatus::unknown(unknown->text())
                   : TerminationStatus::notStarted(status.at("notStarted").text());
}

bool flagIn(const RecordingMember& object, const char* name) {
    const auto flag = object.find(name);
    return flag && flag->boolean();
}

std::optional<std::string> folderIn(const RecordingMember& object) {
    const RecordingMember folder = object.at("folder");
    return folder.isNull() ? std::nullopt : std::optional(folder.bytes());
}

NEBSourceControlRecordedChild childOf(const RecordingMember& json) {
    const auto input = json.find("input");
    NEBSourceControlRecordedChild child{
        .launchPath = json.at("program").bytes(),
        .arguments = json.at("arguments").arguments(),
        .currentDirectoryPath = folderIn(json),
        .setVariables = json.at("set").arguments(),
        .removedVariables = json.at("removed").arguments(),
        .input = input ? std::optional(Data(input->bytes())) : std::nullopt,
        .output = Data(json.at("output").bytes()),
        .errorOutput = Data(json.at("errorOutput").bytes()),
        .status = statusOf(json.at("status")),
        .duration = json.at("milliseconds").milliseconds(),
        .outputWasHeldOpen = flagIn(json, "outputWasHeldOpen"),
        .exceededLimit = std::nullopt};
    if (const auto limit = json.find("exceededLimit")) {
        child.exceededLimit =
            static_cast<ChildLimit>(limit->integer(0, static_cast<int>(ChildLimit::outputBytes)));
    }
    return child;
}

NEBSourceControlRecordedRun runOf(const RecordingMember& line) {
    NEBSourceControlRecordedRun run;
    const RecordingMember children = line.at("children");
    for (const RecordingMember& child : children.elements()) {
        run.children.push_back(childOf(child));
    }
    if (run.children.empty()) {
        children.refuse("is empty");
    }
    run.start = line.at("start").milliseconds();
    run.wasCancelled = flagIn(line, "cancelled");
    return run;
}

NEBSourceControlRecordedAnswer answerOf(const RecordingMember& line) {
    return {.question = line.at("question").bytes(),
            .subject = line.at("subject").bytes(),
            .answer = line.at("answer").bytes()};
}

RecordedOperation operationOf(const RecordingMember& own) {
    RecordedOperation operation{.className = own.at("operation").text(),
                                .isChecked = own.at("isChecked").boolean(),
                                .arguments = {},
                                .folder = std::nullopt};
    if (const auto arguments = own.find("arguments")) {
        operation.arguments = arguments->arguments();
        operation.folder = folderIn(own);
    }
    return operation;
}

RequestReading requestIn(const RecordingMember& member) {
    RequestReading reading = requestFromJSON(lineOfJSON(member.object()));
    if (!reading.request) {
        member.refuse("is not a request: " + reading.refusal);
    }
    return reading;
}

class Reader {
public:
    explicit Reader(RecordingReading& reading) : _reading(reading) {}

    /// Throws InvalidMember if the line is invalid.
    void read(const RecordingMember& line) {
        ++_lines;
        if (_lines == 1) {
            readHeader(line);
            return;
        }
        if (_isComplete) {
            line.refuse("follows the end");
        }
        const RecordingMember kind = line.at("kind");
        const std::string name = kind.text();
        if (name == "end") {
            if (line.at("lines").count() != _lines) {
                line.at("lines").refuse("is not the number of this line: lines are missing");
            }
            _isComplete = true;
        } else if (name == "request") {
            beginRequest(line);
        } else if (const RecordingMember number = line.at("request");
                   number.count() == 0 && (name == "run" || name == "answer")) {
            _reading.otherChildren += name == "run" ? runOf(line).children.size() : 0;
        } else {
            readPart(kind, line);
        }
    }

    [[nodiscard]] bool isComplete() const { return _isComplete; }

private:
    void readHeader(const RecordingMember& line) {
        if (line.at("recording").count() != recordingVersion) {
            _reading.failure = "has a format that this version of nebsc does not know";
            return;
        }
        _reading.header = {.nebsc = line.at("nebsc").text(),
                           .plugIn = line.at("plugIn").text(),
                           .git = line.at("git").text(),
                           .home = line.at("home").withoutNUL()};
    }

    void beginRequest(const RecordingMember& line) {
        const RecordingMember number = line.at("request");
        RequestReading reading = requestIn(line.at("json"));
        const auto own = line.find("own");
        RecordedRequest request;
        request.number = number.count();
        request.request = std::move(reading.request);
        if (own) {
            request.own = operationOf(*own);
        }
        if (request.number == 0) {
            number.refuse("is 0; expected the number of a request");
        }
        if (!_indices.emplace(request.number, _reading.requests.size()).second) {
            number.refuse("is " + std::to_string(request.number) +
                          ", the number of an earlier request");
        }
        _reading.requests.push_back(std::move(request));
    }

    void readPart(const RecordingMember& kind, const RecordingMember& line) {
        const RecordingMember number = line.at("request");
        const auto index = _indices.find(number.count());
        if (index == _indices.end()) {
            number.refuse("is " + std::to_string(number.count()) +
                          "; no line before is a request with this number");
        }
        RecordedRequest& request = _reading.requests[index->second];
        if (!request.outcome.is_null()) {
            number.refuse("is " + std::to_string(number.count()) +
                          ", a request whose outcome is on a line before");
        }
        const std::string name = kind.text();
        if (name == "run") {
            request.runs.push_back(runOf(line));
        } else if (name == "answer") {
            request.answers.push_back(answerOf(line));
        } else if (name == "records") {
            static_cast<void>(line.at("records").elements());  // checks that it is an array
            for (const JSON& record : line.object()["records"]) {
                request.delivered.push_back(record);
            }
        } else if (name == "outcome") {
            readOutcome(line, request);
        } else {
            kind.refuse("is " + inQuotes(shortened(name)) +
                        "; expected 'request', 'run', 'answer', 'records', 'outcome' or 'end'");
        }
    }

    static void readOutcome(const RecordingMember& line, RecordedRequest& request) {
        const RecordingMember outcome = line.at("outcome");
        if (const RecordingMember name = outcome.at("name"); !name.isNull()) {
            static_cast<void>(name.text());
        }
        // Limits are those of a request.
        const JSON settings{{"type", request.request->type},
                            {"limits", line.at("limits").object()}};
        RequestReading reading = requestFromJSON(lineOfJSON(settings));
        if (!reading.request) {
            line.at("limits").refuse("is not the limits of a request: " + reading.refusal);
        }
        request.settings = reading.settings;
        request.settings.isBackgroundWork = line.at("background").boolean();
        request.outcome = outcome.object();
        uniteBatches(request.outcome, request.delivered);
    }

    RecordingReading& _reading;
    /// The indices of the requests by number.
    std::unordered_map<int, std::size_t> _indices;
    int _lines = 0;
    bool _isComplete = false;
};

}  // namespace

bool RecordedRequest::wasCancelled() const {
    return std::ranges::any_of(runs, &NEBSourceControlRecordedRun::wasCancelled);
}

void uniteBatches(JSON& outcome, JSON& delivered) {
    if (!delivered.empty() && std::ranges::all_of(delivered, [](const JSON& record) {
            return record == JSON::object();
        })) {
        delivered = JSON::array({JSON::object()});
        outcome["recordCount"] = 1;
    }
}

RecordingReading readRecording(std::istream& stream, std::vector<JSON>* lines) {
    RecordingReading reading;
    Reader reader(reading);
    int number = 0;
    for (std::string line; reading.failure.empty() && std::getline(stream, line);) {
        ++number;
        try {
            JSON json = jsonOfLine(line);
            reader.read(RecordingMember(json));
            if (lines != nullptr) {
                lines->push_back(std::move(json));
            }
        } catch (const InvalidMember& invalid) {
            reading.failure =
                "has an invalid line " + std::to_string(number) + ": " + invalid.what();
        }
    }
    if (reading.failure.empty() && !reader.isComplete()) {
        reading.failure = number == 0 ? "is empty"
                                      : "is incomplete: after line " + std::to_string(number) +
                                            ", the line whose member 'kind' is 'end' is missing";
    }
    return reading;
}

RecordingReading readRecording(const std::string& path, std::vector<JSON>* lines) {
    namespace fs = std::filesystem;
    const auto refused = [](const std::string& reason) {
        RecordingReading reading;
        reading.failure = "cannot be read: " + reason;
        return reading;
    };
    std::error_code failure;
    const fs::file_status status = fs::status(path, failure);
    if (fs::is_directory(status)) {
        return refused(textOfErrno(EISDIR));
    }
    // A pipe could block, and a device could have no end.
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        return refused("it is not a regular file");
    }
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return refused(textOfErrno(errno));
    }
    return readRecording(file, lines);
}

}  // namespace neb::nebsc
