// The commands "continue", "skip" and "abort".

#include "CommandFrame/StoppableTask.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

/// Finishes what is under way; a subclass says how.
class FinishTask : public StoppableTask {
public:
    using StoppableTask::StoppableTask;

protected:
    /// Returns the action of the request: "continue".
    [[nodiscard]] virtual const char* action() const = 0;
    /// Returns what was done to what is under way: "Continued".
    [[nodiscard]] virtual std::string done() const = 0;

    /// Asks what is under way; without an answer, the request reports the failure. Refuses to skip
    /// a merge.
    std::optional<CommandOutput> validate() override;
    /// Returns whether patches of mails are applied; see git-am(1).
    [[nodiscard]] bool isApplying() const { return _kind == "apply"; }
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    std::string subject() const override { return isApplying() ? "git am" : "the " + _kind; }
    std::string textOfSuccess(const Outcome& /*outcome*/) override {
        return done() + " " + subject() + endWithCommit();
    }
    std::string adviceFor(const NEBSourceControlError& error) const override;

private:
    std::string _kind;
};

std::optional<CommandOutput> FinishTask::validate() {
    const RequestResult result =
        performRequest(newRequest(NEBSourceControlRequestUnfinishedOperation));
    const auto& records = result.outcome->result;
    if (records && !records->empty()) {
        _kind = printable(records->front().text(NEBSourceControlOperationKindKey));
    }
    if (_kind != "merge" || std::string_view(action()) != "skip") {
        return std::nullopt;
    }
    CommandOutput refused = refusal("A merge has no commits to skip.", exitFailed,
                                    NEBSourceControlRequestInvalidErrorClass);
    addAdvice(refused, "'nebsc continue' or 'nebsc abort' ends it.");
    return refused;
}

std::string FinishTask::adviceFor(const NEBSourceControlError& error) const {
    if (error.errorClass == NEBSourceControlConflictUnresolvedErrorClass) {
        return "'nebsc stage' marks a file as resolved.";
    }
    const bool offersSkip = error.text.value_or("").find("git am --skip") != std::string::npos;
    if (isApplying() && offersSkip && std::string_view(action()) == "continue") {
        return "'nebsc skip' leaves the patch out.";
    }
    const bool isEmptied = error.errorClass == NEBSourceControlNothingToCommitErrorClass;
    return isEmptied && _kind != "merge" ? "'nebsc skip' leaves the commit out." : "";
}

std::shared_ptr<NEBSourceControlRequest> FinishTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestFinish);
    request->options = NEBDictionary{{NEBSourceControlRequestOptionAction, action()}};
    return request;
}

class ContinueTask : public FinishTask {
public:
    using FinishTask::FinishTask;

protected:
    const char* action() const override { return "continue"; }
    std::string done() const override { return "Continued"; }
};

class SkipTask : public FinishTask {
public:
    using FinishTask::FinishTask;

protected:
    const char* action() const override { return "skip"; }
    std::string done() const override {
        return isApplying() ? "Skipped a patch of" : "Skipped a commit of";
    }
};

class AbortTask : public FinishTask {
public:
    using FinishTask::FinishTask;

protected:
    const char* action() const override { return "abort"; }
    std::string done() const override { return "Aborted"; }
};

}  // namespace

constinit const Command continueCommand{
    .name = "continue",
    .group = changeGroup,
    .summary = "Continue a merge, rebase, cherry-pick or revert after conflicts",
    .details =
        "Resolve the conflicts in the files and stage them first. Messages of commits\n"
        "stay as they are; no editor opens.\n"
        "\n"
        "Example:\n"
        "  nebsc continue\n",
    .activity = "Continuing",
    .run = runTask<ContinueTask>,
};

constinit const Command skipCommand{
    .name = "skip",
    .group = changeGroup,
    .summary = "Leave out the current commit of a rebase, cherry-pick or revert",
    .details =
        "What was resolved for this commit is thrown away. A merge cannot be skipped.\n"
        "\n"
        "Example:\n"
        "  nebsc skip\n",
    .activity = "Skipping",
    .run = runTask<SkipTask>,
};

constinit const Command abortCommand{
    .name = "abort",
    .group = changeGroup,
    .summary = "Abort a merge, rebase, cherry-pick or revert",
    .details =
        "Restores the state before it. What was resolved is thrown away.\n"
        "\n"
        "Example:\n"
        "  nebsc abort\n",
    .activity = "Aborting",
    .run = runTask<AbortTask>,
};

}  // namespace neb::nebsc
