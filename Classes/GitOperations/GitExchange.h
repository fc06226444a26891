// GitExchange.h - request types 37 (fetch) and 33 (push), and the pull of type 13.
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitComposite.h"
#include "GitOperations/GitOperation.h"

namespace neb {

/// Fetches from the remote in the option NEBSourceControlRequestOptionRemoteName; anything but a
/// non-empty string is reported. The result is empty, also after a failure. The usual messages of
/// the Subversion bridge are not errors.
///
/// A fetch that exits with status 1 and prints nothing has usually failed to update a reference.
/// For the request type fetch this is an error; a composite continues.
class GitFetchOperation : public GitOperation {
public:
    explicit GitFetchOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitFetchOperation"; }
    void parseData() override;
    /// Runs a dry run after a fetch that failed and printed nothing, to list the rejected
    /// references.
    [[nodiscard]] std::optional<NEBSourceControlError> errorFromUnknownFailure(
        std::optional<NEBSourceControlError> error) override;
    void cancel() override;

private:
    GitSubOperations _dryRun;
};

/// Lists what a fetch from the same remote would do, and changes nothing. The listing is in
/// errorData(); see git-fetch(1), OUTPUT.
class GitFetchDryRunOperation : public GitOperation {
public:
    explicit GitFetchDryRunOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitFetchDryRunOperation"; }
};

/// Fast-forwards the current branch to the branch of the remote that the options name. The result
/// is one record with NEBSourceControlOperationContentKey, the output of git; a failed pull may
/// have one beside its error. A pull that finds nothing new has the error
/// NEBSourceControlUpToDateError and an empty result.
class GitPullOperation : public GitOperation {
public:
    explicit GitPullOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitPullOperation"; }
    void parseData() override;
};

/// Pushes the branch in the option NEBSourceControlRequestOptionBranch to the branch `destination`
/// of the remote; over the Subversion bridge, pushes all commits that the server does not have. The
/// result is one record with NEBSourceControlOperationContentKey, the standard error of git
/// ("Everything up-to-date" when there was nothing to push, nothing over the bridge); absent when
/// that has the word "fatal". A rejected push has both a result and an error.
class GitPushOperation : public GitOperation {
public:
    explicit GitPushOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitPushOperation"; }
    void parseData() override;

protected:
    /// Recognises a hook that refused before git contacted the remote.
    [[nodiscard]] std::optional<NEBSourceControlError> diagnoseFailure(
        std::string_view text) const override;

private:
    /// What git and the hook printed.
    Data _output;
};

}  // namespace neb
