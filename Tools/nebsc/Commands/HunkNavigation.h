// HunkNavigation.h - which changes of a file can be gone to. All functions are thread-safe.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "CommandFrame/FileChoices.h"

namespace neb::nebsc {

/// Returns the next change after this one that is not decided; absent without one.
[[nodiscard]] std::optional<std::size_t> nextOpen(const FileChoices& file, std::size_t choice);
/// Returns the last change before this one that is not decided; absent without one.
[[nodiscard]] std::optional<std::size_t> previousOpen(const FileChoices& file, std::size_t choice);
/// Returns the next change that is not decided, from the start of the file after its end; if all
/// are decided, the number of changes.
[[nodiscard]] std::size_t openAfter(const FileChoices& file, std::size_t choice);

/// Returns a line for each change: its number, "+" if it is taken and "-" if not, its lines and its
/// first changed line. Printable.
[[nodiscard]] std::string listOfChoices(const FileChoices& file);

/// A change to go to, or why none was found: a sentence without its end.
struct ChoiceFound {
    std::size_t choice = 0;
    std::string failure{};
};

/// Reads the number of a change, which counts from 1.
[[nodiscard]] ChoiceFound choiceWithNumber(const FileChoices& file, std::string_view number);
/// Finds the next change, after this one and then from the start of the file, that has a line like
/// the pattern, an extended regular expression; see regex(7). Each line begins with ' ', '-', '+'
/// or "@@".
[[nodiscard]] ChoiceFound choiceLike(const FileChoices& file, std::size_t choice,
                                     const std::string& pattern);

}  // namespace neb::nebsc
