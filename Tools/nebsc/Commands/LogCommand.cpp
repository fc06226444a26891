#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <utility>

#include "CommandFrame/BranchQueries.h"
#include "CommandFrame/CommandTask.h"
#include "CommandFrame/RevisionArguments.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlPathQuoting.h"
#include "Platform/PathString.h"
#include "Platform/Text.h"
#include "Terminal/Colour.h"
#include "Terminal/LocalTime.h"
#include "Terminal/PrintableText.h"
#include "Terminal/StatusLabels.h"
#include "Terminal/TextWidth.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view indent = "    ";

/// Returns the number; absent if the text is no number of commits.
std::optional<std::int32_t> countIn(std::string_view text) {
    std::int32_t count = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), count);
    const bool isCount = failure == std::errc() && end == text.data() + text.size() && count >= 0;
    return isCount ? std::optional(count) : std::nullopt;
}

/// Returns the first paragraph on one line.
std::string subjectOf(std::string_view message) {
    std::string subject;
    bool isAfter = false;
    forEachField(message, '\n', [&](std::string_view line) {
        line = textByTrimmingLineEnds(line);
        isAfter = isAfter || line.empty();
        if (!isAfter) {
            subject.append(subject.empty() ? "" : " ").append(line);
        }
    });
    return printable(subject);
}

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
    [[nodiscard]] std::string revisionColumn(const NEBDictionary& record) const;
    [[nodiscard]] std::string lineOf(const NEBDictionary& record);
    [[nodiscard]] std::string blockOf(const NEBDictionary& record) const;
    [[nodiscard]] std::string filesOf(const NEBDictionary& record) const;

    RevisionArguments _named;
    /// The revision that --branch stands for; empty without the option.
    std::string _branch;
    bool _isColoured = false;
    bool _isFirstBlock = true;
    /// The width of the widest author so far.
    std::size_t _authorColumns = 0;
};

RepositoryQuestions LogTask::questions() const {
    RepositoryQuestions questions{.revisions = revisionsToAskFor(arguments())};
    if (const auto branch = arguments().value("--branch")) {
        questions.revisions.push_back(std::string(localBranchPrefix) + *branch);
    }
    return questions;
}

bool LogTask::canRunBesideLocate() const {
    const auto limit = arguments().value("--limit");
    return revisionAndFileArguments(arguments()).empty() && !arguments().has("--branch") &&
           (!limit || countIn(*limit));
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
    const bool isAboutHEAD = _named.revisions.empty() && !arguments().has("--branch");
    return isAboutHEAD && !isJSON() ? refusalWithoutCommits(git()) : std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> LogTask::makeRequest() {
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
    if (const auto branch = arguments().value("--branch")) {
        options.set(NEBSourceControlRequestOptionBranch, _branch);
    }
    if (arguments().has("--files")) {
        options.set(NEBSourceControlRequestOptionLogOutputFilesChanged, true);
    }
    request->setOptions(std::move(options));
    return request;
}

// ---- text --------------------------------------------------------------------------------------

std::string LogTask::revisionColumn(const NEBDictionary& record) const {
    const std::string revision = printable(record.text(NEBSourceControlOperationRevisionKey));
    return _isColoured ? coloured(revision, Colour::yellow) : revision;
}

/// The column of the authors grows with the records, as a line cannot wait for those that follow.
std::string LogTask::lineOf(const NEBDictionary& record) {
    // Only the line of a longer name is out of line.
    constexpr std::size_t widestAuthorColumn = 20;
    std::string author = printable(record.text(NEBSourceControlOperationAuthorKey));
    _authorColumns = std::max(_authorColumns, std::min(columnsOf(author), widestAuthorColumn));
    author = paddedTo(_authorColumns, author);
    const auto date = record.value(NEBSourceControlOperationDateKey).date();
    const std::string middle = "  " + (date ? localMinute(*date) : "") + "  " + author + "  ";
    const std::size_t columns =
        columnsOf(printable(record.text(NEBSourceControlOperationRevisionKey)) + middle);
    const std::string line = revisionColumn(record) + middle +
                             fitting(STDOUT_FILENO, columns,
                                     subjectOf(record.text(NEBSourceControlOperationMessageKey)));
    return line.substr(0, line.find_last_not_of(' ') + 1) + "\n" + filesOf(record);
}

std::string LogTask::blockOf(const NEBDictionary& record) const {
    const auto date = record.value(NEBSourceControlOperationDateKey).date();
    std::string block =
        "commit " + revisionColumn(record) + "\nAuthor: " +
        printable(std::string(record.text(NEBSourceControlOperationAuthorKey)) + " <" +
                  std::string(record.text(NEBSourceControlOperationAuthorEmailKey)) + ">") +
        "\nDate:   " + (date ? localSecondWithZone(*date) : "") + "\n";
    const std::string_view message = record.text(NEBSourceControlOperationMessageKey);
    if (!message.empty()) {
        block += "\n";
        forEachField(message, '\n', [&block](std::string_view line) {
            line = textByTrimmingLineEnds(line);
            block.append(line.empty() ? "" : indent).append(printableLine(line)).append("\n");
        });
    }
    const std::string files = filesOf(record);
    return block + (files.empty() ? "" : "\n") + files;
}

std::string LogTask::filesOf(const NEBDictionary& record) const {
    std::string lines;
    if (const NEBDictionary* files = record.value(NEBSourceControlOperationFilesKey).dictionary()) {
        for (const NEBDictionary::Entry& entry : *files) {
            lines.append(indent)
                .append(statusColumn(entry.value(), _isColoured))
                .append(shown(NEBSourceControlUnquotedPath(entry.key())))
                .append("\n");
        }
    }
    return lines;
}

std::string LogTask::textOfResult(const NEBSourceControlResult& records) {
    if (isJSON()) {
        return {};
    }
    _isColoured = isInColour();
    std::string all;
    if (arguments().has("--full")) {
        for (const NEBDictionary& record : records) {
            all.append(std::exchange(_isFirstBlock, false) ? "" : "\n").append(blockOf(record));
        }
        return all;
    }
    for (const NEBDictionary& record : records) {
        all += lineOf(record);
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
        "either. Merges have no files of their own.\n"
        "\n"
        "Examples:\n"
        "  nebsc log -n 10          the last ten commits\n"
        "  nebsc log --files src    commits that changed something in src, with the files\n"
        "  nebsc log v1.0..v2.0     commits of v2.0 that v1.0 does not contain\n"
        "  nebsc log -- old.c       the history of a deleted file\n",
    .parameters = parameters,
    .activity = "Reading the history",
    .isPaged = true,
    .run = runTask<LogTask>,
};

}  // namespace neb::nebsc
