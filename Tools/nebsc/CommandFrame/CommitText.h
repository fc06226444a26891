// CommitText.h - commits as text for a person.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "CommandFrame/LogEntry.h"
#include "CommandFrame/WorkingCopyLocation.h"

namespace neb::nebsc {

/// How commits are shown.
struct CommitStyle {
    bool isColoured = false;
    /// Whether the references to a commit are shown.
    bool isDecorated = false;
    /// The current branch; absent if HEAD is detached.
    std::optional<std::string> branch{};
};

/// The number of characters of an id that a line shows.
inline constexpr std::size_t shownIdLength = 12;

// Every function is thread-safe.

/// Returns the first paragraph of a message on one line, printable.
[[nodiscard]] std::string subjectOf(std::string_view message);

/// Returns the id, in colour if the style says so.
[[nodiscard]] std::string shownId(std::string_view id, const CommitStyle& style);

/// Returns the references to the commit as git-log(1) decorates it, "(HEAD -> main, tag: v1.0)", in
/// git's colours; empty without references, or if the style does not show them.
[[nodiscard]] std::string decorationOf(const LogEntry& entry, const CommitStyle& style);

/// Returns the lines for id, merged parents, author, date and message, each with its end.
[[nodiscard]] std::string blockOf(const LogEntry& entry, const CommitStyle& style);

/// Returns an indented line for each file of the commit.
[[nodiscard]] std::string filesOf(const LogEntry& entry, const WorkingCopyLocation& workingCopy,
                                  const CommitStyle& style);

}  // namespace neb::nebsc
