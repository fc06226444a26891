// FileChoices.h - the changes of a file, some of which are chosen, and the patch of those.
//
//     FileChoices file(record, PatchUse::forward);   // of request type 1004
//     file.decide(0, Decision::taken);
//     file.patch();                                  // for git-apply(1)
//
// The changed lines of a hunk that are not chosen become unchanged lines or are left out, so each
// hunk of the patch keeps all its context, in whatever way it was split.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "CommandFrame/HunkChange.h"
#include "NEBFoundation/NEBDictionary.h"

namespace neb::nebsc {

/// Whether a change becomes part of the patch.
enum class Decision { open, taken, left };

/// One question about a file.
struct FileChoice {
    enum class Kind { hunk, modeChange, rename, addition, deletion, typeChange };

    Kind kind = Kind::hunk;
    /// The hunk, and the groups of changed lines [firstGroup, endGroup) in it. Only for a hunk.
    std::size_t hunk = 0, firstGroup = 0, endGroup = 0;
    Decision decision = Decision::open;
    /// The lines that the user has made of the hunk; see HunkChange.h.
    std::optional<std::vector<std::string>> edited{};
    /// A text of the user that does not apply, and why.
    std::string draft{}, draftFailure{};
};

/// A mutable value. Not thread-safe.
class FileChoices {
public:
    /// Takes a record of request type 1004 that has hunks, and how the patch is applied. Copies it.
    FileChoices(const NEBDictionary& record, PatchUse use);

    /// Adds the record that follows. Returns false, and does nothing, unless both are the halves of
    /// a change of type: of a file that became a symbolic link, for example.
    bool addHalfOfTypeChange(const NEBDictionary& record);

    [[nodiscard]] PatchUse use() const { return _use; }
    /// The bytes of the path on the new side.
    [[nodiscard]] const std::string& path() const { return _halves.front().newPath; }
    [[nodiscard]] const std::vector<FileChoice>& choices() const { return _choices; }
    void decide(std::size_t choice, Decision decision) { _choices[choice].decision = decision; }
    [[nodiscard]] bool canSplit(std::size_t choice) const;
    /// Replaces a choice by one for each group of changed lines. Returns their number.
    std::size_t split(std::size_t choice);
    [[nodiscard]] bool canEdit(std::size_t choice) const;
    /// Replaces a hunk by what the user has made of it, and takes it. Keeps a text that does not
    /// apply as the draft. Returns false then, and for a text without lines: this leaves the hunk
    /// as it is, and drops the draft.
    bool edit(std::size_t choice, std::string text);

    /// Returns the lines of a patch that name the file, with their ends.
    [[nodiscard]] std::string header() const;
    /// Returns the lines of a choice, with their ends; the mode change and the rename are lines of
    /// header().
    [[nodiscard]] std::string text(std::size_t choice) const;
    /// Returns the patch of the chosen changes; empty without any.
    [[nodiscard]] std::string patch() const;

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
        /// See HunkChange.h.
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
    [[nodiscard]] std::vector<std::string> chosenLines(std::size_t hunk) const;
    /// Returns the hunk without the changes that are not chosen; absent if none is. `delta` is the
    /// number of lines that the hunks of the patch before it add; its own are added to it.
    [[nodiscard]] std::optional<Hunk> chosenOf(std::size_t hunk, std::int64_t& delta) const;
    [[nodiscard]] bool isWhole() const;
    /// The side of a hunk that the patch is applied to.
    [[nodiscard]] Range& fileRange(Hunk& hunk) const {
        return _use == PatchUse::forward ? hunk.oldRange : hunk.newRange;
    }

    PatchUse _use;
    std::vector<Half> _halves;
    std::vector<FileChoice> _choices;
};

}  // namespace neb::nebsc
