// The command "remote" and its subcommands.

#include <unistd.h>

#include <string>
#include <vector>

#include "CommandFrame/CommandTask.h"
#include "CommandFrame/RemoteSettings.h"
#include "Commands/Commands.h"
#include "LOMFoundation/LOMPasswordRedaction.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/PathString.h"
#include "Terminal/PrintableText.h"
#include "Terminal/TextTable.h"

namespace neb::nebsc {

namespace {

// ---- list -------------------------------------------------------------------------------------

/// A remote, from consecutive records of the list.
struct Remote {
    std::string name;
    std::vector<std::string> fetch;
    std::vector<std::string> push;
    bool isSubversion = false;
    /// Whether a record has no type: its URL contains a blank, or git printed more after it.
    bool isIncomplete = false;
};

std::vector<Remote> remotesOf(const NEBSourceControlResult& result) {
    std::vector<Remote> remotes;
    for (const NEBDictionary& record : result) {
        if (record.isEmpty()) {
            continue;
        }
        const bool isSubversion = record.value(NEBSourceControlOperationUsesGitSVNKey).boolValue();
        const std::string name(record.text(NEBSourceControlOperationRemoteNameKey));
        if (remotes.empty() || remotes.back().name != name ||
            remotes.back().isSubversion != isSubversion) {
            remotes.emplace_back();
            remotes.back().name = name;
            remotes.back().isSubversion = isSubversion;
        }
        const std::string type(record.text(NEBSourceControlOperationTypeKey));
        Remote& remote = remotes.back();
        (type == "push" ? remote.push : remote.fetch)
            .emplace_back(record.text(NEBSourceControlOperationRemoteOriginKey));
        remote.isIncomplete = remote.isIncomplete || (type.empty() && !isSubversion);
    }
    return remotes;
}

std::vector<std::string> rowOf(const std::string& name, const std::string& location) {
    return {printable(name), printable(textWithoutPasswords(location))};
}

class ListTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return newRequest(NEBSourceControlRequestListRemotes);
    }
    /// The last query, for Subversion, may find nothing.
    SilentFailure silentFailure() const override { return SilentFailure::isEmptyResult; }
    void report(const Outcome& outcome, CommandOutput& output) override;

private:
    void completeURLs(Remote& remote);
};

void ListTask::completeURLs(Remote& remote) {
    remote.fetch = git().linesOf({"remote", "get-url", remote.name});
    remote.push = git().linesOf({"remote", "get-url", "--push", "--all", remote.name});
}

void ListTask::report(const Outcome& outcome, CommandOutput& output) {
    std::vector<std::vector<std::string>> rows;
    for (Remote& remote : remotesOf(outcome.result.value_or(NEBSourceControlResult{}))) {
        if (remote.isIncomplete) {
            completeURLs(remote);
        }
        const std::string name = remote.name.empty() ? "svn" : remote.name;
        if (remote.isSubversion) {
            rows.push_back(rowOf(name, remote.fetch.front() + " (Subversion)"));
            continue;
        }
        if (remote.fetch == remote.push && remote.fetch.size() <= 1) {
            rows.push_back(rowOf(name, remote.fetch.empty() ? "" : remote.fetch.front()));
            continue;
        }
        for (const std::string& location : remote.fetch) {
            rows.push_back(rowOf(name, location + " (fetch)"));
        }
        for (const std::string& location : remote.push) {
            rows.push_back(rowOf(name, location + " (push)"));
        }
    }
    output.standardOutput =
        rows.empty()
            ? "The repository " + printable(inQuotes(lastPathComponent(workingCopy().location))) +
                  " has no remotes.\n"
            : tableLines(STDOUT_FILENO, rows);
}

constinit const Command listCommand{
    .name = "list",
    .group = subcommandGroup,
    .summary = "List the remotes and their URLs",
    .details =
        "A remote with different URLs for fetch and push has a line for each.\n"
        "\n"
        "Example:\n"
        "  nebsc remote list\n",
    .activity = "Reading",
    .run = runTask<ListTask>,
};

// ---- add --------------------------------------------------------------------------------------

class AddTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        auto request = newRequest(NEBSourceControlRequestAddRemote,
                                  {repositoryLocation(currentFolder(), argument("URL"))});
        request->destination = argument("NAME");
        return request;
    }
    void report(const Outcome& /*outcome*/, CommandOutput& output) override {
        output.standardOutput = "Added remote " + printable(inQuotes(argument("NAME"))) + ".\n";
    }
};

constexpr Parameter addParameters[] = {
    {"NAME", "The name of the remote", Takes::text, Occurs::once},
    {"URL", "A URL, HOST:PATH, or a path, which is stored as an absolute path", Takes::location,
     Occurs::once},
};

constinit const Command addCommand{
    .name = "add",
    .group = subcommandGroup,
    .summary = "Add a remote",
    .details =
        "Does not fetch from it; 'nebsc fetch' does.\n"
        "\n"
        "Example:\n"
        "  nebsc remote add origin https://example.org/demo.git\n",
    .parameters = addParameters,
    .activity = "Adding",
    .run = runTask<AddTask>,
};

// ---- rm ---------------------------------------------------------------------------------------

class RemoveTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        auto request = newRequest(NEBSourceControlRequestRemoveRemote);
        request->destination = argument("NAME");
        return request;
    }
    void report(const Outcome& /*outcome*/, CommandOutput& output) override {
        output.standardOutput = "Removed remote " + printable(inQuotes(argument("NAME"))) + ".\n";
    }
};

constexpr Parameter removeParameters[] = {
    {"NAME", "The name of the remote", Takes::remote, Occurs::once},
};

constinit const Command removeCommand{
    .name = "rm",
    .group = subcommandGroup,
    .summary = "Remove a remote and its remote-tracking branches",
    .details =
        "Does not change the other repository.\n"
        "\n"
        "Example:\n"
        "  nebsc remote rm origin\n",
    .parameters = removeParameters,
    .activity = "Removing",
    .run = runTask<RemoveTask>,
};

// ---- branches ---------------------------------------------------------------------------------

class BranchesTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    /// Without URL, git chooses a remote of the repository.
    std::optional<CommandOutput> validate() override {
        return arguments().has("URL") ? std::nullopt : refusalOutsideRepository(git());
    }
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        const auto url = arguments().value("URL");
        return url ? newRequest(NEBSourceControlRequestListRemoteBranchesSecondForm,
                                {RemoteSettings(git()).remoteOrLocation(*url)})
                   : newRequest(NEBSourceControlRequestListRemoteBranches);
    }
    void report(const Outcome& outcome, CommandOutput& output) override;
};

void BranchesTask::report(const Outcome& outcome, CommandOutput& output) {
    std::vector<std::vector<std::string>> rows;
    for (const NEBDictionary& record : outcome.result.value_or(NEBSourceControlResult{})) {
        if (!record.isEmpty()) {
            rows.push_back({printable(record.text(NEBSourceControlOperationNameKey)),
                            printable(record.text(NEBSourceControlOperationRevisionKey))});
        }
    }
    output.standardOutput =
        rows.empty() ? "The repository has no branches.\n" : tableLines(STDOUT_FILENO, rows);
}

constexpr Parameter branchesParameters[] = {
    {"URL", "A remote, a URL, HOST:PATH, or a path; default: the remote that git chooses",
     Takes::remote},
};

constinit const Command branchesCommand{
    .name = "branches",
    .group = subcommandGroup,
    .summary = "List the branches of another repository",
    .details =
        "Shows the latest commit of each. Does not fetch.\n"
        "\n"
        "Examples:\n"
        "  nebsc remote branches origin\n"
        "  nebsc remote branches https://example.org/demo.git\n",
    .parameters = branchesParameters,
    .activity = "Connecting",
    .run = runTask<BranchesTask>,
};

constexpr const Command* remoteCommands[] = {
    &listCommand,
    &addCommand,
    &removeCommand,
    &branchesCommand,
};

}  // namespace

constinit const Command remoteCommand{
    .name = "remote",
    .group = remotesGroup,
    .summary = "List, add and remove remotes",
    .details =
        "Examples:\n"
        "  nebsc remote                                            list the remotes\n"
        "  nebsc remote add origin https://example.org/demo.git    add a remote\n"
        "  nebsc remote add --help                                 help for a subcommand\n",
    .activity = "Reading",
    .commands = remoteCommands,
    .run = runTask<ListTask>,
};

}  // namespace neb::nebsc
