#include "CommandFrame/BrokenReference.h"
#include "CommandFrame/CommandTask.h"
#include "CommandFrame/SettledConflictSearch.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

// ---- merge ------------------------------------------------------------------------------------

constexpr SideNames sideNames{.kept = "the current branch's", .leftOut = "the other branch's"};

class MergeTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    void finish(Outcome& outcome) override { _conflicts.run(outcome); }
    bool finishesAfter(const NEBSourceControlError& error) override {
        return _conflicts.hasMerged(error);
    }
    void report(const Outcome& outcome, CommandOutput& output) override;
    void reportFailure(const Outcome& outcome, CommandOutput& output) override {
        _conflicts.report(outcome, sideNames, output);
    }
    std::string textFor(const NEBSourceControlError& error) const override {
        return error.errorClass == NEBSourceControlRevisionUnknownErrorClass
                   ? "Unknown branch or revision " + inQuotes(revision()) + "."
                   : "";
    }

private:
    [[nodiscard]] std::string revision() const { return argument("REVISION"); }

    SettledConflictSearch _conflicts{git()};
    std::optional<std::string> _commitBefore;
    bool _isMergedAlready = false;
};

/// Notes what report() needs: the outcome does not say what the merge did.
std::optional<CommandOutput> MergeTask::validate() {
    _commitBefore = git().headCommit();
    _conflicts.setSides("HEAD", revision());
    _isMergedAlready = _conflicts.isMergedAlready();
    if (_isMergedAlready) {
        _conflicts.forgetSides();
        return std::nullopt;
    }
    const bool isUnknown = !_conflicts.hasSides() && git().isUnknownRevision(revision());
    if (auto unborn = isUnknown ? refusalOfUnbornHEAD(git(), revision()) : std::nullopt) {
        return unborn;
    }
    const auto broken = isUnknown ? brokenReference(git(), revision()) : std::nullopt;
    return broken ? std::optional(failureWith(*broken)) : std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> MergeTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestMerge);
    request->destination = revision();
    return request;
}

void MergeTask::report(const Outcome& outcome, CommandOutput& output) {
    const std::string what = printable(inQuotes(revision()));
    const auto commit = git().headCommit();
    if (_isMergedAlready) {
        output.standardOutput = "Already up to date: " + what + " is merged.\n";
    } else if (commit && commit != _commitBefore) {
        output.standardOutput = "Merged " + what + "; now at " + printable(*commit) + ".\n";
    } else if (commit) {
        output.standardOutput = "Merged " + what + "; it is not committed yet.\n";
    }
    _conflicts.report(outcome, sideNames, output);
}

constexpr Parameter mergeParameters[] = {
    {"REVISION", "A branch, a tag or any other revision", Takes::revision, Occurs::once},
};

// ---- merge-base -------------------------------------------------------------------------------

class MergeBaseTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    SilentFailure silentFailure() const override { return SilentFailure::isEmptyResult; }
    std::string textOfResult(const NEBSourceControlResult& result) override;
    void report(const Outcome& outcome, CommandOutput& output) override;

private:
    [[nodiscard]] std::string revision(std::string_view parameter) const {
        return argument(parameter);
    }
};

/// The request's error is about a file; names the missing revision instead.
std::optional<CommandOutput> MergeBaseTask::validate() {
    for (const std::string& name : {revision("A"), revision("B")}) {
        if (!name.starts_with('-') && git().isUnknownRevision(name)) {
            return refusalOfUnknownRevision(git(), name);
        }
    }
    return std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> MergeBaseTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestMergeBase);
    request->startingRevision = revision("A");
    request->endingRevision = revision("B");
    return request;
}

std::string MergeBaseTask::textOfResult(const NEBSourceControlResult& result) {
    std::string lines;
    for (const NEBDictionary& record : result) {
        lines += printable(record.value(NEBSourceControlOperationRevisionKey).description()) + "\n";
    }
    return lines;
}

void MergeBaseTask::report(const Outcome& outcome, CommandOutput& output) {
    if (!outcome.result || outcome.result->empty()) {
        output = refusal(inQuotes(revision("A")) + " and " + inQuotes(revision("B")) +
                             " have no common ancestor.",
                         exitFailed, NEBSourceControlUnrelatedHistoriesErrorClass);
    }
}

constexpr Parameter mergeBaseParameters[] = {
    {"A", "A branch, a tag or any other revision", Takes::revision, Occurs::once},
    {"B", "A branch, a tag or any other revision", Takes::revision, Occurs::once},
};

}  // namespace

constinit const Command mergeCommand{
    .name = "merge",
    .group = branchesGroup,
    .summary = "Merge a branch into the current one",
    .details =
        "Where both sides changed the same lines, keeps those of the current branch and\n"
        "lists the files on standard error. 'nebsc pull . BRANCH' stops at conflicts\n"
        "instead.\n"
        "\n"
        "Example:\n"
        "  nebsc merge topic\n",
    .parameters = mergeParameters,
    .activity = "Merging",
    .run = runTask<MergeTask>,
};

constinit const Command mergeBaseCommand{
    .name = "merge-base",
    .group = branchesGroup,
    .summary = "Show the common ancestor of two revisions",
    .details =
        "Example:\n"
        "  nebsc merge-base main topic\n",
    .parameters = mergeBaseParameters,
    .activity = "Reading",
    .run = runTask<MergeBaseTask>,
};

}  // namespace neb::nebsc
