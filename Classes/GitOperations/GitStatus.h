// GitStatus.h - request type 15 (status), and the parser that log and diff share with it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "GitOperations/GitOperation.h"
#include "Platform/Data.h"

namespace neb {

/// Returns the NEBSourceControlStatus for the status letters of git, of which the first counts. 0
/// for an unknown letter, which is logged.
[[nodiscard]] std::uint32_t nebgit_sourceControlStatus(std::string_view letters);

/// Reads the lines of a status or of a list of names and states. Not thread-safe.
class GitStatusLines {
public:
    /// Prepends `fullPath` to each path, unless it is empty.
    explicit GitStatusLines(std::string_view fullPath);
    GitStatusLines(const GitStatusLines&) = delete;
    GitStatusLines& operator=(const GitStatusLines&) = delete;
    ~GitStatusLines() = default;

    /// Returns a record with the status value and the path; absent for a line without a state. It
    /// stays valid, and other threads may read it while more lines are read.
    [[nodiscard]] std::optional<NEBDictionary> recordOf(std::string_view line);

private:
    [[nodiscard]] NEBValue fullPathOf(std::string_view path);

    std::string _front;  // prepended to each path
    GrowingData _paths;  // of the latest records, concatenated
};

/// Parses the lines of a status or of a list of names and states.
class GitStatusParser : public NEBSourceControlLineParser {
public:
    /// Prepends `fullPath` to each path, unless it is empty.
    explicit GitStatusParser(std::string_view fullPath) : _lines(fullPath) {}

protected:
    void parseLine(const Data& text, std::string_view line,
                   NEBSourceControlResult& records) override;

private:
    GitStatusLines _lines;
};

/// Lists the states of the files below the source tree, or of the destination alone (a path). A
/// record per file with NEBSourceControlOperationWCStatusKey and NEBSourceControlOperationPathKey,
/// the location of the source tree followed by the path of git. The paths of git start at the top
/// of the working copy, so the location should be that top. Empty when the source tree is not
/// valid.
class GitStatusOperation : public GitOperation {
public:
    explicit GitStatusOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitStatusOperation"; }
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;
    void parseData() override;
};

}  // namespace neb
