// GitList.h - request type 17 (list): the entries of a folder in HEAD.
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitComposite.h"
#include "GitOperations/GitOperation.h"

namespace neb {

/// Lists the entries of HEAD in the folder that the request's first file names. The shell expands
/// "folder/*" to the files on disk, so that the list has the entries that exist both in the commit
/// and on disk, and whose name does not begin with ".". A blank ends the name of the folder, and
/// wildcards in it are expanded; all other characters are literal, and no name can make the shell
/// run a command. The empty name is a syntax error of the shell.
///
/// The result has a record per entry: NEBSourceControlOperationNameKey, without folders, and
/// NEBSourceControlOperationIsLeafKey, true for a file, false for a folder or submodule. Empty for
/// an empty folder. A URL, or a path outside the working copy, is an error of the class
/// "path-outside".
class GitListFilesOperation : public GitOperation {
public:
    explicit GitListFilesOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitListFilesOperation"; }
    /// "/bin/sh".
    [[nodiscard]] std::string launchPath() override;
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;
    void parseData() override;
    [[nodiscard]] std::optional<NEBSourceControlError> errorFromErrorMessage(
        const std::optional<std::string>& message) override;
};

/// Runs a GitListFilesOperation and passes on its result and error.
class GitListOperation : public GitComposite<NEBSourceControlOperation> {
public:
    using GitComposite::GitComposite;

    [[nodiscard]] std::string className() const override { return "GitListOperation"; }
    void main() override;
};

}  // namespace neb
