// GitRemote.h - request types 24, 34 and 35 (list, add and remove remotes).
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitComposite.h"
#include "GitOperations/GitOperation.h"

namespace neb {

/// Lists the remotes of git. A record for each line of output, usually two per remote, and an empty
/// record at the end: NEBSourceControlOperationRemoteNameKey,
/// NEBSourceControlOperationRemoteOriginKey (the location up to the first blank) and
/// NEBSourceControlOperationTypeKey ("fetch" or "push"), as far as git printed them. Absent when
/// there is no remote.
class GitListStandardRemotesOperation : public GitOperation {
public:
    explicit GitListStandardRemotesOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override {
        return "GitListStandardRemotesOperation";
    }
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;
    void parseData() override;
};

/// Lists the remotes of git and then the Subversion repository, if there is one.
class GitListRemotesOperation : public GitComposite<NEBSourceControlOperation> {
public:
    using GitComposite::GitComposite;

    [[nodiscard]] std::string className() const override { return "GitListRemotesOperation"; }
    void main() override;
};

/// Adds the remote `destination` with the only file as its location. No result.
class GitAddRemoteOperation : public GitOperation {
public:
    explicit GitAddRemoteOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitAddRemoteOperation"; }
};

/// Removes the remote `destination`. No result.
class GitRemoveRemoteOperation : public GitOperation {
public:
    explicit GitRemoveRemoteOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitRemoveRemoteOperation"; }
};

}  // namespace neb
