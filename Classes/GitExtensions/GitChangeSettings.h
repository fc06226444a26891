// GitChangeSettings.h - request type 1018 (identity and settings), the actions that change one; see
// git-config(1).
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "GitExtensions/GitChange.h"

namespace neb {

/// Does what NEBSourceControlRequestOptionAction says with the setting that
/// NEBSourceControlRequestOptionSettingNames names, in NEBSourceControlRequestOptionScope:
///
/// - "set": gives it NEBSourceControlRequestOptionValue.
/// - "unset": removes it.
///
/// A setting with several values is changed only with NEBSourceControlRequestOptionAll, which
/// replaces or removes all of them. Without that option, the values are the result, beside the
/// error.
///
/// The result is one record, as of GitSettingsOperation: NEBSourceControlOperationKindKey
/// "setting", NEBSourceControlOperationNameKey, NEBSourceControlOperationScopeKey, and
/// NEBSourceControlOperationValueKey, the new value or the last one that was removed.
class GitChangeSettingsOperation : public GitChangeComposite {
public:
    using GitChangeComposite::GitChangeComposite;

    [[nodiscard]] std::string className() const override { return "GitChangeSettingsOperation"; }

protected:
    void perform() override;

private:
    void set(const std::string& name, const std::string& scope);
    void unset(const std::string& name, const std::string& scope);
    /// Returns the values of the setting in the scope. Absent if the composite does not go on: it
    /// has several, and the request does not allow to change all.
    [[nodiscard]] std::optional<std::vector<std::string>> queriedValues(const std::string& name,
                                                                        const std::string& scope);
    /// Sets the result: a record per value.
    void setRecords(const std::string& name, const std::string& scope,
                    const std::vector<std::string>& values);
};

}  // namespace neb
