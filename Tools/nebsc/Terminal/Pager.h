// Pager.h - shows a long text on a terminal a screen at a time, by the program that the user has
// chosen for that, as git does.
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

/// Whether the descriptor is a terminal that is not "dumb", and has fewer rows than the printable
/// text needs.
[[nodiscard]] bool needsPager(int descriptor, std::string_view text);

/// What the user has chosen, as the shell takes it: GIT_PAGER, else the setting core.pager
/// (`configured`), else PAGER, else "less" where there is one. Nothing when that is empty or "cat".
[[nodiscard]] std::optional<std::string> pagerOfUser(const std::optional<std::string>& configured);

/// Runs the pager on standard output and standard error, gives it the text, and waits until the
/// person has left it, perhaps before the end of the text. Ctrl-C is the pager's alone meanwhile.
/// `less` shows colours and goes by itself when the text is short, unless LESS says otherwise.
///
/// Answers false when the pager could not be started, and the text is still to be shown. On the
/// main thread.
[[nodiscard]] bool showThroughPager(const std::string& pager, std::string_view text);

}  // namespace neb::nebsc
