// Tabs.h - TABs as a terminal shows them. Every function is thread-safe.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace neb::nebsc {

/// The number of columns between two tab stops.
inline constexpr std::size_t tabStop = 8;

/// Returns the width of a TAB after `columnsBefore` columns.
[[nodiscard]] constexpr std::size_t columnsOfTab(std::size_t columnsBefore) {
    return tabStop - columnsBefore % tabStop;
}

/// Returns the printable line with blanks instead of TABs.
[[nodiscard]] std::string expandTabs(std::string_view line);

}  // namespace neb::nebsc
