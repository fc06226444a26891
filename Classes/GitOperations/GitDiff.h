// GitDiff.h - differences between two revisions, or a revision and the working copy: request
// type 30.
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitOperation.h"

namespace neb {

/// Compares the request's two revisions; without an ending one the starting revision with the
/// working copy; without a starting one HEAD with the working copy, never with the index. The
/// request's files alone, when it has any. Not by a
/// program that the user has configured for differences; one that turns files into text for them
/// (textconv) is run, and what it hides is no difference then. git's paths start at the top of the
/// working copy, so the location should be that top.
///
/// The result is one record with NEBSourceControlOperationContentKey, the whole patch. With the
/// option for names and states alone, it has one record a changed file, as in
/// GitOperation::parseForStatusAndPathWithLine() with the source tree's location in front; a
/// renamed file's path is all that follows the "R": score, TAB, old path, TAB, new path. Absent, in
/// both forms, when there is no difference.
class GitDiffOperation : public GitOperation {
public:
    explicit GitDiffOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitDiffOperation"; }
    void parseData() override;

private:
    [[nodiscard]] std::string revisionArgument() const;
    [[nodiscard]] NEBSourceControlResult recordsOf(std::string_view text) const;

    bool _diffNameAndStatusOnly;
};

}  // namespace neb
