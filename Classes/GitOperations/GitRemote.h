// GitRemote.h - the remotes of a repository: request types 24, 34 and 35.
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitComposite.h"
#include "GitOperations/GitOperation.h"

namespace neb {

/// Lists git's own remotes. A record for each line of git's output, so as a rule two for a remote,
/// and one more, without entries, for the end of the output:
/// NEBSourceControlOperationRemoteNameKey, NEBSourceControlOperationRemoteOriginKey (the location,
/// cut at a blank) and NEBSourceControlOperationTypeKey ("fetch" or "push"), each where it was
/// found. Absent when there is no remote.
class GitListStandardRemotesOperation : public GitOperation {
public:
    explicit GitListStandardRemotesOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override {
        return "GitListStandardRemotesOperation";
    }
    void parseData() override;
};

/// Lists git's own remotes, and then the Subversion repository behind the bridge, if there is one.
class GitListRemotesOperation : public GitComposite<NEBSourceControlOperation> {
public:
    using GitComposite::GitComposite;

    [[nodiscard]] std::string className() const override { return "GitListRemotesOperation"; }
    void main() override;
};

/// Adds a remote: its name is the destination, its location the one file. No result.
class GitAddRemoteOperation : public GitOperation {
public:
    explicit GitAddRemoteOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitAddRemoteOperation"; }
};

/// Removes the remote that the destination names. No result.
class GitRemoveRemoteOperation : public GitOperation {
public:
    explicit GitRemoveRemoteOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitRemoveRemoteOperation"; }
};

}  // namespace neb
