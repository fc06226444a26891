#include "Commands/PublishTask.h"

#include <unistd.h>

#include "CommandFrame/CommandTask.h"
#include "CommandFrame/RecordNames.h"
#include "CommandFrame/RemoteSettings.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/PrintableText.h"
#include "Terminal/TextTable.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view remoteParameter = "REMOTE";
constexpr std::string_view branchesParameter = "BRANCHES";

/// Returns "main" for "refs/heads/main"; printable.
std::string shortName(std::string_view name) {
    for (const std::string_view prefix : {"refs/heads/", "refs/tags/"}) {
        if (name.starts_with(prefix)) {
            return printable(name.substr(prefix.size()));
        }
    }
    return printable(name);
}

/// Returns the row of a reference: its state, its names, and its commits before and after.
std::vector<std::string> rowOf(const NEBDictionary& record) {
    constexpr std::size_t shownDigits = 12;
    const std::string_view before = record.text(NEBSourceControlOperationOldObjectIDKey);
    const std::string_view after = record.text(NEBSourceControlOperationNewObjectIDKey);
    std::vector<std::string> row{
        "    " + std::string(record.text(NEBSourceControlOperationStateKey)),
        shortName(record.text(NEBSourceControlOperationSourceKey)) + " -> " +
            shortName(record.text(NEBSourceControlOperationNameKey))};
    if (!before.empty()) {
        row.push_back(printable(before.substr(0, shownDigits)) + ".." +
                      printable(after.substr(0, shownDigits)));
    }
    return row;
}

/// Returns what the server says, as git shows it.
std::string remoteLinesOf(const NEBDictionary& record) {
    std::string text;
    const auto* lines = record.value(NEBSourceControlOperationRemoteLinesKey).array();
    for (std::size_t i = 0; lines != nullptr && i < lines->size(); ++i) {
        const std::string line = printableLine(bytesOfValue((*lines)[i]));
        text += line.empty() ? "remote:\n" : "remote: " + line + "\n";
    }
    return text;
}

class PublishTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    std::string textFor(const NEBSourceControlError& error) const override;
    std::string adviceFor(const NEBSourceControlError& error) const override;
    void report(const Outcome& outcome, CommandOutput& output) override;

private:
    [[nodiscard]] bool setsUpstream() const { return arguments().has(setUpstreamFlag); }

    /// Empty for those of the configuration.
    std::string _remote, _local, _destination;
};

/// Without REMOTE, --set-upstream takes the only remote.
std::optional<CommandOutput> PublishTask::validate() {
    const bool hasRemote = arguments().has(remoteParameter);
    const bool hasBranches = arguments().has(branchesParameter);
    if (arguments().has("--svn") || (hasRemote && !hasBranches && !setsUpstream())) {
        throw invalidArguments("expected REMOTE and LOCAL:DEST, or neither of them");
    }
    if (hasBranches) {
        const std::string text = argument(branchesParameter);
        const std::size_t colon = text.find(':');
        _local = text.substr(0, colon);
        _destination = colon == std::string::npos ? "" : text.substr(colon + 1);
        const bool lacksSide =
            _local.empty() || (_destination.empty() && colon != std::string::npos);
        if (lacksSide || _local.starts_with('+')) {
            throw invalidValue(branchesParameter, "LOCAL:DEST");
        }
    }
    if (hasRemote) {
        _remote = RemoteSettings(git()).remoteOrLocation(argument(remoteParameter));
    } else if (setsUpstream()) {
        const std::vector<std::string> remotes = git().linesOf({"remote"});
        if (remotes.size() > 1) {
            throw invalidArguments("expected REMOTE: there are several remotes");
        }
        _remote = remotes.empty() ? "" : remotes.front();
        if (remotes.empty() && workingCopy().isWorkingCopy) {
            CommandOutput refused = refusal("There is no remote to push to.", exitFailed,
                                            NEBSourceControlNoPushDestinationErrorClass);
            addAdvice(refused, "'nebsc remote add' adds one.");
            return refused;
        }
    }
    return std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> PublishTask::makeRequest() {
    auto request = newExchangeRequest(workingCopy(), NEBSourceControlRequestPublish, Peer::remote);
    const std::pair<NEBConstant, const std::string&> names[] = {
        {NEBSourceControlRequestOptionRemoteName, _remote},
        {NEBSourceControlRequestOptionBranch, _local},
    };
    for (const auto& [key, name] : names) {
        if (!name.empty()) {
            request->options->set(key, name);
        }
    }
    if (!_destination.empty()) {
        request->destination = _destination;
    }
    const std::pair<NEBConstant, std::string_view> flags[] = {
        {NEBSourceControlRequestOptionSetUpstream, setUpstreamFlag},
        {NEBSourceControlRequestOptionForceWithLease, leaseFlag},
        {NEBSourceControlRequestOptionDryRun, pushDryRunFlag},
    };
    for (const auto& [key, flag] : flags) {
        if (arguments().has(flag)) {
            request->options->set(key, true);
        }
    }
    return request;
}

std::string PublishTask::textFor(const NEBSourceControlError& error) const {
    return error.errorClass == NEBSourceControlNothingToPushFromErrorClass && !_local.empty()
               ? "There is no local branch " + inQuotes(_local) + " to push."
               : "";
}

std::string PublishTask::adviceFor(const NEBSourceControlError& error) const {
    if (error.errorClass == NEBSourceControlNoPushDestinationErrorClass) {
        return "'nebsc remote add' adds a remote.";
    }
    if (error.errorClass == NEBSourceControlNoUpstreamErrorClass) {
        return "'nebsc push -u' pushes the branch under its name and sets its upstream branch.";
    }
    if (error.errorClass == NEBSourceControlPushStaleErrorClass) {
        return "The branch of the remote has changed since the last fetch; 'nebsc fetch' shows "
               "how.";
    }
    return error.code == NEBSourceControlRemoteAheadError
               ? "'nebsc pull' fetches and integrates them."
               : "";
}

void PublishTask::report(const Outcome& outcome, CommandOutput& output) {
    std::vector<std::vector<std::string>> rows;
    for (const NEBDictionary& record : outcome.result.value_or(NEBSourceControlResult())) {
        output.standardError += remoteLinesOf(record);
        const std::string_view state = record.text(NEBSourceControlOperationStateKey);
        if (!state.empty() && state != "up to date") {
            rows.push_back(rowOf(record));
        }
    }
    if (rows.empty()) {
        output.standardOutput = "Nothing to push: the remote is up to date.\n";
    } else {
        output.standardOutput = arguments().has(pushDryRunFlag) ? "Would push:\n" : "Pushed:\n";
        output.standardOutput += tableLines(STDOUT_FILENO, rows);
    }
    if (setsUpstream() && !arguments().has(pushDryRunFlag)) {
        const auto upstream = git().outputOf({"rev-parse", "--symbolic-full-name",
                                              (_local.empty() ? "HEAD" : _local) + "@{upstream}"});
        const std::string name = withoutPrefix(
            withoutPrefix(upstream.value_or(""), localBranchPrefix), remoteBranchPrefix);
        output.standardOutput +=
            upstream ? "The upstream branch is " + printable(inQuotes(name)) + ".\n" : "";
    }
}

}  // namespace

bool isPublishing(const Arguments& arguments) {
    return arguments.has(setUpstreamFlag) || arguments.has(leaseFlag) ||
           arguments.has(pushDryRunFlag) ||
           (!arguments.has(remoteParameter) && !arguments.has("--svn"));
}

CommandOutput runPublish(const CommandCall& call) {
    return PublishTask(call).run();
}

}  // namespace neb::nebsc
