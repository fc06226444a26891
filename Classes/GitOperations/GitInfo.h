// GitInfo.h - where a repository comes from: request type 19.
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitComposite.h"
#include "GitOperations/GitOperation.h"

namespace neb {

/// The base of the questions for one URL in the repository's configuration. It is asked in the
/// source tree's folder, or, when the request has exactly one file, in that, a folder's path or
/// file URL. The result is one record with NEBSourceControlOperationRemoteOriginKey, the URL, and
/// NEBSourceControlOperationRepositoryRootKey, the folder in which it was asked; absent when there
/// is no such URL.
class GitConfiguredURLOperation : public GitOperation {
public:
    void parseData() override;

protected:
    GitConfiguredURLOperation(std::shared_ptr<NEBSourceControlRequest> request,
                              std::string_view configurationKey);
};

/// The URL of the remote "origin".
class GitFetchRemoteOriginOperation : public GitConfiguredURLOperation {
public:
    explicit GitFetchRemoteOriginOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitFetchRemoteOriginOperation"; }
};

/// The URL of the Subversion repository behind the bridge.
class GitFetchSVNRemoteOriginOperation : public GitConfiguredURLOperation {
public:
    explicit GitFetchSVNRemoteOriginOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override {
        return "GitFetchSVNRemoteOriginOperation";
    }
};

/// Asks for the URL of "origin", and, where there is none, for that of the Subversion repository.
/// The result is one record, as above; empty where there is neither URL.
class GitInfoOperation : public GitComposite<NEBSourceControlOperation> {
public:
    using GitComposite::GitComposite;

    [[nodiscard]] std::string className() const override { return "GitInfoOperation"; }
    void main() override;
};

}  // namespace neb
