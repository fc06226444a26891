#include <filesystem>

#include "CommandFrame/CommandTask.h"
#include "CommandFrame/StatusQuery.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlStatus.h"
#include "Platform/PathString.h"
#include "Terminal/Presentation.h"
#include "Terminal/StatusLabels.h"

namespace neb::nebsc {

namespace fs = std::filesystem;

namespace {

fs::path nearestFolder(fs::path path) {
    std::error_code ignored;
    while (!fs::is_directory(fs::symlink_status(path, ignored)) && path.has_relative_path()) {
        path = path.parent_path();
    }
    return path;
}

class StatusTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    WorkingCopyLocation locate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    RequestResult perform() override;
    std::string textOfResult(const NEBSourceControlResult& records) override;
    void report(const Outcome& outcome, CommandOutput& output) override;

private:
    [[nodiscard]] std::string lineOf(const StatusEntry& entry) const;

    /// The path that was asked for, where that is not the place itself.
    std::optional<std::string> _path;
    std::vector<StatusEntry> _entries;
};

/// Of a path where nothing is any more, the nearest folder that is counts. A symbolic link is
/// looked at itself where it lies in a working copy, otherwise what it points to.
WorkingCopyLocation StatusTask::locate() {
    if (paths("PATH").empty()) {
        return CommandTask::locate();
    }
    fs::path asked = paths("PATH").front();
    const auto around = [this](const fs::path& folder) {
        return findWorkingCopy(git().interruption(), git().trace(), currentFolder(),
                               folder.string());
    };
    WorkingCopyLocation place = around(nearestFolder(asked));
    std::error_code ignored;
    if (!place.isWorkingCopy && fs::is_symlink(fs::symlink_status(asked, ignored)) &&
        fs::is_directory(fs::status(asked, ignored))) {
        asked = fs::canonical(asked, ignored);
        place = around(asked);
    }
    if (asked.string() != place.location) {
        _path = asked.string();
    }
    return place;
}

std::shared_ptr<NEBSourceControlRequest> StatusTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestStatus);
    if (_path) {
        request->destination = *_path;
    }
    return request;
}

/// A program gets the request's outcome, a person all that git knows; so does a program that wants
/// what no request can be asked for.
RequestResult StatusTask::perform() {
    const bool isAll = arguments().has("--all");
    if (isJSON() && !isAll) {
        return performRequest(makeRequest());
    }
    StatusQuery query(makeRequest(), isAll);
    RequestResult requestResult = performOperation(query);
    _entries = query.entries();
    return requestResult;
}

std::string StatusTask::lineOf(const StatusEntry& entry) const {
    const std::string_view kind = conflictKind(entry.index, entry.workTree);
    const std::int64_t status = kind.empty() ? statusOfLetter(entry.letter())
                                             : std::int64_t{NEBSourceControlStatusConflict};
    std::string line = statusColumn(status, isInColour());
    if (entry.oldPath) {
        line += shown(*entry.oldPath) + " -> ";
    }
    line += shown(entry.path);
    if (!kind.empty()) {
        line.append(" (").append(kind).append(")");
    }
    return line + "\n";
}

std::string StatusTask::textOfResult(const NEBSourceControlResult& /*records*/) {
    std::string lines;
    for (const StatusEntry& entry : _entries) {
        lines += lineOf(entry);
    }
    return lines;
}

/// Says so when there are no records.
void StatusTask::report(const Outcome& outcome, CommandOutput& output) {
    if (outcome.result && !outcome.result->empty()) {
        return;
    }
    const std::string name = inQuotes(lastPathComponent(workingCopy().location));
    const std::string asked = inQuotes(argument("PATH"));
    // A file outside the sparse checkout is not on disk, and git reports no change of it.
    if (_path && !isAnythingAt(*_path) && !git().isTracked(*_path)) {
        output = refusal("There is no file or folder " + asked +
                             ", neither on disk nor in the working copy " + name + ".",
                         exitFailed, NEBSourceControlPathUnknownErrorClass);
        return;
    }
    output.standardOutput =
        "Nothing to report: " + printable(_path ? asked : "the working copy " + name) +
        " has no changes.\n";
}

constexpr Parameter parameters[] = {
    {"PATH", "A file or folder, deleted ones included; unless given, the whole working copy",
     Takes::path},
    {"--all", "Show each file of an untracked folder, not the folder alone"},
};

}  // namespace

constinit const Command statusCommand{
    .name = "status",
    .group = lookGroup,
    .summary = "Show which files of a working copy have changed",
    .details =
        "A file in conflict is shown with what the current branch (us) and the other (them)\n"
        "did to it.\n\n"
        "Examples:\n"
        "  nebsc status                what has changed in the working copy around here\n"
        "  nebsc status src/main.c    the same for one file or folder\n"
        "  nebsc status --all         untracked folders with the files in them\n"
        "  nebsc status --json        the same for a program to read\n",
    .parameters = parameters,
    .activity = "Looking",
    .run = runTask<StatusTask>,
};

}  // namespace neb::nebsc
