// GitHookFailure.h - errors of hooks of the repository.
//
// git forwards the output of a hook to standard error without marking it, so that the output must
// not decide about the class of the failure. Each operation concludes from the messages of git
// itself, or from their absence, that a hook failed.
#pragma once

#include <string>
#include <string_view>

#include "NEBFoundation/NEBSourceControlError.h"
#include "Platform/Data.h"

namespace neb {

/// Returns the last line that is not blank, without its line end; empty for a blank text.
[[nodiscard]] std::string_view gitLastLine(std::string_view text);

/// Returns an error of the class "local-hook-refused" with the description and, unless it is blank,
/// the output of the child.
[[nodiscard]] NEBSourceControlError gitErrorOfHook(const std::string& description,
                                                   std::string_view stderrText);

/// Returns the error of a push that the hook before it refused. git lets this hook write to its own
/// standard output: `output`, of which the error has an excerpt.
[[nodiscard]] NEBSourceControlError gitErrorOfPushHook(const Data& output,
                                                       std::string_view stderrText);

/// Whether the standard error of a push that failed shows that it ended before git contacted the
/// remote, without a message of git about the cause: the hook that runs before a push refused.
[[nodiscard]] bool gitReportsRefusalBeforeSending(std::string_view text);

}  // namespace neb
