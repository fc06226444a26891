// GitContent.h - request type 1002 (content); see git-cat-file(1), and gitrevisions(7) for the
// names of files.
#pragma once

#include <memory>
#include <string>

#include "GitExtensions/GitNamedObject.h"

namespace neb {

/// Returns the content of the only file of the request, at the starting revision, by default HEAD,
/// or with NEBSourceControlRequestOptionStage in the index. The path starts at the top of the
/// repository; an absolute path must lie in the location. Of a symbolic link, the content is its
/// target.
///
/// The result is one record with NEBSourceControlOperationContentKey or, for a file that is not
/// UTF-8, NEBSourceControlOperationContentBytesKey. With NEBSourceControlRequestOptionApplyFilters,
/// the content is converted as for the working copy. A folder or a submodule has no content: an
/// error of the class "file-type-wrong".
class GitContentOperation : public GitNamedObjectOperation {
public:
    explicit GitContentOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitContentOperation"; }
    void parseData() override;
};

}  // namespace neb
