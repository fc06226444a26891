// NameStatusQuery.h - a query for the names and states of the files that differ between two sides.
//
// A diff request reads lines in which " -> " separates two names, and loses the bytes of names that
// are not UTF-8. The entries here keep every name as it is.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBSourceControlTaskOperation.h"

namespace neb::nebsc {

/// An entry of git-diff(1) with "--name-status -z".
struct NameStatusEntry {
    /// 'A', 'D', 'M', 'R', …
    char letter = ' ';
    /// The bytes of the path from the top of the working copy.
    std::string path;
    /// Present for a renamed or copied file.
    std::optional<std::string> oldPath = std::nullopt;
};

/// Returns the entries, without a last one that is incomplete.
[[nodiscard]] std::vector<NameStatusEntry> nameStatusEntriesIn(std::string_view output);

/// Not thread-safe, like all operations.
class NameStatusQuery : public NEBSourceControlTaskOperation {
public:
    /// Takes the revisions and files of a diff request. A missing first revision stands for HEAD, a
    /// missing second one for the working copy. `dots` separates two revisions: ".." or "...".
    NameStatusQuery(std::shared_ptr<NEBSourceControlRequest> request, std::string_view dots);

    [[nodiscard]] std::string className() const override { return "NameStatusQuery"; }
    [[nodiscard]] std::string launchPath() override;
    /// The result has no records; see entries().
    void parseData() override;

    /// Returns the entries in git's order; empty until the operation has run.
    [[nodiscard]] const std::vector<NameStatusEntry>& entries() const { return _entries; }

private:
    std::vector<NameStatusEntry> _entries;
};

}  // namespace neb::nebsc
