#include "GitExtensions/GitIntegrate.h"

#include "GitExtensions/GitUnfinishedOperation.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/Text.h"

namespace neb {

namespace {

constexpr std::string_view fastForward = "fast-forward";

}  // namespace

/// Sets what the user's settings could change: merge.ff, merge.autoStash, rebase.backend,
/// rebase.autoStash, rebase.autoSquash, rebase.rebaseMerges and rebase.updateRefs, whose option
/// only git 2.38 and later know.
std::optional<GitMergeComposite::MergeCommand> GitIntegrateOperation::commandOfStrategy(
    std::string_view name) {
    if (name == "merge") {
        return MergeCommand{
            {}, "merge", {"--no-edit", "--ff", "--commit", "--no-squash", "--no-autostash", "--"}};
    }
    if (name == "rebase") {
        return MergeCommand{
            {"-c", "rebase.updateRefs=false"},
            "rebase",
            {"--merge", "--no-autostash", "--no-autosquash", "--no-rebase-merges", "--"}};
    }
    if (name == fastForward) {
        return MergeCommand{
            {}, "merge", {"--ff-only", "--commit", "--no-squash", "--no-autostash", "--"}};
    }
    return std::nullopt;
}

/// While a rebase is under way, no branch is checked out.
void GitIntegrateOperation::failWithoutBranch(const NEBSourceControlOperation& query) {
    const auto unfinished = run<GitUnfinishedOperation>(request());
    if (!goesOnAfter(*unfinished)) {
        return;
    }
    const NEBSourceControlResult found = unfinished->result().value_or(NEBSourceControlResult());
    if (found.empty()) {
        static_cast<void>(goesOnAfter(query));
        return;
    }
    fail(NEBSourceControlMergeUnfinishedErrorClass,
         "The operation requires a branch, and none is checked out: an operation of the kind \"" +
             std::string(found.front().text(NEBSourceControlOperationKindKey)) +
             "\" is not finished.");
}

/// The name is that of the settings, "origin/topic".
void GitIntegrateOperation::failWithoutUpstream() {
    const auto branch = queriedLine({"symbolic-ref", "--quiet", "HEAD"});
    const auto upstream = branch
                              ? queriedLine({"for-each-ref", "--format=%(upstream:short)", *branch})
                              : std::nullopt;
    if (upstream) {
        fail(NEBSourceControlRemoteBranchUnknownErrorClass,
             "The upstream branch \"" + textReplacingInvalidBytes(*upstream) +
                 "\" does not exist any more, or is not one of the branches that are fetched.");
    }
}

/// The remote branch may not have been fetched yet; git then says that the revision is unknown.
std::optional<std::string> GitIntegrateOperation::fetchedUpstream() {
    const std::string upstream = "@{upstream}";
    const std::vector<std::string> query{"rev-parse", "--symbolic-full-name", upstream};
    const auto name = runQuery(request(), query);
    const bool isMissing = !error() && name->error() &&
                           name->error()->errorClass == NEBSourceControlRevisionUnknownErrorClass;
    if (!error() && name->error() &&
        name->error()->errorClass == NEBSourceControlBranchUnknownErrorClass) {
        // A branch without commits.
        fail(NEBSourceControlNoUpstreamErrorClass, "The current branch has no upstream branch.");
        return std::nullopt;
    }
    if (!error() && name->error() &&
        name->error()->errorClass == NEBSourceControlNoCurrentBranchErrorClass) {
        failWithoutBranch(*name);
        return std::nullopt;
    }
    if ((!isMissing && !goesOnAfter(*name)) || !runChange({"fetch", "--quiet"})) {
        return std::nullopt;
    }
    const auto fetched = isMissing ? runQuery(request(), query) : name;
    if (!error() && fetched->error() &&
        fetched->error()->errorClass == NEBSourceControlRevisionUnknownErrorClass) {
        failWithoutUpstream();
        return std::nullopt;
    }
    return goesOnAfter(*fetched) ? std::optional(upstream) : std::nullopt;
}

std::optional<std::string> GitIntegrateOperation::fetchedRevision() {
    const NEBValue& remote = request()->option(NEBSourceControlRequestOptionRemoteName);
    const NEBValue& branch = request()->option(NEBSourceControlRequestOptionBranch);
    if (request()->destination.isPresent()) {
        return request()->destination.description();
    }
    if (remote.isPresent() != branch.isPresent()) {
        fail(NEBSourceControlRequestInvalidErrorClass,
             "The request has only one of the names of a remote and of its branch.");
        return std::nullopt;
    }
    if (!acceptsReference(branch)) {
        return std::nullopt;
    }
    if (remote.isPresent()) {
        const bool isFetched =
            runChange({"fetch", "--quiet", "--", remote.description(), branch.description()});
        return isFetched ? std::optional<std::string>("FETCH_HEAD") : std::nullopt;
    }
    return fetchedUpstream();
}

void GitIntegrateOperation::perform() {
    const NEBValue& name = request()->option(NEBSourceControlRequestOptionStrategy);
    auto command = commandOfStrategy(name.isPresent() ? name.description() : "merge");
    if (!command) {
        failForOption(NEBSourceControlRequestOptionStrategy);
        return;
    }
    const auto revision = fetchedRevision();
    const auto head = revision ? queriedHead() : std::nullopt;
    if (head) {
        // A branch without commits has nothing to rebase.
        if (head->empty()) {
            command = commandOfStrategy(fastForward);
        }
        command->arguments.push_back(*revision);
        runMerge(*command);
    }
}

}  // namespace neb
