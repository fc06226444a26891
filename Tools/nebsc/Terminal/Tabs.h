// Tabs.h - TABs as a terminal shows them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace neb::nebsc {

/// The columns from one tab stop of a terminal to the next.
inline constexpr std::size_t tabStop = 8;

/// Returns how many columns a TAB takes that follows so many columns.
[[nodiscard]] constexpr std::size_t columnsOfTab(std::size_t columnsBefore) {
    return tabStop - columnsBefore % tabStop;
}

/// Returns the printable line with blanks in place of its TABs.
[[nodiscard]] std::string expandTabs(std::string_view line);

}  // namespace neb::nebsc
