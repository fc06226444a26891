// RecordingFile.h - writes a recording; docs/recordings.md describes the format.
//
//     RecordingFile file("/tmp/status.recording");
//     if (const auto failure = file.open("1.0")) { … }
//     {
//         const Interceptor::Scope scope(file.interceptor());
//         session.perform(request, run);
//     }
//     if (const auto failure = file.finish()) { … }
#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/FileDescriptor.h"
#include "Platform/FileFailure.h"
#include "Platform/Mutex.h"
#include "Platform/NewFile.h"
#include "Session/RequestRecording.h"

namespace neb::nebsc {

/// The version of the format.
inline constexpr int recordingVersion = 1;

/// A file that appears complete when it is finished, readable by its owner only. An existing file
/// stays. Secrets are removed from everything that is written. Thread-safe.
class RecordingFile {
public:
    /// Takes an absolute path.
    explicit RecordingFile(const std::string& path) : _file(path, "recording") {}
    /// Changes the lines of the whole recording before they are written. Returns why that is not
    /// possible; empty on success.
    using Change = std::function<std::string(std::vector<nlohmann::ordered_json>& lines)>;
    /// Keeps the lines in memory, and calls the function in finish(). If that fails, nothing is
    /// written.
    RecordingFile(const std::string& path, Change change)
        : _file(path, "recording"), _change(std::move(change)) {}
    RecordingFile(const RecordingFile&) = delete;
    RecordingFile& operator=(const RecordingFile&) = delete;
    ~RecordingFile() = default;

    /// Creates the draft and writes its first line, with the version of the plug-in and, which runs
    /// it, of git. Returns the failure, if any.
    [[nodiscard]] std::optional<FileFailure> open(const std::string& plugInVersion);
    /// Creates the draft, and writes the lines of a complete recording but the last, which finish()
    /// writes. Returns the failure, if any.
    [[nodiscard]] std::optional<FileFailure> openCopy(std::vector<nlohmann::ordered_json> lines);
    /// Returns an interceptor for what belongs to no request. In its scope, requests are recorded.
    /// The file must outlive it.
    [[nodiscard]] std::shared_ptr<Interceptor> interceptor();
    /// Writes the last line and moves the file to its path. Returns the first failure since open().
    [[nodiscard]] std::optional<FileFailure> finish();

    [[nodiscard]] const std::string& path() const { return _file.path(); }

private:
    class Recording;

    [[nodiscard]] std::optional<FileFailure> openDraft();
    [[nodiscard]] std::shared_ptr<RequestRecording> begin(const NEBSourceControlRequest& request,
                                                          const OwnOperation& own);
    /// Removes secrets from the JSON, and writes it on a line.
    void write(nlohmann::ordered_json line);
    /// Changes and writes the lines that were kept. Returns why it is not possible, if it is not.
    [[nodiscard]] std::string writeChanged() NEB_REQUIRES(_mutex);
    void writeLine(const std::string& line) NEB_REQUIRES(_mutex);
    [[nodiscard]] int lineCount();

    Mutex _mutex;
    NewFile _file;
    /// Empty: each line is written at once.
    const Change _change;
    FileDescriptor _draft NEB_GUARDED_BY(_mutex);
    int _failure NEB_GUARDED_BY(_mutex) = 0;
    int _requestCount NEB_GUARDED_BY(_mutex) = 0;
    int _lineCount NEB_GUARDED_BY(_mutex) = 0;
    /// Those that were not written, because they are to be changed.
    std::vector<nlohmann::ordered_json> _lines NEB_GUARDED_BY(_mutex);
};

}  // namespace neb::nebsc
