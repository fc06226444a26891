// GitExport.h - request types 20 and 21 (export of a file) and 22 (export of a tree).
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitOperation.h"

namespace neb {

/// Extracts an archive from standard input: into the folder of the target, which the options of the
/// request hold under NEBSourceControlOperationPathKey, or into the request's destination if it has
/// one and no files.
///
/// The result is one record with NEBSourceControlOperationPathKey, the target, if that exists
/// afterwards. Otherwise the error says that the revision of the file was not found.
class GitTarOperation : public NEBSourceControlTaskOperation {
public:
    explicit GitTarOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitTarOperation"; }
    /// "/usr/bin/tar".
    [[nodiscard]] std::string launchPath() override;
    void parseData() override;
};

/// Writes the request's first file, as it was at the starting revision, to the destination, or,
/// without one, to a temporary file that only the owner can read and that the host must remove.
/// Overwrites an existing file. The name of the destination must end with the name of the file.
///
/// The constructor stores the target, a LOMFilePath, in the request's options under
/// NEBSourceControlOperationPathKey. The result is that of the GitTarOperation that reads the
/// archive of the file.
class GitExportFileOperation : public GitOperation {
public:
    explicit GitExportFileOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitExportFileOperation"; }
    [[nodiscard]] std::shared_ptr<NEBSourceControlTaskOperation> pipeToOperation() override;
    /// After a failure or cancellation, removes a target that did not exist before. A target that
    /// existed counts as the result in any case; there may be an error beside it. Runs nothing for
    /// a file outside the source tree, or a path that ends in "." or "..": the archive would
    /// contain another file, or a whole tree beside the target.
    void main() override;

private:
    [[nodiscard]] LOMFilePath chooseTarget() const;
    void rejectIncompleteExport();

    std::shared_ptr<GitTarOperation> _pipeToOperation;
};

/// Writes all files of the index, whatever the starting revision, below the destination, a folder.
/// Overwrites existing files. No result.
class GitExportTreeOperation : public GitOperation {
public:
    explicit GitExportTreeOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitExportTreeOperation"; }
    /// Runs nothing without a destination, as git would write elsewhere, or if a file is at the
    /// destination or one of its parents, as git would remove that file.
    void main() override;
};

}  // namespace neb
