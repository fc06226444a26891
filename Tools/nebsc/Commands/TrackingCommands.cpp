// The commands about branches that track a branch of a remote.

#include "CommandFrame/CommandTask.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/Presentation.h"
#include "Terminal/ShellText.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view nameWord = "NAME";

// ---- track ------------------------------------------------------------------------------------

class TrackTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    void report(const Outcome& outcome, CommandOutput& output) override;
    /// Why, report() finds out.
    bool isHandled(const NEBSourceControlError& error) const override {
        return error.errorClass == NEBSourceControlRemoteBranchUnknownErrorClass;
    }

private:
    TrackedBranch _tracking;
};

/// A remote's name may hold a "/" itself.
std::optional<CommandOutput> TrackTask::validate() {
    if (auto refused = refusalOutsideRepository(git())) {
        return refused;
    }
    const std::string text = argument("REMOTE/BRANCH");
    const std::size_t first = text.find('/');
    if (first == std::string::npos || first == 0 || text.ends_with('/')) {
        return refusal(inQuotes(text) + " names no branch of a remote; REMOTE/BRANCH was expected.",
                       exitNotUnderstood);
    }
    std::size_t slash = first;
    while (slash != std::string::npos && !isRemote(git(), text.substr(0, slash))) {
        slash = text.find('/', slash + 1);
    }
    if (slash == std::string::npos && !text.starts_with('-')) {
        return refusal(inQuotes(text) +
                           " begins with the name of no remote; \"nebsc remote list\" shows them.",
                       exitFailed, NEBSourceControlRemoteUnknownErrorClass);
    }
    const std::size_t end = slash == std::string::npos ? first : slash;
    _tracking = {text.substr(0, end), text.substr(end + 1)};
    return std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> TrackTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestTrackRemoteBranch);
    request->destination = argument(nameWord);
    request->options.emplace();
    request->options->set(NEBSourceControlRequestOptionRemoteName, _tracking.remote);
    request->options->set(NEBSourceControlRequestOptionBranch, _tracking.branch);
    return request;
}

void TrackTask::report(const Outcome& outcome, CommandOutput& output) {
    if (outcome.error) {
        output = refusalOfBranchNotFetched(git(), _tracking);
        return;
    }
    output.standardOutput = "Made the branch " + printable(inQuotes(argument(nameWord))) +
                            ", which tracks " + shownBranch(git(), _tracking) + ".\n";
    // The operation goes on after a fetch that may not overwrite a tag.
    if (!outcome.commands.empty() && outcome.commands.front().terminationStatus != 0) {
        output.standardError +=
            complaint("The fetch did not complete; " +
                      inQuotes("nebsc fetch " + shellQuoted(_tracking.remote)) + " says why.");
    }
}

constexpr Parameter trackParameters[] = {
    {nameWord, "The new branch", Takes::text, Occurs::once},
    {"REMOTE/BRANCH", "The remote's name and its branch", Takes::remoteBranch, Occurs::once},
};

// ---- tracking ---------------------------------------------------------------------------------

class TrackingTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    SilentFailure silentFailure() const override { return SilentFailure::isEmptyResult; }
    void report(const Outcome& outcome, CommandOutput& output) override;
};

std::shared_ptr<NEBSourceControlRequest> TrackingTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestTrackingBranchName);
    request->options.emplace();
    request->options->set(NEBSourceControlRequestOptionBranch, argument(nameWord));
    return request;
}

/// Of a remote's branch that has a "/" in its name, the record holds a part alone. And git is
/// silent outside any repository, and about a branch that is not there.
void TrackingTask::report(const Outcome& /*outcome*/, CommandOutput& output) {
    const std::string& name = argument(nameWord);
    if (auto refused = refusalOutsideRepository(git())) {
        output = *refused;
    } else if (const auto tracking = trackedBranchOf(git(), name)) {
        output.standardOutput =
            printable(name) + " tracks " + shownBranch(git(), *tracking) + ".\n";
    } else if (isBranch(git(), name) || currentBranch(git()) == name) {
        output = refusal(inQuotes(name) + " tracks no branch.", exitFailed,
                         NEBSourceControlNoUpstreamErrorClass);
    } else {
        output = refusal("There is no branch " + inQuotes(name) + ".", exitFailed,
                         NEBSourceControlBranchUnknownErrorClass);
    }
}

constexpr Parameter trackingParameters[] = {
    {nameWord, "A branch of this repository", Takes::branch, Occurs::once},
};

}  // namespace

constinit const Command branchTrackCommand{
    .name = "track",
    .group = innerGroup,
    .summary = "Fetch a remote's branch and make one that tracks it",
    .details =
        "Example:\n"
        "  nebsc branch track topic origin/topic\n",
    .parameters = trackParameters,
    .activity = "Fetching",
    .run = runTask<TrackTask>,
};

constinit const Command branchTrackingCommand{
    .name = "tracking",
    .group = innerGroup,
    .summary = "Show which branch of a remote a branch tracks",
    .details =
        "The exit status is 1 when it tracks none.\n\n"
        "Example:\n"
        "  nebsc branch tracking main\n",
    .parameters = trackingParameters,
    .activity = "Looking",
    .run = runTask<TrackingTask>,
};

}  // namespace neb::nebsc
