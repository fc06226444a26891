#include "GitOperations/GitLog.h"

#include "GitOperations/GitQuotedPath.h"
#include "GitOperations/GitRecentTexts.h"
#include "GitOperations/GitRevision.h"
#include "GitOperations/GitStatus.h"
#include "Platform/Scanner.h"
#include "Platform/Text.h"

namespace neb {

namespace {

/// A log of fewer bytes is read in one go, at its end.
constexpr std::size_t worthReadingAhead = 1U << 18;
/// What a log that is read ahead is sized for: how long it will be nobody knows.
constexpr std::size_t manyBlocks = 4096;
/// About how many bytes a commit takes.
constexpr std::size_t usualBlock = 256;

/// What a commit's block begins with, each on a line of its own: the abbreviated name, the author's
/// name and e-mail by the mail map, the seconds since 1970 at which it was written, and the raw
/// message, of many lines. A NUL byte stands in front of the block; the byte below ends it, and
/// what follows up to the next NUL is the list of changed files. So a message may hold anything.
const std::vector<std::string> fieldPlaceholders{"h", "aN", "aE", "at", "B"};
constexpr char endOfHeader = '\x01';

/// "0" as the end of a range means that there is none.
bool isEnd(const NEBValue& revision) {
    return revision.isPresent() && revision.description() != "0";
}

/// Takes the next line; the line end goes with it. Empty when none is left.
std::string_view takeLine(Scanner& scanner) {
    const std::string_view line = scanner.takeUpTo('\n');
    scanner.skipOne('\n');
    return line;
}

/// The seconds are read as 32 bits and no more: the nearest such number where that is not enough,
/// 0 where there is none.
NEBDate dateOf(std::string_view seconds) {
    Scanner scanner(seconds);
    scanner.skipSpace();
    return NEBDate(std::chrono::seconds(scanner.takeInteger().value_or(0)));
}

}  // namespace

/// Reads the blocks of one log, as they come or all at once. The texts are pieces of the log, and
/// nothing is copied but the paths: those are the same in many blocks, and so are shared. A long
/// history has many records.
class GitLogOperation::Reader {
public:
    /// Of a log of about so many blocks.
    Reader(std::size_t count, bool withFiles) : _withFiles(withFiles), _paths(count) {
        _records.reserve(count);
    }

    /// Reads on, up to so many bytes of `log`, which begins as it did in the last call.
    void readTo(std::size_t end, const Data& log) {
        forEachPiece(log.bytes().substr(_place, end - _place), '\0', [&](std::string_view block) {
            if (isUTF8(block)) {
                readText(log, block);
            } else {
                readOtherBytes(log, block);
            }
        });
        _place = end;
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

    /// Returns what follows the last byte that ends a header: the message may hold one too.
    static std::string_view listIn(std::string_view block) {
        std::string_view last;
        forEachPiece(block, endOfHeader, [&last](std::string_view piece) { last = piece; });
        return last;
    }

    /// The names of files that are not UTF-8 have a spelling that is; a header has none.
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

    /// A line that is missing is taken for an empty one.
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

    /// The state and path in each line: "M", TAB, path, or "R094", TAB, old path, TAB, new path. A
    /// line without a TAB is none of git's.
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
    std::size_t _place = 0;  // how many bytes have been read
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
    // A log talks with nobody, starts no program, and may be long.
    setWritesWholeBuffers(true);
}

/// Three dots: git then lists what is in either of the two and not in both.
void GitLogOperation::appendRevisions(std::vector<std::string>& arguments) const {
    const NEBValue start = gitRevisionOfCommit(request()->startingRevision);
    const NEBValue& end = request()->endingRevision;
    const NEBValue& branch = request()->option(NEBSourceControlRequestOptionBranch);
    if (isEnd(end)) {
        // A branch has no say in a range, not even in one from HEAD.
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

/// Up to the last NUL byte all blocks are whole. It is looked for in what is new alone: a block may
/// be long.
void GitLogOperation::parseArrivedData(const Data& arrived) {
    const std::string_view fresh = arrived.bytes().substr(_seen);
    if (fresh.size() < worthReadingAhead) {
        return;
    }
    const std::size_t end = fresh.rfind('\0');
    const std::size_t former = _seen;
    _seen = arrived.size();
    if (end == std::string_view::npos) {
        return;
    }
    if (!_reader) {
        _reader = std::make_unique<Reader>(manyBlocks, wantsFilesChanged());
    }
    _reader->readTo(former + end, arrived);
}

void GitLogOperation::parseData() {
    NEBSourceControlResult records;
    std::vector<std::string> omittedRevisions;
    if (data()) {
        if (!_reader) {
            _reader = std::make_unique<Reader>(data()->size() / usualBlock, wantsFilesChanged());
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
