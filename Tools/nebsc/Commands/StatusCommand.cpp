#include <filesystem>
#include <memory>

#include "CommandFrame/BrokenReference.h"
#include "CommandFrame/CommandTask.h"
#include "CommandFrame/FileLines.h"
#include "CommandFrame/StateText.h"
#include "CommandFrame/StatusQuery.h"
#include "CommandFrame/UnfinishedWork.h"
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
    bool canRunBesideLocate() const override {
        return paths("PATH").empty() &&
               !(arguments().has("--short") && arguments().has("--ignored"));
    }
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    RequestResult perform() override;
    std::string textOfResult(const NEBSourceControlResult& records) override;
    void finish(Outcome& outcome) override;
    void report(const Outcome& outcome, CommandOutput& output) override;
    void reportFailure(const Outcome& outcome, CommandOutput& output) override;

private:
    /// Returns whether to show the whole state of the working copy, not only a line per path.
    [[nodiscard]] bool isState() const {
        return mayRunGit() &&
               (isJSON() ? arguments().has("--ignored") : !arguments().has("--short"));
    }
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> makeStatusRequest() const;
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> makeStateRequest() const;
    [[nodiscard]] std::string lineOf(const StatusEntry& entry) const;
    /// Returns what is in progress, and how to go on.
    [[nodiscard]] std::string unfinishedWork();
    [[nodiscard]] std::string stepText();
    [[nodiscard]] std::string stateText();
    [[nodiscard]] bool hasChanges(const Outcome& outcome) const;
    /// Returns why the branch cannot be read, if it cannot. git lists all files as new then.
    [[nodiscard]] const std::optional<NEBSourceControlError>& brokenBranch();

    /// Absolute; absent for the whole working copy.
    std::optional<std::string> _path;
    StateText _state{isInColour()};
    std::shared_ptr<StatusQuery> _query;
    /// The result of brokenBranch(); absent before its first call.
    std::optional<std::optional<NEBSourceControlError>> _brokenBranch;
};

/// For a path that does not exist, starts from the nearest existing folder. A symbolic link counts
/// itself if it lies in a working copy, otherwise the folder that it points to.
WorkingCopyLocation StatusTask::locate() {
    if (paths("PATH").empty()) {
        return CommandTask::locate();
    }
    fs::path path = paths("PATH").front();
    const auto around = [this](const fs::path& folder) { return locateAround(folder.string()); };
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

std::optional<CommandOutput> StatusTask::validate() {
    if (arguments().has("--short") && arguments().has("--ignored")) {
        throw invalidArguments("option '--short' cannot be combined with '--ignored'");
    }
    return std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> StatusTask::makeRequest() {
    return isState() ? makeStateRequest() : makeStatusRequest();
}

std::shared_ptr<NEBSourceControlRequest> StatusTask::makeStatusRequest() const {
    auto request = newRequest(NEBSourceControlRequestStatus);
    if (_path) {
        request->destination = *_path;
    }
    return request;
}

std::shared_ptr<NEBSourceControlRequest> StatusTask::makeStateRequest() const {
    auto request =
        newRequest(NEBSourceControlRequestWorkingCopyState,
                   _path ? std::vector<std::string>{*_path} : std::vector<std::string>{});
    NEBDictionary options;
    if (arguments().has("--all")) {
        options.set(NEBSourceControlRequestOptionUntrackedFiles, "all");
    }
    if (arguments().has("--ignored")) {
        options.set(NEBSourceControlRequestOptionIgnoredFiles, true);
    }
    request->setOptions(std::move(options));
    return request;
}

/// The query has more details than the status request, and --all has no equivalent in one. With
/// --json alone, the output is the request's own.
RequestResult StatusTask::perform() {
    const bool isAll = arguments().has("--all");
    if (isState()) {
        return performStreamed(makeRequest());
    }
    if (isJSON() && !isAll) {
        return performRequest(makeRequest());
    }
    if (!mayRunGit()) {
        return performStreamed(makeRequest());
    }
    _query = std::make_shared<StatusQuery>(makeRequest(), isAll);
    return performStreamed(*_query);
}

// ---- text -------------------------------------------------------------------------------------

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

/// Only a rebase has steps, so that nothing more is asked about other operations.
std::string StatusTask::unfinishedWork() {
    std::string lines;
    for (const UnfinishedWork& work : unfinishedWorkIn(git())) {
        lines.append("\nUnfinished: ").append(work.work).append(work.hasSteps ? stepText() : "");
        lines.append("\n  ").append(work.advice).append("\n");
    }
    return lines;
}

std::string StatusTask::stepText() {
    const RequestResult unfinished =
        performRequest(newRequest(NEBSourceControlRequestUnfinishedOperation));
    const auto& records = unfinished.outcome->result;
    if (unfinished.outcome->error || !records || records->empty()) {
        return {};
    }
    const NEBDictionary& record = records->front();
    const auto step = record.value(NEBSourceControlOperationStepKey).integer();
    const auto count = record.value(NEBSourceControlOperationStepCountKey).integer();
    return step && count ? ", step " + std::to_string(*step) + " of " + std::to_string(*count) : "";
}

std::string StatusTask::stateText() {
    return _state.branchLine() + unfinishedWork() + _state.changeLists();
}

/// The records of a state are collected, because its text is in another order.
std::string StatusTask::textOfResult(const NEBSourceControlResult& records) {
    if (isState()) {
        _state.add(records, workingCopy());
        return {};
    }
    std::string lines;
    if (!mayRunGit() && !isJSON()) {
        lines = linesOfFiles(records, workingCopy(), isInColour());
    }
    if (_query && !brokenBranch()) {
        for (const StatusEntry& entry : _query->takeEntries()) {
            lines += lineOf(entry);
        }
    }
    return lines;
}

const std::optional<NEBSourceControlError>& StatusTask::brokenBranch() {
    if (!_brokenBranch) {
        _brokenBranch = git().isWithoutCommits() ? brokenReference(git(), "HEAD") : std::nullopt;
    }
    return *_brokenBranch;
}

void StatusTask::finish(Outcome& outcome) {
    if (const auto& broken = brokenBranch()) {
        outcome.error = broken;
        outcome.result.reset();
    }
}

bool StatusTask::hasChanges(const Outcome& outcome) const {
    return isState() ? _state.hasChanges()
                     : outcome.recordCount.value_or(0) > 0 ||
                           (outcome.result && !outcome.result->empty());
}

/// Shows what git listed before it failed.
void StatusTask::reportFailure(const Outcome& outcome, CommandOutput& output) {
    if (isState() && !brokenBranch() && outcome.recordCount.value_or(0) > 0) {
        output.standardOutput += stateText();
    }
}

/// Shows the state, and that there are no changes.
void StatusTask::report(const Outcome& outcome, CommandOutput& output) {
    if (isState()) {
        output.standardOutput += stateText();
    }
    if (hasChanges(outcome)) {
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
    output.standardOutput += std::string(output.standardOutput.empty() ? "" : "\n") +
                             "No changes in " +
                             printable(_path ? typed : "the working copy " + name) + ".\n";
}

constexpr Parameter parameters[] = {
    {"PATH", "A file or folder, which may be deleted; default: the whole working copy",
     Takes::path},
    {"--all", "Show each file of an untracked folder instead of the folder"},
    {"--ignored", "Show ignored files too"},
    {"--short", "Show only a line for each path"},
};

}  // namespace

constinit const Command statusCommand{
    .name = "status",
    .group = inspectGroup,
    .summary = "Show the branch and the changed files of a working copy",
    .details =
        "Shows the branch and its distance from the upstream, an operation in progress\n"
        "and how to go on, and the files: in conflict, with changes for the next commit\n"
        "(staged), with other changes, and untracked. For a file in conflict, shows what\n"
        "the current branch (us) and the other branch (them) did to it.\n"
        "\n"
        "Examples:\n"
        "  nebsc status               the working copy around the current folder\n"
        "  nebsc status src/main.c    one file or folder\n"
        "  nebsc status --short       a line for each path\n"
        "  nebsc status --all         each file of untracked folders\n"
        "  nebsc status --json        for a program to read\n",
    .parameters = parameters,
    .activity = "Reading",
    .run = runTask<StatusTask>,
};

}  // namespace neb::nebsc
