// TextEditing.h - a text that the user changes in an editor.
#pragma once

#include <string>
#include <string_view>

#include "CommandFrame/GitQueries.h"

namespace neb::nebsc {

/// A text as the user has left it, or why it cannot be used.
struct EditedText {
    std::string text{};
    /// The absolute path of the file, which stays.
    std::string file{};
    /// A clause that begins with an upper-case letter; empty after a success.
    std::string failure{};
    /// The error class of the failure.
    std::string_view errorClass{};
};

/// Returns the absolute path of a file of the git folder; see git-rev-parse(1), --git-path.
[[nodiscard]] std::string pathOfGitFile(const GitQueries& git, const std::string& name);

/// Returns the bytes of a file; empty if it cannot be read. Thread-safe.
[[nodiscard]] std::string contentOfFile(const std::string& path);

/// Writes the text to a file of the git folder, starts the editor of the user on it, and reads it
/// again. For the main thread.
[[nodiscard]] EditedText editText(const GitQueries& git, const std::string& name,
                                  const std::string& text);

}  // namespace neb::nebsc
