#include <algorithm>
#include <array>

#include "CommandFrame/BranchQueries.h"
#include "CommandFrame/BrokenReference.h"
#include "CommandFrame/CommandTask.h"
#include "CommandFrame/FailureText.h"
#include "CommandFrame/UnfinishedWork.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/PathString.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

/// What git prints for every switch, and the command reports in a shorter form.
constexpr std::array<std::string_view, 6> usualNotices{
    "Switched to branch '", "Switched to a new branch '",
    "Already on '",         "Previous HEAD position was ",
    "HEAD is now at ",      "Reset branch '"};
// The advice for a detached HEAD, from its first line to its last.
constexpr std::string_view adviceStart = "Note: switching to '";
constexpr std::string_view adviceEnd = "Turn off this advice";

bool isUsual(std::string_view line) {
    return std::any_of(usualNotices.begin(), usualNotices.end(),
                       [line](std::string_view start) { return line.starts_with(start); });
}

/// Returns the other lines of git's notice: the output of hooks, and which commits are left behind.
std::string unusualLines(std::string_view notice) {
    std::string lines;
    bool isAdvice = false;
    while (!notice.empty()) {
        const std::string_view line = notice.substr(0, notice.find('\n'));
        notice.remove_prefix(std::min(line.size() + 1, notice.size()));
        isAdvice = isAdvice || line.starts_with(adviceStart);
        if (!isAdvice && !isUsual(line) && !(line.empty() && lines.empty())) {
            lines += printable(line) + "\n";
        }
        isAdvice = isAdvice && !line.starts_with(adviceEnd);
    }
    return lines.substr(0, lines.find_last_not_of('\n') + 1) + (lines.empty() ? "" : "\n");
}

/// git checkout would end a merge and leave a rebase behind, and print nothing about it.
std::optional<CommandOutput> refusalOfUnfinishedWork(const GitQueries& git) {
    if (!git.workingCopy().isWorkingCopy) {
        return std::nullopt;
    }
    for (const UnfinishedWork& work : unfinishedWorkIn(git)) {
        if (!work.survivesSwitch) {
            return refusalWithAdvice("This working copy is in the middle of " +
                                         std::string(work.work) + "; nothing was changed.",
                                     std::string(work.advice),
                                     NEBSourceControlMergeUnfinishedErrorClass);
        }
    }
    return std::nullopt;
}

class CheckoutTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    void report(const Outcome& outcome, CommandOutput& output) override;

    [[nodiscard]] std::string branch() const { return argument("BRANCH"); }
    [[nodiscard]] bool isBranchOfRemote();

private:
    [[nodiscard]] std::string locationText();
};

bool CheckoutTask::isBranchOfRemote() {
    const std::string names =
        "\n" +
        git()
            .outputOf({"for-each-ref", "--format=%(refname:lstrip=3)", "refs/remotes"})
            .value_or("") +
        "\n";
    return names.find("\n" + branch() + "\n") != std::string::npos;
}

/// Given the name of a file that is no revision, git would restore that file and discard its
/// changes.
std::optional<CommandOutput> CheckoutTask::validate() {
    if (auto refused = refusalOfUnfinishedWork(git())) {
        return refused;
    }
    if (!workingCopy().isWorkingCopy || branch().empty() || branch().starts_with('-') ||
        git().isCommit(branch())) {
        return std::nullopt;
    }
    if (auto unborn = refusalOfUnbornHEAD(git(), branch())) {
        return unborn;
    }
    if (const auto broken = brokenReference(git(), branch())) {
        return failureWith(*broken);
    }
    const bool isOnDisk = isAnythingAt(pathByAppendingComponent(workingCopy().location, branch()));
    const std::string name = inQuotes(branch());
    if (isBranchOfRemote()) {
        if (!isOnDisk) {
            return std::nullopt;
        }
        CommandOutput output =
            refusal(name + " is both a file or folder and a remote branch; nothing was changed.",
                    exitFailed, NEBSourceControlRevisionAmbiguousErrorClass);
        addAdvice(output, "'nebsc branch track' creates the branch.");
        return output;
    }
    const PathSearch asTyped = findAbsolutePath(currentFolder(), branch());
    if (isOnDisk || git().isTracked(branch()) || (asTyped.path && isAnythingAt(*asTyped.path))) {
        CommandOutput output = refusal(name + " is a file or folder, not a branch or revision.",
                                       exitFailed, NEBSourceControlRevisionUnknownErrorClass);
        addAdvice(output, "'nebsc revert' discards its changes.");
        return output;
    }
    return std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> CheckoutTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestCheckout);
    request->destination = branch();
    return request;
}

/// currentBranch() may have been asked before the checkout.
std::string CheckoutTask::locationText() {
    if (const auto reference = git().outputOf({"symbolic-ref", "--quiet", "HEAD"})) {
        const std::string name = withoutPrefix(*reference, localBranchPrefix);
        return "Now on branch " + printable(inQuotes(name)) + ".\n";
    }
    const auto commit = git().headCommit();
    return commit ? "HEAD is now detached at " + printable(*commit) + ".\n" : "";
}

void CheckoutTask::report(const Outcome& outcome, CommandOutput& output) {
    if (outcome.result && !outcome.result->empty()) {
        const NEBValue notice = outcome.result->front().value(NEBSourceControlOperationContentKey);
        output.standardError = unusualLines(notice.string().value_or(""));
    }
    output.standardOutput = locationText();
    addConflicts(output, git(), "Local changes conflict with the checked-out revision in:");
}

// ---- switch -----------------------------------------------------------------------------------

/// Switches to branches only, and can create one.
class SwitchTask : public CheckoutTask {
public:
    using CheckoutTask::CheckoutTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;

private:
    [[nodiscard]] std::optional<CommandOutput> createBranch();
    [[nodiscard]] std::optional<CommandOutput> beginBranch();

    /// Whether the current branch has no commits, and the new one begins without commits, too.
    bool _beginsBranch = false;
};

std::optional<CommandOutput> SwitchTask::createBranch() {
    if (auto refused = refusalOfUnfinishedWork(git())) {
        return refused;
    }
    const auto start = arguments().value("START");
    if (!start && git().isWithoutCommits()) {
        return beginBranch();
    }
    if (auto refused = start ? refusalOfRevision(git(), *start) : std::nullopt) {
        return refused;
    }
    auto request = newRequest(NEBSourceControlRequestCreateBranch);
    request->destination = branch();
    if (start) {
        request->options = NEBDictionary{{NEBSourceControlRequestOptionSourceLocation, *start}};
    }
    return performFirst(request);
}

std::optional<CommandOutput> SwitchTask::beginBranch() {
    if (const auto broken = brokenReference(git(), "HEAD")) {
        return failureWith(*broken);
    }
    _beginsBranch = true;
    return std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> SwitchTask::makeRequest() {
    if (!_beginsBranch) {
        return CheckoutTask::makeRequest();
    }
    auto request = newRequest(NEBSourceControlRequestChangeBranch);
    request->destination = branch();
    request->options = NEBDictionary{{NEBSourceControlRequestOptionAction, "begin"}};
    return request;
}

std::optional<CommandOutput> SwitchTask::validate() {
    if (arguments().has("--create")) {
        return createBranch();
    }
    if (arguments().has("START")) {
        throw invalidArguments("expected --create with START");
    }
    if (!workingCopy().isWorkingCopy || branch().starts_with('-') || isBranch(git(), branch()) ||
        isBranchOfRemote() || !git().isCommit(branch())) {
        return CheckoutTask::validate();
    }
    CommandOutput output = refusal(inQuotes(branch()) + " is not a branch.", exitFailed,
                                   NEBSourceControlBranchUnknownErrorClass);
    addAdvice(output, "'nebsc checkout' switches to any revision.");
    return output;
}

constexpr Parameter switchParameters[] = {
    {"BRANCH", "A branch, or one of a remote to create a branch for", Takes::branch, Occurs::once},
    {"START", "With --create, where the new branch starts; default: HEAD", Takes::revision},
    {"-c,--create", "Create the branch first"},
};

constexpr Parameter parameters[] = {
    {"BRANCH", "A branch, a tag or any other revision", Takes::revision, Occurs::once},
};

}  // namespace

constinit const Command checkoutCommand{
    .name = "checkout",
    .group = branchesGroup,
    .summary = "Switch to a branch or revision",
    .details =
        "Keeps local changes. Files in which they conflict with the new revision are left\n"
        "in conflict and listed. Refused while a merge, rebase, cherry-pick or revert is\n"
        "under way, because it would be lost.\n"
        "\n"
        "Examples:\n"
        "  nebsc checkout topic    switch to a branch\n"
        "  nebsc checkout v1.0     switch to a tag, with a detached HEAD\n",
    .parameters = parameters,
    .activity = "Checking out",
    .run = runTask<CheckoutTask>,
};

constinit const Command switchCommand{
    .name = "switch",
    .group = branchesGroup,
    .summary = "Switch to a branch, or create one and switch to it",
    .details =
        "Works as 'nebsc checkout', but takes no tags or other revisions.\n"
        "\n"
        "Examples:\n"
        "  nebsc switch topic         switch to a branch\n"
        "  nebsc switch -c fix v1.0   create a branch from a tag and switch to it\n",
    .parameters = switchParameters,
    .activity = "Switching",
    .run = runTask<SwitchTask>,
};

}  // namespace neb::nebsc
