// HunkChange.h - what a hunk changes in the file that it is applied to.
//
// The side that a patch is applied to, the old one or in reverse the new one, keeps its lines here;
// of each it is known whether the hunk changes it, and what the hunk puts before it. So the changes
// of parts of a hunk can be put together, in whatever way they were split or edited.
//
// A line of a hunk begins with ' ', '-' or '+'. Its end is left out; the note "\ No newline at end
// of file" belongs to the line before it, after a LF.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace neb::nebsc {

/// Whether a patch is applied to the old side of the changes, or in reverse to the new side.
enum class PatchUse { forward, reverse };

/// A mutable value. Not thread-safe.
class HunkChange {
public:
    HunkChange(const std::vector<std::string>& lines, PatchUse use);

    /// The lines of the file, without the first character.
    [[nodiscard]] const std::vector<std::string>& fileLines() const { return _fileLines; }
    /// Returns the lines after the change, without the first character.
    [[nodiscard]] std::vector<std::string> resultLines() const;
    /// Returns the lines of the hunk.
    [[nodiscard]] std::vector<std::string> lines() const;

    /// Changes nothing any more.
    void clear();
    /// Adds the change of some lines of the file, which begin at index `first`.
    void add(const HunkChange& part, std::size_t first);

private:
    PatchUse _use;
    std::vector<std::string> _fileLines;
    /// Whether the hunk takes a line of the file away.
    std::vector<bool> _isRemoved;
    /// The lines that come before each line of the file and, as the last item, after them all.
    std::vector<std::vector<std::string>> _inserted{1};
};

/// What the user has made of a hunk.
struct HunkEdit {
    std::vector<std::string> lines{};
    /// Why the hunk does not apply; a sentence without its end. Empty if it does.
    std::string failure{};
};

/// Reads the text of an edited hunk. Lines that begin with '#' and, at the start, with "@@" are
/// left out, and an empty line is an unchanged one, as in git-add(1), "EDITING PATCHES". The hunk
/// applies if it still has all lines of the file, in order. Without lines, the user wants no edit.
[[nodiscard]] HunkEdit editOfHunk(std::string_view text, const std::vector<std::string>& original,
                                  PatchUse use);

}  // namespace neb::nebsc
