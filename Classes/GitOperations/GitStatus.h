// GitStatus.h - the states of files in a working copy: request type 15, and what log and
// differences share with it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "GitOperations/GitOperation.h"
#include "Platform/Data.h"

namespace neb {

/// The host's status value for git's status letters, of which the first counts: "M" and "T" are 4,
/// "C" and "R" 4096. 0 for any other, which is logged.
[[nodiscard]] std::uint32_t nebgit_sourceControlStatus(std::string_view letters);

/// Reads the lines of a status or of a list of names and states. One thread at a time.
class GitStatusLines {
public:
    /// With `fullPath` in front of each path, unless it is empty.
    explicit GitStatusLines(std::string_view fullPath);
    GitStatusLines(const GitStatusLines&) = delete;
    GitStatusLines& operator=(const GitStatusLines&) = delete;
    /// The records stay good.
    ~GitStatusLines();

    /// A record with the status value and the path; nothing for a line without a state.
    [[nodiscard]] std::optional<NEBDictionary> recordOf(std::string_view line);

private:
    [[nodiscard]] NEBValue fullPathOf(std::string_view path);

    std::string _front;  // what stands before each path
    GrowingData _paths;  // all of them, one behind the other
};

/// The states of the files below the request's source tree, or of its destination alone (a path).
/// One record a file, with NEBSourceControlOperationWCStatusKey and
/// NEBSourceControlOperationPathKey, the path being the source tree's location with git's path
/// behind it. git's paths start at the top of the working copy, so the location should be that top.
/// Empty when the source tree is not valid.
class GitStatusOperation : public GitOperation {
public:
    explicit GitStatusOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitStatusOperation"; }
    void parseData() override;
};

}  // namespace neb
