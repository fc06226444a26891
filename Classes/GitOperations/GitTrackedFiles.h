// GitTrackedFiles.h - which files the repository tracks: request types 0 and 6 (add), 5 (remove)
// and 11 (move). None of them leaves a result.
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitOperation.h"

namespace neb {

/// Stages the request's destination, a path, or else its files, or else the whole working copy. A
/// file that is no string is reported.
class GitAddOperation : public GitOperation {
public:
    explicit GitAddOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitAddOperation"; }
};

/// Deletes the files from the working copy and the index: folders with all that is in them, and
/// changed files with their changes.
class GitRemoveOperation : public GitOperation {
public:
    explicit GitRemoveOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitRemoveOperation"; }
};

/// Moves the first of the files to the destination, in the working copy and the index. Further
/// files stay where they are.
class GitMoveOperation : public GitOperation {
public:
    explicit GitMoveOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitMoveOperation"; }
};

}  // namespace neb
