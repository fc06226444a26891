// GitCopy.h - request types 10 (copy) and 8 (make directory), for which git has no command.
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitComposite.h"
#include "Platform/FileManager.h"

namespace neb {

/// The base of work in the file system beside which its destination is staged. The two are not
/// ordered: an add that comes first may find nothing to stage. An error is the file system's alone
/// (in NEBPOSIXErrorDomain); the add's is dropped, and its result, absent, is the result. Without a
/// destination nothing is staged.
class GitFileSystemOperation : public GitComposite<NEBSourceControlOperation> {
public:
    using GitComposite::GitComposite;

    void main() override;
    void cancel() override;

protected:
    /// The work itself, done on the queue.
    [[nodiscard]] virtual std::optional<FileFailure> work(FileManager& manager) = 0;
    /// A value of the request as a path; a relative one as git would take it, from the source
    /// tree's folder. Empty, which no file has for a name, for an absent value.
    [[nodiscard]] std::string pathOf(const NEBValue& value) const;

private:
    void doWork();

    FileManager _fileManager;
};

/// Copies the first of the request's files, a path, to the destination, a path at which nothing is
/// yet; a folder with all that is in it.
class GitCopyOperation : public GitFileSystemOperation {
public:
    using GitFileSystemOperation::GitFileSystemOperation;

    [[nodiscard]] std::string className() const override { return "GitCopyOperation"; }

protected:
    std::optional<FileFailure> work(FileManager& manager) override;
};

/// Makes the folder that the destination names, and those on the way to it.
class GitMakeDirectoryOperation : public GitFileSystemOperation {
public:
    using GitFileSystemOperation::GitFileSystemOperation;

    [[nodiscard]] std::string className() const override { return "GitMakeDirectoryOperation"; }

protected:
    std::optional<FileFailure> work(FileManager& manager) override;
};

}  // namespace neb
