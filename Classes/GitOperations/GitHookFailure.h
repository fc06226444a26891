// GitHookFailure.h - failures that are no doing of git's own, but of a hook of the repository.
#pragma once

#include <optional>
#include <string>

#include "NEBFoundation/NEBSourceControlError.h"
#include "NEBFoundation/NEBSourceControlTaskOperation.h"

namespace neb {

/// For a git that failed although nothing that it said shows a class of failure: the error of the
/// class "local-hook-refused" with the description, when git printed nothing of its own, neither a
/// result nor a reason; else `error` as it is. What a hook prints, on whichever stream, git passes
/// on to standard error, and there is no other mark of its refusal.
[[nodiscard]] std::optional<NEBSourceControlError> gitErrorOfHook(
    const NEBSourceControlTaskOperation& operation, std::optional<NEBSourceControlError> error,
    std::string description);

}  // namespace neb
