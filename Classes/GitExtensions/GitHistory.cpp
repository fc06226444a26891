#include "GitExtensions/GitHistory.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "GitExtensions/GitChangedFiles.h"
#include "GitExtensions/GitRecordFields.h"
#include "GitOperations/GitRevision.h"
#include "Platform/Scanner.h"
#include "Platform/Text.h"

namespace neb {

namespace {

// ---- the format -------------------------------------------------------------------------------

constexpr GitTimeKeys authorTimeKeys{NEBSourceControlOperationAuthorTimeKey,
                                     NEBSourceControlOperationAuthorTimeOffsetKey};
constexpr GitTimeKeys committerTimeKeys{NEBSourceControlOperationCommitterTimeKey,
                                        NEBSourceControlOperationCommitterTimeOffsetKey};

/// Reads ids with a blank between them.
void setParents(NEBDictionary& record, const Data& output, std::string_view ids) {
    if (!ids.empty()) {
        std::vector<NEBValue> parents;
        forEachField(ids, ' ',
                     [&](std::string_view id) { parents.push_back(gitTextOrBytes(output, id)); });
        record.set(NEBSourceControlOperationParentsKey, std::move(parents));
    }
}

/// Reads "HEAD -> refs/heads/main, tag: refs/tags/v1, refs/remotes/origin/main". A name of a
/// reference has no blank. "grafted" marks a commit whose parents are missing, "replaced" another
/// commit in the place of this one.
void setReferences(NEBDictionary& record, const Data& output, std::string_view decoration) {
    std::vector<NEBValue> references;
    constexpr std::string_view separator = ", ";
    constexpr std::string_view headPrefix = "HEAD -> ";
    constexpr std::string_view tagPrefix = "tag: ";
    while (!decoration.empty()) {
        const std::size_t end = decoration.find(separator);
        std::string_view name = decoration.substr(0, end);
        decoration.remove_prefix(end == std::string_view::npos ? decoration.size()
                                                               : end + separator.size());
        if (name == "HEAD" || name.starts_with(headPrefix)) {
            record.set(NEBSourceControlOperationIsHEADKey, true);
            name.remove_prefix(std::min(name.size(), headPrefix.size()));
        } else if (name.starts_with(tagPrefix)) {
            name.remove_prefix(tagPrefix.size());
        }
        if (name == "grafted") {
            record.set(NEBSourceControlOperationIsGraftedKey, true);
        } else if (name.starts_with("refs/")) {
            references.push_back(gitTextOrBytes(output, name));
        }
    }
    if (!references.empty()) {
        record.set(NEBSourceControlOperationReferencesKey, std::move(references));
    }
}

template <const NEBConstant& key>
void setText(NEBDictionary& record, const Data& output, std::string_view field) {
    gitSetText(record, key, output, field);
}

template <const GitTimeKeys& keys>
void setTime(NEBDictionary& record, const Data& /*output*/, std::string_view field) {
    gitSetTime(record, keys, field);
}

/// A field of a commit, and how it is written into the record.
struct Field {
    std::string_view placeholder;
    void (*set)(NEBDictionary& record, const Data& output, std::string_view field);
};

/// The fields after the mark, each on a line of its own. The body, the only one that can contain a
/// line end, is the last one.
constexpr Field fields[] = {
    {"%H", setText<NEBSourceControlOperationObjectIDKey>},
    {"%P", setParents},
    {"%D", setReferences},
    {"%aN", setText<NEBSourceControlOperationAuthorKey>},
    {"%aE", setText<NEBSourceControlOperationAuthorEmailKey>},
    {"%ad", setTime<authorTimeKeys>},
    {"%cN", setText<NEBSourceControlOperationCommitterKey>},
    {"%cE", setText<NEBSourceControlOperationCommitterEmailKey>},
    {"%cd", setTime<committerTimeKeys>},
    {"%s", setText<NEBSourceControlOperationSubjectKey>},
    {"%b", setText<NEBSourceControlOperationBodyKey>},
};

/// Whether git left the placeholder of an author or committer as it is, because the line in the
/// commit is malformed.
bool isUnknownPerson(const Field& field, std::string_view text) {
    return text == field.placeholder && (text.starts_with("%a") || text.starts_with("%c"));
}

/// Begins each commit. A changed file begins with ":" or a count of lines.
constexpr std::string_view mark = "commit ";

std::string formatOption() {
    std::string format = "--format=tformat:" + std::string(mark);
    for (const Field& field : fields) {
        format.append(&field == std::begin(fields) ? "" : "%n").append(field.placeholder);
    }
    return format;
}

// ---- the parser -------------------------------------------------------------------------------

/// Reads commits, each followed by the pieces of its changed files.
class HistoryParser : public GitNULRecordParser {
public:
    /// Without files, a commit is complete at its own end.
    explicit HistoryParser(bool hasFiles) : _hasFiles(hasFiles) {}

protected:
    void parsePiece(const Data& output, std::string_view piece,
                    NEBSourceControlResult& records) override {
        if (!_files.isInsideEntry() && piece.starts_with(mark)) {
            finish(records);
            _commit = commitOf(output, piece.substr(mark.size()));
            if (!_hasFiles) {
                finish(records);
            }
        } else {
            _files.parsePiece(output, piece);
        }
    }
    void finish(NEBSourceControlResult& records) override {
        if (_commit) {
            if (std::vector<NEBValue> files = _files.take(); !files.empty()) {
                _commit->set(NEBSourceControlOperationChangesKey, std::move(files));
            }
            records.push_back(std::move(*_commit));
            _commit.reset();
        }
    }

private:
    /// A field that is missing counts as empty.
    static NEBDictionary commitOf(const Data& output, std::string_view text) {
        NEBDictionary commit;
        commit.reserve(std::size(fields) + 2);
        Scanner scanner(text);
        for (const Field& field : fields) {
            const bool isLast = &field == std::end(fields) - 1;
            const std::string_view value =
                isLast ? textByTrimmingLineEnds(scanner.rest()) : scanner.takeUpTo('\n');
            if (!isUnknownPerson(field, value)) {
                field.set(commit, output, value);
            }
            scanner.skipOne('\n');
        }
        return commit;
    }

    bool _hasFiles;
    std::optional<NEBDictionary> _commit;  // whose files follow
    GitChangedFiles _files;
};

// ---- the arguments ----------------------------------------------------------------------------

struct Switch {
    NEBConstant option;
    std::string_view argument;
};

constexpr Switch switches[] = {
    {NEBSourceControlRequestOptionFollow, "--follow"},
    {NEBSourceControlRequestOptionReverse, "--reverse"},
    {NEBSourceControlRequestOptionFirstParent, "--first-parent"},
    {NEBSourceControlRequestOptionRewriteParents, "--parents"},
    {NEBSourceControlRequestOptionIgnoreCase, "--regexp-ignore-case"},
    {NEBSourceControlRequestOptionLogOutputFilesChanged, "--raw"},
    {NEBSourceControlRequestOptionLineCounts, "--numstat"},
    {NEBSourceControlRequestOptionAllReferences, "--all"},
};

/// The value of the option is appended to the argument.
constexpr Switch values[] = {
    {NEBSourceControlRequestOptionLogOutputLimit, "--max-count="},
    {NEBSourceControlRequestOptionSearchMessage, "--grep="},
    {NEBSourceControlRequestOptionSearchAuthor, "--author="},
    {NEBSourceControlRequestOptionSearchContent, "-S"},
    {NEBSourceControlRequestOptionSince, "--since="},
    {NEBSourceControlRequestOptionUntil, "--until="},
};

constexpr std::pair<std::string_view, std::string_view> orders[] = {
    {"date", "--date-order"},
    {"author date", "--author-date-order"},
    {"topology", "--topo-order"},
};

void appendEach(std::vector<std::string>& arguments, const NEBValue& value,
                std::string_view prefix) {
    const std::vector<NEBValue> one{value};
    for (const NEBValue& element : value.array() != nullptr ? *value.array() : one) {
        if (const NEBValue revision = gitRevisionOfCommit(element); revision.isPresent()) {
            arguments.push_back(std::string(prefix) + revision.description());
        }
    }
}

}  // namespace

GitHistoryOperation::GitHistoryOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitReadingOperation(std::move(request)) {
    requireOneOf(NEBSourceControlRequestOptionOrder, {"date", "author date", "topology"});
    requireInteger(NEBSourceControlRequestOptionLogOutputLimit, 0);
    // A single reference pattern overrides log.excludeDecoration.
    std::vector<std::string> arguments{"log",
                                       "-z",
                                       formatOption(),
                                       "--date=raw",
                                       "--decorate=full",
                                       "--decorate-refs=refs/*",
                                       "--decorate-refs=HEAD",
                                       "--no-abbrev",
                                       "--find-renames",
                                       "--fixed-strings"};
    appendSelection(arguments);
    appendRevisions(arguments);
    arguments.emplace_back("--");
    appendFiles(arguments);
    setArgumentsBehindDefaults(arguments);
    setWritesWholeBuffers(true);
    setFlushesForSink(isSearch());
}

void GitHistoryOperation::appendSelection(std::vector<std::string>& arguments) const {
    for (const Switch& row : switches) {
        if (request()->option(row.option).boolValue()) {
            arguments.emplace_back(row.argument);
        }
    }
    for (const Switch& row : values) {
        if (const NEBValue& value = request()->option(row.option); value.isPresent()) {
            arguments.push_back(std::string(row.argument) + value.description());
        }
    }
    if (hasFiles()) {
        arguments.emplace_back("--diff-merges=first-parent");  // alone, it would print patches
    }
    const std::string order = request()->option(NEBSourceControlRequestOptionOrder).description();
    for (const auto& [name, argument] : orders) {
        if (order == name) {
            arguments.emplace_back(argument);
        }
    }
}

/// Without revisions, git begins at HEAD, and says if there is no commit yet.
void GitHistoryOperation::appendRevisions(std::vector<std::string>& arguments) const {
    const NEBValue& starts = request()->option(NEBSourceControlRequestOptionStartingRevisions);
    const NEBValue& excluded = request()->option(NEBSourceControlRequestOptionExcludedRevisions);
    const bool isAll = request()->option(NEBSourceControlRequestOptionAllReferences).boolValue();
    appendEach(arguments, request()->startingRevision, "");
    appendEach(arguments, starts, "");
    const bool hasStart = request()->startingRevision.isPresent() || starts.isPresent() || isAll;
    const bool hasEnd = request()->endingRevision.isPresent() || excluded.isPresent();
    if (!hasStart && hasEnd) {
        arguments.emplace_back("HEAD");
    }
    appendEach(arguments, request()->endingRevision, "^");
    appendEach(arguments, excluded, "^");
}

/// Whether the records have changed files.
bool GitHistoryOperation::hasFiles() const {
    return request()->option(NEBSourceControlRequestOptionLogOutputFilesChanged).boolValue() ||
           request()->option(NEBSourceControlRequestOptionLineCounts).boolValue();
}

/// Whether git may read many commits until it finds one to print.
bool GitHistoryOperation::isSearch() const {
    constexpr NEBConstant searches[] = {NEBSourceControlRequestOptionSearchMessage,
                                        NEBSourceControlRequestOptionSearchAuthor,
                                        NEBSourceControlRequestOptionSearchContent};
    bool isFound = request()->fileCount() > 0 || hasFiles();
    for (const NEBConstant option : searches) {
        isFound = isFound || request()->option(option).isPresent();
    }
    return isFound;
}

std::unique_ptr<NEBSourceControlRecordParser> GitHistoryOperation::makeRecordParser() {
    return std::make_unique<HistoryParser>(hasFiles());
}

}  // namespace neb
