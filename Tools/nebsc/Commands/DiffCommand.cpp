#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>

#include "CommandFrame/BrokenReference.h"
#include "CommandFrame/CommandTask.h"
#include "CommandFrame/DiffQueries.h"
#include "CommandFrame/FileLines.h"
#include "CommandFrame/RecordNames.h"
#include "CommandFrame/RevisionArguments.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/Colour.h"
#include "Terminal/PatchText.h"
#include "Terminal/PrintableText.h"
#include "Terminal/StatusLabels.h"

namespace neb::nebsc {

namespace {

/// The sums of the counts of all files.
struct Total {
    std::size_t files = 0;
    std::uint64_t added = 0, deleted = 0;

    void add(const LineCountEntry& entry) {
        ++files;
        added += entry.added.value_or(0);
        deleted += entry.deleted.value_or(0);
    }
    [[nodiscard]] std::string line() const {
        return std::to_string(files) + (files == 1 ? " file" : " files") + " changed, " +
               std::to_string(added) + (added == 1 ? " line" : " lines") + " added, " +
               std::to_string(deleted) + " deleted\n";
    }
};

class DiffTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    RepositoryQuestions questions() const override {
        return {.revisions = revisionsToAskFor(arguments())};
    }
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    RequestResult perform() override;
    std::string textOfResult(const NEBSourceControlResult& records) override;
    void report(const Outcome& outcome, CommandOutput& output) override;

private:
    [[nodiscard]] bool isFromCommonAncestor() const {
        return arguments().has("--common-ancestor") || _named.dots == "...";
    }
    /// Compares with the empty tree if there is no commit yet. Refuses if HEAD is broken.
    [[nodiscard]] std::optional<CommandOutput> compareWithNothing();
    void noteFilesNotCompared(const Outcome& outcome, CommandOutput& output);
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> makeChangesRequest() const;
    [[nodiscard]] std::string lineOf(const NameStatusEntry& entry) const;
    [[nodiscard]] std::string lineOf(const LineCountEntry& entry);
    [[nodiscard]] std::string patchIn(const NEBSourceControlResult& records);
    [[nodiscard]] std::string countColumn(char sign, std::optional<std::uint64_t> count,
                                          Colour colour) const;

    RevisionArguments _named;
    bool _isWithoutCommits = false;
    /// One of the three is present, unless the command prints JSON.
    std::shared_ptr<NameStatusQuery> _names;
    std::shared_ptr<LineCountQuery> _counts;
    std::shared_ptr<PatchQuery> _patch;
    PatchText _patchText{STDOUT_FILENO, isInColour()};
    Total _total;
};

std::optional<CommandOutput> DiffTask::validate() {
    _named = readRevisionArguments(
        git(), arguments(), {.revisions = 2, .files = std::numeric_limits<std::size_t>::max()});
    if (_named.refused) {
        return _named.refused;
    }
    if (arguments().has("--common-ancestor") && _named.revisions.size() < 2) {
        throw invalidArguments("option '--common-ancestor' requires two revisions");
    }
    if (arguments().has("--staged") && _named.revisions.size() > 1) {
        throw invalidArguments("option '--staged' cannot be combined with two revisions");
    }
    if (arguments().has("--stat") && arguments().has("--name-status")) {
        throw invalidArguments("option '--stat' cannot be combined with '--name-status'");
    }
    if (mayRunGit() && _named.revisions.empty() && !arguments().has("--staged")) {
        if (const std::string head = unambiguousRevision(git(), "HEAD"); head != "HEAD") {
            _named.revisions.push_back(head);
        }
        return compareWithNothing();
    }
    return std::nullopt;
}

/// Before the first commit, everything that is tracked is new. git knows the empty tree, whose id
/// depends on the format of the repository, even if nothing has written it.
std::optional<CommandOutput> DiffTask::compareWithNothing() {
    if (!git().isWithoutCommits()) {
        return std::nullopt;
    }
    const auto emptyTree = brokenReference(git(), "HEAD")
                               ? std::nullopt
                               : git().outputOf({"hash-object", "-t", "tree", "/dev/null"});
    if (!emptyTree) {
        return refusalWithoutCommits(git());
    }
    _named.revisions = {*emptyTree};
    _isWithoutCommits = true;
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

/// A diff request knows neither the index nor counts of lines.
std::shared_ptr<NEBSourceControlRequest> DiffTask::makeChangesRequest() const {
    auto request = newRequest(NEBSourceControlRequestChanges);
    _named.copyTo(*request);
    if (_named.revisions.empty() && !arguments().has("--staged")) {
        request->startingRevision = "HEAD";
    }
    NEBDictionary options;
    if (arguments().has("--staged")) {
        options.set(NEBSourceControlRequestOptionStaged, true);
    }
    if (isFromCommonAncestor()) {
        options.set(NEBSourceControlRequestOptionDiffFromCommonAncestor, true);
    }
    request->setOptions(std::move(options));
    return request;
}

/// The queries keep every byte; the request does not.
RequestResult DiffTask::perform() {
    if (isJSON()) {
        const bool isExtended = arguments().has("--staged") || arguments().has("--stat");
        return performRequest(isExtended ? makeChangesRequest() : makeRequest());
    }
    if (!mayRunGit()) {
        return performStreamed(makeRequest());
    }
    const DiffSides sides{.dots = isFromCommonAncestor() ? "..." : "..",
                          .isStaged = arguments().has("--staged")};
    if (arguments().has("--stat")) {
        _counts = std::make_shared<LineCountQuery>(makeRequest(), sides);
        return performStreamed(*_counts);
    }
    if (arguments().has("--name-status")) {
        _names = std::make_shared<NameStatusQuery>(makeRequest(), sides);
        return performStreamed(*_names);
    }
    _patch = std::make_shared<PatchQuery>(makeRequest(), sides);
    return performStreamed(_patch->request(), _patch);
}

std::string DiffTask::lineOf(const NameStatusEntry& entry) const {
    return statusColumn(statusOfLetter(entry.letter), isInColour()) +
           (entry.oldPath ? shown(*entry.oldPath) + " -> " : "") + shown(entry.path) + "\n";
}

std::string DiffTask::patchIn(const NEBSourceControlResult& records) {
    std::string patch;
    for (const NEBDictionary& record : records) {
        patch += bytesOfName(record, {NEBSourceControlOperationContentKey,
                                      NEBSourceControlOperationContentBytesKey});
    }
    return _patchText.textOf(std::move(patch));
}

std::string DiffTask::countColumn(char sign, std::optional<std::uint64_t> count,
                                  Colour colour) const {
    constexpr std::size_t columns = 7;
    const std::string text = count ? sign + std::to_string(*count) : "binary";
    const std::string blanks(columns - std::min(columns, text.size()), ' ');
    const bool isColoured = isInColour() && count.value_or(0) > 0;
    return blanks + (isColoured ? coloured(text, colour) : text);
}

std::string DiffTask::lineOf(const LineCountEntry& entry) {
    _total.add(entry);
    return countColumn('+', entry.added, Colour::green) +
           (entry.deleted ? countColumn('-', entry.deleted, Colour::red) : std::string(7, ' ')) +
           "  " + (entry.oldPath ? shown(*entry.oldPath) + " -> " : "") + shown(entry.path) + "\n";
}

/// The records are those of a plug-in that is not for git; the queries have none.
std::string DiffTask::textOfResult(const NEBSourceControlResult& records) {
    if (!mayRunGit() && !isJSON()) {
        return arguments().has("--name-status") ? linesOfFiles(records, workingCopy(), isInColour())
                                                : patchIn(records);
    }
    std::string lines = _patch ? _patchText.textOf(_patch->takeLines()) : "";
    if (_names) {
        for (const NameStatusEntry& entry : _names->takeEntries()) {
            lines += lineOf(entry);
        }
    }
    if (_counts) {
        for (const LineCountEntry& entry : _counts->takeEntries()) {
            lines += lineOf(entry);
        }
    }
    return lines;
}

/// git ignores an unknown file silently. Output about a single file shows that git knows it.
void DiffTask::noteFilesNotCompared(const Outcome& outcome, CommandOutput& output) {
    const bool hasCompared = _named.files.size() == 1 && outcome.recordCount.value_or(0) > 0;
    if (isJSON() || !mayRunGit() || _named.revisions.size() > 1 || hasCompared) {
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
                ? name + " is untracked and was not compared; 'nebsc add' tracks it.\n"
                : name + " exists neither on disk nor in " +
                      (_isWithoutCommits ? "the index" : printable(inQuotes(revision))) + ".\n";
    }
}

void DiffTask::report(const Outcome& outcome, CommandOutput& output) {
    if (_total.files > 0) {
        output.standardOutput += _total.line();
    }
    noteFilesNotCompared(outcome, output);
}

constexpr Parameter parameters[] = {
    {"REVISION", "The first revision, or a range A..B or A...B; default: HEAD",
     Takes::revisionOrPath},
    {"FILE", "The second revision, or the files and folders to compare", Takes::revisionOrPath,
     Occurs::anyNumber},
    {"--staged", "Compare with the index: show what the next commit changes"},
    {"--stat", "Show only how many lines each file gained and lost, and the total"},
    {"--name-status", "Show only the names and states of files"},
    {"--common-ancestor", "Compare the second revision with the common ancestor of both"},
};

}  // namespace

constinit const Command diffCommand{
    .name = "diff",
    .group = inspectGroup,
    .summary = "Show changes between revisions, or between a revision and the working copy",
    .details =
        "Without a revision, shows everything that is not committed, staged or not. With\n"
        "one revision, shows the changes from it to the working copy; with two, from the\n"
        "first to the second. An argument is a revision or else a file; put '--' before\n"
        "files or after revisions if it could be either. Untracked files are not\n"
        "compared. On a terminal, control characters other than TABs and line ends are\n"
        "escaped. Elsewhere the patch is exactly git's, for a program to apply.\n"
        "\n"
        "Examples:\n"
        "  nebsc diff                             what is not committed\n"
        "  nebsc diff --staged                    what the next commit changes\n"
        "  nebsc diff --stat v1.0 v2.0            counts of lines per file\n"
        "  nebsc diff --name-status main topic    which files differ between two branches\n"
        "  nebsc diff HEAD~3 -- src               changes in src since HEAD~3\n",
    .parameters = parameters,
    .activity = "Comparing",
    .isPaged = true,
    .run = runTask<DiffTask>,
};

}  // namespace neb::nebsc
