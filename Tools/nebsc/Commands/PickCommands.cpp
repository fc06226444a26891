// The commands "cherry-pick" and "reset", and "revert --commit".

#include "Commands/PickCommands.h"

#include "CommandFrame/FileStates.h"
#include "CommandFrame/StoppableTask.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view commitParameter = "COMMIT";
constexpr std::string_view mainline = "--mainline";

/// A command that makes a request of the type "pick" for one commit.
class PickTask : public StoppableTask {
public:
    using StoppableTask::StoppableTask;

protected:
    /// Returns the action of the request: "cherry-pick".
    [[nodiscard]] virtual const char* action() const = 0;
    [[nodiscard]] virtual std::string commit() const { return argument(commitParameter); }

    std::optional<CommandOutput> validate() override { return refusalOfRevision(git(), commit()); }
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    std::string subject() const override { return std::string("the ") + action(); }
    std::string adviceFor(const NEBSourceControlError& error) const override {
        return error.errorClass == NEBSourceControlNothingToCommitErrorClass
                   ? "'nebsc skip' leaves the commit out, 'nebsc abort' restores the state before."
                   : "";
    }
};

std::shared_ptr<NEBSourceControlRequest> PickTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestPick);
    request->startingRevision = commit();
    request->options = NEBDictionary{{NEBSourceControlRequestOptionAction, action()}};
    if (const auto parent = arguments().value(mainline)) {
        if (parent->size() > 3 || parent->find_first_not_of("0123456789") != std::string::npos) {
            throw invalidValue(mainline, "the number of a parent, from 1");
        }
        request->options->set(NEBSourceControlRequestOptionMainline, std::stoi(*parent));
    }
    return request;
}

class CherryPickTask : public PickTask {
public:
    using PickTask::PickTask;

protected:
    const char* action() const override { return "cherry-pick"; }
    std::string textOfSuccess(const Outcome& /*outcome*/) override {
        return "Applied " + printable(inQuotes(commit())) + endWithCommit();
    }
};

class RevertCommitTask : public PickTask {
public:
    using PickTask::PickTask;

protected:
    const char* action() const override { return "revert"; }
    std::string commit() const override { return argument("--commit"); }
    std::optional<CommandOutput> validate() override {
        if (!paths("FILE").empty()) {
            throw invalidArguments("expected either FILE or --commit");
        }
        return PickTask::validate();
    }
    std::string textOfSuccess(const Outcome& /*outcome*/) override {
        return "Reverted " + printable(inQuotes(commit())) + endWithCommit();
    }
};

constexpr Parameter cherryPickParameters[] = {
    {commitParameter, "A branch, a tag or any other revision", Takes::revision, Occurs::once},
    {"-m,--mainline", "Of a merge, apply the changes to this parent, from 1", Takes::text,
     Occurs::optionally, "NUMBER"},
};

// ---- reset ------------------------------------------------------------------------------------

class ResetTask : public PickTask {
public:
    using PickTask::PickTask;

protected:
    const char* action() const override { return "reset"; }
    std::string commit() const override {
        return arguments().value(commitParameter).value_or("HEAD");
    }
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    bool isHandled(const NEBSourceControlError& error) const override {
        return error.errorClass == NEBSourceControlLocalChangesErrorClass;
    }
    std::string adviceFor(const NEBSourceControlError& error) const override;
    void report(const Outcome& outcome, CommandOutput& output) override;
    std::string textOfSuccess(const Outcome& outcome) override;

private:
    [[nodiscard]] bool isDryRun() const { return arguments().has("--dry-run"); }
};

std::optional<CommandOutput> ResetTask::validate() {
    const bool isHard = arguments().has("--hard");
    if (isHard && arguments().has("--soft")) {
        throw invalidArguments("expected only one of --soft and --hard");
    }
    if (isDryRun() && !isHard) {
        throw invalidArguments("expected --hard with --dry-run: the other resets lose no changes");
    }
    return arguments().has(commitParameter) ? PickTask::validate() : refusalWithoutCommits(git());
}

std::shared_ptr<NEBSourceControlRequest> ResetTask::makeRequest() {
    auto request = PickTask::makeRequest();
    for (const char* mode : {"soft", "hard"}) {
        if (arguments().has(std::string("--") + mode)) {
            request->options->set(NEBSourceControlRequestOptionResetMode, mode);
        }
    }
    if (arguments().has("--force")) {
        request->options->set(NEBSourceControlRequestOptionForce, true);
    }
    if (isDryRun()) {
        request->options->set(NEBSourceControlRequestOptionDryRun, true);
    }
    return request;
}

std::string ResetTask::adviceFor(const NEBSourceControlError& error) const {
    const bool canForce = error.errorClass == NEBSourceControlUntrackedInTheWayErrorClass ||
                          error.errorClass == NEBSourceControlConflictUnresolvedErrorClass;
    return canForce ? "'nebsc reset --force' resets anyway." : "";
}

void ResetTask::report(const Outcome& outcome, CommandOutput& output) {
    if (!outcome.error) {
        output.standardOutput = textOfSuccess(outcome);
        return;
    }
    CommandOutput refused = refusalAboutFiles(
        workingCopy(),
        "Nothing was reset, because uncommitted changes would be lost:", outcome.error->files,
        NEBSourceControlLocalChangesErrorClass);
    addAdvice(refused, "'nebsc reset --hard --force' throws them away.");
    addFailure(output, refused);
}

/// A reset to the commit before goes back.
std::string ResetTask::textOfSuccess(const Outcome& outcome) {
    const NEBSourceControlResult records = outcome.result.value_or(NEBSourceControlResult());
    if (isDryRun()) {
        const std::string lines =
            fileStateLines(workingCopy(), records, NEBSourceControlOperationStateKey);
        return lines.empty() ? "Would lose no changes.\n" : "Would lose the changes of:\n" + lines;
    }
    if (!hasMoved(outcome)) {
        return "Reset" + endWithCommit();
    }
    constexpr std::size_t shownDigits = 12;
    const std::string before(records.front().text(NEBSourceControlOperationOldObjectIDKey));
    return "Reset from " + printable(before.substr(0, shownDigits)) + endWithCommit();
}

constexpr Parameter resetParameters[] = {
    {commitParameter, "A branch, a tag or any other revision; default: HEAD", Takes::revision},
    {"--soft", "Keep the index and the files"},
    {"--hard", "Make the index and the files like the commit; default: only the index"},
    {"--force", "Reset even if uncommitted changes or versions in conflict are lost"},
    {"--dry-run", "Change nothing, and list the changes that --hard would lose"},
};

}  // namespace

CommandOutput runRevertOfCommit(const CommandCall& call) {
    return RevertCommitTask(call).run();
}

constinit const Command cherryPickCommand{
    .name = "cherry-pick",
    .group = branchesGroup,
    .summary = "Commit the changes of another commit again",
    .details =
        "Stops at conflicts.\n"
        "\n"
        "Examples:\n"
        "  nebsc cherry-pick topic~1           a commit of another branch\n"
        "  nebsc cherry-pick -m 1 v1.0         a merge, against its first parent\n",
    .parameters = cherryPickParameters,
    .activity = "Applying",
    .run = runTask<CherryPickTask>,
};

constinit const Command resetCommand{
    .name = "reset",
    .group = branchesGroup,
    .summary = "Move the current branch to a commit",
    .details =
        "Unlike git, --hard refuses to lose uncommitted changes or to overwrite untracked\n"
        "files, and a reset refuses to end a conflict, unless --force is given. Prints\n"
        "the commit before; a reset to that one goes back.\n"
        "\n"
        "Examples:\n"
        "  nebsc reset --soft HEAD~1             undo a commit, keep its changes staged\n"
        "  nebsc reset --hard --dry-run v1.0     list the changes that would be lost\n"
        "  nebsc reset --hard v1.0               make everything like the tag\n",
    .parameters = resetParameters,
    .activity = "Resetting",
    .run = runTask<ResetTask>,
};

}  // namespace neb::nebsc
