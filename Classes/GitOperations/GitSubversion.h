// GitSubversion.h - the Subversion repository behind the bridge: its part in request types 24, 37
// and 13.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "GitOperations/GitComposite.h"
#include "GitOperations/GitInfo.h"
#include "GitOperations/GitOperation.h"

namespace neb {

/// Whether the bridge's words on standard error begin as they do when all is well.
[[nodiscard]] bool gitIsBridgeNotice(std::string_view text);

/// Asks for the reference under which the bridge keeps what it fetches. The result is one record
/// with NEBSourceControlOperationRemoteNameKey, the reference's last component, and
/// NEBSourceControlOperationTypeKey, "fetch"; without entries where there is no such component,
/// absent where nothing is configured. Asked where GitConfiguredURLOperation asks.
class GitFetchSVNRemoteNameOperation : public GitOperation {
public:
    explicit GitFetchSVNRemoteNameOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override {
        return "GitFetchSVNRemoteNameOperation";
    }
    void parseData() override;
};

/// Describes the Subversion repository behind the bridge as one remote: a record with
/// NEBSourceControlOperationUsesGitSVNKey and the entries of the two questions. Empty where there
/// is none.
class GitListSVNRemoteOperation : public GitComposite<GitOperation> {
public:
    using GitComposite::GitComposite;

    [[nodiscard]] std::string className() const override { return "GitListSVNRemoteOperation"; }
    void main() override;
};

/// Fetches new revisions over the bridge. What it says as a matter of course is no error, and the
/// result is empty then; otherwise absent.
class GitSvnFetchOperation : public GitOperation {
public:
    explicit GitSvnFetchOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitSvnFetchOperation"; }
    void parseData() override;
};

/// Puts the local commits on top of the destination, the reference of what was fetched; a
/// destination that is no non-empty string is reported. No result.
class GitSvnRebaseOperation : public GitOperation {
public:
    explicit GitSvnRebaseOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitSvnRebaseOperation"; }
};

}  // namespace neb
