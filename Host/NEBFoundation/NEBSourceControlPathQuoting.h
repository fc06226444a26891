// NEBSourceControlPathQuoting.h - file names as git quotes them; see core.quotePath in
// git-config(1).
//
//     NEBSourceControlUnquotedPath(R"("b\344r")");    // "b\xe4r"
//     NEBSourceControlQuotedPath("b\xe4r");           // R"("b\344r")"
#pragma once

#include <string>
#include <string_view>

#include "Platform/Export.h"

namespace neb {

/// Returns the bytes of a name or path that git may have quoted. git quotes every name with a
/// backslash; a text without one is returned unchanged. The quote at either end may be missing, as
/// in some records. Thread-safe.
[[nodiscard]] NEB_EXPORT std::string NEBSourceControlUnquotedPath(std::string_view text);

/// Returns a name or path in quotes, with C escapes for control characters, quotes and backslashes,
/// and an octal escape for every byte that is not ASCII. Thread-safe.
[[nodiscard]] NEB_EXPORT std::string NEBSourceControlQuotedPath(std::string_view path);

/// Returns a name or path as UTF-8: unchanged if it is UTF-8, otherwise quoted. Thread-safe.
[[nodiscard]] NEB_EXPORT std::string NEBSourceControlPathText(std::string_view path);

}  // namespace neb
