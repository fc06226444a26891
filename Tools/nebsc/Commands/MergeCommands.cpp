#include "CommandFrame/MergingTask.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/Presentation.h"

namespace neb::nebsc {

namespace {

// ---- merge ------------------------------------------------------------------------------------

class MergeTask : public MergingTask {
public:
    using MergingTask::MergingTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> request() override;
    void report(const Outcome& outcome, CommandOutput& output) override;
    std::string sentenceFor(const NEBSourceControlError& error) const override {
        return error.errorClass == NEBSourceControlRevisionUnknownErrorClass
                   ? "There is no branch or revision " + inQuotes(revision()) + "."
                   : "";
    }

private:
    [[nodiscard]] std::string revision() const {
        return arguments().value("REVISION").value_or("");
    }

    std::optional<std::string> _commitBefore;
    bool _isMergedAlready = false;
};

/// The outcome of a merge does not say what it did; this does.
std::optional<CommandOutput> MergeTask::validate() {
    _commitBefore = latestCommit();
    _isMergedAlready = !revision().starts_with('-') &&
                       ask({"merge-base", "--is-ancestor", revision(), "HEAD"}).status.isSuccess();
    if (_isMergedAlready) {
        return std::nullopt;
    }
    setSides("HEAD", revision());
    const bool isUnknown = askForCommit(revision()).status.exitStatus() == 1;
    const auto broken = isUnknown ? brokenReference(revision()) : std::nullopt;
    return broken ? std::optional(failureWith(*broken)) : std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> MergeTask::request() {
    auto request = requestOfType(NEBSourceControlRequestMerge);
    request->destination = revision();
    return request;
}

void MergeTask::report(const Outcome& outcome, CommandOutput& output) {
    const std::string what = printable(inQuotes(revision()));
    const auto commit = latestCommit();
    if (_isMergedAlready) {
        output.standardOutput = "Already up to date: " + what + " is merged.\n";
    } else if (commit && commit != _commitBefore) {
        output.standardOutput = "Merged " + what + "; now at " + printable(*commit) + ".\n";
    } else if (commit) {
        output.standardOutput = "Merged " + what + "; it is not committed yet.\n";
    }
    noteSettledConflicts(outcome, output);
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
    std::shared_ptr<NEBSourceControlRequest> request() override;
    Silence silence() const override { return Silence::answer; }
    std::string textOfResult(const NEBSourceControlResult& result) override;
    void report(const Outcome& outcome, CommandOutput& output) override;

private:
    [[nodiscard]] std::string revision(std::string_view parameter) const {
        return arguments().value(parameter).value_or("");
    }
};

/// The error of the request speaks of a file; a person is told which revision there is not.
std::optional<CommandOutput> MergeBaseTask::validate() {
    for (const std::string& name : {revision("A"), revision("B")}) {
        if (!name.starts_with('-') && askForCommit(name).status.exitStatus() == 1) {
            return refusalOfUnknownRevision(name);
        }
    }
    return std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> MergeBaseTask::request() {
    auto request = requestOfType(NEBSourceControlRequestMergeBase);
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
    {"B", "Another", Takes::revision, Occurs::once},
};

}  // namespace

constinit const Command mergeCommand{
    .name = "merge",
    .group = branchesGroup,
    .summary = "Merge another branch into the current one",
    .details =
        "Where both have changed the same lines, those of the current branch are kept, and the\n"
        "files are named on standard error.\n\n"
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
    .activity = "Looking",
    .run = runTask<MergeBaseTask>,
};

}  // namespace neb::nebsc
