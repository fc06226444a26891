// GitSubmodules.h - request type 1016 (submodules); see gitmodules(5), and git-ls-files(1),
// --stage.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "GitExtensions/GitQuery.h"

namespace neb {

/// Lists the submodules that .gitmodules in the location names, which must be the top of the
/// working copy.
///
/// The result has a record per submodule, by name: NEBSourceControlOperationNameKey,
/// NEBSourceControlOperationPathKey, NEBSourceControlOperationURLKey,
/// NEBSourceControlOperationBranchKey, as far as .gitmodules has them;
/// NEBSourceControlOperationIndexObjectIDKey, the commit in the index;
/// NEBSourceControlOperationObjectIDKey, the commit that is checked out;
/// NEBSourceControlOperationDescriptionKey, what describes it; and
/// NEBSourceControlOperationStateKey: "not initialized", "not cloned", "current", "other commit" or
/// "conflict". Empty without submodules.
class GitSubmodulesOperation : public GitQueryComposite {
public:
    using GitQueryComposite::GitQueryComposite;

    [[nodiscard]] std::string className() const override { return "GitSubmodulesOperation"; }
    void main() override;

private:
    /// The properties of a submodule by their names in the configuration.
    using Properties = std::map<std::string, std::string>;
    using Submodules = std::map<std::string, Properties>;

    [[nodiscard]] Submodules submodulesOf(const std::vector<std::string>& source);
    /// Returns the line that git prints in the submodule at the path; empty if no repository is
    /// there, or git fails.
    [[nodiscard]] std::string lineIn(const std::string& path,
                                     const std::vector<std::string>& arguments);
    [[nodiscard]] NEBDictionary recordOf(const std::string& name, const Properties& properties,
                                         bool isInitialized);
};

}  // namespace neb
