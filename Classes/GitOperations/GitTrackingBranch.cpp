#include "GitOperations/GitTrackingBranch.h"

#include "GitOperations/GitBranch.h"
#include "GitOperations/GitExchange.h"
#include "LOMFoundation/LOMFormat.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Platform/PathString.h"

namespace neb {

namespace {

/// Returns the value of the setting that the operation has read; absent if it is not set.
NEBValue settingOf(const NEBSourceControlOperation& operation) {
    return operation.result() && !operation.result()->empty()
               ? operation.result()->front().value(NEBSourceControlOperationNameKey)
               : NEBValue();
}

}  // namespace

GitBranchSettingOperation::GitBranchSettingOperation(
    std::shared_ptr<NEBSourceControlRequest> request, std::string_view keyFormat)
    : GitOperation(std::move(request)) {
    setEmptyOutputIsValid();
    const NEBValue& branch = this->request()->option(NEBSourceControlRequestOptionBranch);
    setArgumentsBehindDefaults(
        {"config", "--get", formattedText(keyFormat, {branch.description()})});
}

void GitBranchSettingOperation::parseData() {
    if (!data() || data()->empty()) {
        return;
    }
    setResult({{{{NEBSourceControlOperationNameKey, *_nebsc_stringFromData(data())}}}});
}

GitRemoteRefForBranchOperation::GitRemoteRefForBranchOperation(
    std::shared_ptr<NEBSourceControlRequest> request)
    : GitBranchSettingOperation(std::move(request), "branch.%@.remote") {}

GitMergeBranchForBranchOperation::GitMergeBranchForBranchOperation(
    std::shared_ptr<NEBSourceControlRequest> request)
    : GitBranchSettingOperation(std::move(request), "branch.%@.merge") {}

void GitTrackingBranchNameOperation::main() {
    if (error()) {
        return;
    }
    setOperationQueue(std::make_shared<OperationQueue>());
    const auto remote = run<GitRemoteRefForBranchOperation>(request());
    if (remote->error()) {
        setError(remote->error());
        return;
    }
    const auto merge = run<GitMergeBranchForBranchOperation>(request());
    if (merge->error()) {
        setError(merge->error());
        return;
    }
    // The record ends at the first absent value.
    NEBDictionary record;
    if (const NEBValue remoteName = settingOf(*remote); remoteName.isPresent()) {
        record.set(NEBSourceControlOperationRemoteNameKey, remoteName);
        if (const NEBValue reference = settingOf(*merge); reference.isPresent()) {
            record.set(NEBSourceControlOperationNameKey,
                       lastPathComponent(reference.description()));
        }
    }
    setResult({{std::move(record)}});
}

void GitTrackRemoteBranchOperation::main() {
    if (error()) {
        return;
    }
    setOperationQueue(std::make_shared<OperationQueue>());
    const auto fetch = run<GitFetchOperation>(request());
    if (fetch->error()) {
        setError(fetch->error());
        return;
    }
    const auto branch = run<GitBranchOperation>(request());
    if (branch->error()) {
        setError(branch->error());
    }
}

}  // namespace neb
