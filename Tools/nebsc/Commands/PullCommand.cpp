#include <algorithm>
#include <array>

#include "CommandFrame/BranchQueries.h"
#include "CommandFrame/StoppableTask.h"
#include "CommandFrame/UnfinishedWork.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view remoteParameter = "REMOTE";
constexpr std::string_view branchParameter = "BRANCH";

/// A way to integrate, the flag that chooses it, and how messages name it.
struct Strategy {
    std::string_view flag, option, noun;
};

constexpr std::array strategies{
    Strategy{"--merge", "merge", "merge"},
    Strategy{"--rebase", "rebase", "rebase"},
    Strategy{"--ff-only", "fast-forward", "fast-forward"},
};

class PullTask : public StoppableTask {
public:
    using StoppableTask::StoppableTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    std::string subject() const override { return "the " + std::string(_strategy->noun); }
    std::string adviceFor(const NEBSourceControlError& error) const override;
    std::string textOfSuccess(const Outcome& outcome) override;

private:
    /// Returns the flag that the settings stand for: see pull.rebase and pull.ff in git-config(1).
    [[nodiscard]] std::string_view configuredFlag() const;

    const Strategy* _strategy = &strategies.front();
};

std::string_view PullTask::configuredFlag() const {
    const auto branch = currentBranch(git());
    auto rebase = branch ? git().outputOf({"config", "--get", "branch." + *branch + ".rebase"})
                         : std::nullopt;
    if (!rebase) {
        rebase = git().outputOf({"config", "--get", "pull.rebase"});
    }
    constexpr std::array<std::string_view, 4> negatives{"false", "no", "off", "0"};
    if (rebase && std::find(negatives.begin(), negatives.end(), *rebase) == negatives.end()) {
        return "--rebase";
    }
    return git().outputOf({"config", "--get", "pull.ff"}) == "only" ? "--ff-only" : "--merge";
}

std::optional<CommandOutput> PullTask::validate() {
    if (arguments().has(remoteParameter) != arguments().has(branchParameter)) {
        throw invalidArguments("expected REMOTE and BRANCH, or neither of them");
    }
    const auto isGiven = [this](const Strategy& row) { return arguments().has(row.flag); };
    const auto count = std::count_if(strategies.begin(), strategies.end(), isGiven);
    if (count > 1) {
        throw invalidArguments("expected only one of --merge, --rebase and --ff-only");
    }
    if (auto refused = refusalOutsideWorkingCopy(git())) {
        return refused;
    }
    const std::string_view configured = count == 0 ? configuredFlag() : std::string_view();
    _strategy = std::find_if(strategies.begin(), strategies.end(), [&](const Strategy& row) {
        return count == 0 ? row.flag == configured : isGiven(row);
    });
    return std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> PullTask::makeRequest() {
    auto request =
        newExchangeRequest(workingCopy(), NEBSourceControlRequestIntegrate, Peer::remote);
    request->options->set(NEBSourceControlRequestOptionStrategy, std::string(_strategy->option));
    if (arguments().has(remoteParameter)) {
        request->options->set(NEBSourceControlRequestOptionRemoteName, argument(remoteParameter));
        request->options->set(NEBSourceControlRequestOptionBranch, argument(branchParameter));
    }
    return request;
}

std::string PullTask::adviceFor(const NEBSourceControlError& error) const {
    const bool lacksUpstream = error.errorClass == NEBSourceControlNoUpstreamErrorClass ||
                               error.errorClass == NEBSourceControlBranchUnknownErrorClass ||
                               error.errorClass == NEBSourceControlRemoteBranchUnknownErrorClass;
    if (lacksUpstream && !arguments().has(remoteParameter)) {
        return "'nebsc pull REMOTE BRANCH' names a branch; 'nebsc push -u' sets an upstream "
               "branch.";
    }
    const auto unfinished = error.errorClass == NEBSourceControlMergeUnfinishedErrorClass
                                ? unfinishedWorkIn(git())
                                : std::vector<UnfinishedWork>();
    if (!unfinished.empty()) {
        return std::string(unfinished.front().advice);
    }
    return error.errorClass == NEBSourceControlDivergedErrorClass
               ? "'nebsc pull --rebase' or 'nebsc pull --merge' integrates both sides."
               : "";
}

std::string PullTask::textOfSuccess(const Outcome& outcome) {
    return hasMoved(outcome) ? "Pulled by " + std::string(_strategy->noun) + endWithCommit()
                             : "Already up to date.\n";
}

constexpr Parameter parameters[] = {
    {remoteParameter, "A remote, a URL, HOST:PATH, or a path; default: the upstream branch",
     Takes::remote},
    {branchParameter, "The branch of the remote", Takes::branchOfRemote},
    {"--merge", "Merge the branch; the default unless pull.rebase or pull.ff is set"},
    {"--rebase", "Rebase the current branch onto it"},
    {"--ff-only", "Only if no merge is needed"},
};

}  // namespace

constinit const Command pullCommand{
    .name = "pull",
    .group = remotesGroup,
    .summary = "Fetch, and integrate by merge or rebase; stops at conflicts",
    .details =
        "Unlike 'nebsc update', chooses no side in conflicts: 'nebsc continue' goes on\n"
        "after they are resolved, and 'nebsc abort' restores the state before.\n"
        "\n"
        "Examples:\n"
        "  nebsc pull                     from the upstream branch\n"
        "  nebsc pull --rebase            rebase instead of a merge\n"
        "  nebsc pull origin main         from a branch of a remote\n",
    .parameters = parameters,
    .activity = "Pulling",
    .run = runTask<PullTask>,
};

}  // namespace neb::nebsc
