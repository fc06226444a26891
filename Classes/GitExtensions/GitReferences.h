// GitReferences.h - request type 1008 (references); see git-for-each-ref(1).
#pragma once

#include <memory>
#include <string>

#include "GitExtensions/GitExtension.h"

namespace neb {

/// Lists branches, remote branches and tags by full name; with a destination, the references of
/// that full name or below it: "refs/heads", "refs/stash", "refs".
///
/// The result has a record per reference. Always: NEBSourceControlOperationNameKey (full),
/// NEBSourceControlOperationObjectIDKey, NEBSourceControlOperationObjectTypeKey. Of an annotated
/// tag also NEBSourceControlOperationPeeledIDKey; of a commit or an annotated tag
/// NEBSourceControlOperationSubjectKey, NEBSourceControlOperationTimeKey (of the committer or
/// tagger) and NEBSourceControlOperationTimeOffsetKey; of a symbolic reference
/// NEBSourceControlOperationSymbolicTargetKey. Of a branch that is checked out
/// NEBSourceControlOperationWorktreeKey and, in the working copy of the request,
/// NEBSourceControlOperationIsCurrentKey. Of a branch with an upstream
/// NEBSourceControlOperationUpstreamKey and either NEBSourceControlOperationUpstreamIsGoneKey or
/// NEBSourceControlOperationAheadKey and NEBSourceControlOperationBehindKey. Empty if there is no
/// reference, as in a repository without a commit.
class GitReferencesOperation : public GitReadingOperation {
public:
    explicit GitReferencesOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitReferencesOperation"; }
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;
};

}  // namespace neb
