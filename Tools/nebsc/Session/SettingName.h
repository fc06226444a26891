// SettingName.h - names of settings with a subsection; see "Syntax" in git-config(1).
//
// Patterns of git-config(1) must not match a subsection: in them, "." matches no byte that is not
// UTF-8, and a subsection can have any bytes.
#pragma once

#include <string_view>

namespace neb::nebsc {

/// Whether the name is "SECTION.SUBSECTION.VARIABLE" with this section and this variable, which are
/// in lower case, as git prints them.
[[nodiscard]] constexpr bool isSettingOf(std::string_view section, std::string_view variable,
                                         std::string_view name) {
    constexpr std::size_t dotCount = 2;
    return name.size() > section.size() + variable.size() + dotCount && name.starts_with(section) &&
           name.ends_with(variable) && name[section.size()] == '.' &&
           name[name.size() - variable.size() - 1] == '.';
}

}  // namespace neb::nebsc
