// FileChoices.h - the changes of a file, some of which are chosen, and the patch of those.
//
//     FileChoices file(record);              // of request type 1004
//     file.choose(0, true);
//     file.patch(PatchUse::forward);         // for git-apply(1)
//
// The changed lines of a hunk that are not chosen become unchanged lines or are left out, so each
// hunk of the patch keeps all its context, in whatever way it was split.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBDictionary.h"

namespace neb::nebsc {

/// Whether a patch is applied to the old side of the changes, or in reverse to the new side.
enum class PatchUse { forward, reverse };

/// One question about a file.
struct FileChoice {
    enum class Kind { hunk, modeChange, rename, addition, deletion, typeChange };

    Kind kind = Kind::hunk;
    /// The hunk, and the groups of changed lines [firstGroup, endGroup) in it. Only for a hunk.
    std::size_t hunk = 0, firstGroup = 0, endGroup = 0;
    bool isChosen = false;
};

/// A mutable value. Not thread-safe.
class FileChoices {
public:
    /// Takes a record of request type 1004 that has hunks. Copies it.
    explicit FileChoices(const NEBDictionary& record);

    /// Adds the record that follows. Returns false, and does nothing, unless both are the halves of
    /// a change of type: of a file that became a symbolic link, for example.
    bool addHalfOfTypeChange(const NEBDictionary& record);

    /// The bytes of the path on the new side.
    [[nodiscard]] const std::string& path() const { return _halves.front().newPath; }
    [[nodiscard]] const std::vector<FileChoice>& choices() const { return _choices; }
    void choose(std::size_t choice, bool isChosen) { _choices[choice].isChosen = isChosen; }
    [[nodiscard]] bool canSplit(std::size_t choice) const;
    /// Replaces a choice by one for each group of changed lines. Returns their number.
    std::size_t split(std::size_t choice);

    /// Returns the lines of a patch that name the file, with their ends.
    [[nodiscard]] std::string header() const;
    /// Returns the lines of a choice, with their ends; the mode change and the rename are lines of
    /// header().
    [[nodiscard]] std::string text(std::size_t choice) const;
    /// Returns the patch of the chosen changes; empty without any.
    [[nodiscard]] std::string patch(PatchUse use) const;

private:
    /// Changed lines without an unchanged one between them: [begin, end) of the lines of a hunk.
    struct Group {
        std::size_t begin = 0, end = 0;
    };
    struct Range {
        std::int64_t start = 0, count = 0;
    };
    struct Hunk {
        Range oldRange, newRange;
        std::string heading;
        /// As in a patch, without their ends.
        std::vector<std::string> lines;
        std::vector<Group> groups;
    };
    /// The record of a file; a change of type has two.
    struct Half {
        std::string oldPath, newPath;
        /// Empty where the file does not exist, and unless the modes differ.
        std::string oldMode, newMode;
        FileChoice::Kind kind = FileChoice::Kind::hunk;
        std::vector<Hunk> hunks;
    };

    [[nodiscard]] static Half halfOf(const NEBDictionary& record);
    [[nodiscard]] static Hunk hunkOf(const NEBDictionary& record);
    [[nodiscard]] static std::string headerOf(const Half& half, bool hasHunks);
    [[nodiscard]] static std::string headerOf(const Hunk& hunk);
    [[nodiscard]] static std::string textOf(const Hunk& hunk);
    /// Returns the part of a hunk that a choice stands for, with the unchanged lines around it.
    [[nodiscard]] Hunk part(const FileChoice& choice) const;
    /// Returns the lines of a hunk without the changes that are not chosen.
    [[nodiscard]] std::vector<std::string> chosenLines(std::size_t hunk, PatchUse use) const;
    /// Returns the hunk without the changes that are not chosen; absent if none is. `delta` is the
    /// number of lines that the hunks of the patch before it add; its own are added to it.
    [[nodiscard]] std::optional<Hunk> chosenOf(std::size_t hunk, PatchUse use,
                                               std::int64_t& delta) const;
    /// Returns whether a group of a hunk is chosen.
    [[nodiscard]] bool isChosen(std::size_t hunk, std::size_t group) const;
    [[nodiscard]] bool isWhole() const;

    std::vector<Half> _halves;
    std::vector<FileChoice> _choices;
};

}  // namespace neb::nebsc
