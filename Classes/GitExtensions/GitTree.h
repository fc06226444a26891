// GitTree.h - request type 1019 (tree); see git-ls-tree(1).
#pragma once

#include <memory>
#include <string>

#include "GitExtensions/GitNamedObject.h"

namespace neb {

/// Lists the entries of the folder in `files`, by default of the top, at the starting revision, by
/// default HEAD. The path starts at the top of the repository; an absolute path must lie in the
/// location.
///
/// The result has a record per entry: NEBSourceControlOperationKindKey ("file", "executable",
/// "symbolic link", "folder" or "submodule"), NEBSourceControlOperationNameKey,
/// NEBSourceControlOperationPathKey (from the top), NEBSourceControlOperationModeKey,
/// NEBSourceControlOperationObjectIDKey, and of files and symbolic links
/// NEBSourceControlOperationSizeKey. With NEBSourceControlRequestOptionRecursive, the entries of a
/// folder follow it. A partial clone that lacks files needs NEBSourceControlRequestOptionOmitSizes.
/// A path that is no folder is an error of the class "file-type-wrong".
class GitTreeOperation : public GitNamedObjectOperation {
public:
    explicit GitTreeOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitTreeOperation"; }
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;
};

}  // namespace neb
