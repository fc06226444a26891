// The command "stash" and its subcommands.

#include <chrono>

#include "CommandFrame/FileStates.h"
#include "CommandFrame/StoppableTask.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/LocalTime.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view stashParameter = "STASH";

/// Returns the name of a stash: "stash@{1}" for "1".
std::string stashNameOf(const std::string& text) {
    const bool isIndex = !text.empty() &&
                         text.find_first_not_of("0123456789") == std::string::npos &&
                         text.size() < 6;
    return isIndex ? "stash@{" + text + "}" : text;
}

/// Sets the action, and the stash if one is given.
std::shared_ptr<NEBSourceControlRequest> withStash(std::shared_ptr<NEBSourceControlRequest> request,
                                                   const char* action, const Arguments& arguments) {
    request->options = NEBDictionary{{NEBSourceControlRequestOptionAction, action}};
    if (const auto stash = arguments.value(stashParameter)) {
        request->startingRevision = stashNameOf(*stash);
    }
    return request;
}

/// Returns the message for an error about the stash of the command; empty to keep the error's.
std::string textForStash(const Arguments& arguments, const NEBSourceControlError& error) {
    if (error.errorClass != NEBSourceControlRevisionUnknownErrorClass) {
        return {};
    }
    const auto stash = arguments.value(stashParameter);
    return stash ? "There is no stash " + inQuotes(*stash) + "." : "There is no stash.";
}

// ---- list -------------------------------------------------------------------------------------

class StashListTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return newRequest(NEBSourceControlRequestStash);
    }
    RequestResult perform() override { return performStreamed(makeRequest()); }
    std::string textOfResult(const NEBSourceControlResult& result) override {
        std::string lines;
        for (const NEBDictionary& record : result) {
            const NEBValue& time = record.value(NEBSourceControlOperationTimeKey);
            lines += printable(record.text(NEBSourceControlOperationNameKey)) + "  ";
            lines += localMinute(NEBDate(std::chrono::seconds(time.integer().value_or(0)))) + "  ";
            lines += printable(record.text(NEBSourceControlOperationSubjectKey)) + "\n";
        }
        return lines;
    }
};

constinit const Command listCommand{
    .name = "list",
    .group = subcommandGroup,
    .summary = "List the stashes, newest first",
    .details =
        "Example:\n"
        "  nebsc stash list\n",
    .activity = "Reading",
    .isPaged = true,
    .run = runTask<StashListTask>,
};

// ---- push -------------------------------------------------------------------------------------

class StashPushTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    /// A query for a stash that does not exist prints nothing.
    SilentFailure silentFailure() const override { return SilentFailure::isIgnored; }
    std::string adviceFor(const NEBSourceControlError& error) const override {
        return error.errorClass == NEBSourceControlUntrackedInTheWayErrorClass
                   ? "'nebsc stash push --untracked' stashes them too."
                   : "";
    }
    void report(const Outcome& outcome, CommandOutput& output) override {
        output.standardOutput =
            outcome.result.value_or(NEBSourceControlResult()).empty()
                ? "Nothing to stash.\n"
                : "Stashed the changes as " +
                      printable(outcome.result->front().text(NEBSourceControlOperationNameKey)) +
                      ".\n";
    }
};

std::shared_ptr<NEBSourceControlRequest> StashPushTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestStash, paths("FILE"));
    request->options = NEBDictionary{{NEBSourceControlRequestOptionAction, "push"}};
    if (const auto message = arguments().value("--message")) {
        request->options->set(NEBSourceControlRequestOptionMessage, *message);
    }
    if (arguments().has("--untracked")) {
        request->options->set(NEBSourceControlRequestOptionIncludeUntracked, true);
    }
    if (arguments().has("--keep-index")) {
        request->options->set(NEBSourceControlRequestOptionKeepIndex, true);
    }
    return request;
}

constexpr Parameter pushParameters[] = {
    {"-m,--message", "What the changes are about", Takes::text, Occurs::optionally, "MESSAGE"},
    {"-u,--untracked", "Stash untracked files too, except ignored ones"},
    {"--keep-index", "Leave staged changes as they are"},
    {"FILE", "Stash the changes of these files; default: all changes", Takes::path,
     Occurs::anyNumber},
};

constinit const Command pushStashCommand{
    .name = "push",
    .group = subcommandGroup,
    .summary = "Put changes aside and restore the latest commit",
    .details =
        "Examples:\n"
        "  nebsc stash push -m 'half of the parser'    stash all changes\n"
        "  nebsc stash push --untracked src            new files in src too\n",
    .parameters = pushParameters,
    .activity = "Stashing",
    .run = runTask<StashPushTask>,
};

// ---- show -------------------------------------------------------------------------------------

class StashShowTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return withStash(newRequest(NEBSourceControlRequestStash), "show", arguments());
    }
    /// A query for untracked files that the stash does not have prints nothing.
    SilentFailure silentFailure() const override { return SilentFailure::isIgnored; }
    std::string textFor(const NEBSourceControlError& error) const override {
        return textForStash(arguments(), error);
    }
    std::string textOfResult(const NEBSourceControlResult& result) override {
        return fileStateLines(workingCopy(), result, NEBSourceControlOperationStateKey);
    }
};

constexpr Parameter stashParameters[] = {
    {stashParameter, "The number or name of a stash; default: the newest", Takes::stash},
};

constinit const Command showCommand{
    .name = "show",
    .group = subcommandGroup,
    .summary = "List the files of a stash",
    .details =
        "Examples:\n"
        "  nebsc stash show      the newest stash\n"
        "  nebsc stash show 2    the stash 'stash@{2}'\n",
    .parameters = stashParameters,
    .activity = "Reading",
    .isPaged = true,
    .run = runTask<StashShowTask>,
};

// ---- apply, pop -------------------------------------------------------------------------------

class StashApplyTask : public StoppableTask {
public:
    using StoppableTask::StoppableTask;

protected:
    [[nodiscard]] virtual const char* action() const { return "apply"; }
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        auto request = withStash(newRequest(NEBSourceControlRequestStash), action(), arguments());
        if (arguments().has("--index")) {
            request->options->set(NEBSourceControlRequestOptionRestoreIndex, true);
        }
        return request;
    }
    std::string subject() const override { return "the stash"; }
    std::string conflictAdvice() const override {
        return "Resolve them in the files, then run 'nebsc stage' on these. The stash is kept.";
    }
    std::string resolutionAdvice() const override {
        return "Check them with 'nebsc diff --staged'. The stash is kept.";
    }
    std::string textFor(const NEBSourceControlError& error) const override {
        return textForStash(arguments(), error);
    }
    std::string textOfSuccess(const Outcome& /*outcome*/) override {
        return "Applied the stash; it is kept.\n";
    }
};

class StashPopTask : public StashApplyTask {
public:
    using StashApplyTask::StashApplyTask;

protected:
    const char* action() const override { return "pop"; }
    std::string textOfSuccess(const Outcome& /*outcome*/) override {
        return "Applied and deleted the stash.\n";
    }
};

constexpr Parameter applyParameters[] = {
    {stashParameter, "The number or name of a stash; default: the newest", Takes::stash},
    {"--index", "Stage again what was staged"},
};

constinit const Command applyCommand{
    .name = "apply",
    .group = subcommandGroup,
    .summary = "Apply the changes of a stash, and keep it",
    .details =
        "Examples:\n"
        "  nebsc stash apply            the newest stash\n"
        "  nebsc stash apply --index    stage again what was staged\n",
    .parameters = applyParameters,
    .activity = "Applying",
    .run = runTask<StashApplyTask>,
};

constinit const Command popCommand{
    .name = "pop",
    .group = subcommandGroup,
    .summary = "Apply the changes of a stash, and delete it",
    .details =
        "A stash that causes conflicts is kept.\n"
        "\n"
        "Example:\n"
        "  nebsc stash pop\n",
    .parameters = applyParameters,
    .activity = "Applying",
    .run = runTask<StashPopTask>,
};

// ---- drop -------------------------------------------------------------------------------------

class StashDropTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return withStash(newRequest(NEBSourceControlRequestStash), "drop", arguments());
    }
    std::string textFor(const NEBSourceControlError& error) const override {
        return textForStash(arguments(), error);
    }
    /// The id restores a stash that was deleted by mistake.
    void report(const Outcome& outcome, CommandOutput& output) override {
        if (outcome.result && !outcome.result->empty()) {
            const NEBDictionary& stash = outcome.result->front();
            output.standardOutput =
                "Deleted " + printable(stash.text(NEBSourceControlOperationNameKey)) +
                "; 'git stash store " +
                printable(stash.text(NEBSourceControlOperationObjectIDKey)) + "' restores it.\n";
        }
    }
};

constexpr Parameter dropParameters[] = {
    {stashParameter, "The number or name of a stash", Takes::stash, Occurs::once},
};

constinit const Command dropCommand{
    .name = "drop",
    .group = subcommandGroup,
    .summary = "Delete a stash without applying it",
    .details =
        "Unlike git, requires the stash to be named.\n"
        "\n"
        "Example:\n"
        "  nebsc stash drop 0\n",
    .parameters = dropParameters,
    .activity = "Deleting",
    .run = runTask<StashDropTask>,
};

constexpr const Command* stashCommands[] = {
    &listCommand, &pushStashCommand, &showCommand, &applyCommand, &popCommand, &dropCommand,
};

}  // namespace

constinit const Command stashCommand{
    .name = "stash",
    .group = changeGroup,
    .summary = "Put changes aside, and apply them later",
    .details =
        "Without a subcommand, lists the stashes; that of git stashes the changes.\n"
        "\n"
        "Examples:\n"
        "  nebsc stash                         list the stashes\n"
        "  nebsc stash push -m 'half a fix'    put all changes aside\n"
        "  nebsc stash pop                     apply them again\n",
    .activity = "Reading",
    .commands = stashCommands,
    .run = runTask<StashListTask>,
};

}  // namespace neb::nebsc
