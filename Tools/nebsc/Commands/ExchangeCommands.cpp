// The commands "fetch" and "push".

#include <map>

#include "CommandFrame/CommandTask.h"
#include "CommandFrame/RemoteSettings.h"
#include "Commands/Commands.h"
#include "Commands/PublishTask.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view remoteParameter = "REMOTE";
constexpr std::string_view subversionFlag = "--svn";

/// Refuses --svn where no Subversion repository is connected. Throws a UsageError with the message
/// `expected` if there are too few or too many arguments.
std::optional<CommandOutput> refusalOfExchange(const GitQueries& git, bool isSubversion,
                                               bool isComplete, bool isEmpty,
                                               std::string_view expected) {
    if (isSubversion ? !isEmpty : !isComplete) {
        throw invalidArguments(std::string(expected));
    }
    return isSubversion ? refusalWithoutSubversion(git) : std::nullopt;
}

// ---- fetch ------------------------------------------------------------------------------------

class FetchTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    void report(const Outcome& outcome, CommandOutput& output) override;

private:
    [[nodiscard]] bool isSubversion() const { return arguments().has(subversionFlag); }
    /// The commits of everything that a fetch updates, by "origin/main" or "tag v1.0".
    using References = std::map<std::string, std::string>;

    [[nodiscard]] References references();

    std::string _remote;
    References _before;
};

/// Leaves out symbolic references such as "origin/HEAD".
FetchTask::References FetchTask::references() {
    References references;
    for (const std::string& line :
         git().linesOf({"for-each-ref",
                        "--format=%(if)%(symref)%(then)%(else)%(objectname) "
                        "%(if:equals=refs/tags)%(refname:rstrip=-2)%(then)tag "
                        "%(end)%(refname:lstrip=2)%(end)",
                        "refs/remotes", "refs/tags"})) {
        const std::size_t blank = line.find(' ');
        if (blank != std::string::npos) {
            references[line.substr(blank + 1)] = line.substr(0, blank);
        }
    }
    return references;
}

std::optional<CommandOutput> FetchTask::validate() {
    const bool hasRemote = arguments().has(remoteParameter);
    if (auto refused = refusalOfExchange(git(), isSubversion(), hasRemote, !hasRemote,
                                         "expected REMOTE or --svn")) {
        return refused;
    }
    _remote = isSubversion() ? "Subversion"
                             : RemoteSettings(git()).remoteOrLocation(argument(remoteParameter));
    _before = references();
    return std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> FetchTask::makeRequest() {
    return isSubversion()
               ? newExchangeRequest(workingCopy(), NEBSourceControlRequestFetch, Peer::subversion)
               : newFetchRequest(workingCopy(), _remote);
}

/// Compares the references, because the outcome does not say what was fetched.
void FetchTask::report(const Outcome& /*outcome*/, CommandOutput& output) {
    const References after = references();
    const std::string from =
        "Fetched from " + printable(isSubversion() ? _remote : inQuotes(_remote));
    std::string lines;
    for (const auto& [name, commit] : after) {
        const auto before = _before.find(name);
        if (before == _before.end()) {
            lines += "    new      " + printable(name) + "\n";
        } else if (before->second != commit) {
            lines += "    changed  " + printable(name) + "\n";
        }
    }
    for (const auto& [name, commit] : _before) {
        lines += after.contains(name) ? "" : "    deleted  " + printable(name) + "\n";
    }
    if (!lines.empty()) {
        output.standardOutput = from + ":\n" + lines;
    } else if (isSubversion() || RemoteSettings(git()).isRemote(_remote)) {
        output.standardOutput = from + "; nothing is new.\n";
    } else {
        output.standardOutput = from + "; its latest commit is FETCH_HEAD.\n";
    }
}

constexpr Parameter fetchParameters[] = {
    {remoteParameter, "A remote, a URL, HOST:PATH, or a path", Takes::remote},
    {subversionFlag, "Fetch from the connected Subversion repository"},
};

// ---- push -------------------------------------------------------------------------------------

class PushTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    void report(const Outcome& outcome, CommandOutput& output) override;
    std::string textFor(const NEBSourceControlError& error) const override {
        return error.errorClass == NEBSourceControlNothingToPushFromErrorClass
                   ? "There is no local branch " + inQuotes(_local) + " to push."
                   : "";
    }
    std::string adviceFor(const NEBSourceControlError& error) const override;

private:
    [[nodiscard]] bool isSubversion() const { return arguments().has(subversionFlag); }

    std::string _remote;
    std::string _local;
    std::string _destination;
    std::optional<std::string> _commitBefore;
};

/// To git, an empty local branch means to delete the remote branch, and "+" to overwrite it.
std::optional<CommandOutput> PushTask::validate() {
    constexpr std::string_view branches = "BRANCHES";
    const bool hasRemote = arguments().has(remoteParameter);
    const bool hasBranches = arguments().has(branches);
    if (auto refused = refusalOfExchange(git(), isSubversion(), hasRemote && hasBranches,
                                         !hasRemote && !hasBranches,
                                         "expected REMOTE and LOCAL:DEST, or --svn")) {
        return refused;
    }
    _commitBefore = git().headCommit();
    if (isSubversion()) {
        return std::nullopt;
    }
    _remote = RemoteSettings(git()).remoteOrLocation(argument(remoteParameter));
    const std::string text = argument(branches);
    const std::size_t colon = text.find(':');
    _local = text.substr(0, colon);
    _destination = colon == std::string::npos ? _local : text.substr(colon + 1);
    if (_local.empty() || _destination.empty() || _local.starts_with('+')) {
        throw invalidValue(branches, "LOCAL:DEST");
    }
    return std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> PushTask::makeRequest() {
    if (isSubversion()) {
        return newExchangeRequest(workingCopy(), NEBSourceControlRequestPush, Peer::subversion);
    }
    auto request = newExchangeRequest(workingCopy(), NEBSourceControlRequestPush, Peer::remote);
    request->destination = _destination;
    request->options->set(NEBSourceControlRequestOptionRemoteName, _remote);
    request->options->set(NEBSourceControlRequestOptionBranch, _local);
    return request;
}

/// Returns the lines that the remote printed.
std::string remoteOutput(std::string_view text) {
    std::string lines;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        const std::size_t end = line.find_last_not_of(' ');
        if (line.starts_with("remote:")) {
            lines += printable(line.substr(0, end + 1)) + "\n";
        }
    }
    return lines;
}

/// A push to Subversion replaces the local commits, so the latest commit changes.
void PushTask::report(const Outcome& outcome, CommandOutput& output) {
    if (isSubversion()) {
        const auto commit = git().headCommit();
        output.standardOutput = commit && commit != _commitBefore
                                    ? "Pushed to Subversion; now at " + printable(*commit) + ".\n"
                                    : "Nothing to push: Subversion has all commits.\n";
        return;
    }
    const bool hasRecord = outcome.result && !outcome.result->empty();
    const std::string notice =
        hasRecord ? outcome.result->front().value(NEBSourceControlOperationContentKey).description()
                  : "";
    const std::string remote = printable(inQuotes(_remote));
    if (notice.find("Everything up-to-date") != std::string::npos) {
        output.standardOutput = "Nothing to push: " + remote + " is up to date.\n";
    } else {
        output.standardOutput = "Pushed " + printable(inQuotes(_local)) + " to " +
                                printable(inQuotes(_destination)) + " on " + remote + ".\n";
    }
    output.standardError = remoteOutput(notice);
}

std::string PushTask::adviceFor(const NEBSourceControlError& error) const {
    if (error.code != NEBSourceControlRemoteAheadError) {
        return {};
    }
    return isSubversion() ? "'nebsc update --svn' fetches them and rebases the current branch."
                          : "'nebsc update' fetches and merges them.";
}

constexpr Parameter pushParameters[] = {
    {remoteParameter, "A remote, a URL, HOST:PATH, or a path", Takes::remote},
    {"BRANCHES",
     "The branch and its name on the remote, LOCAL:DEST; LOCAL alone if both are the same",
     Takes::branchPair},
    {"-u,--set-upstream",
     "Make the branch of the remote the upstream branch; default: the current "
     "branch, to the only remote"},
    {leaseFlag, "Overwrite the branch of the remote if it is as last fetched"},
    {pushDryRunFlag, "Change nothing, and list what would be pushed"},
    {subversionFlag, "Commit to the connected Subversion repository"},
};

CommandOutput runPush(const CommandCall& call) {
    return isPublishing(call.arguments) ? runPublish(call) : PushTask(call).run();
}

}  // namespace

constinit const Command fetchCommand{
    .name = "fetch",
    .group = remotesGroup,
    .summary = "Fetch from a remote without changing the working copy",
    .details =
        "Examples:\n"
        "  nebsc fetch origin    fetch from the remote 'origin'\n"
        "  nebsc fetch --svn     fetch from the Subversion repository\n",
    .parameters = fetchParameters,
    .activity = "Fetching",
    .run = runTask<FetchTask>,
};

constinit const Command pushCommand{
    .name = "push",
    .group = remotesGroup,
    .summary = "Push a branch to a remote",
    .details =
        "Without REMOTE, pushes the current branch to its upstream branch, as the\n"
        "settings of git say. If the remote has commits that are missing here, the push\n"
        "is refused unless --force-with-lease is given.\n"
        "\n"
        "Examples:\n"
        "  nebsc push                        the current branch to its upstream branch\n"
        "  nebsc push -u origin              also make that branch the upstream branch\n"
        "  nebsc push origin main            the branch main\n"
        "  nebsc push origin topic:review    the branch topic, as review on the remote\n"
        "  nebsc push --svn                  commits that Subversion does not have\n",
    .parameters = pushParameters,
    .activity = "Pushing",
    .run = runPush,
};

}  // namespace neb::nebsc
