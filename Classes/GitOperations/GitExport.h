// GitExport.h - files and trees of the repository, written to disk: request types 20, 21 and 22.
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitOperation.h"

namespace neb {

/// Extracts an archive from its standard input: into the folder of the target that the request's
/// options hold under NEBSourceControlOperationPathKey, or into the request's destination, when it
/// has one and no files.
///
/// The result is one record with NEBSourceControlOperationPathKey, the target, when something is
/// there afterwards, whoever put it there; else an error tells that the revision of the file was
/// not found.
class GitTarOperation : public NEBSourceControlTaskOperation {
public:
    explicit GitTarOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitTarOperation"; }
    /// "/usr/bin/tar".
    [[nodiscard]] std::string launchPath() override;
    void parseData() override;
};

/// Writes the request's first file as it was at the starting revision to the destination, or, when
/// there is none, to a temporary file, which its owner alone may read and which is the host's to
/// remove. What is there is overwritten.
/// The destination's name must end with the file's own, with or without a head in front of it.
///
/// When it is made, it puts the target, a LOMFilePath, into the request's options under
/// NEBSourceControlOperationPathKey. Its result is that of the GitTarOperation to which it pipes an
/// archive of the file.
class GitExportFileOperation : public GitOperation {
public:
    explicit GitExportFileOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitExportFileOperation"; }
    [[nodiscard]] std::shared_ptr<NEBSourceControlTaskOperation> pipeToOperation() override;
    /// When it fails or is cancelled, it leaves nothing of a target that was not there before. One
    /// that was there counts as the result, whatever came of the export: of one that was cancelled,
    /// or whose children died, there may be an error beside it. With a file outside the source
    /// tree, or a path that ends in "." or "..", nothing is run: the archive would hold another
    /// file, or be a whole tree beside the target.
    void main() override;

private:
    [[nodiscard]] LOMFilePath chooseTarget() const;
    void rejectHalfExport();

    std::shared_ptr<GitTarOperation> _pipeToOperation;
};

/// Writes every file of the index below the request's destination, a folder, overwriting what is
/// there. The index, whatever the starting revision says. There is no result.
class GitExportTreeOperation : public GitOperation {
public:
    explicit GitExportTreeOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitExportTreeOperation"; }
    /// Without a destination, or with an empty one, nothing is run: git would write somewhere else.
    /// Nor where a file is in the destination's place, or on the way to it: git would remove that.
    void main() override;
};

}  // namespace neb
