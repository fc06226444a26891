// GitHookFailure.h - failures that are no doing of git's own, but of a hook of the repository.
//
// Whatever a hook prints, git passes on to standard error and puts no mark on it; so its words must
// not choose the class of the failure. Each operation knows by what git itself said, or did not
// say, that a hook was the cause.
#pragma once

#include <string>
#include <string_view>

#include "NEBFoundation/NEBSourceControlError.h"

namespace neb {

/// The text's last line that is not blank, without its line end; empty when there is none.
[[nodiscard]] std::string_view gitLastLine(std::string_view text);

/// An error of the class "local-hook-refused" with the description and, unless they are blank, the
/// words that were printed.
[[nodiscard]] NEBSourceControlError gitErrorOfHook(const std::string& description,
                                                   std::string_view words);

}  // namespace neb
