#include "GitExtensions/GitAnnotation.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <utility>

#include "GitExtensions/GitRecordFields.h"
#include "GitOperations/GitRevision.h"
#include "NEBFoundation/NEBSourceControlPathQuoting.h"
#include "Platform/Scanner.h"
#include "Platform/Text.h"

namespace neb {

namespace {

// ---- the format -------------------------------------------------------------------------------

/// Reads "<ann@example.org>".
void setEmail(NEBDictionary& record, NEBConstant key, const Data& output, std::string_view field) {
    gitSetText(record, key, output, trimmed(field, "<>"));
}

/// What a line "NAME VALUE" before the text of a line says about its commit. git prints it once for
/// each commit.
struct Header {
    std::string_view name;
    void (*set)(NEBDictionary& commit, const Data& output, std::string_view value);
};

template <const NEBConstant& key>
void setText(NEBDictionary& commit, const Data& output, std::string_view value) {
    gitSetText(commit, key, output, value);
}
template <const NEBConstant& key>
void setMail(NEBDictionary& commit, const Data& output, std::string_view value) {
    setEmail(commit, key, output, value);
}
template <const NEBConstant& key>
void setSeconds(NEBDictionary& commit, const Data& /*output*/, std::string_view value) {
    gitSetInteger(commit, key, value);
}
template <const NEBConstant& key>
void setZone(NEBDictionary& commit, const Data& /*output*/, std::string_view value) {
    gitSetTimeZone(commit, key, value);
}

constexpr Header headers[] = {
    {"author", setText<NEBSourceControlOperationAuthorKey>},
    {"author-mail", setMail<NEBSourceControlOperationAuthorEmailKey>},
    {"author-time", setSeconds<NEBSourceControlOperationAuthorTimeKey>},
    {"author-tz", setZone<NEBSourceControlOperationAuthorTimeOffsetKey>},
    {"committer", setText<NEBSourceControlOperationCommitterKey>},
    {"committer-mail", setMail<NEBSourceControlOperationCommitterEmailKey>},
    {"committer-time", setSeconds<NEBSourceControlOperationCommitterTimeKey>},
    {"committer-tz", setZone<NEBSourceControlOperationCommitterTimeOffsetKey>},
    {"summary", setText<NEBSourceControlOperationSubjectKey>},
    {"boundary",
     [](NEBDictionary& commit, const Data& /*output*/, std::string_view /*value*/) {
         commit.set(NEBSourceControlOperationIsBoundaryKey, true);
     }},
    {"previous",
     [](NEBDictionary& commit, const Data& output, std::string_view value) {
         gitSetText(commit, NEBSourceControlOperationPreviousIDKey, output,
                    value.substr(0, value.find(' ')));
     }},
    {"filename",
     [](NEBDictionary& commit, const Data& /*output*/, std::string_view value) {
         gitSetQuotedName(commit, gitOriginalPathKeys, value);
     }},
};

constexpr std::string_view filename = "filename";

// ---- the parser -------------------------------------------------------------------------------

bool isObjectID(std::string_view text) {
    constexpr std::size_t sha1Digits = 40;
    constexpr std::size_t sha256Digits = 64;
    return (text.size() == sha1Digits || text.size() == sha256Digits) &&
           text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

/// Reads lines: "ID ORIGINAL FINAL [COUNT]", where only the first line of a group has the count,
/// then headers, then TAB and the text of the line.
class AnnotationParser : public NEBSourceControlRecordParser {
public:
    AnnotationParser() : NEBSourceControlRecordParser('\n') {}

protected:
    void parsePiece(const Data& output, std::string_view line,
                    NEBSourceControlResult& records) override {
        if (line.starts_with('\t')) {
            _lines.push_back(gitTextOrBytes(output, line.substr(1)));
            _isTextNext = false;
        } else if (_isTextNext) {
            parseHeader(output, line);
        } else {
            beginLine(line, records);
        }
    }

    /// What no line end ends is incomplete.
    void parseLastPiece(const Data& /*output*/, std::string_view /*line*/,
                        NEBSourceControlResult& records) override {
        addGroup(records);
    }

private:
    void beginLine(std::string_view line, NEBSourceControlResult& records) {
        Scanner scanner(line);
        const auto takeField = [&scanner] {
            const std::string_view field = scanner.takeUpTo(' ');
            scanner.skipOne(' ');
            return field;
        };
        const std::string_view id = takeField();
        if (!isObjectID(id)) {
            return;
        }
        _isTextNext = true;
        const std::string_view original = takeField();
        const std::string_view final = takeField();
        const std::string_view count = scanner.rest();
        if (count.empty()) {
            return;
        }
        addGroup(records);
        _commit = &_commits[std::string(id)];
        _id = id;
        gitSetInteger(_group, NEBSourceControlOperationFirstLineKey, final);
        gitSetInteger(_group, NEBSourceControlOperationLineCountKey, count);
        gitSetInteger(_group, NEBSourceControlOperationOriginalLineKey, original);
    }

    /// git repeats the file name of a commit whose lines come from several files.
    void parseHeader(const Data& output, std::string_view line) {
        const std::string_view name = line.substr(0, line.find(' '));
        const auto* header = std::ranges::find(headers, name, &Header::name);
        if (_commit == nullptr || header == std::end(headers)) {
            return;
        }
        const std::string_view value = line.substr(std::min(name.size() + 1, line.size()));
        // An id of zeros stands for lines that are not committed, by an author of git's invention.
        const bool isCommitted = _id.find_first_not_of('0') != std::string::npos;
        if (isCommitted || name == filename) {
            header->set(*_commit, output, value);
        }
    }

    void addGroup(NEBSourceControlResult& records) {
        if (_commit == nullptr) {
            return;
        }
        NEBDictionary& record = records.emplace_back(std::exchange(_group, {}));
        record.set(NEBSourceControlOperationLinesKey, std::exchange(_lines, {}));
        if (_id.find_first_not_of('0') == std::string::npos) {
            record.set(NEBSourceControlOperationIsUncommittedKey, true);
        } else {
            record.set(NEBSourceControlOperationObjectIDKey, _id);
        }
        record.addEntriesFrom(*_commit);
        _commit = nullptr;
    }

    std::unordered_map<std::string, NEBDictionary> _commits;  // their headers, by id
    NEBDictionary _group;
    std::vector<NEBValue> _lines;      // of the group
    NEBDictionary* _commit = nullptr;  // of the group; null before the first one
    std::string _id;                   // of that commit
    bool _isTextNext = false;          // headers or the text of a line follow
};

/// Returns "-L FIRST,LAST", where both are optional, as one argument; empty for the whole file.
std::string rangeOption(const NEBSourceControlRequest& request) {
    const NEBValue& first = request.option(NEBSourceControlRequestOptionFirstLine);
    const NEBValue& last = request.option(NEBSourceControlRequestOptionLastLine);
    if (!first.isPresent() && !last.isPresent()) {
        return {};
    }
    return "-L" + (first.isPresent() ? first.description() : "1") + "," +
           (last.isPresent() ? last.description() : "");
}

}  // namespace

GitAnnotationOperation::GitAnnotationOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitReadingOperation(std::move(request)) {
    const NEBSourceControlRequest& asked = *this->request();
    requireFile();
    requireInteger(NEBSourceControlRequestOptionFirstLine, 1);
    requireInteger(NEBSourceControlRequestOptionLastLine, 1);
    std::vector<std::string> arguments{"blame", "--porcelain", "--root"};
    constexpr std::pair<NEBConstant, std::string_view> switches[] = {
        {NEBSourceControlRequestOptionIgnoreWhiteSpace, "-w"},
        {NEBSourceControlRequestOptionDetectMoves, "-M"},
        {NEBSourceControlRequestOptionDetectCopies, "-C"},
    };
    for (const auto& [option, argument] : switches) {
        if (asked.option(option).boolValue()) {
            arguments.emplace_back(argument);
        }
    }
    if (std::string range = rangeOption(asked); !range.empty()) {
        arguments.push_back(std::move(range));
    }
    if (const NEBValue& content = asked.option(NEBSourceControlRequestOptionContent);
        content.isPresent()) {
        arguments.insert(arguments.end(), {"--contents", "-"});
        setInput(content.bytes() != nullptr ? *content.bytes() : Data(content.description()));
    }
    appendIfPresent(arguments, gitRevisionOfCommit(asked.startingRevision));
    appendPaths(arguments);
    setArgumentsBehindDefaults(arguments);
}

std::unique_ptr<NEBSourceControlRecordParser> GitAnnotationOperation::makeRecordParser() {
    return std::make_unique<AnnotationParser>();
}

}  // namespace neb
