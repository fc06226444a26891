#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "CommandFrame/CommandTask.h"
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

namespace fs = std::filesystem;

namespace {

/// The printable columns of a line.
struct BlamedLine {
    std::string revision;
    std::string author;
    std::string date;
    std::string number;
};

/// git prints a revision of zeros for such a line.
bool isNotCommitted(std::string_view revision) {
    return !revision.empty() && revision.find_first_not_of('0') == std::string_view::npos;
}

BlamedLine lineOf(const NEBDictionary& record) {
    const auto text = [&record](NEBConstant key) { return printable(record.text(key)); };
    BlamedLine line{.revision = text(NEBSourceControlOperationRevisionKey),
                    .author = text(NEBSourceControlOperationAuthorKey),
                    .date = {},
                    .number = text(NEBSourceControlOperationLineNumberKey)};
    if (isNotCommitted(line.revision)) {
        line.revision.assign(line.revision.size(), '-');
        line.author = "Not committed yet";
    } else if (const auto date = record.value(NEBSourceControlOperationDateKey).date()) {
        line.date = localMinute(*date);
    }
    return line;
}

std::size_t widest(const std::vector<BlamedLine>& lines, std::string BlamedLine::*column) {
    std::size_t columns = 0;
    for (const BlamedLine& line : lines) {
        columns = std::max(columns, columnsOf(line.*column));
    }
    return columns;
}

std::vector<std::string> linesOf(std::string_view content) {
    std::vector<std::string> lines;
    if (!content.empty()) {
        content.remove_suffix(content.ends_with('\n') ? 1 : 0);
        forEachField(content, '\n',
                     [&lines](std::string_view line) { lines.push_back(printableLine(line)); });
    }
    return lines;
}

/// Returns the content of the file; of a symbolic link its target, as git stores it.
std::string contentOnDisk(const std::string& path) {
    std::error_code failure;
    if (fs::is_symlink(fs::symlink_status(path, failure))) {
        return fs::read_symlink(path, failure).string();
    }
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
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
    std::string textOfResult(const NEBSourceControlResult& records) override;

private:
    [[nodiscard]] std::vector<std::string> contents();

    std::string _file;
    std::optional<std::string> _revision;
};

RepositoryQuestions BlameTask::questions() const {
    const std::vector<std::string> all = revisionAndFileArguments(arguments());
    return {.revisions = all.size() > 1 && !isJSON() ? revisionsToAskFor(all.front())
                                                     : std::vector<std::string>{}};
}

/// The last argument is the file, whatever it looks like.
std::optional<CommandOutput> BlameTask::validate() {
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
    if (isJSON()) {
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

std::vector<std::string> BlameTask::contents() {
    if (!_revision && workingCopy().isWorkingCopy) {
        return linesOf(contentOnDisk(_file));
    }
    if (_file.starts_with('/') && !liesWithin(_file, workingCopy().location)) {
        return {};
    }
    return linesOf(
        git().run({"cat-file", "blob", objectAt(git(), _revision.value_or("HEAD"), _file)}).output);
}

std::string BlameTask::textOfResult(const NEBSourceControlResult& records) {
    if (isJSON()) {
        return {};
    }
    std::vector<BlamedLine> lines;
    for (const NEBDictionary& record : records) {
        if (!record.isEmpty()) {
            lines.push_back(lineOf(record));
        }
    }
    // A filter or a concurrent write may change the number of lines; then the lines cannot be
    // matched.
    const std::vector<std::string> content = contents();
    const bool hasContent = content.size() == lines.size();
    const bool isColoured = isInColour();
    const std::size_t authorColumns = widest(lines, &BlamedLine::author);
    const std::size_t dateColumns = widest(lines, &BlamedLine::date);
    const std::size_t numberColumns = widest(lines, &BlamedLine::number);
    std::string all;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const BlamedLine& line = lines[i];
        const bool isLastColumn = !hasContent || content[i].empty();
        const std::size_t columnsBefore =
            columnsOf(line.revision) + authorColumns + dateColumns + numberColumns + 8;
        all.append(isColoured ? coloured(line.revision, Colour::yellow) : line.revision)
            .append("  ")
            .append(paddedTo(authorColumns, line.author))
            .append("  ")
            .append(paddedTo(dateColumns, line.date))
            .append("  ")
            .append(numberColumns - columnsOf(line.number), ' ')
            .append(line.number)
            .append(isLastColumn ? "" : "  " + contentOnTerminal(content[i], columnsBefore))
            .append("\n");
    }
    return all;
}

constexpr Parameter parameters[] = {
    {"REVISION",
     "The revision of the file; default: the working copy, or HEAD in a bare repository",
     Takes::revisionOrPath},
    fileParameter,
};

}  // namespace

constinit const Command blameCommand{
    .name = "blame",
    .group = inspectGroup,
    .summary = "Show who last changed each line of a file, and when",
    .details =
        "A single argument is the file. Each line shows the revision, the author, the\n"
        "local date, the line number and the text. A line that is not committed yet has\n"
        "no revision.\n"
        "\n"
        "Examples:\n"
        "  nebsc blame src/main.c         the file on disk\n"
        "  nebsc blame v1.0 src/main.c    the file in v1.0\n",
    .parameters = parameters,
    .activity = "Reading",
    .isPaged = true,
    .run = runTask<BlameTask>,
};

}  // namespace neb::nebsc
