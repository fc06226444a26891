// LogEntry.h - commits in the records of the request types 18 (log) and 1001 (history).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "NEBFoundation/NEBDictionary.h"
#include "NEBFoundation/NEBValue.h"

namespace neb::nebsc {

/// A file that a commit changed.
struct ChangedFile {
    /// One of NEBSourceControlStatus.
    std::int64_t status = 0;
    /// The bytes of the path from the top of the working copy; of a renamed file the old one.
    std::string path{};
};

/// A commit. Texts are as git printed them; names of references are bytes.
struct LogEntry {
    /// The full id, or its first 12 characters from a log record.
    std::string id{};
    std::string author{};
    std::string authorEmail{};
    /// When the author wrote the change; absent if git did not say.
    std::optional<NEBDate> date{};
    /// The whole message.
    std::string message{};
    std::vector<ChangedFile> files{};

    // ---- only from a history record

    std::vector<std::string> parents{};
    /// The full names of the references to the commit.
    std::vector<std::string> references{};
    bool isHEAD = false;
};

/// Returns the commit of a record of request type 18. Thread-safe, as is the next function.
[[nodiscard]] LogEntry entryOfLogRecord(const NEBDictionary& record);

/// Returns the commit of a record of request type 1001. As in a log record, a merge has no files.
[[nodiscard]] LogEntry entryOfHistoryRecord(const NEBDictionary& record);

}  // namespace neb::nebsc
