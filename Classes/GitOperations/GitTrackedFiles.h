// GitTrackedFiles.h - request types 0 and 6 (add), 5 (remove) and 11 (move). None has a result.
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitOperation.h"

namespace neb {

/// Stages the destination, a path, otherwise the files, otherwise the whole working copy. A file
/// that is not a string is reported.
class GitAddOperation : public GitOperation {
public:
    explicit GitAddOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitAddOperation"; }
};

/// Deletes the files from the working copy and the index: folders recursively, changed files with
/// their changes.
class GitRemoveOperation : public GitOperation {
public:
    explicit GitRemoveOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitRemoveOperation"; }
};

/// Moves the first file to the destination, in the working copy and the index. Ignores further
/// files.
class GitMoveOperation : public GitOperation {
public:
    explicit GitMoveOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitMoveOperation"; }
};

}  // namespace neb
