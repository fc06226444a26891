// GitQuoting.h - file names as git writes them between double quotes, see core.quotePath in
// git-config(1).
//
//     unquotedName(R"("b\344r")");    // "b\xe4r"
//     quotedName("b\xe4r");           // R"("b\344r")"
#pragma once

#include <string>
#include <string_view>

namespace neb::nebsc {

/// Returns the bytes of a name that git may have quoted. git quotes each name that holds a
/// backslash, so a text without one is returned as it is. A quote that is missing at either end is
/// no error: some records have lost one. From any thread, as are the others.
[[nodiscard]] std::string unquotedName(std::string_view text);

/// Returns the name between quotes, with C escapes for control characters, quotes and backslashes
/// and an octal escape for every byte that is not ASCII.
[[nodiscard]] std::string quotedName(std::string_view name);

/// Returns a name or path as UTF-8 without loss: as it is, or as quotedName() returns it where it
/// is not UTF-8.
[[nodiscard]] std::string textOfName(std::string_view name);

}  // namespace neb::nebsc
