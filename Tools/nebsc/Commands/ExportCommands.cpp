// The commands "export" and "export-tree", which write files of the repository to disk.

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "CommandFrame/CommandTask.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlFileError.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/NewFile.h"
#include "Platform/PathString.h"
#include "Session/GitProgram.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view destination = "DEST";

// ---- export -----------------------------------------------------------------------------------

class ExportTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    void finish(Outcome& outcome) override;
    std::string textOfResult(const NEBSourceControlResult& records) override;

private:
    [[nodiscard]] std::string revision() const { return argument("REVISION"); }
    [[nodiscard]] const std::string& file() const { return paths("FILE").front(); }
    [[nodiscard]] std::optional<CommandOutput> refusalOfSource();
    [[nodiscard]] std::optional<CommandOutput> chooseTarget();

    /// Absent without DEST: the request then creates a temporary file.
    std::optional<NewFile> _target;
};

/// The request reports a missing revision and a missing file alike.
std::optional<CommandOutput> ExportTask::refusalOfSource() {
    if (auto refused = refusalOfRevision(git(), revision())) {
        return refused;
    }
    if (!revision().starts_with('-') && git().typeOfEntry(revision(), file()) == "") {
        return refusal(inQuotes(argument("FILE")) + " does not exist in the revision " +
                           inQuotes(revision()) + ".",
                       exitFailed, NEBSourceControlPathUnknownErrorClass);
    }
    return std::nullopt;
}

/// The request can only write under the file's own name, and takes anything that is there for its
/// own output. So it writes to a draft folder, which is renamed afterwards.
std::optional<CommandOutput> ExportTask::chooseTarget() {
    const std::string typed = argument(destination);
    std::string path = paths(destination).front();
    if (isFolder(path)) {
        path = pathByAppendingComponent(path, lastPathComponent(file()));
    } else if (typed.ends_with('/')) {
        return refusalOfMissingFolder(typed);
    }
    if (auto refused = refusalOfExisting(workingCopy(), path)) {
        return refused;
    }
    if (auto refused = refusalInsideGitFolder(git(), path)) {
        return refused;
    }
    _target.emplace(path, lastPathComponent(file()));
    if (const auto failure = _target->prepare()) {
        return failureWith(NEBSourceControlErrorFromFileFailure(*failure));
    }
    return std::nullopt;
}

std::optional<CommandOutput> ExportTask::validate() {
    if (auto refused = refusalOutsideWorkingCopy(git())) {
        return refused;
    }
    if (auto refused = refusalOfPathOutside(git(), file())) {
        return refused;
    }
    if (file() == workingCopy().location) {
        CommandOutput output = refusal("The working copy itself cannot be exported.", exitFailed,
                                       NEBSourceControlPathInvalidErrorClass);
        addAdvice(output, "'nebsc export-tree' writes all of its files.");
        return output;
    }
    if (auto refused = isJSON() ? std::nullopt : refusalOfSource()) {
        return refused;
    }
    return paths(destination).empty() ? std::nullopt : chooseTarget();
}

std::shared_ptr<NEBSourceControlRequest> ExportTask::makeRequest() {
    auto request = newRequest(
        _target ? NEBSourceControlRequestExport : NEBSourceControlRequestExportFiles, {file()});
    request->startingRevision = revision();
    if (_target) {
        request->destination = _target->draft();
    }
    return request;
}

void ExportTask::finish(Outcome& outcome) {
    if (!_target) {
        return;
    }
    if (const auto failure = _target->publish()) {
        outcome.result = std::nullopt;
        outcome.error = NEBSourceControlErrorFromFileFailure(*failure);
        return;
    }
    NEBDictionary record;
    record.set(NEBSourceControlOperationPathKey,
               LOMFilePath::filePathForPathString(_target->path()));
    outcome.result = {std::move(record)};
}

std::string ExportTask::textOfResult(const NEBSourceControlResult& records) {
    std::string lines;
    for (const NEBDictionary& record : records) {
        if (const auto* path = record.value(NEBSourceControlOperationPathKey).filePath()) {
            lines += printable(path->pathString()) + "\n";
        }
    }
    return lines;
}

constexpr Parameter exportParameters[] = {
    {"REVISION", "A branch, a tag or any other revision", Takes::revision, Occurs::once},
    {"FILE", "A file or folder, which need not exist on disk", Takes::path, Occurs::once},
    {destination, "The new name, or a folder to write into; default: a temporary file",
     Takes::path},
};

// ---- export-tree ------------------------------------------------------------------------------

class ExportTreeTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    void report(const Outcome& outcome, CommandOutput& output) override;

private:
    void noteSparseFiles(CommandOutput& output);
    [[nodiscard]] std::optional<CommandOutput> refusalOfBlockingFolder();
    [[nodiscard]] const std::string& folder() const { return paths(destination).front(); }
    /// Follows symbolic links, as git does.
    [[nodiscard]] bool isWorkingCopy() const {
        std::error_code failure;
        return fs::equivalent(folder(), workingCopy().location, failure) && !failure;
    }
};

std::optional<CommandOutput> ExportTreeTask::validate() {
    if (auto refused = refusalOutsideWorkingCopy(git())) {
        return refused;
    }
    const std::string name = inQuotes(argument(destination));
    if (isWorkingCopy()) {
        CommandOutput output = refusal(name + " is the working copy itself; nothing was written.",
                                       exitFailed, NEBSourceControlPathInvalidErrorClass);
        addAdvice(output, "'nebsc revert' discards changes.");
        return output;
    }
    if (isAnythingAt(folder()) && !isFolder(folder())) {
        return refusal(name + " is not a folder; nothing was written.", exitFailed,
                       NEBSourceControlDestinationExistsErrorClass);
    }
    if (auto refused = refusalInsideGitFolder(git(), folder())) {
        return refused;
    }
    std::error_code failure;
    if (isFolder(folder()) && !arguments().has("--force") &&
        (!fs::is_empty(folder(), failure) || failure)) {
        CommandOutput output = refusal("The folder " + name + " is not empty; nothing was written.",
                                       exitFailed, NEBSourceControlDestinationExistsErrorClass);
        addAdvice(output, "'nebsc export-tree --force' overwrites files that are in the index.");
        return output;
    }
    return refusalOfBlockingFolder();
}

/// git would delete a folder, with its content, that has the name of a file of the index.
std::optional<CommandOutput> ExportTreeTask::refusalOfBlockingFolder() {
    if (!isFolder(folder())) {
        return std::nullopt;
    }
    for (const std::string& entry : splitAtNUL(git().run({"ls-files", "--stage", "-z"}).output)) {
        const std::string path =
            pathByAppendingComponent(folder(), entry.substr(entry.find('\t') + 1));
        const bool isSubmodule = entry.starts_with("160000 ");
        if (!isSubmodule && isFolderItself(path)) {
            return refusal("The folder " + inQuotes(path) +
                               " blocks a file of the index; nothing was written.",
                           exitFailed, NEBSourceControlDestinationExistsErrorClass);
        }
    }
    return std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> ExportTreeTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestExportTree);
    request->startingRevision = "HEAD";
    request->destination = folder();
    return request;
}

void ExportTreeTask::report(const Outcome& /*outcome*/, CommandOutput& output) {
    output.standardOutput =
        isAnythingAt(folder())
            ? "Wrote the files of the index to " + printable(inQuotes(folder())) + ".\n"
            : "The index has no files; nothing was written.\n";
    addConflicts(output, git(), "These files are in conflict and were not written:");
    noteSparseFiles(output);
}

/// git silently skips the files outside a sparse checkout.
void ExportTreeTask::noteSparseFiles(CommandOutput& output) {
    const ChildOutcome outcome = git().run({"ls-files", "-t", "-z"});
    const std::vector<std::string> entries = splitAtNUL(outcome.output);
    const auto count = std::count_if(entries.begin(), entries.end(), [](const std::string& entry) {
        return entry.starts_with("S ");
    });
    if (!outcome.status.isSuccess()) {
        addFailure(output, failureOfQuery(git(), outcome));
    } else if (count > 0) {
        const std::string files = count == 1 ? "One file" : std::to_string(count) + " files";
        addFailure(output, refusal(files + " of the index outside the sparse checkout " +
                                       (count == 1 ? "was" : "were") + " not written.",
                                   exitFailed));
    }
}

constexpr Parameter exportTreeParameters[] = {
    {destination, "The folder, created if missing", Takes::folder, Occurs::once},
    {"--force", "Write to a folder that is not empty, and overwrite its files"},
};

}  // namespace

constinit const Command exportCommand{
    .name = "export",
    .group = inspectGroup,
    .summary = "Write a file or folder of a revision to disk",
    .details =
        "Prints where it was written. Never overwrites anything.\n"
        "\n"
        "Examples:\n"
        "  nebsc export v1.0 main.c            to a temporary file\n"
        "  nebsc export HEAD~2 main.c old.c    under another name\n",
    .parameters = exportParameters,
    .activity = "Writing",
    .run = runTask<ExportTask>,
};

constinit const Command exportTreeCommand{
    .name = "export-tree",
    .group = inspectGroup,
    .summary = "Write all files of the index to a folder",
    .details =
        "The index is the latest commit plus what is staged.\n"
        "\n"
        "Example:\n"
        "  nebsc export-tree ../release\n",
    .parameters = exportTreeParameters,
    .activity = "Writing",
    .run = runTask<ExportTreeTask>,
};

}  // namespace neb::nebsc
