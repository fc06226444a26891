#include "GitOperations/GitLog.h"

#include "GitOperations/GitQuotedPath.h"
#include "GitOperations/GitRecentTexts.h"
#include "GitOperations/GitRevision.h"
#include "GitOperations/GitStatus.h"
#include "Platform/Scanner.h"
#include "Platform/Text.h"

namespace neb {

namespace {

/// The approximate number of different paths that one part of a log names.
constexpr std::size_t assumedPathCount = 4096;
/// The size of the buffer from which the C library writes to a pipe. git writes a commit together
/// with the bytes before it: a line end, unless it is the first, and a NUL byte.
constexpr std::size_t bufferSize = 4096;

/// The block of a commit: after a NUL byte, one line each for the abbreviated id, the author's name
/// and e-mail (after .mailmap) and the author's time in seconds since 1970, then the raw message of
/// any number of lines, ended by the byte below. The rest up to the next NUL is the list of changed
/// files. Messages may contain any character.
const std::vector<std::string> fieldPlaceholders{"h", "aN", "aE", "at", "B"};
constexpr char endOfHeader = '\x01';

/// "0" as the ending revision means none.
bool isEnd(const NEBValue& revision) {
    return revision.isPresent() && revision.description() != "0";
}

/// Takes the next line without its line end. Empty when none is left.
std::string_view takeLine(Scanner& scanner) {
    const std::string_view line = scanner.takeUpTo('\n');
    scanner.skipOne('\n');
    return line;
}

/// Parses the seconds, clamped to 32 bits; 0 for invalid text.
NEBDate dateOf(std::string_view seconds) {
    Scanner scanner(seconds);
    scanner.skipSpace();
    return NEBDate(std::chrono::seconds(scanner.takeInteger().value_or(0)));
}

/// Parses the blocks of a log. Texts are not copied but refer to the log; paths, which repeat, are
/// shared. A long history has many records.
class LogParser : public NEBSourceControlRecordParser {
public:
    /// Reports the omitted commits to the operation, which must outlive the parser. `isFlushed`:
    /// git writes each commit at once.
    LogParser(GitLogOperation& operation, bool withFiles, bool isFlushed)
        : NEBSourceControlRecordParser('\0'),
          _operation(operation),
          _withFiles(withFiles),
          _isFlushed(isFlushed),
          _paths(assumedPathCount) {}

protected:
    void parsePiece(const Data& log, std::string_view block,
                    NEBSourceControlResult& records) override {
        ++_blockCount;
        if (isUTF8(block)) {
            parseText(log, block, records);
        } else {
            parseOtherBytes(log, block, records);
        }
    }

    /// A commit that git has flushed is whole if the end of what was written is the end of a
    /// commit, and not of a full buffer of the C library.
    [[nodiscard]] bool isWhole(std::string_view block) const override {
        // A message may be long, and this is called for each part of it that arrives.
        const bool isCommit = (block.back() == endOfHeader || block.back() == '\n') &&
                              block.find(endOfHeader) != std::string_view::npos;
        // The text before the first NUL byte is a block, too.
        const std::size_t separatorSize = _blockCount == 1 ? 1 : 2;
        return _isFlushed && isCommit && (separatorSize + block.size()) % bufferSize != 0;
    }

private:
    void parseText(const Data& log, std::string_view block, NEBSourceControlResult& records) {
        if (!block.empty()) {
            records.push_back(
                recordOf(log, block, _withFiles ? listIn(block) : std::string_view()));
        }
    }

    /// Returns the position after the last byte that ends a header, as a message may contain that
    /// byte.
    static std::string_view listIn(std::string_view block) {
        std::string_view last;
        forEachField(block, endOfHeader, [&last](std::string_view part) { last = part; });
        return last;
    }

    /// File names that are not UTF-8 are quoted; a header that is not UTF-8 is invalid.
    void parseOtherBytes(const Data& log, std::string_view block, NEBSourceControlResult& records) {
        const std::size_t last = block.rfind(endOfHeader);
        if (last != std::string_view::npos && isUTF8(block.substr(0, last))) {
            records.push_back(
                recordOf(log, block.substr(0, last), gitTextOfPathLines(block.substr(last + 1))));
        } else {
            Scanner header(textByTrimmingLineEnds(block));
            _operation.addOmittedRevision(
                textReplacingInvalidBytes(gitAbbreviatedRevision(takeLine(header))));
        }
    }

    /// A missing line counts as empty.
    NEBDictionary recordOf(const Data& log, std::string_view block, std::string_view list) {
        const std::string_view files =
            _withFiles ? textByTrimmingLineEnds(list) : std::string_view();
        NEBDictionary record;
        record.reserve(files.empty() ? 5 : 6);
        Scanner header(textByTrimmingLineEnds(block.substr(0, block.find(endOfHeader))));
        record.set(NEBSourceControlOperationRevisionKey, gitAbbreviatedRevision(takeLine(header)));
        record.set(NEBSourceControlOperationAuthorKey, NEBValue(log, takeLine(header)));
        record.set(NEBSourceControlOperationAuthorEmailKey, NEBValue(log, takeLine(header)));
        record.set(NEBSourceControlOperationDateKey, dateOf(takeLine(header)));
        record.set(NEBSourceControlOperationMessageKey,
                   NEBValue(log, textByTrimmingLineEnds(header.rest())));
        if (!files.empty()) {
            record.set(NEBSourceControlOperationFilesKey, filesOf(files));
        }
        return record;
    }

    /// Parses state and path of each line: "M", TAB, path, or "R094", TAB, old path, TAB, new path.
    /// Skips lines without a TAB.
    NEBDictionary filesOf(std::string_view list) {
        NEBDictionary files;
        files.reserve(fieldCount(list, '\n'));
        forEachField(list, '\n', [this, &files](std::string_view line) {
            Scanner scanner(line);
            const std::string_view letters = scanner.takeUpTo('\t');
            if (letters.size() < line.size()) {
                scanner.skipOne('\t');
                files.setWithSharedKey(_paths.value(scanner.takeUpTo('\t')),
                                       nebgit_sourceControlStatus(letters));
            }
        });
        return files;
    }

    GitLogOperation& _operation;
    bool _withFiles;
    bool _isFlushed;
    std::size_t _blockCount = 0;
    GitRecentTexts _paths;
};

}  // namespace

std::string GitLogOperation::_prettyFormatWithArray(const std::vector<std::string>& placeholders) {
    std::string format = "--pretty=format:%x00%";
    for (const std::string& placeholder : placeholders) {
        format.append(&placeholder == &placeholders.front() ? "" : "%n%").append(placeholder);
    }
    return format;
}

GitLogOperation::GitLogOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    const NEBSourceControlRequest& asked = *this->request();
    std::vector<std::string> arguments{"log", "--abbrev=12"};
    const NEBValue& limit = asked.option(NEBSourceControlRequestOptionLogOutputLimit);
    if (limit.isPresent()) {
        arguments.push_back("-" + limit.description());
    }
    appendRevisions(arguments);
    if (wantsFilesChanged()) {
        arguments.emplace_back("--name-status");
    }
    arguments.push_back(_prettyFormatWithArray(fieldPlaceholders) + endOfHeader);
    if (asked.fileCount() > 0) {
        arguments.emplace_back("--");
        if (asked.files->front().isPresent()) {
            arguments.push_back(asked.files->front().description());
        }
    }
    setArgumentsBehindDefaults(arguments);
    // A log communicates with no other process, starts no program, and may be long.
    setWritesWholeBuffers(true);
    setFlushesForSink(asked.fileCount() > 0 || wantsFilesChanged());
}

/// With three dots, git lists the commits that are reachable from exactly one of the two revisions.
void GitLogOperation::appendRevisions(std::vector<std::string>& arguments) const {
    const NEBValue start = gitRevisionOfCommit(request()->startingRevision);
    const NEBValue& end = request()->endingRevision;
    const NEBValue& branch = request()->option(NEBSourceControlRequestOptionBranch);
    if (isEnd(end)) {
        // A branch is ignored with a range, even one from HEAD.
        arguments.push_back((start.isPresent() ? start.description() : "HEAD") + "..." +
                            end.description());
    } else if (start.isPresent()) {
        arguments.push_back(start.description());
    } else if (branch.isPresent()) {
        arguments.push_back(branch.description());
    }
}

bool GitLogOperation::wantsFilesChanged() const {
    return request()->option(NEBSourceControlRequestOptionLogOutputFilesChanged).boolValue();
}

std::unique_ptr<NEBSourceControlRecordParser> GitLogOperation::makeRecordParser() {
    return std::make_unique<LogParser>(*this, wantsFilesChanged(), flushesForSink());
}

}  // namespace neb
