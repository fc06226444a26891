// GitStatus.h - the states of files in a working copy: request type 15, and what log and
// differences share with it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "GitOperations/GitOperation.h"

namespace neb {

/// The host's status value for git's status letters, of which the first counts: "M" and "T" are 4,
/// "C" and "R" 4096. 0 for any other, which is logged.
[[nodiscard]] std::uint32_t nebgit_sourceControlStatus(std::string_view letters);

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
