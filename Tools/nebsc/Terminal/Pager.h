// Pager.h - shows long text in the user's pager, as git does.
//
//     if (needsPager(STDOUT_FILENO, text)) {
//         if (const auto pager = pagerOfUser(core.pager)) {
//             showThroughPager(*pager, text);
//         }
//     }
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace neb::nebsc {

/// Returns whether the descriptor is a terminal that is too small for the printable text. False if
/// TERM is "dumb". Thread-safe.
[[nodiscard]] bool needsPager(int descriptor, std::string_view text);

/// Returns the shell command of the user's pager: GIT_PAGER, else the setting core.pager
/// (`configured`), else PAGER, else "less" if it is installed. Absent if that is empty or "cat".
/// Thread-safe.
[[nodiscard]] std::optional<std::string> pagerOfUser(const std::optional<std::string>& configured);

/// Runs the pager with the text as its input, and waits until the user quits it, which may be
/// before the end of the text. Ctrl-C has no effect on nebsc meanwhile. `less` shows colours, and
/// quits by itself if the text fits on the screen, unless LESS is set.
///
/// Returns false if the pager could not be started; the text has not been shown then. Not
/// thread-safe: changes signal actions of the process.
[[nodiscard]] bool showThroughPager(const std::string& pager, std::string_view text);

}  // namespace neb::nebsc
