// GitList.h - the entries of a folder in the latest commit: request type 17.
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitComposite.h"
#include "GitOperations/GitOperation.h"

namespace neb {

/// Lists what the latest commit holds of the folder that the request's first file names. The shell
/// expands "folder/*" to what is on disk, so an entry shows that is in the commit and on disk, and
/// whose name does not begin with ".". A blank in the folder's name ends it, and wildcards in it
/// expand; any other character stands for itself, and no name can make the shell run anything. The
/// empty name is a line that the shell refuses.
///
/// The result has one record an entry: NEBSourceControlOperationNameKey, without folders, and
/// NEBSourceControlOperationIsLeafKey, true for a file, false for a folder or a submodule. Empty
/// when there is none. A folder that is a URL, or a path outside the working copy, is an error of
/// the class "path-outside".
class GitListFilesOperation : public GitOperation {
public:
    explicit GitListFilesOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitListFilesOperation"; }
    /// "/bin/sh".
    [[nodiscard]] std::string launchPath() override;
    void parseData() override;
    [[nodiscard]] std::optional<NEBSourceControlError> errorFromErrorMessage(
        const std::optional<std::string>& message) override;
};

/// Runs a GitListFilesOperation and hands on its result and error.
class GitListOperation : public GitComposite<NEBSourceControlOperation> {
public:
    using GitComposite::GitComposite;

    [[nodiscard]] std::string className() const override { return "GitListOperation"; }
    void main() override;
};

}  // namespace neb
