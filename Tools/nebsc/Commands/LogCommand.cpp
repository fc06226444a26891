#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <utility>

#include "CommandFrame/BranchQueries.h"
#include "CommandFrame/CommandTask.h"
#include "CommandFrame/CommitText.h"
#include "CommandFrame/LogEntry.h"
#include "CommandFrame/RevisionArguments.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/Text.h"
#include "Terminal/HistoryGraph.h"
#include "Terminal/LocalTime.h"
#include "Terminal/PrintableText.h"
#include "Terminal/TextWidth.h"

namespace neb::nebsc {

namespace {

/// Returns the number; absent if the text is no number of commits.
std::optional<std::int32_t> countIn(std::string_view text) {
    std::int32_t count = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), count);
    const bool isCount = failure == std::errc() && end == text.data() + text.size() && count >= 0;
    return isCount ? std::optional(count) : std::nullopt;
}

/// An option of the command that only a history request knows.
struct HistoryOption {
    std::string_view parameter;
    NEBConstant option;
};

constexpr HistoryOption flags[] = {
    {"--all", NEBSourceControlRequestOptionAllReferences},
    {"--follow", NEBSourceControlRequestOptionFollow},
    {"--ignore-case", NEBSourceControlRequestOptionIgnoreCase},
    {"--first-parent", NEBSourceControlRequestOptionFirstParent},
};

constexpr HistoryOption texts[] = {
    {"--author", NEBSourceControlRequestOptionSearchAuthor},
    {"--grep", NEBSourceControlRequestOptionSearchMessage},
    {"--content", NEBSourceControlRequestOptionSearchContent},
    {"--since", NEBSourceControlRequestOptionSince},
    {"--until", NEBSourceControlRequestOptionUntil},
};

/// Those that leave out commits between others. Whether the parent of a commit is left out is not
/// known before git comes to it, after the line to it was drawn; git-log(1) draws no lines then.
constexpr std::string_view searches[] = {"--author", "--grep", "--content", "--follow"};

class LogTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    RepositoryQuestions questions() const override;
    bool canRunBesideLocate() const override;
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    RequestResult perform() override { return performStreamed(makeRequest()); }
    std::string textOfResult(const NEBSourceControlResult& records) override;
    void report(const Outcome& outcome, CommandOutput& output) override;

private:
    [[nodiscard]] std::optional<CommandOutput> refusalOfBranch();
    void checkCombinations() const;
    /// Returns whether an option needs a history request. A log request has less to read.
    [[nodiscard]] bool needsHistory() const;
    [[nodiscard]] bool isGraph() const { return arguments().has("--graph"); }
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> makeLogRequest() const;
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> makeHistoryRequest() const;
    [[nodiscard]] std::string textOf(const LogEntry& entry);
    [[nodiscard]] std::string lineOf(const LogEntry& entry, std::size_t columnsBefore);
    [[nodiscard]] std::string blockAndFilesOf(const LogEntry& entry);
    [[nodiscard]] std::string besideGraph(const LogEntry& entry);

    RevisionArguments _named;
    /// The revision that --branch stands for; empty without the option.
    std::string _branch;
    CommitStyle _style;
    /// Whether the branch of the style is known.
    bool _hasBranch = false;
    bool _isFirstBlock = true;
    /// The width of the widest author so far.
    std::size_t _authorColumns = 0;
    HistoryGraph _graph{isInColour()};
};

RepositoryQuestions LogTask::questions() const {
    RepositoryQuestions questions{.revisions = revisionsToAskFor(arguments())};
    if (const auto branch = arguments().value("--branch")) {
        questions.revisions.push_back(std::string(localBranchPrefix) + *branch);
    }
    questions.asksBranch = needsHistory();
    return questions;
}

bool LogTask::canRunBesideLocate() const {
    const auto limit = arguments().value("--limit");
    return revisionAndFileArguments(arguments()).empty() && !arguments().has("--branch") &&
           !arguments().has("--follow") && !isGraph() && (!limit || countIn(*limit));
}

/// git would take the name of a file for that file and show its history.
std::optional<CommandOutput> LogTask::refusalOfBranch() {
    const auto branch = arguments().value("--branch");
    if (!branch) {
        return std::nullopt;
    }
    if (!_named.revisions.empty()) {
        throw invalidArguments("option '--branch' cannot be combined with a revision");
    }
    if (!mayRunGit()) {
        _branch = *branch;
        return std::nullopt;
    }
    // A tag may have the same name.
    const std::string local = std::string(localBranchPrefix) + *branch;
    if (git().isCommit(local)) {
        _branch = local;
        return std::nullopt;
    }
    _branch = unambiguousRevision(git(), *branch);
    return refusalOfRevision(git(), *branch);
}

std::optional<CommandOutput> LogTask::validate() {
    const auto limit = arguments().value("--limit");
    if (limit && !countIn(*limit)) {
        throw invalidValue("--limit", "a number of commits");
    }
    _named = readRevisionArguments(git(), arguments(), {.revisions = 2, .files = 1});
    if (_named.refused) {
        return _named.refused;
    }
    if (_named.revisions.size() == 2 && _named.dots.empty()) {
        throw invalidArguments(
            "expected at most one revision or range; for two revisions write A..B or A...B");
    }
    if (auto refused = refusalOfBranch()) {
        return refused;
    }
    checkCombinations();
    const bool isAboutHEAD =
        _named.revisions.empty() && !arguments().has("--branch") && !arguments().has("--all");
    return isAboutHEAD && !isJSON() ? refusalWithoutCommits(git()) : std::nullopt;
}

void LogTask::checkCombinations() const {
    if (arguments().has("--follow") && _named.files.size() != 1) {
        throw invalidArguments("option '--follow' requires a file");
    }
    if (!isGraph()) {
        return;
    }
    for (const std::string_view search : searches) {
        if (arguments().has(search)) {
            throw invalidArguments("option '--graph' cannot be combined with '" +
                                   std::string(search) +
                                   "', which leaves out the commits that connect the others; "
                                   "without '--graph', it lists what it finds");
        }
    }
}

bool LogTask::needsHistory() const {
    const auto isGiven = [this](const HistoryOption& row) {
        return arguments().has(row.parameter);
    };
    return isGraph() || arguments().has("--decorate") || std::ranges::any_of(flags, isGiven) ||
           std::ranges::any_of(texts, isGiven) ||
           (!isJSON() && mayRunGit() && ::isatty(STDOUT_FILENO) == 1);
}

std::shared_ptr<NEBSourceControlRequest> LogTask::makeRequest() {
    return needsHistory() ? makeHistoryRequest() : makeLogRequest();
}

std::shared_ptr<NEBSourceControlRequest> LogTask::makeLogRequest() const {
    auto request = newRequest(NEBSourceControlRequestLog);
    _named.copyTo(*request);
    // From two revisions the request makes a symmetric difference.
    if (_named.dots == "..") {
        request->startingRevision = _named.revisions[0] + ".." + _named.revisions[1];
        request->endingRevision = {};
    }
    NEBDictionary options;
    if (const auto limit = arguments().value("--limit")) {
        options.set(NEBSourceControlRequestOptionLogOutputLimit, *countIn(*limit));
    }
    if (arguments().has("--branch")) {
        options.set(NEBSourceControlRequestOptionBranch, _branch);
    }
    if (arguments().has("--files")) {
        options.set(NEBSourceControlRequestOptionLogOutputFilesChanged, true);
    }
    request->setOptions(std::move(options));
    return request;
}

/// git reads "A..B" and "A...B" as one revision.
std::shared_ptr<NEBSourceControlRequest> LogTask::makeHistoryRequest() const {
    auto request = newRequest(NEBSourceControlRequestHistory);
    _named.copyTo(*request);
    request->endingRevision = {};
    if (_named.revisions.size() == 2) {
        request->startingRevision = _named.revisions[0] + _named.dots + _named.revisions[1];
    } else if (arguments().has("--branch")) {
        request->startingRevision = _branch;
    }
    NEBDictionary options;
    if (const auto limit = arguments().value("--limit")) {
        options.set(NEBSourceControlRequestOptionLogOutputLimit, *countIn(*limit));
    }
    for (const HistoryOption& row : flags) {
        if (arguments().has(row.parameter)) {
            options.set(row.option, true);
        }
    }
    for (const HistoryOption& row : texts) {
        if (const auto text = arguments().value(row.parameter)) {
            options.set(row.option, *text);
        }
    }
    if (arguments().has("--files")) {
        options.set(NEBSourceControlRequestOptionLogOutputFilesChanged, true);
    }
    if (isGraph()) {
        options.set(NEBSourceControlRequestOptionOrder, "topology");
        options.set(NEBSourceControlRequestOptionRewriteParents, !_named.files.empty());
    }
    request->setOptions(std::move(options));
    return request;
}

// ---- text --------------------------------------------------------------------------------------

/// The column of the authors grows with the records, as a line cannot wait for those that follow.
std::string LogTask::lineOf(const LogEntry& entry, std::size_t columnsBefore) {
    // Only the line of a longer name is out of line.
    constexpr std::size_t widestAuthorColumn = 20;
    std::string author = printable(entry.author);
    _authorColumns = std::max(_authorColumns, std::min(columnsOf(author), widestAuthorColumn));
    author = paddedTo(_authorColumns, author);
    const std::string id = entry.id.substr(0, shownIdLength);
    const std::string middle =
        "  " + (entry.date ? localMinute(*entry.date) : "") + "  " + author + "  ";
    CommitStyle plainStyle = _style;
    plainStyle.isColoured = false;
    const std::string plain = decorationOf(entry, plainStyle);
    const std::string subject = subjectOf(entry.message);
    std::string rest = fitting(STDOUT_FILENO, columnsBefore + columnsOf(printable(id) + middle),
                               plain.empty() ? subject : plain + " " + subject);
    if (rest.starts_with(plain)) {  // not truncated within
        rest.replace(0, plain.size(), decorationOf(entry, _style));
    }
    const std::string line = shownId(id, _style) + middle + rest;
    return line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
}

std::string LogTask::blockAndFilesOf(const LogEntry& entry) {
    const std::string files = filesOf(entry, workingCopy(), _style);
    return blockOf(entry, _style) + (files.empty() ? "" : "\n") + files;
}

std::string LogTask::textOf(const LogEntry& entry) {
    if (isGraph()) {
        return besideGraph(entry);
    }
    if (arguments().has("--full")) {
        return (std::exchange(_isFirstBlock, false) ? "" : "\n") + blockAndFilesOf(entry);
    }
    return lineOf(entry, 0) + filesOf(entry, workingCopy(), _style);
}

/// The first line of the commit stands beside its "*".
std::string LogTask::besideGraph(const LogEntry& entry) {
    std::string row = _graph.rowOf(entry.id, entry.parents) + "  ";
    const std::string text = arguments().has("--full") ? blockAndFilesOf(entry) + "\n"
                                                       : lineOf(entry, _graph.width() + 2) +
                                                             filesOf(entry, workingCopy(), _style);
    std::string all;
    forEachLine(text, [&](std::string_view line) {
        row += line;
        all += row.substr(0, row.find_last_not_of(' ') + 1) + "\n";
        row = _graph.rowBeside() + "  ";
    });
    return all + _graph.rowsBelow();
}

std::string LogTask::textOfResult(const NEBSourceControlResult& records) {
    if (isJSON()) {
        return {};
    }
    const bool isHistory = needsHistory();
    _style = {.isColoured = isInColour(),
              .isDecorated = isHistory && (arguments().has("--decorate") || isGraph() ||
                                           ::isatty(STDOUT_FILENO) == 1),
              .branch = _style.branch};
    if (_style.isDecorated && !std::exchange(_hasBranch, true)) {
        _style.branch = currentBranch(git());
    }
    std::string all;
    for (const NEBDictionary& record : records) {
        all += textOf(isHistory ? entryOfHistoryRecord(record) : entryOfLogRecord(record));
    }
    return all;
}

void LogTask::report(const Outcome& outcome, CommandOutput& output) {
    if (outcome.recordCount == 0U && outcome.result && outcome.omittedRevisions.empty()) {
        output.standardError += "No matching commits.\n";
    }
}

constexpr Parameter parameters[] = {
    {"REVISION", "Where to start, or a range A..B or A...B; default: HEAD", Takes::revisionOrPath},
    {"FILE", "Show only commits that changed this file or folder", Takes::pathAsWritten},
    {"-n,--limit", "Show at most N commits", Takes::text, Occurs::optionally, "N"},
    {"--branch", "Show this branch; cannot be combined with REVISION", Takes::branch,
     Occurs::optionally, "BRANCH"},
    {"--files", "Show the files that each commit changed; renamed files under the old name"},
    {"--full", "Show complete messages, e-mail addresses of authors, and seconds"},
    {"--graph", "Draw how commits follow from each other; parents come after all children"},
    {"--decorate", "Show branches and tags; on a terminal and with --graph they are always shown"},
    {"--all", "Start at all branches, tags and other references too"},
    {"--first-parent", "Follow only the first parent of a merge"},
    {"--follow", "Follow the file FILE beyond renames"},
    {"--author", "Show only commits with this text in name or address of the author", Takes::text,
     Occurs::optionally, "TEXT"},
    {"--grep", "Show only commits with this text in the message", Takes::text, Occurs::optionally,
     "TEXT"},
    {"-S,--content", "Show only commits that change how often this text occurs in a file",
     Takes::text, Occurs::optionally, "TEXT"},
    {"-i,--ignore-case", "Ignore case in the texts to find"},
    {"--since", "Show only commits after this date, such as '2 weeks ago'", Takes::text,
     Occurs::optionally, "DATE"},
    {"--until", "Show only commits before this date", Takes::text, Occurs::optionally, "DATE"},
};

}  // namespace

constinit const Command logCommand{
    .name = "log",
    .group = inspectGroup,
    .summary = "Show commits, newest first",
    .details =
        "Dates are in local time. A..B shows the commits of B that A does not contain,\n"
        "A...B those that only one of the two contains. A single argument is a revision\n"
        "or else a file; put '--' before a file or after a revision if it could be\n"
        "either. Merges have no files of their own. The texts to find are no patterns.\n"
        "With --graph and a file, also shows the merges that connect its commits.\n"
        "\n"
        "Examples:\n"
        "  nebsc log -n 10          the last ten commits\n"
        "  nebsc log --files src    commits that changed something in src, with the files\n"
        "  nebsc log v1.0..v2.0     commits of v2.0 that v1.0 does not contain\n"
        "  nebsc log -- old.c       the history of a deleted file\n"
        "  nebsc log --graph --all  how all branches are related\n"
        "  nebsc log --graph a.c    how the commits of a file follow from each other\n"
        "  nebsc log --author ann --since yesterday\n",
    .parameters = parameters,
    .activity = "Reading the history",
    .isPaged = true,
    .run = runTask<LogTask>,
};

}  // namespace neb::nebsc
