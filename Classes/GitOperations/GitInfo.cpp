#include "GitOperations/GitInfo.h"

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "NEBFoundation/NEBSourceControlText.h"

namespace neb {

namespace {

bool isEmpty(const std::optional<NEBSourceControlResult>& result) {
    return !result || result->empty();
}

void addFirstRecord(NEBDictionary& info, const NEBSourceControlOperation& operation) {
    if (!isEmpty(operation.result())) {
        info.addEntriesFrom(operation.result()->front());
    }
}

}  // namespace

GitConfiguredURLOperation::GitConfiguredURLOperation(
    std::shared_ptr<NEBSourceControlRequest> request, std::string_view configurationKey)
    : GitOperation(std::move(request)) {
    setArguments({"config", "--get", std::string(configurationKey)});
    setEmptyOutputIsValid();
    setCurrentDirectoryToOneFile();
}

void GitConfiguredURLOperation::parseData() {
    if (!data() || data()->empty()) {
        return;
    }
    NEBDictionary record;
    record.set(NEBSourceControlOperationRemoteOriginKey, *_nebsc_stringFromData(data()));
    if (currentDirectoryPath()) {
        record.set(NEBSourceControlOperationRepositoryRootKey, *currentDirectoryPath());
    }
    setResult({{std::move(record)}});
}

GitFetchRemoteOriginOperation::GitFetchRemoteOriginOperation(
    std::shared_ptr<NEBSourceControlRequest> request)
    : GitConfiguredURLOperation(std::move(request), "remote.origin.url") {}

GitFetchSVNRemoteOriginOperation::GitFetchSVNRemoteOriginOperation(
    std::shared_ptr<NEBSourceControlRequest> request)
    : GitConfiguredURLOperation(std::move(request), "svn-remote.svn.url") {}

void GitInfoOperation::main() {
    if (error()) {
        return;
    }
    setOperationQueue(std::make_shared<OperationQueue>());
    const auto origin = run<GitFetchRemoteOriginOperation>(request());
    if (origin->error()) {
        setError(origin->error());
        return;
    }
    NEBDictionary info;
    addFirstRecord(info, *origin);
    if (isEmpty(origin->result())) {
        const auto subversion =
            run<GitFetchSVNRemoteOriginOperation>(NEBSourceControlRequest::initWithType(
                NEBSourceControlRequestInfo, request()->sourceTree, request()->files,
                std::nullopt));
        if (subversion->error()) {
            setError(subversion->error());
        } else {
            addFirstRecord(info, *subversion);
        }
    }
    setResult({{std::move(info)}});
}

}  // namespace neb
