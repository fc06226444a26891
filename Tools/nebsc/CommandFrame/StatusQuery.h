// StatusQuery.h - asks git what has changed in a working copy, with all that git knows of it.
//
// The records of a status request hold a path and one number; a conflict's kind, a renamed file's
// old name and the bytes of a name that is not UTF-8 are lost in them. The entries here keep them.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBSourceControlTaskOperation.h"

namespace neb::nebsc {

/// A changed file: an entry of git-status(1), porcelain v1 with "-z".
struct StatusEntry {
    /// The letters of the index and of the working copy, ' ' where that has not changed.
    char index = ' ';
    char workTree = ' ';
    /// The bytes of the path as seen from the top of the working copy; an untracked folder ends
    /// with "/".
    std::string path;
    /// Present for a renamed or copied file.
    std::optional<std::string> oldPath = std::nullopt;

    /// The letter that counts: the index's, or else the working copy's.
    [[nodiscard]] char letter() const { return index != ' ' ? index : workTree; }
};

/// The entries in an output of git-status; a last one that was cut off is left out.
[[nodiscard]] std::vector<StatusEntry> statusEntriesIn(std::string_view output);

/// Not thread-safe, as are all operations.
class StatusQuery : public NEBSourceControlTaskOperation {
public:
    /// Of the source tree's location, or of the request's destination in it.
    /// `expandsUntrackedFolders`: shows each file of an untracked folder instead of the folder.
    StatusQuery(std::shared_ptr<NEBSourceControlRequest> request, bool expandsUntrackedFolders);

    [[nodiscard]] std::string className() const override { return "StatusQuery"; }
    [[nodiscard]] std::string launchPath() override;
    /// The result has the form of a status request's. A path that is not UTF-8 is written the way
    /// of git, between quotes.
    void parseData() override;
    /// A folder that could not be read is an error, though git ends with status 0.
    [[nodiscard]] std::optional<NEBSourceControlError> errorFromErrorMessage(
        const std::optional<std::string>& message) override;

    /// In git's order; empty until the operation has run.
    [[nodiscard]] const std::vector<StatusEntry>& entries() const { return _entries; }

private:
    std::vector<StatusEntry> _entries;
};

}  // namespace neb::nebsc
