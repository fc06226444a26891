#include "GitOperations/GitLog.h"

#include "GitOperations/GitQuotedPath.h"
#include "GitOperations/GitRecentTexts.h"
#include "GitOperations/GitRevision.h"
#include "GitOperations/GitStatus.h"
#include "Platform/Scanner.h"
#include "Platform/Text.h"

namespace neb {

namespace {

/// The number of bytes from which on a log is parsed while git runs.
constexpr std::size_t incrementalSize = 1U << 18;
/// The assumed number of commits of a log that is parsed while git runs.
constexpr std::size_t assumedBlockCount = 4096;
/// The approximate number of bytes per commit.
constexpr std::size_t assumedBlockSize = 256;

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

}  // namespace

/// Parses the blocks of a log, incrementally or at once. Texts are not copied but refer to the log;
/// paths, which repeat, are shared. A long history has many records.
class GitLogOperation::Reader {
public:
    /// For about `count` blocks.
    Reader(std::size_t count, bool withFiles) : _withFiles(withFiles), _paths(count) {
        _records.reserve(count);
    }

    /// Continues up to `end` bytes of `log`, which begins with the bytes of the last call.
    void readTo(std::size_t end, const Data& log) {
        forEachPiece(log.bytes().substr(_parsedSize, end - _parsedSize), '\0',
                     [&](std::string_view block) {
                         if (isUTF8(block)) {
                             readText(log, block);
                         } else {
                             readOtherBytes(log, block);
                         }
                     });
        _parsedSize = end;
    }

    [[nodiscard]] NEBSourceControlResult takeRecords() { return std::move(_records); }
    [[nodiscard]] std::vector<std::string> takeOmittedRevisions() {
        return std::move(_omittedRevisions);
    }

private:
    void readText(const Data& log, std::string_view block) {
        if (!block.empty()) {
            _records.push_back(
                recordOf(log, block, _withFiles ? listIn(block) : std::string_view()));
        }
    }

    /// Returns the position after the last byte that ends a header, as a message may contain that
    /// byte.
    static std::string_view listIn(std::string_view block) {
        std::string_view last;
        forEachPiece(block, endOfHeader, [&last](std::string_view part) { last = part; });
        return last;
    }

    /// File names that are not UTF-8 are quoted; a header that is not UTF-8 is invalid.
    void readOtherBytes(const Data& log, std::string_view block) {
        const std::size_t last = block.rfind(endOfHeader);
        if (last != std::string_view::npos && isUTF8(block.substr(0, last))) {
            _records.push_back(
                recordOf(log, block.substr(0, last), gitTextOfPathLines(block.substr(last + 1))));
        } else {
            Scanner header(textByTrimmingLineEnds(block));
            _omittedRevisions.push_back(
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
        files.reserve(pieceCount(list, '\n'));
        forEachPiece(list, '\n', [this, &files](std::string_view line) {
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

    bool _withFiles;
    GitRecentTexts _paths;
    std::size_t _parsedSize = 0;  // the number of parsed bytes
    NEBSourceControlResult _records;
    std::vector<std::string> _omittedRevisions;
};

GitLogOperation::~GitLogOperation() = default;

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

/// All blocks up to the last NUL byte are complete. Only new bytes are searched for it, as a block
/// may be long.
void GitLogOperation::parseArrivedData(const Data& arrived) {
    const std::string_view fresh = arrived.bytes().substr(_seen);
    if (fresh.size() < incrementalSize) {
        return;
    }
    const std::size_t end = fresh.rfind('\0');
    const std::size_t former = _seen;
    _seen = arrived.size();
    if (end == std::string_view::npos) {
        return;
    }
    if (!_reader) {
        _reader = std::make_unique<Reader>(assumedBlockCount, wantsFilesChanged());
    }
    _reader->readTo(former + end, arrived);
}

void GitLogOperation::parseData() {
    NEBSourceControlResult records;
    std::vector<std::string> omittedRevisions;
    if (data()) {
        if (!_reader) {
            _reader =
                std::make_unique<Reader>(data()->size() / assumedBlockSize, wantsFilesChanged());
        }
        _reader->readTo(data()->size(), *data());
        records = _reader->takeRecords();
        omittedRevisions = _reader->takeOmittedRevisions();
        _reader.reset();
        _seen = 0;
    }
    setResult(std::move(records));
    setOmittedRevisions(std::move(omittedRevisions));
}

}  // namespace neb
