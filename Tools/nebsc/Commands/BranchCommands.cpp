// The command "branch" and its subcommands, except those that change or track a branch.

#include <unistd.h>

#include "CommandFrame/BrokenReference.h"
#include "CommandFrame/CommandTask.h"
#include "CommandFrame/RemoteSettings.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/Colour.h"
#include "Terminal/PrintableText.h"
#include "Terminal/ShellText.h"
#include "Terminal/TextWidth.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view nameParameter = "NAME";

// ---- list -------------------------------------------------------------------------------------

class ListTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    RepositoryQuestions questions() const override { return {.asksBranch = true}; }
    bool canRunBesideLocate() const override { return true; }
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return newExchangeRequest(workingCopy(), NEBSourceControlRequestListBranches, Peer::remote);
    }
    RequestResult perform() override;
    std::string textOfResult(const NEBSourceControlResult& records) override;
    void report(const Outcome& outcome, CommandOutput& output) override;

private:
    /// Empty if HEAD is detached; absent until it is needed.
    std::optional<std::string> _current;
    bool _isCurrentListed = false;
};

/// A plug-in that is not for git returns the current branch even if it has no commit.
RequestResult ListTask::perform() {
    if (!mayRunGit()) {
        const RequestResult current =
            performRequest(newRequest(NEBSourceControlRequestCurrentBranch));
        const auto& records = current.outcome->result;
        _current = records && !records->empty()
                       ? std::string(records->front().text(NEBSourceControlOperationNameKey))
                       : std::string();
    }
    return performStreamed(makeRequest());
}

/// The request does not report which branch is the current one.
std::string ListTask::textOfResult(const NEBSourceControlResult& records) {
    if (!_current) {
        _current = currentBranch(git()).value_or("");
    }
    std::string lines;
    for (const NEBDictionary& record : records) {
        const std::string fullName = branchNameOf(record);
        if (fullName.empty()) {
            continue;
        }
        const bool isCurrent = printable(*_current) == fullName;
        const std::string name = fitting(STDOUT_FILENO, 2, fullName);
        _isCurrentListed = _isCurrentListed || isCurrent;
        const bool isColoured = isCurrent && isInColour();
        lines +=
            (isCurrent ? "* " : "  ") + (isColoured ? coloured(name, Colour::green) : name) + "\n";
    }
    return lines;
}

void ListTask::report(const Outcome& /*outcome*/, CommandOutput& output) {
    if (!mayRunGit()) {
        const bool isListed = _isCurrentListed || _current.value_or("").empty();
        output.standardOutput += isListed ? "" : "* " + printable(*_current) + "\n";
    } else if (!_isCurrentListed) {
        output.standardOutput += printable(describeHEAD(git())) + "\n";
    }
}

constinit const Command listCommand{
    .name = "list",
    .group = subcommandGroup,
    .summary = "List the branches and mark the current one",
    .details =
        "Example:\n"
        "  nebsc branch list\n",
    .activity = "Reading",
    .run = runTask<ListTask>,
};

// ---- current ----------------------------------------------------------------------------------

class CurrentTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return newRequest(NEBSourceControlRequestCurrentBranch);
    }
    void report(const Outcome& outcome, CommandOutput& output) override;
};

/// The request does not report a branch without commits. If there is no branch, prints a failure,
/// so that no script takes the text for a name.
void CurrentTask::report(const Outcome& outcome, CommandOutput& output) {
    const bool hasRecord = outcome.result && !outcome.result->empty();
    std::string name = hasRecord ? branchNameOf(outcome.result->front()) : "";
    if (const auto branch = name.empty() ? currentBranch(git()) : std::nullopt) {
        name = printable(*branch);
    }
    if (name.empty() && !mayRunGit()) {
        addFailure(output, refusal("There is no current branch.", exitFailed,
                                   NEBSourceControlNoCurrentBranchErrorClass));
        return;
    }
    if (const auto broken = name.empty() ? brokenReference(git(), "HEAD") : std::nullopt) {
        addFailure(output, failureWith(*broken));
        return;
    }
    if (name.empty()) {
        addFailure(output, refusal(describeHEAD(git()), exitFailed));
        return;
    }
    output.standardOutput = name + "\n";
}

constinit const Command currentCommand{
    .name = "current",
    .group = subcommandGroup,
    .summary = "Show the name of the current branch",
    .details =
        "Exits with status 1 if no branch is checked out, for example on a tag.\n"
        "\n"
        "Example:\n"
        "  nebsc branch current\n",
    .activity = "Reading",
    .run = runTask<CurrentTask>,
};

// ---- create -----------------------------------------------------------------------------------

class CreateTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    void report(const Outcome& outcome, CommandOutput& output) override;
};

/// The request's error may be about a file; names the missing revision instead. Leaves "A...B", the
/// common ancestor, to git.
std::optional<CommandOutput> CreateTask::validate() {
    const auto start = arguments().value("START");
    // No branch has this in its name: git would take it for a question about another branch.
    if (argument(nameParameter).find("@{") != std::string::npos) {
        return refusal(inQuotes(argument(nameParameter)) + " is not a valid name for a branch.",
                       exitFailed, NEBSourceControlBranchNameInvalidErrorClass);
    }
    if (isJSON()) {
        return std::nullopt;
    }
    if (!start) {
        if (!git().isWithoutCommits()) {
            return std::nullopt;
        }
        const auto broken = brokenReference(git(), "HEAD");
        return broken ? failureWith(*broken)
                      : refusal(
                            "Cannot create a branch: the current branch does not have any commits "
                            "yet.",
                            exitFailed, NEBSourceControlNoCommitsYetErrorClass);
    }
    const bool isForGit = start->starts_with('-') || start->find("...") != std::string::npos;
    return !isForGit && git().isUnknownRevision(*start)
               ? std::optional(refusalOfUnknownRevision(git(), *start))
               : std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> CreateTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestCreateBranch);
    request->destination = argument(nameParameter);
    if (const auto start = arguments().value("START")) {
        request->options.emplace();
        request->options->set(NEBSourceControlRequestOptionSourceLocation, *start);
    }
    return request;
}

void CreateTask::report(const Outcome& /*outcome*/, CommandOutput& output) {
    const RemoteSettings remotes(git());
    const auto tracking = remotes.trackedBranchOf(argument(nameParameter));
    output.standardOutput = "Created branch " + printable(inQuotes(argument(nameParameter))) +
                            (tracking ? ", which tracks " + remotes.shownBranch(*tracking) : "") +
                            ".\n";
}

constexpr Parameter createParameters[] = {
    {nameParameter, "The new branch", Takes::text, Occurs::once},
    {"START", "Where it starts: a branch, a tag or any other revision; default: HEAD",
     Takes::revision},
};

constinit const Command createCommand{
    .name = "create",
    .group = subcommandGroup,
    .summary = "Create a branch",
    .details =
        "Does not switch to it; 'nebsc checkout' does.\n"
        "\n"
        "Examples:\n"
        "  nebsc branch create topic       from the latest commit\n"
        "  nebsc branch create fix v1.0    from a tag\n",
    .parameters = createParameters,
    .activity = "Creating the branch",
    .run = runTask<CreateTask>,
};

// ---- delete -----------------------------------------------------------------------------------

class DeleteTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    void report(const Outcome& outcome, CommandOutput& output) override;
    std::string adviceFor(const NEBSourceControlError& error) const override;

private:
    /// Returns the commit that the deleted branch had, in parentheses after a blank.
    [[nodiscard]] std::string formerCommit() const {
        return _commit ? " (was " + printable(*_commit) + ")" : "";
    }

    std::string _name;
    std::optional<std::string> _commit;
};

/// Notes the commit, so that a branch deleted by mistake can be recreated. "@{-1}" stands for the
/// name of a branch.
std::optional<CommandOutput> DeleteTask::validate() {
    _name = argument(nameParameter);
    if (_name.starts_with("@{")) {
        const std::string reference =
            git()
                .outputOf({"rev-parse", "--symbolic-full-name", "--verify", "--quiet", _name})
                .value_or("");
        _name = reference.starts_with(localBranchPrefix)
                    ? reference.substr(localBranchPrefix.size())
                    : _name;
    }
    _commit = git().outputOf({"rev-parse", "--verify", "--quiet", "--short=12", "--end-of-options",
                              std::string(localBranchPrefix) + _name});
    return std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> DeleteTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestDeleteBranch);
    request->destination = _name;
    request->options.emplace();
    request->options->set(NEBSourceControlRequestOptionForce, arguments().has("--force"));
    return request;
}

void DeleteTask::report(const Outcome& /*outcome*/, CommandOutput& output) {
    output.standardOutput = "Deleted branch " + printable(inQuotes(_name)) + formerCommit() + ".\n";
}

/// git warns about the settings only after it has deleted the branch.
std::string DeleteTask::adviceFor(const NEBSourceControlError& error) const {
    constexpr std::string_view warning = "warning: Update of config-file failed";
    if (error.text.value_or("").find(warning) != std::string::npos) {
        const std::string removal = "git config --remove-section " + shellQuoted("branch." + _name);
        return "The branch " + printable(inQuotes(_name)) + formerCommit() +
               " was deleted, but its settings were not removed. " + printable(inQuotes(removal)) +
               " removes them.";
    }
    return error.errorClass == NEBSourceControlBranchNotMergedErrorClass
               ? "'nebsc branch delete --force' deletes it anyway."
               : "";
}

constexpr Parameter deleteParameters[] = {
    {nameParameter, "The branch", Takes::branch, Occurs::once},
    {"--force", "Delete the branch even if it is not merged"},
};

constinit const Command deleteCommand{
    .name = "delete",
    .group = subcommandGroup,
    .summary = "Delete a branch",
    .details =
        "Refuses a branch with commits that neither its upstream nor the current branch\n"
        "contains, unless --force is given.\n"
        "\n"
        "Examples:\n"
        "  nebsc branch delete topic            delete a merged branch\n"
        "  nebsc branch delete --force topic    delete it even if it is not merged\n",
    .parameters = deleteParameters,
    .activity = "Deleting the branch",
    .run = runTask<DeleteTask>,
};

constexpr const Command* branchCommands[] = {
    &listCommand,         &currentCommand,        &createCommand,      &deleteCommand,
    &branchRenameCommand, &branchUpstreamCommand, &branchTrackCommand, &branchTrackingCommand,
};

}  // namespace

constinit const Command branchCommand{
    .name = "branch",
    .group = branchesGroup,
    .summary = "List, create, rename and delete branches",
    .details =
        "Examples:\n"
        "  nebsc branch                             list the branches\n"
        "  nebsc branch create topic                create a branch\n"
        "  nebsc branch rename topic parser         give it another name\n"
        "  nebsc branch track topic origin/topic    create one that tracks origin/topic\n"
        "  nebsc branch create --help               help for a subcommand\n",
    .activity = "Reading",
    .commands = branchCommands,
    .run = runTask<ListTask>,
};

}  // namespace neb::nebsc
