// GitNewRepository.h - request types 27 (create repository) and 29 (clone).
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitOperation.h"

namespace neb {

/// Makes a bare repository at the path of the option NEBSourceControlRequestOptionRepositoryPath,
/// or, without that, a repository in the source tree's folder, whose list of files to ignore
/// (".git/info/exclude") is replaced by what development environments leave in every folder. No
/// result. A list that cannot be written is an error, the write's own.
class GitCreateRepositoryOperation : public GitOperation {
public:
    explicit GitCreateRepositoryOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitCreateRepositoryOperation"; }
    void parseData() override;

private:
    void writeExcludeFile();
};

/// Clones the source tree's location, submodules included, into the destination, a path; of the
/// option NEBSourceControlRequestOptionBranch it checks that branch out. git runs in the
/// destination itself, which so must be there, and empty; without a destination it runs in the
/// source tree's folder, if that has one. No result.
class GitCloneOperation : public GitOperation {
public:
    explicit GitCloneOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitCloneOperation"; }
};

}  // namespace neb
