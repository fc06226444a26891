// The commands "mv", "cp" and "mkdir".

#include <filesystem>
#include <system_error>

#include "CommandFrame/CommandTask.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Platform/PathString.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view file = "FILE";
constexpr std::string_view destination = "DEST";

/// Refuses "a/" where there is no folder "a": the name of a file must not end with "/".
std::optional<CommandOutput> refusalOfFolderArgument(const std::string& argument,
                                                     const std::string& path) {
    return argument.ends_with('/') && !isFolder(path)
               ? std::optional(refusalOfMissingFolder(argument))
               : std::nullopt;
}

/// What is created and then staged must be new, and in the working copy.
std::optional<CommandOutput> refusalOfNewPath(const GitQueries& git, const std::string& path) {
    if (auto refused = refusalOutsideWorkingCopy(git)) {
        return refused;
    }
    if (!liesWithin(path, git.workingCopy().location)) {
        return refusal(inQuotes(path) + " is outside the working copy " +
                           inQuotes(git.workingCopy().location) + "; nothing was changed.",
                       exitFailed, NEBSourceControlPathOutsideErrorClass);
    }
    if (auto refused = refusalOfExisting(git.workingCopy(), path)) {
        return refused;
    }
    return refusalOfBlockedFolder(git.workingCopy(), fs::path(path).parent_path().string());
}

// ---- mv ---------------------------------------------------------------------------------------

class MoveTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        auto request = newRequest(NEBSourceControlRequestMove, paths(file));
        request->destination = paths(destination).front();
        return request;
    }
};

std::optional<CommandOutput> MoveTask::validate() {
    if (auto refused = refusalOutsideWorkingCopy(git())) {
        return refused;
    }
    const std::string& source = paths(file).front();
    if (!isAnythingAt(source) && !git().isTracked(source)) {
        return refusal("The file or folder " + inQuotes(argument(file)) + " does not exist.",
                       exitFailed, NEBSourceControlPathUnknownErrorClass);
    }
    if (auto refused = refusalOfFolderArgument(argument(destination), paths(destination).front())) {
        return refused;
    }
    const std::string parent = fs::path(paths(destination).front()).parent_path().string();
    if (auto refused = refusalOfBlockedFolder(workingCopy(), parent)) {
        return refused;
    }
    return isFolder(parent) ? std::nullopt : std::optional(refusalOfMissingFolder(shown(parent)));
}

constexpr Parameter moveParameters[] = {
    {file, "A tracked file or folder", Takes::path, Occurs::once},
    {destination, "The new name, or a folder to move it to", Takes::path, Occurs::once},
};

// ---- cp ---------------------------------------------------------------------------------------

class CopyTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    SilentFailure silentFailure() const override { return SilentFailure::isIgnored; }
    void report(const Outcome& outcome, CommandOutput& output) override;

private:
    std::string _copy;
};

std::optional<CommandOutput> CopyTask::validate() {
    if (auto refused = refusalOfFolderArgument(argument(destination), paths(destination).front())) {
        return refused;
    }
    _copy = paths(destination).front();
    if (isFolder(_copy)) {
        std::error_code ignored;
        _copy = fs::canonical(_copy, ignored) / fs::path(paths(file).front()).filename();
    }
    if (auto refused = refusalOfNewPath(git(), _copy)) {
        return refused;
    }
    const std::string parent = fs::path(_copy).parent_path().string();
    return isFolder(parent) ? std::nullopt : std::optional(refusalOfMissingFolder(shown(parent)));
}

std::shared_ptr<NEBSourceControlRequest> CopyTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestCopy, paths(file));
    request->destination = _copy;
    return request;
}

/// The request stages while it copies, perhaps too early. So stages again.
void CopyTask::report(const Outcome& /*outcome*/, CommandOutput& output) {
    const RequestResult staging =
        performRequest(newRequest(NEBSourceControlRequestAddFiles, {_copy}));
    if (addFailureOf(*staging.outcome, SilentFailure::isError, output)) {
        output.standardError += "The copy was created but not staged.\n";
    }
}

constexpr Parameter copyParameters[] = {
    {file, "A file or a folder with everything in it", Takes::path, Occurs::once},
    {destination, "The name of the copy, or a folder to copy to", Takes::path, Occurs::once},
};

// ---- mkdir ------------------------------------------------------------------------------------

class MakeDirectoryTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override {
        return refusalOfNewPath(git(), paths("DIR").front());
    }
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        auto request = newRequest(NEBSourceControlRequestMakeDirectory);
        request->destination = paths("DIR").front();
        return request;
    }
    /// A new folder is empty, so it does not matter that staging fails.
    SilentFailure silentFailure() const override { return SilentFailure::isIgnored; }
};

constexpr Parameter makeDirectoryParameters[] = {
    {"DIR", "The new folder; missing parent folders are created too", Takes::folder, Occurs::once},
};

}  // namespace

constinit const Command moveCommand{
    .name = "mv",
    .group = changeGroup,
    .summary = "Rename or move a file or folder",
    .details =
        "Examples:\n"
        "  nebsc mv notes.txt read.txt    rename a file\n"
        "  nebsc mv read.txt doc          move it to the folder doc\n",
    .parameters = moveParameters,
    .activity = "Moving",
    .run = runTask<MoveTask>,
};

constinit const Command copyCommand{
    .name = "cp",
    .group = changeGroup,
    .summary = "Copy a file or folder and stage the copy",
    .details =
        "Never overwrites anything.\n"
        "\n"
        "Examples:\n"
        "  nebsc cp main.c second.c    copy a file\n"
        "  nebsc cp src attic          copy the folder src to attic, or into it\n",
    .parameters = copyParameters,
    .activity = "Copying",
    .run = runTask<CopyTask>,
};

constinit const Command makeDirectoryCommand{
    .name = "mkdir",
    .group = changeGroup,
    .summary = "Create a folder",
    .details =
        "git does not record empty folders: a commit contains the folder once a file in\n"
        "it is added.\n"
        "\n"
        "Example:\n"
        "  nebsc mkdir doc/images    create doc/images, and doc if it is missing\n",
    .parameters = makeDirectoryParameters,
    .activity = "Creating the folder",
    .run = runTask<MakeDirectoryTask>,
};

}  // namespace neb::nebsc
