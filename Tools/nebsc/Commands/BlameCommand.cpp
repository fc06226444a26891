#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <memory>

#include "CommandFrame/BlameQuery.h"
#include "CommandFrame/CommandTask.h"
#include "CommandFrame/RecordNames.h"
#include "CommandFrame/RevisionArguments.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/PathString.h"
#include "Platform/Text.h"
#include "Terminal/Colour.h"
#include "Terminal/LocalTime.h"
#include "Terminal/PrintableText.h"
#include "Terminal/Tabs.h"
#include "Terminal/TextWidth.h"

namespace neb::nebsc {

namespace {

/// The printable columns of a line.
struct BlameRow {
    std::string revision;
    std::string author;
    std::string date;
    std::string number;
    std::string content;
};

/// git prints a revision of zeros for such a line.
bool isNotCommitted(std::string_view revision) {
    return revision.find_first_not_of('0') == std::string_view::npos;
}

/// How much of a line goes to the columns before the text.
struct BlameWidths {
    std::size_t revision, author, date;
};

constexpr BlameWidths fullWidths{.revision = 12, .author = std::string::npos, .date = 16};
/// Leaves half of 80 columns to the text. The date is the day.
constexpr BlameWidths narrowWidths{.revision = 8, .author = 12, .date = 10};
/// The narrowest terminal for the full widths.
constexpr std::size_t columnsForFullWidths = 120;

BlameWidths widthsForTerminal() {
    const auto columns = columnsOfTerminal(STDOUT_FILENO);
    return columns && *columns < columnsForFullWidths ? narrowWidths : fullWidths;
}

BlameRow rowOf(const BlamedLine& line, const BlameWidths& widths) {
    BlameRow row{.revision = line.commit->id.substr(0, widths.revision),
                 .author = {},
                 .date = {},
                 .number = printable(line.number),
                 .content = printableLine(line.content)};
    if (isNotCommitted(row.revision)) {
        row.revision.assign(row.revision.size(), '-');
        row.author = "Not committed yet";
    } else {
        row.author = printable(line.commit->author);
        row.date = localMinute(line.commit->date).substr(0, widths.date);
    }
    row.author = truncated(widths.author, row.author);
    return row;
}

std::size_t widest(const std::vector<BlameRow>& rows, std::string BlameRow::*column) {
    std::size_t columns = 0;
    for (const BlameRow& row : rows) {
        columns = std::max(columns, columnsOf(row.*column));
    }
    return columns;
}

/// Returns the line cut to the width of the terminal; unchanged if standard output has no width.
std::string contentOnTerminal(const std::string& content, std::size_t columnsBefore) {
    if (!columnsOfTerminal(STDOUT_FILENO)) {
        return content;
    }
    std::string line = expandTabs(content);
    if (line.ends_with('\r')) {
        line.pop_back();
    }
    return fitting(STDOUT_FILENO, columnsBefore, line);
}

constexpr Parameter fileParameter{"FILE", "The file", Takes::pathAsWritten};

class BlameTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    RepositoryQuestions questions() const override;
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    RequestResult perform() override;
    std::string textFor(const NEBSourceControlError& error) const override;
    std::string textOfResult(const NEBSourceControlResult& records) override;

private:
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> makeAnnotationRequest() const;
    [[nodiscard]] std::string contentOfFile();
    [[nodiscard]] std::vector<BlameRow> rowsOf(const NEBSourceControlResult& records,
                                               const BlameWidths& widths) const;

    std::string _file;
    std::optional<std::string> _revision;
    /// Absent: all lines.
    std::optional<LineRange> _range;
    std::shared_ptr<BlameQuery> _query;
    /// Without a query: the bytes of the file.
    std::string _content;
};

RepositoryQuestions BlameTask::questions() const {
    const std::vector<std::string> all = revisionAndFileArguments(arguments());
    return {.revisions = all.size() > 1 && !isJSON() ? revisionsToAskFor(all.front())
                                                     : std::vector<std::string>{}};
}

/// The last argument is the file, whatever it looks like.
std::optional<CommandOutput> BlameTask::validate() {
    if (const auto lines = arguments().value("--lines")) {
        _range = lineRangeIn(*lines);
        if (!_range) {
            throw invalidValue("--lines",
                               "FIRST,LAST, with LAST not before FIRST, or FIRST,+COUNT");
        }
    }
    const std::vector<std::string> all = revisionAndFileArguments(arguments());
    if (all.empty()) {
        throw UsageError{.kind = UsageError::Kind::missingArgument, .parameter = &fileParameter};
    }
    const PathSearch search = findFile(workingCopy(), all.back());
    if (!search.path) {
        return refusal(search.failure, exitFailed, NEBSourceControlPathInvalidErrorClass);
    }
    _file = *search.path;
    if (all.size() > 1) {
        _revision = all.front();
    }
    if (isJSON() || !mayRunGit()) {
        return std::nullopt;
    }
    return _revision ? refusalOfRevision(git(), *_revision) : refusalWithoutCommits(git());
}

std::shared_ptr<NEBSourceControlRequest> BlameTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestBlame, {_file});
    if (_revision) {
        request->startingRevision = *_revision;
    }
    return request;
}

/// A blame request knows no range.
std::shared_ptr<NEBSourceControlRequest> BlameTask::makeAnnotationRequest() const {
    auto request = newRequest(NEBSourceControlRequestAnnotation, {_file});
    if (_revision) {
        request->startingRevision = *_revision;
    }
    NEBDictionary options;
    options.set(NEBSourceControlRequestOptionFirstLine, _range->first);
    if (_range->last) {
        options.set(NEBSourceControlRequestOptionLastLine, *_range->last);
    }
    request->setOptions(std::move(options));
    return request;
}

/// Not streamed: the columns are as wide as their widest text, and git itself prints nothing before
/// it knows the commits of all lines.
RequestResult BlameTask::perform() {
    if (isJSON()) {
        return performRequest(_range ? makeAnnotationRequest() : makeRequest());
    }
    if (!mayRunGit()) {
        RequestResult result = performRequest(makeRequest());
        if (result.outcome && !result.outcome->error) {
            _content = contentOfFile();
        }
        return result;
    }
    _query = std::make_shared<BlameQuery>(makeRequest(), _range);
    return performRequest(_query->request(), _query);
}

/// git reports "fatal: file NAME has only N lines".
std::string BlameTask::textFor(const NEBSourceControlError& error) const {
    const std::string text = error.text.value_or("");
    constexpr std::string_view mark = " has only ";
    const std::size_t found = text.rfind(mark);
    if (error.errorClass != NEBSourceControlLineUnknownErrorClass || found == std::string::npos) {
        return CommandTask::textFor(error);
    }
    const std::string_view count = std::string_view(text).substr(found + mark.size());
    return "The range begins beyond the end of " + inQuotes(shown(_file)) + ", which has only " +
           std::string(count.substr(0, count.find('\n'))) + ".";
}

/// Returns the bytes of the file that is blamed; empty if they cannot be read.
std::string BlameTask::contentOfFile() {
    if (!_revision) {
        std::ifstream file(_file, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    auto request = newRequest(NEBSourceControlRequestContent, {pathFromTop(workingCopy(), _file)});
    request->startingRevision = *_revision;
    const RequestResult content = performRequest(request);
    const auto& records = content.outcome->result;
    return records && !records->empty()
               ? std::string(
                     bytesOfName(records->front(), {NEBSourceControlOperationContentKey,
                                                    NEBSourceControlOperationContentBytesKey}))
               : std::string();
}

/// The records of a blame request lack the text of the lines.
std::vector<BlameRow> BlameTask::rowsOf(const NEBSourceControlResult& records,
                                        const BlameWidths& widths) const {
    std::vector<std::string> lines;
    forEachLine(_content, [&lines](std::string_view line) { lines.emplace_back(line); });
    std::vector<BlameRow> rows;
    for (const NEBDictionary& record : records) {
        const BlamedCommit commit{
            .id = std::string(record.text(NEBSourceControlOperationRevisionKey)),
            .author = std::string(record.text(NEBSourceControlOperationAuthorKey)),
            .date = record.value(NEBSourceControlOperationDateKey).date().value_or(NEBDate())};
        rows.push_back(
            rowOf({.commit = &commit,
                   .number = std::string(record.text(NEBSourceControlOperationLineNumberKey)),
                   .content = rows.size() < lines.size() ? lines[rows.size()] : std::string()},
                  widths));
    }
    return rows;
}

std::string BlameTask::textOfResult(const NEBSourceControlResult& records) {
    if (isJSON()) {
        return {};
    }
    const BlameWidths widths = widthsForTerminal();
    std::vector<BlameRow> rows;
    if (_query) {
        for (const BlamedLine& line : _query->takeEntries()) {
            rows.push_back(rowOf(line, widths));
        }
    } else {
        rows = rowsOf(records, widths);
    }
    const bool isColoured = isInColour();
    const std::size_t authorColumns = widest(rows, &BlameRow::author);
    const std::size_t dateColumns = widest(rows, &BlameRow::date);
    const std::size_t numberColumns = widest(rows, &BlameRow::number);
    std::string all;
    for (const BlameRow& row : rows) {
        const std::size_t columnsBefore =
            columnsOf(row.revision) + authorColumns + dateColumns + numberColumns + 8;
        all.append(isColoured ? coloured(row.revision, Colour::yellow) : row.revision)
            .append("  ")
            .append(paddedTo(authorColumns, row.author))
            .append("  ")
            .append(paddedTo(dateColumns, row.date))
            .append("  ")
            .append(numberColumns - columnsOf(row.number), ' ')
            .append(row.number)
            .append(row.content.empty() ? "" : "  " + contentOnTerminal(row.content, columnsBefore))
            .append("\n");
    }
    return all;
}

constexpr Parameter parameters[] = {
    {"REVISION",
     "The revision of the file; default: the working copy, or HEAD in a bare repository",
     Takes::revisionOrPath},
    fileParameter,
    {"-L,--lines", "Show only these lines: FIRST,LAST or FIRST,+COUNT", Takes::text,
     Occurs::optionally, "RANGE"},
};

}  // namespace

constinit const Command blameCommand{
    .name = "blame",
    .group = inspectGroup,
    .summary = "Show who last changed each line of a file, and when",
    .details =
        "A single argument is the file. Each line shows the revision, the author, the\n"
        "local date, the line number and the text. A line that is not committed yet has\n"
        "no revision. On a terminal of less than 120 columns, the revision and the author\n"
        "are shortened, and the date is the day.\n"
        "\n"
        "Examples:\n"
        "  nebsc blame src/main.c         the file on disk\n"
        "  nebsc blame v1.0 src/main.c    the file in v1.0\n"
        "  nebsc blame -L 10,20 main.c    only the lines 10 to 20\n",
    .parameters = parameters,
    .activity = "Reading",
    .isPaged = true,
    .run = runTask<BlameTask>,
};

}  // namespace neb::nebsc
