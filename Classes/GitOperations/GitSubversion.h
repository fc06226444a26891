// GitSubversion.h - the Subversion bridge: parts of request types 24, 37 and 13.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "GitOperations/GitComposite.h"
#include "GitOperations/GitInfo.h"
#include "GitOperations/GitOperation.h"

namespace neb {

/// Whether the standard error of git-svn(1) begins with one of its usual messages.
[[nodiscard]] bool gitIsBridgeNotice(std::string_view text);

/// Reads the reference to which the bridge fetches. The result is one record with
/// NEBSourceControlOperationRemoteNameKey, the last component of the reference, and
/// NEBSourceControlOperationTypeKey, "fetch"; without entries when there is no such component,
/// absent when none is configured. Runs in the same folder as GitConfiguredURLOperation.
class GitFetchSVNRemoteNameOperation : public GitOperation {
public:
    explicit GitFetchSVNRemoteNameOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override {
        return "GitFetchSVNRemoteNameOperation";
    }
    void parseData() override;
};

/// Lists the Subversion repository as a remote: a record with
/// NEBSourceControlOperationUsesGitSVNKey and the entries of both operations above. Empty without
/// such a repository.
class GitListSVNRemoteOperation : public GitComposite<GitOperation> {
public:
    using GitComposite::GitComposite;

    [[nodiscard]] std::string className() const override { return "GitListSVNRemoteOperation"; }
    void main() override;
};

/// Fetches new revisions over the bridge. Its usual messages are not errors; the result is empty
/// then, otherwise absent.
class GitSvnFetchOperation : public GitOperation {
public:
    explicit GitSvnFetchOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitSvnFetchOperation"; }
    void parseData() override;
};

/// Rebases the local commits onto the destination, the fetched reference; anything but a non-empty
/// string is reported. No result.
class GitSvnRebaseOperation : public GitOperation {
public:
    explicit GitSvnRebaseOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitSvnRebaseOperation"; }
};

}  // namespace neb
