// GitStatusEntries.h - the entries of a status; see git-status(1), porcelain format version 1.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace neb {

/// A path that differs between HEAD, the index and the working copy, or is untracked.
struct GitStatusEntry {
    /// How the index differs from HEAD, and the file from the index, in letters of git-status(1);
    /// ' ' without a difference.
    char index = ' ';
    char workingTree = ' ';
    /// From the top of the working copy.
    std::string path;

    [[nodiscard]] bool isUntracked() const { return index == '?'; }
    [[nodiscard]] bool isConflict() const;
    /// Returns the letter of the file or, if that is unchanged, of the index; 'U' for a conflict.
    [[nodiscard]] char letterOfFile() const;
    /// Returns the letter of the index or, if that is unchanged, of the file; 'U' for a conflict.
    [[nodiscard]] char letterOfIndex() const;
};

/// Returns the entries in the output of `git status --porcelain -z --no-renames`, "XY PATH" and a
/// NUL byte each. Ignores what has another form. Thread-safe.
[[nodiscard]] std::vector<GitStatusEntry> gitStatusEntries(std::string_view output);

}  // namespace neb
