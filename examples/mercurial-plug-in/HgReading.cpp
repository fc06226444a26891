// The operations that change nothing.

#include <algorithm>
#include <iterator>
#include <utility>

#include "HgOperations.h"

namespace {

struct Letter {
    char letter;
    std::uint32_t status;
};

/// The states of `hg help status`. A missing file ("!") counts as deleted.
constexpr Letter letters[] = {{'M', NEBSourceControlStatusModified},
                              {'A', NEBSourceControlStatusAdded},
                              {'R', NEBSourceControlStatusDeleted},
                              {'!', NEBSourceControlStatusDeleted},
                              {'?', NEBSourceControlStatusUntracked}};

std::uint32_t statusOf(std::string_view state) {
    const auto* row =
        std::ranges::find(letters, state.empty() ? ' ' : state.front(), &Letter::letter);
    return row != std::end(letters) ? row->status : 0;
}

/// Each is a template; see `hg help templates`. No name and no author has a line end.
constexpr std::string_view statusTemplate = R"({status}\n{reporoot}\n{path}\n{source}\0)";
constexpr std::string_view logTemplate =
    R"({node|short}\n{author|person}\n{author|email}\n{date|hgdate}\n)";
constexpr std::string_view filesTemplate =
    R"({file_adds % "A\t{file}\n"}{file_mods % "M\t{file}\n"}{file_dels % "R\t{file}\n"})";
constexpr std::string_view messageTemplate = R"(\n{desc}\0)";
constexpr std::string_view blameTemplate =
    R"({lines % "{node|short}\n{author|person}\n{date|hgdate}\n{lineno}\0"})";

/// Reads the records of a status. hg lists the target of a rename before its removed source, which
/// is no record of its own; a copy, of which the source stays, is an added file.
class StatusParser final : public NEBSourceControlRecordParser {
public:
    StatusParser() : NEBSourceControlRecordParser('\0') {}

protected:
    void parsePiece(const Data& /*output*/, std::string_view piece,
                    NEBSourceControlResult& /*records*/) override {
        if (piece.empty()) {
            return;
        }
        Entry entry;
        entry.state = takeLine(piece);
        entry.root = takeLine(piece);
        entry.path = takeLine(piece);
        entry.source = piece;
        if (entry.state == "R") {
            _removed.insert(entry.path);
        }
        if (!entry.source.empty()) {
            _sources.insert(entry.source);
        }
        _entries.push_back(std::move(entry));
    }

    void parseLastPiece(const Data& output, std::string_view piece,
                        NEBSourceControlResult& records) override {
        parsePiece(output, piece, records);
        for (const Entry& entry : _entries) {
            if (entry.state == "R" && _sources.contains(entry.path)) {
                continue;
            }
            NEBDictionary record;
            record.set(NEBSourceControlOperationWCStatusKey, _removed.contains(entry.source)
                                                                 ? NEBSourceControlStatusRenamed
                                                                 : statusOf(entry.state));
            NEBSourceControlSetText(record, NEBSourceControlOperationPathKey,
                                    NEBSourceControlOperationPathBytesKey,
                                    entry.root + "/" + entry.path);
            records.push_back(std::move(record));
        }
    }

private:
    /// A file. Its path and its source are relative to the root, the top of the repository.
    struct Entry {
        std::string state, root, path, source;
    };

    std::vector<Entry> _entries;
    std::set<std::string> _removed;
    std::set<std::string> _sources;
};

void readCommit(std::string_view piece, NEBSourceControlResult& records) {
    NEBDictionary record;
    record.set(NEBSourceControlOperationRevisionKey, takeLine(piece));
    record.set(NEBSourceControlOperationAuthorKey, textOf(takeLine(piece)));
    record.set(NEBSourceControlOperationAuthorEmailKey, textOf(takeLine(piece)));
    record.set(NEBSourceControlOperationDateKey, dateOf(takeLine(piece)));
    NEBDictionary files;
    for (auto line = takeLine(piece); !line.empty(); line = takeLine(piece)) {
        files.set(textOf(line.substr(2)), statusOf(line));
    }
    if (!files.isEmpty()) {
        record.set(NEBSourceControlOperationFilesKey, std::move(files));
    }
    record.set(NEBSourceControlOperationMessageKey, textOf(piece));
    records.push_back(std::move(record));
}

/// Lines that are not committed have the id of the working copy, of which all digits are "f".
void readBlamedLine(std::string_view piece, NEBSourceControlResult& records) {
    const std::string_view id = takeLine(piece);
    const bool isCommitted = id.find_first_not_of('f') != std::string_view::npos;
    NEBDictionary record;
    record.set(NEBSourceControlOperationRevisionKey,
               isCommitted ? std::string(id) : std::string(id.size(), '0'));
    record.set(NEBSourceControlOperationAuthorKey, textOf(takeLine(piece)));
    record.set(NEBSourceControlOperationDateKey, dateOf(takeLine(piece)));
    record.set(NEBSourceControlOperationLineNumberKey, takeLine(piece));
    records.push_back(std::move(record));
}

void readName(std::string_view piece, NEBSourceControlResult& records) {
    records.push_back({{NEBSourceControlOperationNameKey, textOf(piece)}});
}

}  // namespace

HgStatusOperation::HgStatusOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : HgOperation(std::move(request)) {
    std::vector<std::string> arguments{"status", "--copies", "--template",
                                       std::string(statusTemplate), "--"};
    if (const NEBValue& path = this->request()->destination; path.isPresent()) {
        arguments.push_back("relpath:" + path.description());
    }
    setArguments(std::move(arguments));
}

std::unique_ptr<NEBSourceControlRecordParser> HgStatusOperation::makeRecordParser() {
    return std::make_unique<StatusParser>();
}

/// The ancestors of the start; with an end, what is reachable from one of the two alone.
HgLogOperation::HgLogOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : HgOperation(std::move(request)) {
    const NEBSourceControlRequest& asked = *this->request();
    const NEBValue& branch = asked.option(NEBSourceControlRequestOptionBranch);
    const std::string start =
        revisionOf(asked.startingRevision.isPresent() || asked.endingRevision.isPresent()
                       ? asked.startingRevision
                       : branch,
                   ".");
    std::string revisions = "::(" + start + ")";
    if (asked.endingRevision.isPresent()) {
        const std::string end = revisionOf(asked.endingRevision, ".");
        revisions = "only((" + start + "),(" + end + ")) + only((" + end + "),(" + start + "))";
    }
    std::vector<std::string> arguments{"log", "--rev=reverse(" + revisions + ") - null"};
    const NEBValue& limit = asked.option(NEBSourceControlRequestOptionLogOutputLimit);
    if (limit.isPresent()) {
        arguments.push_back("--limit=" + limit.description());
    }
    const bool hasFiles =
        asked.option(NEBSourceControlRequestOptionLogOutputFilesChanged).boolValue();
    arguments.push_back("--template=" + std::string(logTemplate) +
                        std::string(hasFiles ? filesTemplate : "") + std::string(messageTemplate));
    appendFiles(arguments);
    setArguments(std::move(arguments));
}

std::unique_ptr<NEBSourceControlRecordParser> HgLogOperation::makeRecordParser() {
    return std::make_unique<HgRecordParser>(readCommit);
}

HgBlameOperation::HgBlameOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : HgOperation(std::move(request)) {
    std::vector<std::string> arguments{
        "annotate", "--rev=" + revisionOf(this->request()->startingRevision, "wdir()"),
        "--template=" + std::string(blameTemplate)};
    appendFiles(arguments);
    setArguments(std::move(arguments));
}

std::unique_ptr<NEBSourceControlRecordParser> HgBlameOperation::makeRecordParser() {
    return std::make_unique<HgRecordParser>(readBlamedLine);
}

HgDiffOperation::HgDiffOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : HgOperation(std::move(request)),
      _isNamesOnly(this->request()
                       ->option(NEBSourceControlRequestOptionDiffFileNameAndStatusOnly)
                       .boolValue()) {
    const NEBSourceControlRequest& asked = *this->request();
    std::string start = revisionOf(asked.startingRevision, ".");
    const bool hasEnd = asked.startingRevision.isPresent() && asked.endingRevision.isPresent();
    const std::string end = hasEnd ? revisionOf(asked.endingRevision, ".") : "wdir()";
    if (hasEnd && asked.option(NEBSourceControlRequestOptionDiffFromCommonAncestor).boolValue()) {
        start = "ancestor((" + start + "),(" + end + "))";
    }
    std::vector<std::string> arguments =
        _isNamesOnly ? std::vector<std::string>{"status",     "--modified",
                                                "--added",    "--removed",
                                                "--deleted",  "--copies",
                                                "--template", std::string(statusTemplate)}
                     : std::vector<std::string>{"diff", "--git"};
    arguments.push_back("--rev=" + start);
    if (end != "wdir()") {
        arguments.push_back("--rev=" + end);
    }
    appendFiles(arguments);
    setArguments(std::move(arguments));
}

std::unique_ptr<NEBSourceControlRecordParser> HgDiffOperation::makeRecordParser() {
    return _isNamesOnly ? std::make_unique<StatusParser>() : nullptr;
}

/// Without a difference, there is no record.
void HgDiffOperation::readOutput(const Data& output) {
    if (!output.empty()) {
        NEBDictionary record;
        NEBSourceControlSetText(record, NEBSourceControlOperationContentKey,
                                NEBSourceControlOperationContentBytesKey, output);
        setResult({{std::move(record)}});
    }
}

/// The commit "null" exists in every repository. A template can name the top and the remote.
HgInfoOperation::HgInfoOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : HgOperation(std::move(request)) {
    setArguments({"log", "--rev=null", R"(--template={reporoot}\n{get(peerurls, "default")}\n)"});
}

void HgInfoOperation::readOutput(const Data& output) {
    std::string_view rest = output;
    NEBDictionary record;
    record.set(NEBSourceControlOperationRepositoryRootKey, textOf(takeLine(rest)));
    if (const std::string_view remote = takeLine(rest); !remote.empty()) {
        record.set(NEBSourceControlOperationRemoteOriginKey, textOf(remote));
    }
    setResult({{std::move(record)}});
}

HgListBranchesOperation::HgListBranchesOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : HgOperation(std::move(request)) {
    setArguments({"branches", R"(--template={branch}\0)"});
}

std::unique_ptr<NEBSourceControlRecordParser> HgListBranchesOperation::makeRecordParser() {
    return std::make_unique<HgRecordParser>(readName);
}

HgCurrentBranchOperation::HgCurrentBranchOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : HgOperation(std::move(request)) {
    setArguments({"branch"});
}

void HgCurrentBranchOperation::readOutput(const Data& output) {
    NEBSourceControlResult records;
    readName(output, records);
    setResult(std::move(records));
}

HgContentOperation::HgContentOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : HgOperation(std::move(request)) {
    std::vector<std::string> arguments{
        "cat", "--rev=" + revisionOf(this->request()->startingRevision, ".")};
    appendFiles(arguments, "path");
    setArguments(std::move(arguments));
}

void HgContentOperation::readOutput(const Data& output) {
    NEBDictionary record;
    NEBSourceControlSetText(record, NEBSourceControlOperationContentKey,
                            NEBSourceControlOperationContentBytesKey, output);
    const NEBValue bytes = record.value(NEBSourceControlOperationContentBytesKey);
    if (bytes.isPresent()) {
        record = {{NEBSourceControlOperationContentBytesKey, bytes}};
    }
    setResult({{std::move(record)}});
}
