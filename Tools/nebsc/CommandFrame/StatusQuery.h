// StatusQuery.h - a query for the changes in a working copy, with everything that git reports.
//
// The records of a status request have a path and one number. They lose the kind of a conflict, the
// old name of a renamed file and the bytes of a name that is not UTF-8. The entries here keep them.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "NEBFoundation/NEBSourceControlTaskOperation.h"

namespace neb::nebsc {

/// A changed file: an entry of git-status(1) with "--porcelain=v1 -z".
struct StatusEntry {
    /// The letters of the index and of the working copy; ' ' if unchanged.
    char index = ' ';
    char workTree = ' ';
    /// The bytes of the path from the top of the working copy; an untracked folder ends with "/".
    std::string path;
    /// Present for a renamed or copied file.
    std::optional<std::string> oldPath = std::nullopt;

    /// Returns the letter of the index if that has changed, else of the working copy.
    [[nodiscard]] char letter() const { return index != ' ' ? index : workTree; }
};

/// Returns the entries, without a last one that is incomplete.
[[nodiscard]] std::vector<StatusEntry> statusEntriesIn(std::string_view output);

/// Not thread-safe, like all operations.
class StatusQuery : public NEBSourceControlTaskOperation {
public:
    /// Queries the working copy of a status request, or only the request's destination in it.
    /// `expandsUntrackedFolders` lists each file of an untracked folder instead of the folder.
    /// Without `makesRecords` the result is empty, and only the entries are read.
    StatusQuery(std::shared_ptr<NEBSourceControlRequest> request, bool expandsUntrackedFolders,
                bool makesRecords);

    [[nodiscard]] std::string className() const override { return "StatusQuery"; }
    [[nodiscard]] std::string launchPath() override;
    /// The records have the same members as those of a status request. A path that is not UTF-8 is
    /// quoted as git does.
    void parseData() override;
    /// Reports a folder that git could not read, though git exits with status 0.
    [[nodiscard]] std::optional<NEBSourceControlError> errorFromErrorMessage(
        const std::optional<std::string>& message) override;

    /// Removes and returns the entries, in git's order; empty until the operation has run.
    [[nodiscard]] std::vector<StatusEntry> takeEntries() { return std::exchange(_entries, {}); }

private:
    std::vector<StatusEntry> _entries;
    bool _makesRecords;
};

}  // namespace neb::nebsc
