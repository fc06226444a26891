#include "CommandFrame/BranchTask.h"

#include <algorithm>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/Text.h"
#include "Terminal/Presentation.h"
#include "Terminal/ShellText.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view branchPrefix = "refs/heads/";

std::string withoutPrefix(const std::string& text, std::string_view prefix) {
    return text.starts_with(prefix) ? text.substr(prefix.size()) : text;
}

bool hasLineEndingWith(std::string_view text, std::string_view end) {
    bool isThere = false;
    forEachPiece(text, '\n',
                 [&](std::string_view line) { isThere = isThere || line.ends_with(end); });
    return isThere;
}

}  // namespace

/// git puts words in brackets where there is no branch, "+ " before a branch of another working
/// copy, and " -> " with its target behind one that stands for another.
std::string branchNameOf(const NEBDictionary& record) {
    std::string_view name = record.value(NEBSourceControlOperationNameKey).string().value_or("");
    if (name.starts_with("+ ")) {
        name.remove_prefix(2);
    }
    const std::size_t blank = name.find(' ');
    const bool isOnNone = name.starts_with('(') && blank != std::string_view::npos;
    return isOnNone ? "" : printable(name.substr(0, blank));
}

// ---- the repository and its branches ----------------------------------------------------------

std::vector<std::string> BranchTask::answerLines(std::vector<std::string> arguments) {
    const std::string output(ask(std::move(arguments)).output);
    std::vector<std::string> lines;
    for (std::size_t start = 0; start < output.size();) {
        const std::size_t end = std::min(output.find('\n', start), output.size());
        lines.push_back(output.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

std::optional<CommandOutput> BranchTask::refusalWithoutRepository() {
    const ChildOutcome repository = ask({"rev-parse", "--git-dir"});
    return repository.status.isSuccess() ? std::nullopt : std::optional(failureOf(repository));
}

/// The long name: the short one is another where a tag has it too.
std::optional<std::string> BranchTask::currentBranch() {
    const auto reference = answer({"symbolic-ref", "--quiet", "HEAD"});
    return reference ? std::optional(withoutPrefix(*reference, branchPrefix)) : std::nullopt;
}

std::string BranchTask::whereInsteadOfBranch() {
    if (const auto branch = currentBranch()) {
        return "The current branch " + inQuotes(*branch) + " has no commit yet.";
    }
    const auto commit = latestCommit();
    return commit ? "Now at " + *commit + ", on no branch." : "On no branch.";
}

bool BranchTask::isBranch(const std::string& name) {
    return ask({"show-ref", "--verify", "--quiet", std::string(branchPrefix) + name})
        .status.isSuccess();
}

// ---- remotes ----------------------------------------------------------------------------------

bool BranchTask::isRemote(const std::string& name) {
    const std::vector<std::string> names = answerLines({"remote"});
    return std::find(names.begin(), names.end(), name) != names.end();
}

std::string BranchTask::remoteOrLocation(const std::string& text) {
    const std::string location = repositoryLocation(currentFolder(), text);
    const bool isPath = text.find('/') != std::string::npos || isAnythingAt(location);
    return isPath && !isRemote(text) ? location : text;
}

std::optional<BranchTask::Tracking> BranchTask::trackingOf(const std::string& branch) {
    const auto setting = [&](const char* name) {
        return answer({"config", "--get", "branch." + branch + "." + name});
    };
    const auto remote = setting("remote");
    const auto reference = setting("merge");
    if (!remote || !reference) {
        return std::nullopt;
    }
    return Tracking{*remote, withoutPrefix(*reference, branchPrefix)};
}

std::string BranchTask::shown(const Tracking& tracking) {
    const std::string& remote = tracking.remote;
    if (remote == ".") {
        return printable(tracking.branch);
    }
    return printable(isRemote(remote) ? remote + "/" + tracking.branch
                                      : tracking.branch + " of " + inQuotes(remote));
}

CommandOutput BranchTask::refusalOfBranchNotFetched(const Tracking& tracking) {
    const std::string& remote = tracking.remote;
    const std::string reference = std::string(branchPrefix) + tracking.branch;
    const ChildOutcome heads = ask({"ls-remote", "--heads", "--", remote, reference});
    std::string sentence = "There is no branch " + inQuotes(tracking.branch) + " in the remote " +
                           inQuotes(remote) + ".";
    std::string advice = "nebsc remote branches " + shellQuoted(remote);
    std::string effect = " shows those that there are.\n";
    if (!heads.status.isSuccess()) {
        sentence = "The fetch from the remote " + inQuotes(remote) + " brought no branch " +
                   inQuotes(tracking.branch) + ".";
    } else if (hasLineEndingWith(std::string(heads.output), "\t" + reference)) {
        sentence = "The remote " + inQuotes(remote) + " has the branch " +
                   inQuotes(tracking.branch) + ", but the setting " +
                   inQuotes("remote." + remote + ".fetch") + " does not fetch it as " +
                   inQuotes(remote + "/" + tracking.branch) + ".";
        advice = "git remote set-branches --add " + shellQuoted(remote) + " " +
                 shellQuoted(tracking.branch);
        effect = " adds it to the setting.\n";
    }
    CommandOutput output =
        refusal(sentence, exitFailed, NEBSourceControlRemoteBranchUnknownErrorClass.text());
    output.standardError += inQuotes(advice) + effect;
    return output;
}

bool BranchTask::hasSubversion() {
    return answer({"config", "--get-regexp", "^svn-remote\\."}).has_value();
}

std::optional<CommandOutput> BranchTask::refusalWithoutSubversion() {
    if (auto refused = refusalWithoutRepository()) {
        return refused;
    }
    if (hasSubversion()) {
        return std::nullopt;
    }
    CommandOutput output = refusal("No Subversion repository stands behind this one.", exitFailed);
    output.standardError += "\"git svn clone URL\" makes a repository that has one.\n";
    return output;
}

// ---- requests ---------------------------------------------------------------------------------

std::shared_ptr<NEBSourceControlRequest> BranchTask::exchangeRequest(std::int32_t type,
                                                                     Peer peer) const {
    auto request = requestOfType(type);
    request->repositoryToAuthenticate = request->sourceTree;
    request->remote = std::make_shared<NEBSourceControlRemote>();
    request->remote->representsGitSVNBridge = peer == Peer::subversion;
    request->options.emplace();
    return request;
}

std::shared_ptr<NEBSourceControlRequest> BranchTask::fetchRequest(const std::string& remote) const {
    auto request = exchangeRequest(NEBSourceControlRequestFetch, Peer::remote);
    request->options->set(NEBSourceControlRequestOptionRemoteName, remote);
    return request;
}

}  // namespace neb::nebsc
