// RecordingReader.h - reads a recording; docs/recordings.md describes the format.
#pragma once

#include <iosfwd>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "JSON/RequestJSON.h"
#include "NEBFoundation/NEBSourceControlRecording.h"

namespace neb::nebsc {

/// An operation of nebsc's own that a request ran instead of the plug-in's.
struct RecordedOperation {
    std::string className;
    /// Whether the plug-in checked the request before.
    bool isChecked = false;
    std::vector<std::string> arguments;
    /// Absent: the working directory.
    std::optional<std::string> folder;
};

/// One request of a recording.
struct RecordedRequest {
    int number = 0;
    /// With limits and background. Never null.
    std::shared_ptr<NEBSourceControlRequest> request;
    RunSettings settings;
    /// Absent: the plug-in's operation ran.
    std::optional<RecordedOperation> own;
    std::vector<NEBSourceControlRecordedRun> runs;
    std::vector<NEBSourceControlRecordedAnswer> answers;
    /// The records that were delivered while the operation ran.
    nlohmann::ordered_json delivered = nlohmann::ordered_json::array();
    /// An object with a name that is a string or null; null if the request was refused.
    nlohmann::ordered_json outcome;

    /// Whether the end of the request depended on time.
    [[nodiscard]] bool wasCancelled() const;
};

/// The first line of a recording: the versions, and the home folder.
struct RecordingHeader {
    std::string nebsc, plugIn, git, home;
};

/// A recording, or the reason why it could not be read.
// NOLINTNEXTLINE(bugprone-exception-escape): the library's move constructor checks an assertion
struct RecordingReading {
    RecordingHeader header;
    std::vector<RecordedRequest> requests;
    /// The number of children that belong to no request.
    std::size_t otherChildren = 0;
    /// What is wrong with the file, as the end of a sentence that begins with its name: the line
    /// and the member; empty on success.
    std::string failure;
};

/// The lines of a patch are delivered as empty records, one for each batch of lines, whose number
/// depends on time. Leaves one of them, also in the count of the outcome.
void uniteBatches(nlohmann::ordered_json& outcome, nlohmann::ordered_json& delivered);

/// Reads the file, of which nothing is taken for granted. An incomplete one is a failure, and so is
/// a pipe or a device. Unless null, `lines` gets the JSON of each line.
[[nodiscard]] RecordingReading readRecording(const std::string& path,
                                             std::vector<nlohmann::ordered_json>* lines = nullptr);

/// Reads a recording from a stream.
[[nodiscard]] RecordingReading readRecording(std::istream& stream,
                                             std::vector<nlohmann::ordered_json>* lines = nullptr);

}  // namespace neb::nebsc
