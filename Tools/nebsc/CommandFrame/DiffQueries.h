// DiffQueries.h - queries for what differs between two sides, with the bytes that git prints.
//
// The records of a diff request are UTF-8 text, " -> " separates two names in them, and the patch
// is one record. The queries here keep every byte, and the patch arrives while git writes it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "CommandFrame/EntryQuery.h"

namespace neb::nebsc {

/// An entry of git-diff(1) with "--name-status -z".
struct NameStatusEntry {
    /// 'A', 'D', 'M', 'R', …
    char letter = ' ';
    /// The bytes of the path from the top of the working copy.
    std::string path{};
    /// Present for a renamed or copied file.
    std::optional<std::string> oldPath = std::nullopt;
};

/// An entry of git-diff(1) with "--numstat -z".
struct LineCountEntry {
    /// The numbers of added and deleted lines; absent for a binary file.
    std::optional<std::uint64_t> added{}, deleted{};
    /// As in NameStatusEntry.
    std::string path{};
    std::optional<std::string> oldPath = std::nullopt;
};

/// Which sides a query compares, besides the revisions of its request.
struct DiffSides {
    /// What separates two revisions: ".." or "...".
    std::string_view dots = "..";
    /// Whether the second side is the index instead of the working copy.
    bool isStaged = false;
};

/// Queries the names and states of the files that differ. Not thread-safe, like all operations.
class NameStatusQuery : public EntryQuery<NameStatusEntry> {
public:
    /// Takes the revisions and files of a diff request. A missing first revision stands for HEAD,
    /// with the index for an empty tree before the first commit; a missing second one for the
    /// working copy or the index.
    NameStatusQuery(std::shared_ptr<NEBSourceControlRequest> request, const DiffSides& sides);

    [[nodiscard]] std::string className() const override { return "NameStatusQuery"; }

protected:
    [[nodiscard]] std::optional<NameStatusEntry> entryIn(std::string_view text) override;

private:
    /// Present until the entry is complete.
    std::optional<NameStatusEntry> _begun;
};

/// Queries how many lines each file gained and lost. Not thread-safe, like all operations.
class LineCountQuery : public EntryQuery<LineCountEntry> {
public:
    /// See NameStatusQuery.
    LineCountQuery(std::shared_ptr<NEBSourceControlRequest> request, const DiffSides& sides);

    [[nodiscard]] std::string className() const override { return "LineCountQuery"; }

protected:
    [[nodiscard]] std::optional<LineCountEntry> entryIn(std::string_view text) override;

private:
    /// Present until the entry of a renamed file is complete.
    std::optional<LineCountEntry> _begun;
};

/// Queries the patch. The record sink gets an empty record for each part of the patch, which
/// takeLines() returns. Not thread-safe, like all operations.
class PatchQuery : public NEBSourceControlTaskOperation {
public:
    /// See NameStatusQuery.
    PatchQuery(std::shared_ptr<NEBSourceControlRequest> request, const DiffSides& sides);

    [[nodiscard]] std::string className() const override { return "PatchQuery"; }
    [[nodiscard]] std::string launchPath() override { return gitPath(); }
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;
    /// Removes and returns the bytes of the complete lines that were read since the last call, and
    /// at the end of the patch also of a line without an end. Call it within the sink.
    [[nodiscard]] std::string takeLines() { return std::exchange(_lines, {}); }

private:
    class Parser;

    std::string _lines;
};

/// Queries the patch of a commit; see git-diff-tree(1), COMBINED DIFF FORMAT, about a merge. Not
/// thread-safe, like all operations.
class CommitPatchQuery : public PatchQuery {
public:
    /// Takes the commit from the starting revision of the request, and limits the patch to its
    /// files, if there are any.
    explicit CommitPatchQuery(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "CommitPatchQuery"; }
};

}  // namespace neb::nebsc
