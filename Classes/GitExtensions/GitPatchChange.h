// GitPatchChange.h - applies a patch of the request; see git-apply(1).
#pragma once

#include <string>
#include <string_view>

#include "GitExtensions/GitChange.h"

namespace neb {

/// A composite operation that applies NEBSourceControlRequestOptionPatch, or does something else
/// with the request's files. A patch changes everything or nothing: git checks it first. A patch
/// that git would apply only in part, because some of its paths are outside the location of the
/// request, is refused.
class GitPatchComposite : public GitChangeComposite {
public:
    using GitChangeComposite::GitChangeComposite;

protected:
    /// Whether the request has a patch.
    [[nodiscard]] bool hasPatch() const {
        return request()->option(NEBSourceControlRequestOptionPatch).isPresent();
    }
    /// Returns whether the patch fits; otherwise the error of the composite is set. `options` are
    /// those of `git apply`.
    [[nodiscard]] bool patchFits(const std::vector<std::string>& options);
    /// Applies the patch, which was checked.
    void applyFittingPatch(const std::vector<std::string>& options);
    /// Applies the patch if it fits.
    void applyPatch(const std::vector<std::string>& options);
    /// The patch.
    [[nodiscard]] Data patch() const;
};

}  // namespace neb
