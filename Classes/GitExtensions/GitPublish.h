// GitPublish.h - request type 1012 (publish); see OUTPUT and --porcelain in git-push(1).
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "GitExtensions/GitChange.h"

namespace neb {

/// Pushes NEBSourceControlRequestOptionBranch to the branch `destination` of the remote
/// NEBSourceControlRequestOptionRemoteName, or to the branch of the same name; without a branch the
/// current one, as the configuration says. With the action "delete", deletes the branch or tag
/// `destination` of the remote. Other options: NEBSourceControlRequestOptionSetUpstream,
/// NEBSourceControlRequestOptionForceWithLease, NEBSourceControlRequestOptionTags,
/// NEBSourceControlRequestOptionDryRun.
///
/// The result has a record per reference, also when some are refused, which is an error:
/// NEBSourceControlOperationNameKey, the full name at the remote;
/// NEBSourceControlOperationSourceKey, what was pushed; NEBSourceControlOperationStateKey ("new",
/// "updated", "forced", "deleted", "up to date", "rejected"); NEBSourceControlOperationReasonKey of
/// a rejected one; and of an updated one NEBSourceControlOperationOldObjectIDKey and
/// NEBSourceControlOperationNewObjectIDKey. After a success, if the server says something, a last
/// record follows, with NEBSourceControlOperationKindKey "remote lines" and
/// NEBSourceControlOperationRemoteLinesKey.
class GitPublishOperation : public GitChangeComposite {
public:
    using GitChangeComposite::GitChangeComposite;

    [[nodiscard]] std::string className() const override { return "GitPublishOperation"; }

protected:
    void perform() override;

private:
    /// Returns what follows "push" and the flags: the remote and the reference. Absent if the
    /// request lacks a value that these need; the error is then set.
    [[nodiscard]] std::optional<std::vector<std::string>> destinationArguments();
    /// Returns the option for a lease; empty for none. Absent if the error is set.
    [[nodiscard]] std::optional<std::string> leaseArgument();
    /// Appends the record of what the server says in git's stderr, if anything.
    void addRemoteLines(const Data& errorText);
};

/// Runs the push.
class GitPushPorcelainOperation : public GitChangeOperation {
public:
    using GitChangeOperation::GitChangeOperation;

    [[nodiscard]] std::string className() const override { return "GitPushPorcelainOperation"; }
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;
    /// Adds the reasons of refusals to errorData(): the table of errors knows them.
    void parseData() override;

protected:
    /// Recognises a hook that refused before git contacted the remote.
    [[nodiscard]] std::optional<NEBSourceControlError> diagnoseFailure(
        std::string_view text) const override;
};

}  // namespace neb
