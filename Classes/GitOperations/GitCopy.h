// GitCopy.h - request types 10 (copy) and 8 (make directory), which no git command carries out.
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitComposite.h"
#include "Platform/FileManager.h"

namespace neb {

/// The base of operations that work in the file system and stage their destination at the same
/// time. The order of the two is undefined: an add that runs first may find nothing to stage. The
/// error is always one of the file system (in NEBPOSIXErrorDomain); errors of the add are ignored.
/// The result is that of the add, which is absent. Without a destination, nothing is staged.
class GitFileSystemOperation : public GitComposite<NEBSourceControlOperation> {
public:
    using GitComposite::GitComposite;

    void main() override;
    void cancel() override;

protected:
    /// Does the work in the file system. Called on the queue.
    [[nodiscard]] virtual std::optional<FileFailure> work(FileManager& manager) = 0;
    /// Returns a value of the request as a path; a relative one starts at the folder of the source
    /// tree, as for git. Empty for an absent value.
    [[nodiscard]] std::string pathOf(const NEBValue& value) const;

private:
    void doWork();

    FileManager _fileManager;
};

/// Copies the first of the request's files, a path, to the destination, a path that must not exist.
/// Folders are copied recursively.
class GitCopyOperation : public GitFileSystemOperation {
public:
    using GitFileSystemOperation::GitFileSystemOperation;

    [[nodiscard]] std::string className() const override { return "GitCopyOperation"; }

protected:
    std::optional<FileFailure> work(FileManager& manager) override;
};

/// Creates the folder `destination` and its missing parents.
class GitMakeDirectoryOperation : public GitFileSystemOperation {
public:
    using GitFileSystemOperation::GitFileSystemOperation;

    [[nodiscard]] std::string className() const override { return "GitMakeDirectoryOperation"; }

protected:
    std::optional<FileFailure> work(FileManager& manager) override;
};

}  // namespace neb
