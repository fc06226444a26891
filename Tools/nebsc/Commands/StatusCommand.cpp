#include <filesystem>
#include <memory>

#include "CommandFrame/CommandTask.h"
#include "CommandFrame/StatusQuery.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlStatus.h"
#include "Platform/PathString.h"
#include "Terminal/PrintableText.h"
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
    bool canRunBesideLocate() const override { return paths("PATH").empty(); }
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    RequestResult perform() override;
    std::string textOfResult(const NEBSourceControlResult& records) override;
    void report(const Outcome& outcome, CommandOutput& output) override;

private:
    [[nodiscard]] std::string lineOf(const StatusEntry& entry) const;

    /// Absolute; absent for the whole working copy.
    std::optional<std::string> _path;
    std::shared_ptr<StatusQuery> _query;
};

/// For a path that does not exist, starts from the nearest existing folder. A symbolic link counts
/// itself if it lies in a working copy, otherwise the folder that it points to.
WorkingCopyLocation StatusTask::locate() {
    if (paths("PATH").empty()) {
        return CommandTask::locate();
    }
    fs::path path = paths("PATH").front();
    const auto around = [this](const fs::path& folder) {
        return findWorkingCopy(git().interruption(), git().trace(), currentFolder(),
                               folder.string());
    };
    WorkingCopyLocation found = around(nearestFolder(path));
    std::error_code ignored;
    if (!found.isWorkingCopy && fs::is_symlink(fs::symlink_status(path, ignored)) &&
        fs::is_directory(fs::status(path, ignored))) {
        path = fs::canonical(path, ignored);
        found = around(path);
    }
    if (path.string() != found.location) {
        _path = path.string();
    }
    return found;
}

std::shared_ptr<NEBSourceControlRequest> StatusTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestStatus);
    if (_path) {
        request->destination = *_path;
    }
    return request;
}

/// The query has more details than the request, and --all has no equivalent in a request. With
/// --json alone, the output is the request's own.
RequestResult StatusTask::perform() {
    const bool isAll = arguments().has("--all");
    if (isJSON() && !isAll) {
        return performRequest(makeRequest());
    }
    _query = std::make_shared<StatusQuery>(makeRequest(), isAll);
    return performStreamed(*_query);
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
    if (_query) {
        for (const StatusEntry& entry : _query->takeEntries()) {
            lines += lineOf(entry);
        }
    }
    return lines;
}

/// Reports that there are no changes.
void StatusTask::report(const Outcome& outcome, CommandOutput& output) {
    if (outcome.recordCount.value_or(0) > 0 || (outcome.result && !outcome.result->empty())) {
        return;
    }
    const std::string name = inQuotes(lastPathComponent(workingCopy().location));
    const std::string typed = inQuotes(argument("PATH"));
    // A file outside the sparse checkout is not on disk, and git reports it as unchanged.
    if (_path && !isAnythingAt(*_path) && !git().isTracked(*_path)) {
        output = refusal(
            typed + " exists neither on disk nor in the index of the working copy " + name + ".",
            exitFailed, NEBSourceControlPathUnknownErrorClass);
        return;
    }
    output.standardOutput =
        "No changes in " + printable(_path ? typed : "the working copy " + name) + ".\n";
}

constexpr Parameter parameters[] = {
    {"PATH", "A file or folder, which may be deleted; default: the whole working copy",
     Takes::path},
    {"--all", "Show each file of an untracked folder instead of the folder"},
};

}  // namespace

constinit const Command statusCommand{
    .name = "status",
    .group = inspectGroup,
    .summary = "Show the changed files of a working copy",
    .details =
        "For a file in conflict, shows what the current branch (us) and the other branch\n"
        "(them) did to it.\n"
        "\n"
        "Examples:\n"
        "  nebsc status               the working copy around the current folder\n"
        "  nebsc status src/main.c    one file or folder\n"
        "  nebsc status --all         each file of untracked folders\n"
        "  nebsc status --json        for a program to read\n",
    .parameters = parameters,
    .activity = "Reading",
    .run = runTask<StatusTask>,
};

}  // namespace neb::nebsc
