// NameStatusQuery.h - asks git which files two sides have differently.
//
// The records of a diff request are read from lines in which " -> " separates two names and names
// that are not UTF-8 have lost bytes. The entries here keep every name as it is.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBSourceControlTaskOperation.h"

namespace neb::nebsc {

/// A file of git-diff(1) with "--name-status -z".
struct NameStatusEntry {
    /// 'A', 'D', 'M', 'R', …
    char letter = ' ';
    /// The bytes of the path as seen from the top of the working copy.
    std::string path;
    /// Present for a renamed or copied file.
    std::optional<std::string> oldPath = std::nullopt;
};

/// Returns the entries; leaves out a last one that was cut off.
[[nodiscard]] std::vector<NameStatusEntry> nameStatusEntriesIn(std::string_view output);

/// Not thread-safe, as are all operations.
class NameStatusQuery : public NEBSourceControlTaskOperation {
public:
    /// Of the diff request's revisions and files. HEAD stands in for a missing first revision, the
    /// working copy for a missing second one.
    /// `dots`: what stands between two revisions, ".." or "...".
    NameStatusQuery(std::shared_ptr<NEBSourceControlRequest> request, std::string_view dots);

    [[nodiscard]] std::string className() const override { return "NameStatusQuery"; }
    [[nodiscard]] std::string launchPath() override;
    /// The result has no records; see entries().
    void parseData() override;

    /// In git's order; empty until the operation has run.
    [[nodiscard]] const std::vector<NameStatusEntry>& entries() const { return _entries; }

private:
    std::vector<NameStatusEntry> _entries;
};

}  // namespace neb::nebsc
