// The commands "branch rename" and "branch upstream".

#include "CommandFrame/CommandTask.h"
#include "CommandFrame/RecordNames.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

constexpr NameKeys sourceKeys{NEBSourceControlOperationSourceKey,
                              NEBSourceControlOperationSourceBytesKey};

/// Changes a branch and reports what became of it.
class BranchChangeTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    /// Sets the action, and the branch unless the name is empty.
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> newChangeRequest(
        const char* action, const std::string& branch) const {
        auto request = newRequest(NEBSourceControlRequestChangeBranch);
        request->options = NEBDictionary{{NEBSourceControlRequestOptionAction, action}};
        if (!branch.empty()) {
            request->options->set(NEBSourceControlRequestOptionBranch, branch);
        }
        return request;
    }
    /// Returns the short name of a branch of the outcome in quotes, printable; empty without one.
    [[nodiscard]] static std::string shownName(const Outcome& outcome, const NameKeys& keys) {
        if (!outcome.result || outcome.result->empty()) {
            return {};
        }
        const std::string name(bytesOfName(outcome.result->front(), keys));
        return printable(
            inQuotes(withoutPrefix(withoutPrefix(name, localBranchPrefix), remoteBranchPrefix)));
    }
};

// ---- rename -----------------------------------------------------------------------------------

class RenameTask : public BranchChangeTask {
public:
    using BranchChangeTask::BranchChangeTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        const auto newName = arguments().value("NEW");
        auto request = newChangeRequest("rename", newName ? argument("NAME") : "");
        request->destination = newName.value_or(argument("NAME"));
        if (arguments().has("--force")) {
            request->options->set(NEBSourceControlRequestOptionForce, true);
        }
        return request;
    }
    std::string adviceFor(const NEBSourceControlError& error) const override {
        constexpr std::string_view halfDone = "Branch is renamed, but update of config-file failed";
        if (error.text.value_or("").find(halfDone) != std::string::npos) {
            return "The branch was renamed, but its settings were not. 'git config "
                   "--rename-section branch.OLD branch.NEW' renames them.";
        }
        return error.errorClass == NEBSourceControlBranchExistsErrorClass
                   ? "'nebsc branch rename --force' replaces that branch."
                   : "";
    }
    void report(const Outcome& outcome, CommandOutput& output) override {
        output.standardOutput = "Renamed branch " + shownName(outcome, sourceKeys) + " to " +
                                shownName(outcome, nameKeys) + ".\n";
    }
};

constexpr Parameter renameParameters[] = {
    {"NAME", "The branch; without NEW, the new name of the current branch", Takes::branch,
     Occurs::once},
    {"NEW", "The new name", Takes::text},
    {"--force", "Replace another branch of the new name, whose commits may be lost"},
};

// ---- upstream ---------------------------------------------------------------------------------

class UpstreamTask : public BranchChangeTask {
public:
    using BranchChangeTask::BranchChangeTask;

protected:
    std::optional<CommandOutput> validate() override {
        if (isRemoval() ? arguments().has("UPSTREAM") : !arguments().has("NAME")) {
            throw invalidArguments(isRemoval() ? "expected at most a branch with --unset"
                                               : "expected an upstream branch, or --unset");
        }
        return std::nullopt;
    }
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        if (isRemoval()) {
            return newChangeRequest("unset-upstream", argument("NAME"));
        }
        const auto upstream = arguments().value("UPSTREAM");
        auto request = newChangeRequest("set-upstream", upstream ? argument("NAME") : "");
        request->destination = upstream.value_or(argument("NAME"));
        return request;
    }
    void report(const Outcome& outcome, CommandOutput& output) override {
        const std::string upstream = shownName(outcome, upstreamKeys);
        output.standardOutput =
            shownName(outcome, nameKeys) +
            (isRemoval() ? " no longer tracks a branch.\n" : " tracks " + upstream + ".\n");
    }

private:
    [[nodiscard]] bool isRemoval() const { return arguments().has("--unset"); }
};

constexpr Parameter upstreamParameters[] = {
    {"NAME", "The branch; without UPSTREAM, the upstream branch of the current branch",
     Takes::revision},
    {"UPSTREAM", "REMOTE/BRANCH as last fetched, or a branch of this repository",
     Takes::remoteBranch},
    {"--unset", "Remove the upstream branch of NAME, by default of the current branch"},
};

}  // namespace

constinit const Command branchRenameCommand{
    .name = "rename",
    .group = subcommandGroup,
    .summary = "Rename a branch",
    .details =
        "The branch keeps its upstream branch, and stays checked out. Branches of remotes\n"
        "keep their names. The first argument is always a branch, also if it has the name\n"
        "of a subcommand.\n"
        "\n"
        "Examples:\n"
        "  nebsc branch rename parser            rename the current branch\n"
        "  nebsc branch rename topic parser      rename the branch 'topic'\n"
        "  nebsc branch rename rename parser     rename the branch 'rename'\n",
    .parameters = renameParameters,
    .activity = "Renaming the branch",
    .run = runTask<RenameTask>,
};

constinit const Command branchUpstreamCommand{
    .name = "upstream",
    .group = subcommandGroup,
    .summary = "Set or remove the upstream branch of a branch",
    .details =
        "'nebsc pull' and 'nebsc push' without arguments use the upstream branch.\n"
        "'nebsc branch tracking' shows it.\n"
        "\n"
        "Examples:\n"
        "  nebsc branch upstream origin/main           of the current branch\n"
        "  nebsc branch upstream topic origin/topic    of the branch 'topic'\n"
        "  nebsc branch upstream --unset topic         remove it\n",
    .parameters = upstreamParameters,
    .activity = "Changing the branch",
    .run = runTask<UpstreamTask>,
};

}  // namespace neb::nebsc
