#include <unistd.h>

#include <limits>

#include "CommandFrame/CommandTask.h"
#include "CommandFrame/NameStatusQuery.h"
#include "CommandFrame/RevisionArguments.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/PatchText.h"
#include "Terminal/Presentation.h"
#include "Terminal/StatusLabels.h"

namespace neb::nebsc {

namespace {

class DiffTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    RequestResult perform() override;
    std::string textOfResult(const NEBSourceControlResult& records) override;
    void report(const Outcome& outcome, CommandOutput& output) override;

private:
    [[nodiscard]] bool isFromCommonAncestor() const {
        return arguments().has("--common-ancestor") || _named.dots == "...";
    }
    void restoreBytes(const Outcome& outcome, CommandOutput& output);
    void noteFilesNotCompared(CommandOutput& output);
    [[nodiscard]] std::string lineOf(const NameStatusEntry& entry) const;

    RevisionArguments _named;
    /// Of --name-status.
    std::vector<NameStatusEntry> _entries;
};

std::optional<CommandOutput> DiffTask::validate() {
    _named = readRevisionArguments(
        git(), arguments(), {.revisions = 2, .files = std::numeric_limits<std::size_t>::max()});
    if (_named.refused) {
        return _named.refused;
    }
    if (arguments().has("--common-ancestor") && _named.revisions.size() < 2) {
        return refusal("--common-ancestor needs two revisions.", exitNotUnderstood);
    }
    if (_named.revisions.empty()) {
        if (const std::string head = unambiguousRevision(git(), "HEAD"); head != "HEAD") {
            _named.revisions.push_back(head);
        }
        return refusalWithoutCommits(git());
    }
    return std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> DiffTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestDiff);
    _named.copyTo(*request);
    NEBDictionary options;
    if (arguments().has("--name-status")) {
        options.set(NEBSourceControlRequestOptionDiffFileNameAndStatusOnly, true);
    }
    if (isFromCommonAncestor()) {
        options.set(NEBSourceControlRequestOptionDiffFromCommonAncestor, true);
    }
    request->setOptions(std::move(options));
    return request;
}

/// A program gets the request's outcome, a person names as they are.
RequestResult DiffTask::perform() {
    if (isJSON() || !arguments().has("--name-status")) {
        return performRequest(makeRequest());
    }
    NameStatusQuery query(makeRequest(), isFromCommonAncestor() ? "..." : "..");
    RequestResult requestResult = performOperation(query);
    _entries = query.entries();
    return requestResult;
}

std::string DiffTask::lineOf(const NameStatusEntry& entry) const {
    return statusColumn(statusOfLetter(entry.letter), isInColour()) +
           (entry.oldPath ? shown(*entry.oldPath) + " -> " : "") + shown(entry.path) + "\n";
}

std::string DiffTask::textOfResult(const NEBSourceControlResult& records) {
    const bool isColoured = isInColour();
    std::string lines;
    for (const NEBDictionary& record : records) {
        if (const auto patch = record.value(NEBSourceControlOperationContentKey).string()) {
            lines += patchText(STDOUT_FILENO, *patch, isColoured);
        }
    }
    for (const NameStatusEntry& entry : _entries) {
        lines += lineOf(entry);
    }
    return lines;
}

/// A result is text; a patch of files in another encoding than UTF-8 is had from git once more, as
/// it is, for a program to apply.
void DiffTask::restoreBytes(const Outcome& outcome, CommandOutput& output) {
    constexpr std::string_view replacement = "\uFFFD";
    if (isJSON() || isInColour() || ::isatty(STDOUT_FILENO) == 1 || !outcome.command ||
        arguments().has("--name-status") ||
        output.standardOutput.find(replacement) == std::string::npos) {
        return;
    }
    const ChildOutcome patch = git().run(outcome.command->arguments);
    if (patch.status.isSuccess()) {
        output.standardOutput = std::string(patch.output);
    } else {
        addFailure(output, failureOfQuery(git(), patch));
    }
}

/// git ignores an unknown file and prints no message.
void DiffTask::noteFilesNotCompared(CommandOutput& output) {
    if (isJSON() || _named.revisions.size() > 1) {
        return;
    }
    const std::string revision = _named.revisions.empty() ? "HEAD" : _named.revisions.front();
    for (const std::string& file : _named.files) {
        if (git().isTracked(file) || git().typeOfEntry(revision, file) != "") {
            continue;
        }
        const std::string name = inQuotes(shown(file));
        output.standardError +=
            isAnythingAt(file)
                ? name + " is not tracked, so it is not compared; \"nebsc add\" tracks it.\n"
                : "There is no file or folder " + name + ", neither on disk nor in " +
                      printable(inQuotes(revision)) + ".\n";
    }
}

void DiffTask::report(const Outcome& outcome, CommandOutput& output) {
    restoreBytes(outcome, output);
    noteFilesNotCompared(output);
}

constexpr Parameter parameters[] = {
    {"REVISION", "The one side, HEAD unless given; or both as A..B or A...B",
     Takes::revisionOrPath},
    {"FILE", "The other side, if it is a revision; files or folders to which to keep",
     Takes::revisionOrPath, Occurs::anyNumber},
    {"--name-status", "Only the files' names, and what happened to them"},
    {"--common-ancestor", "Of two revisions: what the second changed since they went apart"},
};

}  // namespace

constinit const Command diffCommand{
    .name = "diff",
    .group = lookGroup,
    .summary = "Show what differs between revisions, or from the working copy",
    .details =
        "Without a revision: all that is not committed, staged or not. With one: from it to\n"
        "the working copy. With two: from the first to the second. A word is a revision, or\n"
        "else a file; \"--\" in front of files, or behind revisions, settles what they are.\n"
        "A file that is not tracked is not compared.\n"
        "On a terminal, control characters are written out, but for TABs and line ends; a\n"
        "program gets the patch as git made it.\n\n"
        "Examples:\n"
        "  nebsc diff                            what is not committed\n"
        "  nebsc diff --name-status main topic   which files two branches have differently\n"
        "  nebsc diff HEAD~3 -- src              what src has become since\n",
    .parameters = parameters,
    .activity = "Comparing",
    .isPaged = true,
    .run = runTask<DiffTask>,
};

}  // namespace neb::nebsc
