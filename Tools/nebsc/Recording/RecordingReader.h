// RecordingReader.h - reads a recording; docs/recordings.md describes the format.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "NEBFoundation/NEBSourceControlRecording.h"

namespace neb::nebsc {

/// One request of a recording.
struct RecordedRequest {
    int number = 0;
    /// As in docs/json.md, with limits and background.
    nlohmann::ordered_json json;
    /// What RecordingFile wrote about an operation of nebsc's own; null for the plug-in's.
    nlohmann::ordered_json own;
    std::vector<NEBSourceControlRecordedRun> runs;
    std::vector<NEBSourceControlRecordedAnswer> answers;
    /// The records that were delivered while the operation ran.
    nlohmann::ordered_json delivered = nlohmann::ordered_json::array();
    /// Null if the request was refused.
    nlohmann::ordered_json outcome;

    /// Whether the end of the request depended on time.
    [[nodiscard]] bool wasCancelled() const;
};

/// A recording, or the reason why it could not be read.
// NOLINTNEXTLINE(bugprone-exception-escape): the library's move constructor checks an assertion
struct RecordingReading {
    nlohmann::ordered_json header;
    std::vector<RecordedRequest> requests;
    /// The number of children that belong to no request.
    std::size_t otherChildren = 0;
    /// One sentence; empty on success.
    std::string failure;
};

/// Reads the file. An incomplete one is a failure.
[[nodiscard]] RecordingReading readRecording(const std::string& path);

}  // namespace neb::nebsc
