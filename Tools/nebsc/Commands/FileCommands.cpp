// The commands about files that stay where they are.

#include "CommandFrame/CommandTask.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Session/GitProgram.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view files = "FILE";

// ---- add --------------------------------------------------------------------------------------

class AddTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override {
        return isAll() == paths(files).empty()
                   ? std::nullopt
                   : std::optional(refusal("Either FILE or --all was expected (see nebsc add "
                                           "--help).",
                                           exitNotUnderstood));
    }
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return isAll() ? newRequest(NEBSourceControlRequestAdd)
                       : newRequest(NEBSourceControlRequestAddFiles, paths(files));
    }

private:
    [[nodiscard]] bool isAll() const { return arguments().has("--all"); }
};

constexpr Parameter addParameters[] = {
    {files, "A file, or a folder with all that is in it; deleted ones too", Takes::path,
     Occurs::anyNumber},
    {"--all", "All that has changed in the whole working copy"},
};

// ---- rm ---------------------------------------------------------------------------------------

/// The request removes by force, so the look at what would be lost is taken here.
class RemoveTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return newRequest(NEBSourceControlRequestRemove, paths(files));
    }
};

std::optional<CommandOutput> RemoveTask::validate() {
    if (arguments().has("--force")) {
        return std::nullopt;
    }
    std::vector<std::string> question{"status",
                                      "--porcelain",
                                      "-z",
                                      "--no-renames",
                                      "--untracked-files=no",
                                      "--ignore-submodules=none",
                                      "--"};
    question.insert(question.end(), paths(files).begin(), paths(files).end());
    const ChildOutcome status = git().run(std::move(question));
    if (!status.status.isSuccess()) {
        return failureOfQuery(git(), status);
    }
    std::vector<std::string> changed;
    for (const std::string& line : textsBetweenNULs(status.output)) {
        constexpr std::size_t lengthOfState = 3;
        // Of what is only deleted, nothing is left to lose.
        if (line.size() > lengthOfState && !line.starts_with(" D ") && !line.starts_with("D  ")) {
            changed.push_back(line.substr(lengthOfState));
        }
    }
    if (changed.empty()) {
        return std::nullopt;
    }
    CommandOutput refused = refusalAboutFiles(
        workingCopy(),
        "Nothing was removed, as changes that are not committed would be lost:", changed,
        NEBSourceControlLocalChangesErrorClass);
    refused.standardError += "\"nebsc rm --force\" removes the files all the same.\n";
    return refused;
}

constexpr Parameter removeParameters[] = {
    {files, "A file, or a folder with all that is tracked in it", Takes::path, Occurs::oneOrMore},
    {"--force", "Remove what has changes that are not committed too; they are lost"},
};

// ---- revert -----------------------------------------------------------------------------------

class RevertTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return newRequest(NEBSourceControlRequestRevert, paths(files));
    }
};

constexpr Parameter revertParameters[] = {
    {files, "A file, or a folder with all that is tracked in it", Takes::path, Occurs::oneOrMore},
};

}  // namespace

constinit const Command addCommand{
    .name = "add",
    .group = changeGroup,
    .summary = "Stage files for the next commit",
    .details =
        "Examples:\n"
        "  nebsc add src/main.c    stage one file\n"
        "  nebsc add .             stage all that has changed in this folder and below\n"
        "  nebsc add --all         the same of the whole working copy\n",
    .parameters = addParameters,
    .activity = "Adding",
    .run = runTask<AddTask>,
};

constinit const Command removeCommand{
    .name = "rm",
    .group = changeGroup,
    .summary = "Remove files from disk and from the next commit",
    .details =
        "Files whose changes are not committed are left alone, unless --force says that\n"
        "they may be lost.\n\n"
        "Examples:\n"
        "  nebsc rm old.c            remove a file\n"
        "  nebsc rm --force old.c    the same, though it has changes\n",
    .parameters = removeParameters,
    .activity = "Removing",
    .run = runTask<RemoveTask>,
};

constinit const Command revertCommand{
    .name = "revert",
    .group = changeGroup,
    .summary = "Throw away changes of files",
    .details =
        "The files become what was staged last, or else committed: changes that are not\n"
        "staged are lost. What is staged stays, and so does a file in conflict.\n\n"
        "Examples:\n"
        "  nebsc revert src/main.c    throw away what has changed in one file\n"
        "  nebsc revert .             the same in this folder and below\n",
    .parameters = revertParameters,
    .activity = "Reverting",
    .run = runTask<RevertTask>,
};

}  // namespace neb::nebsc
