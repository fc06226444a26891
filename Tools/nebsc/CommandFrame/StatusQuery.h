// StatusQuery.h - a query for the changes in a working copy, with everything that git reports.
//
// The records of a status request have a path and one number. They lose the kind of a conflict, the
// old name of a renamed file and the bytes of a name that is not UTF-8. The entries here keep them.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "CommandFrame/EntryQuery.h"

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

/// Not thread-safe, like all operations.
class StatusQuery : public EntryQuery<StatusEntry> {
public:
    /// Queries the working copy of a status request, or only the request's destination in it.
    /// `expandsUntrackedFolders` lists each file of an untracked folder instead of the folder.
    StatusQuery(std::shared_ptr<NEBSourceControlRequest> request, bool expandsUntrackedFolders);

    [[nodiscard]] std::string className() const override { return "StatusQuery"; }
    /// Reports a folder that git could not read, though git exits with status 0.
    [[nodiscard]] std::optional<NEBSourceControlError> errorFromErrorMessage(
        const std::optional<std::string>& message) override;

protected:
    [[nodiscard]] std::optional<StatusEntry> entryIn(std::string_view text) override;
    /// The record has the same members as that of a status request. A path that is not UTF-8 is
    /// quoted as git does.
    [[nodiscard]] NEBDictionary recordOf(const StatusEntry& entry) const override;

private:
    /// Present between a new path and the old one.
    std::optional<StatusEntry> _renamed;
};

}  // namespace neb::nebsc
