// GitExchange.h - commits to and from a remote: request types 37 (fetch) and 33 (push), and the
// pull of type 13.
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitComposite.h"
#include "GitOperations/GitOperation.h"

namespace neb {

/// Fetches from the remote that the option NEBSourceControlRequestOptionRemoteName names (one that
/// is no non-empty string is reported). The result is empty, after a failure too. What the
/// Subversion bridge says as a matter of course is no error.
///
/// A fetch that exits with status 1 and prints nothing has usually not updated a reference. For
/// the request type fetch that is an error; a composite goes on.
class GitFetchOperation : public GitOperation {
public:
    explicit GitFetchOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitFetchOperation"; }
    void parseData() override;
    /// After a silent failure, repeats the fetch as a dry run, which lists what it rejects.
    [[nodiscard]] std::optional<NEBSourceControlError> errorFromUnknownFailure(
        std::optional<NEBSourceControlError> error) override;
    void cancel() override;

private:
    GitSubOperations _dryRun;
};

/// Lists what a fetch from the same remote would do, and changes nothing. The listing goes to
/// errorData(); see git-fetch(1), OUTPUT.
class GitFetchDryRunOperation : public GitOperation {
public:
    explicit GitFetchDryRunOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitFetchDryRunOperation"; }
};

/// Brings the remote's branch, both named by options, into the current one by fast-forward alone.
/// The result is one record with NEBSourceControlOperationContentKey, what git printed; a pull that
/// failed may have one beside its error. A pull that finds nothing new ends with the error
/// NEBSourceControlUpToDateError and an empty result.
class GitPullOperation : public GitOperation {
public:
    explicit GitPullOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitPullOperation"; }
    void parseData() override;
};

/// Sends the branch of the option NEBSourceControlRequestOptionBranch to the branch of the remote
/// that the destination names; over the Subversion bridge, the commits that the server does not
/// have. The result is one record with NEBSourceControlOperationContentKey, what git said on
/// standard error ("Everything up-to-date" when there was nothing to send, nothing over the
/// bridge); absent when that holds the word "fatal". A rejected push has both a result and an
/// error.
class GitPushOperation : public GitOperation {
public:
    explicit GitPushOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitPushOperation"; }
    void parseData() override;

protected:
    /// A push that fails before it has reached the remote was refused by a hook.
    [[nodiscard]] std::optional<NEBSourceControlError> diagnoseFailure(
        std::string_view text) const override;
};

}  // namespace neb
