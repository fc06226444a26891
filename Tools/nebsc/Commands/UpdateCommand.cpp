#include <charconv>

#include "CommandFrame/BrokenReference.h"
#include "CommandFrame/CommandTask.h"
#include "CommandFrame/RemoteSettings.h"
#include "CommandFrame/SettledConflictSearch.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view remoteParameter = "REMOTE";
constexpr std::string_view branchParameter = "BRANCH";

class UpdateTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    RepositoryQuestions questions() const override;
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    bool isHandled(const NEBSourceControlError& error) const override {
        return error.errorClass == NEBSourceControlUpToDateErrorClass;
    }
    void finish(Outcome& outcome) override { _conflicts.run(outcome); }
    bool finishesAfter(const NEBSourceControlError& error) override {
        return _conflicts.hasMerged(error);
    }
    void report(const Outcome& outcome, CommandOutput& output) override;
    void reportFailure(const Outcome& outcome, CommandOutput& output) override {
        _conflicts.report(outcome, sideNames(), output);
    }
    std::string adviceFor(const NEBSourceControlError& error) const override;

private:
    [[nodiscard]] bool isByFastForward() const { return arguments().has("--ff"); }
    [[nodiscard]] bool isSubversion() const { return arguments().has("--svn"); }
    [[nodiscard]] SideNames sideNames() const {
        return isSubversion()
                   ? SideNames{.kept = "Subversion's", .leftOut = "yours"}
                   : SideNames{.kept = "the current branch's", .leftOut = "the other branch's"};
    }
    void checkArguments() const;
    [[nodiscard]] std::optional<CommandOutput> findSource();
    [[nodiscard]] std::optional<CommandOutput> fetchSource();
    [[nodiscard]] std::optional<CommandOutput> fetchSubversion();

    RemoteSettings _remotes{git()};
    /// The branch of a remote from which the commits come.
    TrackedBranch _source;
    /// Its remote-tracking reference; empty with --ff, which asks the remote itself.
    std::string _reference;
    /// The source in messages, printable.
    std::string _shownSource;
    /// Returns the number of commits of the current branch that the reference does not contain.
    [[nodiscard]] std::size_t ownCommits();
    /// Reports how many local commits a rebase has dropped.
    void noteDroppedCommits(CommandOutput& output);

    SettledConflictSearch _conflicts{git()};
    /// The full id; 12 characters for Subversion.
    std::optional<std::string> _commitBefore;
    std::size_t _ownCommitsBefore = 0;
    bool _isMergedAlready = false;
};

void UpdateTask::checkArguments() const {
    const bool hasRemote = arguments().has(remoteParameter);
    const bool hasBranch = arguments().has(branchParameter);
    if (isSubversion() ? hasBranch || isByFastForward() : hasRemote != hasBranch) {
        throw invalidArguments(
            "expected REMOTE and BRANCH, neither of them, or --svn with at most REF");
    }
}

RepositoryQuestions UpdateTask::questions() const {
    return isSubversion() ? RepositoryQuestions{}
                          : RepositoryQuestions{.revisions = {"HEAD"}, .asksUpstream = true};
}

std::optional<CommandOutput> UpdateTask::validate() {
    checkArguments();
    if (auto refused = refusalOutsideWorkingCopy(git())) {
        return refused;
    }
    if (isSubversion()) {
        _commitBefore = git().headCommit();
        return fetchSubversion();
    }
    _commitBefore = git().commitId("HEAD");
    if (auto refused = findSource()) {
        return refused;
    }
    _shownSource = _remotes.shownBranch(_source);
    return isByFastForward() ? std::nullopt : fetchSource();
}

/// Reads the arguments, or what the current branch tracks.
std::optional<CommandOutput> UpdateTask::findSource() {
    if (arguments().has(remoteParameter)) {
        _source = {_remotes.remoteOrLocation(argument(remoteParameter)), argument(branchParameter)};
        return std::nullopt;
    }
    const auto branch = currentBranch(git());
    const auto tracking = branch ? _remotes.trackedBranchOf(*branch) : std::nullopt;
    if (const auto broken = branch ? std::nullopt : brokenReference(git(), "HEAD")) {
        return failureWith(*broken);
    }
    if (!tracking) {
        CommandOutput output =
            refusal(branch ? "The current branch " + inQuotes(*branch) +
                                 " does not track a branch to update from."
                           : "HEAD is detached, so there is no tracked branch to update from.",
                    exitFailed, NEBSourceControlNoUpstreamErrorClass);
        addAdvice(output, hasSubversion(git())
                              ? "'nebsc update --svn' updates from Subversion."
                              : "'nebsc update REMOTE BRANCH' updates from another branch.");
        return output;
    }
    _source = *tracking;
    return std::nullopt;
}

/// The request merges a remote-tracking branch, which only a named remote has.
std::optional<CommandOutput> UpdateTask::fetchSource() {
    const bool isTracked = !arguments().has(remoteParameter);
    const std::string& remote = _source.remote;
    if (remote != "." && !remote.starts_with('-') && !_remotes.isRemote(remote)) {
        CommandOutput output = refusal(inQuotes(remote) + " is not the name of a remote.",
                                       exitFailed, NEBSourceControlRemoteUnknownErrorClass);
        addAdvice(
            output,
            "'nebsc remote add' adds a remote; 'nebsc update --ff' also accepts a URL or a path.");
        return output;
    }
    // A fetch does not change which reference the upstream is, but may create it.
    const auto upstream = workingCopy().revisions.upstream;
    if (auto failed = performFirst(newFetchRequest(workingCopy(), remote))) {
        return failed;
    }
    const auto reference = !isTracked ? "refs/remotes/" + remote + "/" + _source.branch
                           : upstream ? upstream
                                      : git().outputOf({"rev-parse", "--verify", "--quiet",
                                                        "--symbolic-full-name", "@{upstream}"});
    if (reference) {
        _conflicts.setSides("HEAD", *reference);
    }
    if (!reference || (!_conflicts.hasSides() && git().isUnknownRevision(*reference))) {
        return refusalOfBranchNotFetched(git(), _source);
    }
    _reference = *reference;
    _isMergedAlready = _conflicts.isMergedAlready();
    if (_isMergedAlready) {
        _conflicts.forgetSides();
    }
    return std::nullopt;
}

/// The setting is "PATH_ON_SERVER:REFERENCE". Does not fetch for a reference that the request
/// refuses.
std::optional<CommandOutput> UpdateTask::fetchSubversion() {
    if (auto refused = refusalWithoutSubversion(git())) {
        return refused;
    }
    _reference = argument(remoteParameter);
    if (!arguments().has(remoteParameter)) {
        const std::string setting =
            git().outputOf({"config", "--get", "svn-remote.svn.fetch"}).value_or("");
        _reference = setting.substr(setting.rfind(':') + 1);
    }
    _shownSource = printable(inQuotes(_reference));
    if (_reference.starts_with('-')) {
        return std::nullopt;
    }
    if (auto failed = performFirst(
            newExchangeRequest(workingCopy(), NEBSourceControlRequestFetch, Peer::subversion))) {
        return failed;
    }
    _ownCommitsBefore = ownCommits();
    _conflicts.setSides(_reference, "HEAD");
    return std::nullopt;
}

std::size_t UpdateTask::ownCommits() {
    const std::string count =
        git()
            .outputOf({"rev-list", "--count", "--end-of-options", _reference + "..HEAD"})
            .value_or("");
    std::size_t number = 0;
    std::from_chars(count.data(), count.data() + count.size(), number);
    return number;
}

/// git drops a commit if its changes are in the other branch already, or were overwritten there.
void UpdateTask::noteDroppedCommits(CommandOutput& output) {
    const std::size_t left = ownCommits();
    if (left >= _ownCommitsBefore) {
        return;
    }
    const std::size_t dropped = _ownCommitsBefore - left;
    output.standardError += "nebsc: " + std::to_string(dropped) +
                            (dropped == 1 ? " local commit was" : " local commits were") +
                            " dropped, because Subversion has the same changes or newer ones; "
                            "before the update, the branch was at " +
                            printable(_commitBefore.value_or("")) + "\n";
}

std::shared_ptr<NEBSourceControlRequest> UpdateTask::makeRequest() {
    auto request = newExchangeRequest(workingCopy(), NEBSourceControlRequestUpdate,
                                      isSubversion() ? Peer::subversion : Peer::remote);
    if (isByFastForward()) {
        request->destination = _source.remote;
        request->options->set(NEBSourceControlRequestOptionPullByFastForwarding, true);
        request->options->set(NEBSourceControlRequestOptionRemoteName, _source.remote);
        request->options->set(NEBSourceControlRequestOptionBranch, _source.branch);
    } else {
        request->destination = _reference;
    }
    return request;
}

/// Compares the commits, because the outcome does not say what changed.
void UpdateTask::report(const Outcome& outcome, CommandOutput& output) {
    const bool isUpToDate = outcome.error || _isMergedAlready;
    const auto commit = isUpToDate ? std::nullopt : git().headCommit();
    const bool isAtSameCommit = commit && _commitBefore && _commitBefore->starts_with(*commit);
    if (isUpToDate || (isSubversion() && commit == _commitBefore)) {
        output.standardOutput = "Already up to date with " + _shownSource + ".\n";
    } else if (commit && !isAtSameCommit) {
        output.standardOutput =
            "Updated from " + _shownSource + "; now at " + printable(*commit) + ".\n";
    } else {
        output.standardOutput = "Merged " + _shownSource + "; it is not committed yet.\n";
    }
    _conflicts.report(outcome, sideNames(), output);
    if (isSubversion()) {
        noteDroppedCommits(output);
    }
}

std::string UpdateTask::adviceFor(const NEBSourceControlError& error) const {
    return error.code == NEBSourceControlFastForwardError
               ? "'nebsc update' without --ff merges them."
               : "";
}

constexpr Parameter parameters[] = {
    {remoteParameter,
     "A remote; default: what the current branch tracks. With --svn, the reference that was "
     "fetched; default: the configured one",
     Takes::remote},
    {branchParameter, "The branch of the remote", Takes::branchOfRemote},
    {"--ff", "Update only if the remote has all commits of the current branch"},
    {"--svn", "Rebase the current branch onto the connected Subversion repository"},
};

}  // namespace

constinit const Command updateCommand{
    .name = "update",
    .group = remotesGroup,
    .summary = "Fetch, and merge into the current branch",
    .details =
        "Where both sides changed the same lines, keeps those of the current branch and\n"
        "lists the files on standard error. With --svn, rebases instead of merging, keeps\n"
        "the lines of Subversion, and drops commits that become empty. 'nebsc pull' stops\n"
        "at conflicts instead.\n"
        "\n"
        "Examples:\n"
        "  nebsc update                from the branch that the current one tracks\n"
        "  nebsc update origin main    from another branch\n"
        "  nebsc update --ff           only if no merge is needed\n"
        "  nebsc update --svn          from the Subversion repository\n",
    .parameters = parameters,
    .activity = "Updating",
    .run = runTask<UpdateTask>,
};

}  // namespace neb::nebsc
