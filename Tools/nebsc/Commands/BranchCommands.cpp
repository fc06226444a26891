// The commands about the branches of a repository, but for those that track others.

#include <unistd.h>

#include "CommandFrame/BrokenReference.h"
#include "CommandFrame/CommandTask.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/Presentation.h"
#include "Terminal/TextWidth.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view nameWord = "NAME";

// ---- list -------------------------------------------------------------------------------------

class ListTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return newExchangeRequest(workingCopy(), NEBSourceControlRequestListBranches, Peer::remote);
    }
    void report(const Outcome& outcome, CommandOutput& output) override;
};

/// The request does not tell which branch is the current one.
void ListTask::report(const Outcome& outcome, CommandOutput& output) {
    const auto current = currentBranch(git());
    bool isCurrentListed = false;
    for (const NEBDictionary& record : outcome.result.value_or(NEBSourceControlResult{})) {
        const std::string whole = branchNameOf(record);
        if (whole.empty()) {
            continue;
        }
        const bool isCurrent = current && printable(*current) == whole;
        const std::string name = fitting(STDOUT_FILENO, 2, whole);
        isCurrentListed = isCurrentListed || isCurrent;
        const bool isColoured = isCurrent && isInColour();
        output.standardOutput +=
            (isCurrent ? "* " : "  ") + (isColoured ? coloured(name, Colour::green) : name) + "\n";
    }
    if (!isCurrentListed) {
        output.standardOutput += printable(describeHEAD(git())) + "\n";
    }
}

constinit const Command listCommand{
    .name = "list",
    .group = innerGroup,
    .summary = "Show the branches, the current one marked",
    .details =
        "Example:\n"
        "  nebsc branch list\n",
    .activity = "Looking",
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

/// A branch without a commit is in no listing. What is said instead of a name is no answer that a
/// script could take for one.
void CurrentTask::report(const Outcome& outcome, CommandOutput& output) {
    const bool hasRecord = outcome.result && !outcome.result->empty();
    std::string name = hasRecord ? branchNameOf(outcome.result->front()) : "";
    if (const auto branch = name.empty() ? currentBranch(git()) : std::nullopt) {
        name = printable(*branch);
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
    .group = innerGroup,
    .summary = "Show the name of the current branch",
    .details =
        "The exit status is 1 when there is none, as with a tag checked out.\n\n"
        "Example:\n"
        "  nebsc branch current\n",
    .activity = "Looking",
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

/// The error of the request may speak of a file; a person is told what there is not. "A...B", the
/// common ancestor, is for git alone to judge.
std::optional<CommandOutput> CreateTask::validate() {
    const auto start = arguments().value("START");
    if (isJSON()) {
        return std::nullopt;
    }
    if (!start) {
        if (!git().isWithoutCommits()) {
            return std::nullopt;
        }
        const auto broken = brokenReference(git(), "HEAD");
        return broken ? failureWith(*broken)
                      : refusal("There is no commit yet at which a branch could start.", exitFailed,
                                NEBSourceControlNoCommitsYetErrorClass);
    }
    const bool isForGit = start->starts_with('-') || start->find("...") != std::string::npos;
    return !isForGit && git().isUnknownRevision(*start)
               ? std::optional(refusalOfUnknownRevision(git(), *start))
               : std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> CreateTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestCreateBranch);
    request->destination = argument(nameWord);
    if (const auto start = arguments().value("START")) {
        request->options.emplace();
        request->options->set(NEBSourceControlRequestOptionSourceLocation, *start);
    }
    return request;
}

void CreateTask::report(const Outcome& /*outcome*/, CommandOutput& output) {
    const auto tracking = trackedBranchOf(git(), argument(nameWord));
    output.standardOutput = "Made the branch " + printable(inQuotes(argument(nameWord))) +
                            (tracking ? ", which tracks " + shownBranch(git(), *tracking) : "") +
                            ".\n";
}

constexpr Parameter createParameters[] = {
    {nameWord, "The new branch", Takes::text, Occurs::once},
    {"START", "Where it starts: a branch, a tag or any other revision; unless given, here",
     Takes::revision},
};

constinit const Command createCommand{
    .name = "create",
    .group = innerGroup,
    .summary = "Make a branch",
    .details =
        "The working copy stays on its branch; \"nebsc checkout\" switches.\n\n"
        "Examples:\n"
        "  nebsc branch create topic         from the latest commit\n"
        "  nebsc branch create fix v1.0      from what a tag stands for\n",
    .parameters = createParameters,
    .activity = "Making the branch",
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
    std::string _name;
    std::optional<std::string> _commit;
};

/// With its commit, a branch that was deleted by mistake can be made again. "@{-1}" stands for the
/// name of a branch.
std::optional<CommandOutput> DeleteTask::validate() {
    _name = argument(nameWord);
    if (_name.starts_with("@{")) {
        const std::string whole =
            git()
                .outputOf({"rev-parse", "--symbolic-full-name", "--verify", "--quiet", _name})
                .value_or("");
        _name =
            whole.starts_with(localBranchPrefix) ? whole.substr(localBranchPrefix.size()) : _name;
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
    output.standardOutput = "Deleted the branch " + printable(inQuotes(_name)) +
                            (_commit ? "; it was at " + printable(*_commit) : "") + ".\n";
}

std::string DeleteTask::adviceFor(const NEBSourceControlError& error) const {
    return error.errorClass == NEBSourceControlBranchNotMergedErrorClass
               ? "\"nebsc branch delete --force\" deletes it all the same.\n"
               : "";
}

constexpr Parameter deleteParameters[] = {
    {nameWord, "The branch", Takes::branch, Occurs::once},
    {"--force", "Delete it even if it is not merged"},
};

constinit const Command deleteCommand{
    .name = "delete",
    .group = innerGroup,
    .summary = "Delete a branch",
    .details =
        "A branch with commits that neither its upstream nor the current branch has stays,\n"
        "unless --force says that they may go.\n\n"
        "Examples:\n"
        "  nebsc branch delete topic            delete a branch that is merged\n"
        "  nebsc branch delete --force topic    the same, merged or not\n",
    .parameters = deleteParameters,
    .activity = "Deleting the branch",
    .run = runTask<DeleteTask>,
};

constexpr const Command* branchCommands[] = {
    &listCommand,   &currentCommand,     &createCommand,
    &deleteCommand, &branchTrackCommand, &branchTrackingCommand,
};

}  // namespace

constinit const Command branchCommand{
    .name = "branch",
    .group = branchesGroup,
    .summary = "List, make and delete branches, and let them track others",
    .details =
        "Examples:\n"
        "  nebsc branch                             the branches, the current one marked\n"
        "  nebsc branch create topic                make one\n"
        "  nebsc branch track topic origin/topic    make one that tracks another\n"
        "  nebsc branch create --help               more on one of its commands\n",
    .activity = "Looking",
    .commands = branchCommands,
    .run = runTask<ListTask>,
};

}  // namespace neb::nebsc
