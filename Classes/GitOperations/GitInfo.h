// GitInfo.h - request type 19 (info): the origin of a repository.
#pragma once

#include <memory>
#include <string>

#include "GitOperations/GitComposite.h"
#include "GitOperations/GitOperation.h"

namespace neb {

/// The base of operations that read a URL from the configuration of the repository. They run in the
/// folder of the source tree or, if the request has exactly one file, in that, a path or file URL
/// of a folder. The result is one record with NEBSourceControlOperationRemoteOriginKey, the URL,
/// and NEBSourceControlOperationRepositoryRootKey, the folder; absent when there is no such URL.
class GitConfiguredURLOperation : public GitOperation {
public:
    void parseData() override;

protected:
    GitConfiguredURLOperation(std::shared_ptr<NEBSourceControlRequest> request,
                              std::string_view configurationKey);
};

/// Reads the URL of the remote "origin".
class GitFetchRemoteOriginOperation : public GitConfiguredURLOperation {
public:
    explicit GitFetchRemoteOriginOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitFetchRemoteOriginOperation"; }
};

/// Reads the URL of the Subversion repository.
class GitFetchSVNRemoteOriginOperation : public GitConfiguredURLOperation {
public:
    explicit GitFetchSVNRemoteOriginOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override {
        return "GitFetchSVNRemoteOriginOperation";
    }
};

/// Reads the URL of "origin" or, if that is not set, of the Subversion repository. The result is
/// one record, as above; empty when there is neither URL.
class GitInfoOperation : public GitComposite<NEBSourceControlOperation> {
public:
    using GitComposite::GitComposite;

    [[nodiscard]] std::string className() const override { return "GitInfoOperation"; }
    void main() override;
};

}  // namespace neb
