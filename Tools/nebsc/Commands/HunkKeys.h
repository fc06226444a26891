// HunkKeys.h - the keys of the question about a change; see git-add(1), INTERACTIVE MODE.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "CommandFrame/FileChoices.h"

namespace neb::nebsc {

/// What is asked. Refers to its parts.
struct HunkQuestion {
    const FileChoices& file;
    std::size_t choice;
    /// What is asked for: "Stage".
    std::string_view verb;
    /// Whether the user has a terminal, and so an editor.
    bool hasEditor;
};

/// An answer. The keys 'g' and '/' may have an argument, which follows them: "g3".
struct HunkAnswer {
    /// '?' for a line that is no answer to the question.
    char key = '?';
    std::string argument{};
};

/// Returns the question with the keys that can answer it: "(1/3) Stage this hunk [y,n,…,?]?".
[[nodiscard]] std::string textOf(const HunkQuestion& question);
/// Returns a line for each of these keys.
[[nodiscard]] std::string helpFor(const HunkQuestion& question);
/// Reads the line that the user has typed.
[[nodiscard]] HunkAnswer answerTo(const HunkQuestion& question, std::string_view line);

}  // namespace neb::nebsc
