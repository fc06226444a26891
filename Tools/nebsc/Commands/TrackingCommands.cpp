// The commands "branch track" and "branch tracking".

#include "CommandFrame/CommandTask.h"
#include "CommandFrame/RemoteSettings.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/PrintableText.h"
#include "Terminal/ShellText.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view nameParameter = "NAME";

// ---- track ------------------------------------------------------------------------------------

class TrackTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    void report(const Outcome& outcome, CommandOutput& output) override;
    bool isHandled(const NEBSourceControlError& error) const override {
        return error.errorClass == NEBSourceControlRemoteBranchUnknownErrorClass;
    }

private:
    TrackedBranch _tracking;
};

/// The name of a remote may contain "/" itself.
std::optional<CommandOutput> TrackTask::validate() {
    if (auto refused = refusalOutsideRepository(git())) {
        return refused;
    }
    const std::string text = argument("REMOTE/BRANCH");
    const std::size_t first = text.find('/');
    if (first == std::string::npos || first == 0 || text.ends_with('/')) {
        throw invalidValue("REMOTE/BRANCH", "a remote and its branch, such as origin/main");
    }
    const RemoteSettings remotes(git());
    std::size_t slash = first;
    while (slash != std::string::npos && !remotes.isRemote(text.substr(0, slash))) {
        slash = text.find('/', slash + 1);
    }
    if (slash == std::string::npos && !text.starts_with('-')) {
        return refusal(
            inQuotes(text) +
                " does not begin with the name of a remote; 'nebsc remote list' lists them.",
            exitFailed, NEBSourceControlRemoteUnknownErrorClass);
    }
    const std::size_t end = slash == std::string::npos ? first : slash;
    _tracking = {text.substr(0, end), text.substr(end + 1)};
    return std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> TrackTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestTrackRemoteBranch);
    request->destination = argument(nameParameter);
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
    output.standardOutput = "Created branch " + printable(inQuotes(argument(nameParameter))) +
                            ", which tracks " + RemoteSettings(git()).shownBranch(_tracking) +
                            ".\n";
    // The operation goes on if the fetch fails because it may not overwrite a tag.
    if (!outcome.commands.empty() && outcome.commands.front().terminationStatus != 0) {
        output.standardError +=
            diagnostic("The fetch did not complete; " +
                       inQuotes("nebsc fetch " + shellQuoted(_tracking.remote)) + " shows why.");
    }
}

constexpr Parameter trackParameters[] = {
    {nameParameter, "The new branch", Takes::text, Occurs::once},
    {"REMOTE/BRANCH", "The remote and its branch", Takes::remoteBranch, Occurs::once},
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
    request->options->set(NEBSourceControlRequestOptionBranch, argument(nameParameter));
    return request;
}

/// Asks git again: the record holds only a part of a branch name with "/", and is missing outside
/// of a repository as well as for a branch that does not exist.
void TrackingTask::report(const Outcome& /*outcome*/, CommandOutput& output) {
    const std::string& name = argument(nameParameter);
    const RemoteSettings remotes(git());
    if (auto refused = refusalOutsideRepository(git())) {
        output = *refused;
    } else if (const auto tracking = remotes.trackedBranchOf(name)) {
        output.standardOutput =
            printable(inQuotes(name)) + " tracks " + remotes.shownBranch(*tracking) + ".\n";
    } else if (isBranch(git(), name) || currentBranch(git()) == name) {
        output = refusal(inQuotes(name) + " does not track a branch.", exitFailed,
                         NEBSourceControlNoUpstreamErrorClass);
    } else {
        output = refusal("The branch " + inQuotes(name) + " does not exist.", exitFailed,
                         NEBSourceControlBranchUnknownErrorClass);
    }
}

constexpr Parameter trackingParameters[] = {
    {nameParameter, "A branch of this repository", Takes::branch, Occurs::once},
};

}  // namespace

constinit const Command branchTrackCommand{
    .name = "track",
    .group = subcommandGroup,
    .summary = "Fetch a remote branch and create a branch that tracks it",
    .details =
        "Example:\n"
        "  nebsc branch track topic origin/topic\n",
    .parameters = trackParameters,
    .activity = "Fetching",
    .run = runTask<TrackTask>,
};

constinit const Command branchTrackingCommand{
    .name = "tracking",
    .group = subcommandGroup,
    .summary = "Show which remote branch a branch tracks",
    .details =
        "Exits with status 1 if it tracks none.\n"
        "\n"
        "Example:\n"
        "  nebsc branch tracking main\n",
    .parameters = trackingParameters,
    .activity = "Reading",
    .run = runTask<TrackingTask>,
};

}  // namespace neb::nebsc
