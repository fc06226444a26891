// The command "submodule" and its subcommands.

#include <unistd.h>

#include <algorithm>

#include "CommandFrame/CommandTask.h"
#include "CommandFrame/RecordNames.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/PrintableText.h"
#include "Terminal/TextTable.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view pathParameter = "PATH";

// ---- list -------------------------------------------------------------------------------------

/// Prints the submodules of the result.
class SubmoduleListTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return newRequest(NEBSourceControlRequestSubmodules);
    }
    /// A query for settings that do not exist prints nothing.
    SilentFailure silentFailure() const override { return SilentFailure::isIgnored; }
    std::string textOfResult(const NEBSourceControlResult& result) override;

private:
    [[nodiscard]] std::vector<std::string> rowOf(const NEBDictionary& record) const;
};

/// The commit is the one that is checked out, or else the one in the index.
std::vector<std::string> SubmoduleListTask::rowOf(const NEBDictionary& record) const {
    constexpr std::size_t digits = 12;
    const std::string_view current = record.text(NEBSourceControlOperationObjectIDKey);
    const std::string_view id =
        current.empty() ? record.text(NEBSourceControlOperationIndexObjectIDKey) : current;
    const std::string_view description = record.text(NEBSourceControlOperationDescriptionKey);
    const bool isName = !description.empty() && !current.starts_with(description);
    return {printable(record.text(NEBSourceControlOperationStateKey)),
            printable(id.substr(0, digits)), shown(std::string(bytesOfName(record, pathKeys))),
            isName ? "(" + printable(description) + ")" : ""};
}

std::string SubmoduleListTask::textOfResult(const NEBSourceControlResult& result) {
    std::vector<std::vector<std::string>> rows;
    for (const NEBDictionary& record : result) {
        rows.push_back(rowOf(record));
    }
    return tableLines(STDOUT_FILENO, rows);
}

constinit const Command listCommand{
    .name = "list",
    .group = subcommandGroup,
    .summary = "List the submodules with state, commit and path",
    .details =
        "The states are 'not initialized', 'not cloned', 'current', 'other commit' than\n"
        "in the index, and 'conflict'. The latest tag before the commit follows.\n"
        "\n"
        "Example:\n"
        "  nebsc submodule list\n",
    .activity = "Reading",
    .isPaged = true,
    .run = runTask<SubmoduleListTask>,
};

// ---- init -------------------------------------------------------------------------------------

class SubmoduleInitTask : public SubmoduleListTask {
public:
    using SubmoduleListTask::SubmoduleListTask;

protected:
    std::optional<CommandOutput> validate() override { return refusalOutsideWorkingCopy(git()); }
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        auto request = newRequest(NEBSourceControlRequestSubmodules, paths(pathParameter));
        request->options = NEBDictionary{{NEBSourceControlRequestOptionAction, "init"}};
        return request;
    }
    void report(const Outcome& outcome, CommandOutput& output) override {
        if (outcome.result.value_or(NEBSourceControlResult()).empty()) {
            output.standardOutput += "There are no submodules.\n";
        }
    }
};

constexpr Parameter initParameters[] = {
    {pathParameter, "Only these submodules, or those below a folder; default: all", Takes::path,
     Occurs::anyNumber},
};

constinit const Command initSubmodulesCommand{
    .name = "init",
    .group = subcommandGroup,
    .summary = "Enter submodules into the settings of the repository",
    .details =
        "'nebsc submodule update' fetches only those. Prints the submodules as 'list'\n"
        "does.\n"
        "\n"
        "Examples:\n"
        "  nebsc submodule init            all submodules\n"
        "  nebsc submodule init lib/zip    one of them\n",
    .parameters = initParameters,
    .activity = "Reading",
    .run = runTask<SubmoduleInitTask>,
};

// ---- update -----------------------------------------------------------------------------------

class SubmoduleUpdateTask : public SubmoduleInitTask {
public:
    using SubmoduleInitTask::SubmoduleInitTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    RequestResult perform() override;
    std::string adviceFor(const NEBSourceControlError& error) const override;

private:
    /// Whether one of the submodules is not initialized.
    bool _isUninitialized = false;
};

std::shared_ptr<NEBSourceControlRequest> SubmoduleUpdateTask::makeRequest() {
    auto request =
        newExchangeRequest(workingCopy(), NEBSourceControlRequestSubmodules, Peer::remote);
    const std::vector<std::string>& files = paths(pathParameter);
    request->files.emplace(files.begin(), files.end());
    request->options->set(NEBSourceControlRequestOptionAction, "update");
    const std::pair<const char*, NEBConstant> flags[] = {
        {"--init", NEBSourceControlRequestOptionInitialize},
        {"--recursive", NEBSourceControlRequestOptionRecursive},
        {"--remote", NEBSourceControlRequestOptionFollowBranch},
        {"--force", NEBSourceControlRequestOptionForce},
    };
    for (const auto& [flag, key] : flags) {
        if (arguments().has(flag)) {
            request->options->set(key, true);
        }
    }
    return request;
}

RequestResult SubmoduleUpdateTask::perform() {
    RequestResult result = SubmoduleInitTask::perform();
    if (result.outcome && result.outcome->result) {
        _isUninitialized = std::ranges::any_of(*result.outcome->result, [](const auto& record) {
            return record.text(NEBSourceControlOperationStateKey) == "not initialized";
        });
    }
    return result;
}

std::string SubmoduleUpdateTask::adviceFor(const NEBSourceControlError& error) const {
    return error.errorClass == NEBSourceControlSubmoduleFailedErrorClass && _isUninitialized
               ? "'nebsc submodule update --init' initializes it first."
               : "";
}

constexpr Parameter updateParameters[] = {
    {pathParameter, "Only these submodules, or those below a folder; default: all", Takes::path,
     Occurs::anyNumber},
    {"--init", "First initialize submodules that are not"},
    {"-r,--recursive", "Update the submodules of submodules too"},
    {"--remote", "Check out the latest commit of the branch of the remote"},
    {"--force", "Throw away local changes in the submodules"},
};

constinit const Command updateSubmodulesCommand{
    .name = "update",
    .group = subcommandGroup,
    .summary = "Fetch submodules, and check out the commits in the index",
    .details =
        "Updates the submodules that are initialized. With --remote, the new commits are\n"
        "changes to stage and commit. Prints the submodules as 'list' does.\n"
        "\n"
        "Examples:\n"
        "  nebsc submodule update --init --recursive    all of them\n"
        "  nebsc submodule update --remote lib/zip      the latest commit of one\n",
    .parameters = updateParameters,
    .activity = "Fetching",
    .run = runTask<SubmoduleUpdateTask>,
};

constexpr const Command* submoduleCommands[] = {
    &listCommand,
    &initSubmodulesCommand,
    &updateSubmodulesCommand,
};

}  // namespace

constinit const Command submoduleCommand{
    .name = "submodule",
    .group = branchesGroup,
    .summary = "List, initialize and update submodules",
    .details =
        "Examples:\n"
        "  nebsc submodule                  list the submodules\n"
        "  nebsc submodule update --init    fetch all, and check out their commits\n",
    .activity = "Reading",
    .commands = submoduleCommands,
    .run = runTask<SubmoduleListTask>,
};

}  // namespace neb::nebsc
