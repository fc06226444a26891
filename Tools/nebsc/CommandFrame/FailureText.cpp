#include "CommandFrame/FailureText.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "CommandFrame/BranchQueries.h"
#include "CommandFrame/BrokenReference.h"
#include "CommandFrame/Requests.h"
#include "CommandLine/UsageError.h"
#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlErrorClasses.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Platform/PathString.h"
#include "Platform/Text.h"
#include "Session/Credentials/AskpassProgram.h"
#include "Session/GitProgram.h"
#include "Session/Paths.h"
#include "Terminal/PrintableText.h"
#include "Terminal/ShellText.h"

namespace neb::nebsc {

namespace fs = std::filesystem;

namespace {

std::string_view classOfSilentFailure(const TerminationStatus& status) {
    return !status.started()       ? NEBSourceControlNotStartedErrorClass
           : status.signalNumber() ? NEBSourceControlKilledErrorClass
                                   : NEBSourceControlUnknownErrorClass;
}

bool hasLineEndingWith(std::string_view text, std::string_view end) {
    bool isFound = false;
    forEachField(text, '\n',
                 [&](std::string_view line) { isFound = isFound || line.ends_with(end); });
    return isFound;
}

/// Returns the text with another one in all places.
std::string replaced(std::string text, std::string_view old, std::string_view replacement) {
    for (std::size_t at = 0; (at = text.find(old, at)) != std::string::npos;) {
        text.replace(at, old.size(), replacement);
        at += replacement.size();
    }
    return text;
}

/// Makes one component of a name printable in the texts of an error. A name without any printable
/// character is left alone, because it may be a line end of the text.
void makePrintable(NEBSourceControlError& error, std::string_view name) {
    const std::string shown = printable(name);
    const bool hasOnlyControls =
        std::all_of(name.begin(), name.end(), [](char character) { return character < ' '; });
    if (shown == name || hasOnlyControls) {
        return;
    }
    if (const auto description = error.localizedDescription()) {
        error.userInfo.set(NEBLocalizedDescriptionKey, replaced(*description, name, shown));
    }
    if (error.text) {
        error.text = replaced(*error.text, name, shown);
    }
    for (std::string& file : error.files) {
        file = replaced(file, name, shown);
    }
}

/// Whether the revision is HEAD or counts from it; see gitrevisions(7).
bool beginsWithHEAD(std::string_view revision) {
    for (const std::string_view name : {"HEAD", "@"}) {
        if (revision.starts_with(name) &&
            (revision.size() == name.size() ||
             std::string_view("~^@:").find(revision[name.size()]) != std::string_view::npos)) {
            return true;
        }
    }
    return false;
}

}  // namespace

// ---- failures of git --------------------------------------------------------------------------

std::string silentFailureText(int exitStatus) {
    return "git exited with status " + std::to_string(exitStatus) + " and printed nothing.";
}

CommandOutput failureAbout(const std::vector<std::string>& names,
                           const NEBSourceControlError& error) {
    NEBSourceControlError shown = error;
    for (const std::string& name : names) {
        forEachField(name, '/',
                     [&shown](std::string_view component) { makePrintable(shown, component); });
    }
    CommandOutput failure = failureWith(shown);
    failure.error = error;
    return failure;
}

void describeAccessDeniedHere(NEBSourceControlError& error) {
    constexpr std::pair<NEBConstant, std::int64_t> localClasses[] = {
        {NEBSourceControlPermissionDeniedErrorClass, NEBSourceControlNoPermissionError},
        {NEBSourceControlLocalHookRefusedErrorClass, NEBSourceControlGenericError},
    };
    for (const auto& [errorClass, code] : localClasses) {
        if (error.code == NEBSourceControlAuthenticationError && error.errorClass == errorClass) {
            error.code = code;
            error.userInfo = NEBDictionary{
                {NEBLocalizedDescriptionKey,
                 std::string(NEBSourceControlErrorClassNamed(errorClass)->description)}};
            NEBSourceControlAddAdvice(error);
        }
    }
}

void removeUnansweredQuestions(NEBSourceControlError& error) {
    constexpr std::string_view beginning = "error: unable to read askpass response from '";
    const std::string end = std::string(askpassProgramName) + "'";
    std::string kept;
    forEachLine(error.text.value_or(""), [&](std::string_view line) {
        if (!line.starts_with(beginning) || !line.ends_with(end)) {
            kept.append(line).append("\n");
        }
    });
    if (error.text && kept.size() < error.text->size()) {
        error.text = std::move(kept);
    }
}

CommandOutput failureOfQuery(const GitQueries& git, const ChildOutcome& query,
                             const std::vector<std::string>& names) {
    const std::string stderrText(query.errorOutput);
    if (stderrText.find_first_not_of(" \t\r\n") == std::string::npos) {
        return refusal(query.status.exitStatus()
                           ? silentFailureText(*query.status.exitStatus())
                           : "git failed: " + query.status.description() + ".",
                       exitFailed, classOfSilentFailure(query.status));
    }
    const auto request = newRequest(git.workingCopy(), NEBSourceControlRequestStatus);
    auto error = NEBSourceControlErrorFromText(stderrText, *request);
    describeAccessDeniedHere(error);
    return failureAbout(names, error);
}

void rejectRefusedValue(const RequestResult& result) {
    if (const auto& value = result.refusedValue) {
        const bool isOption = value->value.starts_with('-');
        throw invalidArguments(inQuotes(value->value) + (isOption ? " begins with '-' and" : "") +
                               " is refused, because git would " + std::string(value->danger));
    }
}

std::string textForMissingFile(const WorkingCopyLocation& workingCopy,
                               const NEBSourceControlError& error) {
    constexpr std::string_view noMatch = "did not match any file";
    if (error.files.size() != 1 || error.text.value_or("").find(noMatch) == std::string::npos) {
        return {};
    }
    const std::string& file = error.files.front();
    const std::string path =
        file.starts_with('/') ? file : pathByAppendingComponent(workingCopy.location, file);
    const std::string name = inQuotes(pathAsSeen(workingCopy, path));
    return isAnythingAt(path) ? name + " is not tracked by git."
                              : "The file or folder " + name + " does not exist.";
}

// ---- repositories -----------------------------------------------------------------------------

std::optional<CommandOutput> refusalOutsideRepository(const GitQueries& git) {
    return git.workingCopy().isRepository
               ? std::nullopt
               : std::optional(failureOfQuery(git, git.workingCopy().discovery));
}

std::optional<CommandOutput> refusalOutsideWorkingCopy(const GitQueries& git) {
    return git.workingCopy().isWorkingCopy
               ? std::nullopt
               : std::optional(failureOfQuery(git, git.workingCopy().discovery));
}

std::optional<CommandOutput> refusalWithoutSubversion(const GitQueries& git) {
    if (auto refused = refusalOutsideRepository(git)) {
        return refused;
    }
    if (hasSubversion(git)) {
        return std::nullopt;
    }
    CommandOutput output =
        refusal("This repository is not connected to a Subversion repository.", exitFailed);
    addAdvice(output, "'git svn clone URL' creates a connected repository.");
    return output;
}

// ---- revisions --------------------------------------------------------------------------------

std::optional<CommandOutput> refusalWithoutCommits(const GitQueries& git) {
    if (!git.isWithoutCommits()) {
        return std::nullopt;
    }
    if (const auto broken = brokenReference(git, "HEAD")) {
        return failureWith(*broken);
    }
    const std::string branch = currentBranch(git).value_or("HEAD");
    return refusal("The current branch " + inQuotes(branch) + " does not have any commits yet.",
                   exitFailed, NEBSourceControlNoCommitsYetErrorClass);
}

std::optional<CommandOutput> refusalOfUnbornHEAD(const GitQueries& git,
                                                 const std::string& revision) {
    return beginsWithHEAD(revision) ? refusalWithoutCommits(git) : std::nullopt;
}

std::optional<CommandOutput> refusalOfOtherObject(const GitQueries& git,
                                                  const std::string& revision) {
    const auto type = revision.empty() || revision.starts_with('-')
                          ? std::nullopt
                          : git.outputOf({"cat-file", "-t", revision});
    if (type != "tree" && type != "blob") {
        return std::nullopt;
    }
    return refusal(inQuotes(revision) + " is a " + *type + ", not a commit.", exitFailed,
                   NEBSourceControlRevisionUnknownErrorClass);
}

CommandOutput refusalOfUnknownRevision(const GitQueries& git, const std::string& revision) {
    if (auto unborn = refusalOfUnbornHEAD(git, revision)) {
        return *std::move(unborn);
    }
    if (const auto broken = brokenReference(git, revision)) {
        return failureWith(*broken);
    }
    if (auto other = refusalOfOtherObject(git, revision)) {
        return *std::move(other);
    }
    return refusal("Unknown revision " + inQuotes(revision) + ".", exitFailed,
                   NEBSourceControlRevisionUnknownErrorClass);
}

std::optional<CommandOutput> refusalOfRevision(const GitQueries& git, const std::string& revision) {
    if (revision.starts_with('-')) {
        return std::nullopt;
    }
    if (revision.starts_with('^')) {
        return refusalOfUnknownRevision(git, revision);
    }
    if (git.isKnownCommit(revision)) {
        return std::nullopt;
    }
    const ChildOutcome commit = git.runForCommit(revision);
    if (commit.status.isSuccess()) {
        return std::nullopt;
    }
    return commit.status.exitStatus() == 1 ? refusalOfUnknownRevision(git, revision)
                                           : failureOfQuery(git, commit);
}

CommandOutput refusalOfBranchNotFetched(const GitQueries& git, const TrackedBranch& tracked) {
    const std::string& remote = tracked.remote;
    const std::string reference = std::string(localBranchPrefix) + tracked.branch;
    const ChildOutcome heads = git.run({"ls-remote", "--heads", "--", remote, reference});
    std::string message =
        "The remote " + inQuotes(remote) + " has no branch " + inQuotes(tracked.branch) + ".";
    std::string advice = "nebsc remote branches " + shellQuoted(remote);
    std::string effect = " lists its branches.";
    if (!heads.status.isSuccess()) {
        message = "The fetch from the remote " + inQuotes(remote) + " did not bring the branch " +
                  inQuotes(tracked.branch) + ".";
    } else if (hasLineEndingWith(std::string(heads.output), "\t" + reference)) {
        message = "The remote " + inQuotes(remote) + " has the branch " + inQuotes(tracked.branch) +
                  ", but the setting " + inQuotes("remote." + remote + ".fetch") +
                  " does not fetch it as " + inQuotes(remote + "/" + tracked.branch) + ".";
        advice = "git remote set-branches --add " + shellQuoted(remote) + " " +
                 shellQuoted(tracked.branch);
        effect = " adds it to the setting.";
    }
    CommandOutput output =
        refusal(message, exitFailed, NEBSourceControlRemoteBranchUnknownErrorClass);
    addAdvice(output, inQuotes(advice) + effect);
    return output;
}

// ---- files ------------------------------------------------------------------------------------

std::optional<CommandOutput> refusalOfPathOutside(const GitQueries& git, const std::string& path) {
    const WorkingCopyLocation& workingCopy = git.workingCopy();
    if (liesWithin(path, workingCopy.location)) {
        return std::nullopt;
    }
    return refusal(inQuotes(path) + " is outside the " +
                       (workingCopy.isWorkingCopy ? "working copy " : "repository ") +
                       inQuotes(workingCopy.location) + ".",
                   exitFailed, NEBSourceControlPathOutsideErrorClass);
}

std::optional<CommandOutput> refusalInsideGitFolder(const GitQueries& git,
                                                    const std::string& path) {
    std::error_code ignored;
    const std::string resolved = fs::weakly_canonical(path, ignored).string();
    for (const char* question : {"--git-dir", "--git-common-dir"}) {
        const auto folder = git.outputOf({"rev-parse", "--path-format=absolute", question});
        if (folder && liesWithin(resolved, fs::weakly_canonical(*folder, ignored).string())) {
            return refusal(inQuotes(path) + " is inside the git directory " + inQuotes(*folder) +
                               "; nothing was written.",
                           exitFailed, NEBSourceControlPathInvalidErrorClass);
        }
    }
    return std::nullopt;
}

CommandOutput refusalOfMissingFolder(const std::string& argument) {
    return refusal("The folder " + inQuotes(argument) + " does not exist.", exitFailed,
                   NEBSourceControlDestinationMissingErrorClass);
}

std::optional<CommandOutput> refusalOfExisting(const WorkingCopyLocation& workingCopy,
                                               const std::string& path) {
    if (!isAnythingAt(path)) {
        return std::nullopt;
    }
    return refusal(
        inQuotes(pathAsSeen(workingCopy, path)) + " already exists; nothing was changed.",
        exitFailed, NEBSourceControlDestinationExistsErrorClass);
}

std::optional<CommandOutput> refusalOfBlockedFolder(const WorkingCopyLocation& workingCopy,
                                                    const std::string& folder) {
    fs::path blocking;
    for (const fs::path& component : fs::path(folder)) {
        blocking /= component;
        if (isAnythingAt(blocking.string()) && !isFolder(blocking.string())) {
            CommandOutput output = refusal(inQuotes(pathAsSeen(workingCopy, blocking.string())) +
                                               " exists and is not a folder; nothing was changed.",
                                           exitFailed, NEBSourceControlDestinationExistsErrorClass);
            addAdvice(output, "Choose another folder, or move the existing file away.");
            return output;
        }
    }
    return std::nullopt;
}

CommandOutput refusalAboutFiles(const WorkingCopyLocation& workingCopy, std::string_view text,
                                const std::vector<std::string>& files,
                                std::string_view errorClass) {
    CommandOutput refused = refusal(text, exitFailed, errorClass);
    for (const std::string& file : files) {
        refused.standardError += "    " + shownPath(workingCopy, file) + "\n";
    }
    refused.error->files = files;
    return refused;
}

void addConflicts(CommandOutput& output, const GitQueries& git, std::string_view text) {
    const ChildOutcome conflicts = git.run({"diff", "--name-only", "--diff-filter=U", "-z"});
    if (!conflicts.status.isSuccess()) {
        addFailure(output, failureOfQuery(git, conflicts));
    } else if (!conflicts.output.empty()) {
        addFailure(output, refusalAboutFiles(git.workingCopy(), text, splitAtNUL(conflicts.output),
                                             NEBSourceControlConflictErrorClass));
    }
}

}  // namespace neb::nebsc
