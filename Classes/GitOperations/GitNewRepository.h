// GitNewRepository.h - request types 27 (create repository) and 29 (clone).
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitOperation.h"

namespace neb {

/// Creates a bare repository at the path in the option NEBSourceControlRequestOptionRepositoryPath
/// or, without that, a repository in the folder of the source tree. In the latter it replaces the
/// list of ignored files (".git/info/exclude") with the usual files of development environments. No
/// result. If the list cannot be written, the error is that of the file system.
class GitCreateRepositoryOperation : public GitOperation {
public:
    explicit GitCreateRepositoryOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitCreateRepositoryOperation"; }
    void parseData() override;

private:
    void writeExcludeFile();
};

/// Clones the location of the source tree with its submodules into the destination, a path, and
/// checks out the branch in the option NEBSourceControlRequestOptionBranch, if set. git runs in the
/// destination, which must be an existing, empty folder; without a destination, in the folder of
/// the source tree, if it has one. No result.
class GitCloneOperation : public GitOperation {
public:
    explicit GitCloneOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitCloneOperation"; }
};

}  // namespace neb
