#include "Recording/RecordingFile.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "JSON/OutcomeJSON.h"
#include "NEBFoundation/NEBSourceControlTaskOperation.h"
#include "Recording/RequestText.h"
#include "Recording/SecretRedaction.h"
#include "Session/GitProgram.h"

namespace neb::nebsc {

namespace {

using JSON = nlohmann::ordered_json;

double millisecondsOf(std::chrono::nanoseconds duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

JSON jsonOfTexts(const std::vector<std::string>& texts) {
    JSON array = JSON::array();
    for (const std::string& text : texts) {
        array.push_back(jsonOfBytes(text));
    }
    return array;
}

JSON jsonOfStatus(const TerminationStatus& status) {
    if (const auto exitStatus = status.exitStatus()) {
        return {{"exit", *exitStatus}};
    }
    if (const auto signalNumber = status.signalNumber()) {
        return {{"signal", *signalNumber}};
    }
    return {{status.started() ? "unknown" : "notStarted", status.description()}};
}

JSON jsonOfChild(const NEBSourceControlRecordedChild& child) {
    JSON json{{"program", jsonOfBytes(child.launchPath)},
              {"arguments", jsonOfTexts(child.arguments)},
              {"folder", child.currentDirectoryPath ? jsonOfBytes(*child.currentDirectoryPath)
                                                    : JSON(nullptr)},
              {"set", jsonOfTexts(child.setVariables)},
              {"removed", jsonOfTexts(child.removedVariables)},
              {"status", jsonOfStatus(child.status)},
              {"milliseconds", millisecondsOf(child.duration)},
              {"output", jsonOfBytes(child.output)},
              {"errorOutput", jsonOfBytes(child.errorOutput)}};
    if (child.input) {
        json["input"] = jsonOfBytes(*child.input);
    }
    if (child.outputWasHeldOpen) {
        json["outputWasHeldOpen"] = true;
    }
    if (child.exceededLimit) {
        json["exceededLimit"] = static_cast<int>(*child.exceededLimit);
    }
    return json;
}

/// Returns the first line.
JSON headerWith(const std::string& plugInVersion) {
    ChildProcess git;
    const Interceptor::Scope scope(nullptr);
    const auto version = trimmedOutputOf(runGit(git, Trace(false), {"--version"}, std::nullopt));
    const char* home = std::getenv("HOME");
    return {{"recording", recordingVersion},
            {"nebsc", NEBSC_VERSION},
            {"plugIn", plugInVersion},
            {"git", version.value_or("")},
            {"home", jsonOfBytes(home != nullptr ? home : "")}};
}

JSON lineOf(int request, const NEBSourceControlRecordedRun& run) {
    JSON children = JSON::array();
    for (const NEBSourceControlRecordedChild& child : run.children) {
        children.push_back(jsonOfChild(child));
    }
    JSON line{{"kind", "run"},
              {"request", request},
              {"start", millisecondsOf(run.start)},
              {"children", std::move(children)}};
    if (run.wasCancelled) {
        line["cancelled"] = true;
    }
    return line;
}

JSON jsonOfLimits(const NEBSourceControlLimits& limits) {
    JSON json{{"lockWaitMilliseconds", limits.lockWait.count()}};
    if (limits.silence) {
        json["silenceMilliseconds"] = limits.silence->count();
    }
    if (limits.total) {
        json["totalMilliseconds"] = limits.total->count();
    }
    if (limits.outputBytes) {
        json["outputBytes"] = *limits.outputBytes;
    }
    return json;
}

JSON jsonOfOwn(const OwnOperation& own) {
    JSON json{{"operation", own.operation->className()}, {"isChecked", own.isChecked}};
    if (const auto* task = dynamic_cast<NEBSourceControlTaskOperation*>(own.operation)) {
        json["arguments"] = jsonOfTexts(task->arguments());
        json["folder"] = task->currentDirectoryPath() ? jsonOfBytes(*task->currentDirectoryPath())
                                                      : JSON(nullptr);
    }
    return json;
}

}  // namespace

/// Number 0 is not a request.
class RecordingFile::Recording : public RequestRecording {
public:
    Recording(RecordingFile& file, int number)
        : RequestRecording(
              [&file, number](const NEBSourceControlRecordedRun& run) {
                  file.write(lineOf(number, run));
              },
              [&file, number](const NEBSourceControlRecordedAnswer& answer) {
                  file.write({{"kind", "answer"},
                              {"request", number},
                              {"question", answer.question},
                              {"subject", jsonOfBytes(answer.subject)},
                              {"answer", jsonOfBytes(answer.answer)}});
              }),
          _file(file),
          _number(number) {}

    [[nodiscard]] std::shared_ptr<RequestRecording> begin(const NEBSourceControlRequest& request,
                                                          const OwnOperation& own) override {
        return _number == 0 ? _file.begin(request, own) : nullptr;
    }

    void delivered(const NEBSourceControlResult& records) override {
        _file.write({{"kind", "records"},
                     {"request", _number},
                     {"records", JSON::parse(textOfRecords(records), nullptr, false)}});
    }

    void ran(const NEBSourceControlOperation& operation) override {
        _limits = operation.limits();
        _isBackgroundWork = operation.isBackgroundWork();
    }

    void ended(const Outcome& outcome) override {
        _file.write({{"kind", "outcome"},
                     {"request", _number},
                     {"limits", jsonOfLimits(_limits)},
                     {"background", _isBackgroundWork},
                     {"outcome", JSON::parse(textOfOutcome(outcome), nullptr, false)}});
    }

private:
    RecordingFile& _file;
    const int _number;
    NEBSourceControlLimits _limits;
    bool _isBackgroundWork = false;
};

std::optional<FileFailure> RecordingFile::open(const std::string& plugInVersion) {
    auto failure = openDraft();
    if (!failure) {
        write(headerWith(plugInVersion));
    }
    return failure;
}

std::optional<FileFailure> RecordingFile::openCopy(std::vector<JSON> lines) {
    auto failure = openDraft();
    if (!failure) {
        lines.pop_back();
        for (JSON& line : lines) {
            write(std::move(line));
        }
    }
    return failure;
}

std::optional<FileFailure> RecordingFile::openDraft() {
    std::error_code ignored;
    const std::string what = "The recording \"" + path() + "\" could not be created";
    if (std::filesystem::exists(std::filesystem::symlink_status(path(), ignored))) {
        return FileFailure::of(EEXIST, what);
    }
    if (const auto failure = _file.prepare()) {
        return FileFailure::of(failure->errorNumber, what);
    }
    constexpr mode_t onlyForTheOwner = 0600;
    const MutexLock lock(_mutex);
    _draft = FileDescriptor(
        ::open(_file.draft().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, onlyForTheOwner));
    if (!_draft.isOpen()) {
        return FileFailure::of(errno, what);
    }
    return std::nullopt;
}

std::shared_ptr<RequestRecording> RecordingFile::begin(const NEBSourceControlRequest& request,
                                                       const OwnOperation& own) {
    MutexLock lock(_mutex);
    const int number = ++_requestCount;
    lock.unlock();
    JSON line{{"kind", "request"}, {"request", number}, {"json", jsonOfRequest(request)}};
    if (own.operation != nullptr) {
        line["own"] = jsonOfOwn(own);
    }
    write(std::move(line));
    return std::make_shared<Recording>(*this, number);
}

std::shared_ptr<Interceptor> RecordingFile::interceptor() {
    return std::make_shared<Recording>(*this, 0);
}

void RecordingFile::write(JSON line) {
    removeSecretsFrom(line);
    const std::string text = _change ? "" : lineOfJSON(line);
    const MutexLock lock(_mutex);
    ++_lineCount;
    if (_change) {
        _lines.push_back(std::move(line));
    } else {
        writeLine(text);
    }
}

int RecordingFile::lineCount() {
    const MutexLock lock(_mutex);
    return _lineCount;
}

std::string RecordingFile::writeChanged() {
    std::string reason = _change(_lines);
    if (reason.empty()) {
        for (const JSON& line : _lines) {
            writeLine(lineOfJSON(line));
        }
    }
    return reason;
}

void RecordingFile::writeLine(const std::string& line) {
    if (_failure == 0) {
        _failure = writeAll(_draft.get(), line, WhenFull::fail);
    }
}

std::optional<FileFailure> RecordingFile::finish() {
    const std::string what = "The recording \"" + path() + "\" could not be written";
    write({{"kind", "end"}, {"lines", lineCount() + 1}});
    const MutexLock lock(_mutex);
    if (const std::string reason = _change ? writeChanged() : ""; !reason.empty()) {
        return FileFailure{ECANCELED, what + ": " + reason + (reason.ends_with('.') ? "" : ".")};
    }
    const int lateFailure = _draft.close();
    if (_failure != 0 || lateFailure != 0) {
        return FileFailure::of(_failure != 0 ? _failure : lateFailure, what);
    }
    const auto failure = _file.publish();
    return failure ? std::optional(FileFailure::of(failure->errorNumber, what)) : std::nullopt;
}

}  // namespace neb::nebsc
