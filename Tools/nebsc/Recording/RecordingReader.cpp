#include "Recording/RecordingReader.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <utility>

#include "Platform/ErrnoText.h"
#include "Recording/RecordingFile.h"
#include "Recording/RequestText.h"

namespace neb::nebsc {

namespace {

using JSON = nlohmann::ordered_json;

/// A line that is JSON, but has a value that no recording has.
struct InvalidValue : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Returns the integer. Throws an exception for other JSON, and outside of the range.
int integerOf(const JSON& json, int least, int most) {
    if (!json.is_number_integer() || json < least || json > most) {
        throw InvalidValue("not an integer in the range");
    }
    return json.get<int>();
}

/// Returns a number from 0 on, of a request or of lines.
int countOf(const JSON& json) {
    return integerOf(json, 0, std::numeric_limits<int>::max());
}

std::vector<std::string> textsOf(const JSON& json) {
    std::vector<std::string> texts;
    for (const JSON& text : json) {
        texts.push_back(bytesOfJSON(text));
    }
    return texts;
}

TerminationStatus statusOf(const JSON& json) {
    constexpr int mostExitStatus = 255;
    constexpr int mostSignal = 127;  // what wait(2) has room for
    if (json.contains("exit")) {
        return TerminationStatus::exited(integerOf(json["exit"], 0, mostExitStatus));
    }
    if (json.contains("signal")) {
        return TerminationStatus::signalled(integerOf(json["signal"], 1, mostSignal));
    }
    return json.contains("unknown")
               ? TerminationStatus::unknown(json["unknown"].get<std::string>())
               : TerminationStatus::notStarted(json.at("notStarted").get<std::string>());
}

std::chrono::nanoseconds nanosecondsOf(const JSON& milliseconds) {
    constexpr double most = 1e12;  // 31 years; nanoseconds have room for 292
    const double number = milliseconds.get<double>();
    if (!(number >= 0 && number <= most)) {  // also NaN
        throw InvalidValue("not a duration");
    }
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
        std::chrono::duration<double, std::milli>(number));
}

NEBSourceControlRecordedChild childOf(const JSON& json) {
    NEBSourceControlRecordedChild child{
        .launchPath = json.at("program").get<std::string>(),
        .arguments = textsOf(json.at("arguments")),
        .currentDirectoryPath =
            json.at("folder").is_null() ? std::nullopt : std::optional(bytesOfJSON(json["folder"])),
        .setVariables = textsOf(json.at("set")),
        .removedVariables = textsOf(json.at("removed")),
        .input =
            json.contains("input") ? std::optional(Data(bytesOfJSON(json["input"]))) : std::nullopt,
        .output = Data(bytesOfJSON(json.at("output"))),
        .errorOutput = Data(bytesOfJSON(json.at("errorOutput"))),
        .status = statusOf(json.at("status")),
        .duration = nanosecondsOf(json.at("milliseconds")),
        .outputWasHeldOpen = json.value("outputWasHeldOpen", false),
        .exceededLimit = std::nullopt};
    if (json.contains("exceededLimit")) {
        child.exceededLimit = static_cast<ChildLimit>(
            integerOf(json["exceededLimit"], 0, static_cast<int>(ChildLimit::outputBytes)));
    }
    return child;
}

NEBSourceControlRecordedRun runOf(const JSON& line) {
    NEBSourceControlRecordedRun run;
    for (const JSON& child : line.at("children")) {
        run.children.push_back(childOf(child));
    }
    run.start = nanosecondsOf(line.at("start"));
    run.wasCancelled = line.value("cancelled", false);
    return run;
}

class Reader {
public:
    explicit Reader(RecordingReading& reading) : _reading(reading) {}

    /// Throws an exception if the line is invalid.
    void read(const JSON& line) {
        ++_lines;
        if (_lines == 1) {
            if (countOf(line.at("recording")) != recordingVersion) {
                _reading.failure = "has a format that this version of nebsc does not know";
            }
            _reading.header = line;
            return;
        }
        const std::string kind = line.at("kind").get<std::string>();
        if (kind == "end") {
            _isComplete = countOf(line.at("lines")) == _lines;
        } else if (kind == "request") {
            RecordedRequest& request = _reading.requests.emplace_back();
            request.number = countOf(line.at("request"));
            request.json = line.at("json");
            request.own = line.value("own", JSON());
        } else if (countOf(line.at("request")) == 0) {
            _reading.otherChildren += kind == "run" ? line.at("children").size() : 0;
        } else {
            readPart(kind, line);
        }
    }

    [[nodiscard]] bool isComplete() const { return _isComplete; }

private:
    void readPart(const std::string& kind, const JSON& line) {
        const auto request = std::ranges::find(_reading.requests, countOf(line.at("request")),
                                               &RecordedRequest::number);
        if (request == _reading.requests.end()) {
            _reading.failure = "has a line of a request that it lacks";
        } else if (kind == "run") {
            request->runs.push_back(runOf(line));
        } else if (kind == "answer") {
            request->answers.push_back({.question = line.at("question").get<std::string>(),
                                        .subject = bytesOfJSON(line.at("subject")),
                                        .answer = bytesOfJSON(line.at("answer"))});
        } else if (kind == "records") {
            for (const JSON& record : line.at("records")) {
                request->delivered.push_back(record);
            }
        } else if (kind == "outcome") {
            request->outcome = line.at("outcome");
            if (line.contains("limits") && !line["limits"].empty()) {
                request->json["limits"] = line["limits"];
            }
            request->json["background"] = line.value("background", false);
        }
    }

    RecordingReading& _reading;
    int _lines = 0;
    bool _isComplete = false;
};

}  // namespace

bool RecordedRequest::wasCancelled() const {
    return std::ranges::any_of(runs, &NEBSourceControlRecordedRun::wasCancelled);
}

RecordingReading readRecording(const std::string& path) {
    RecordingReading reading;
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    Reader reader(reading);
    if (!file) {
        reading.failure = "cannot be read: " + textOfErrno(errno);
    }
    int number = 0;
    for (std::string line; reading.failure.empty() && std::getline(file, line);) {
        ++number;
        try {
            reader.read(JSON::parse(line));
        } catch (const std::exception&) {  // of the JSON library, or InvalidValue
            reading.failure = "has an invalid line " + std::to_string(number);
        }
    }
    if (reading.failure.empty() && !reader.isComplete()) {
        reading.failure = number == 0 ? "is empty" : "is incomplete";
    }
    return reading;
}

}  // namespace neb::nebsc
