// GitSettings.h - request type 1018 (identity and settings); see git-config(1), and
// GIT_AUTHOR_IDENT in git-var(1).
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "GitExtensions/GitQuery.h"

namespace neb {

/// Returns the name as git prints it: section and variable in lower case, the part between them
/// unchanged. Thread-safe.
[[nodiscard]] std::string gitCanonicalSettingName(const std::string& name);

/// Returns the names and addresses that a new commit would have, and settings with their origin.
///
/// The result has a record of the kind "author" and one of the kind "committer", each with
/// NEBSourceControlOperationAuthorKey and NEBSourceControlOperationAuthorEmailKey; absent if git
/// knows no identity. Then a record of the kind "setting" for each value of the settings in
/// NEBSourceControlRequestOptionSettingNames, by default "user.name" and "user.email", or of all
/// with NEBSourceControlRequestOptionAll, in the order in which git reads them, so that the last
/// one counts: NEBSourceControlOperationNameKey, NEBSourceControlOperationValueKey,
/// NEBSourceControlOperationScopeKey, NEBSourceControlOperationOriginKey. What an operation itself
/// sets for git is left out.
class GitSettingsOperation : public GitQueryComposite {
public:
    using GitQueryComposite::GitQueryComposite;

    [[nodiscard]] std::string className() const override { return "GitSettingsOperation"; }
    void main() override;
};

/// Lists the settings, as above.
class GitSettingListOperation : public GitReadingOperation {
public:
    explicit GitSettingListOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitSettingListOperation"; }
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;
};

}  // namespace neb
