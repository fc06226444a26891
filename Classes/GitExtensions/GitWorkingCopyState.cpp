#include "GitExtensions/GitWorkingCopyState.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <optional>

#include "GitExtensions/GitQuery.h"
#include "GitExtensions/GitRecordFields.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Platform/Scanner.h"

namespace neb {

namespace {

struct ConflictLetters {
    std::string_view letters, conflict;
};

/// What the two sides of a merge did, as git-status(1) names it.
constexpr ConflictLetters conflictLetters[] = {
    {"DD", "both deleted"},  {"AU", "added by us"},   {"UD", "deleted by them"},
    {"UA", "added by them"}, {"DU", "deleted by us"}, {"AA", "both added"},
    {"UU", "both modified"},
};

constexpr std::size_t stageCount = 3;

/// Returns and skips the text before the next blank, and the blank.
std::string_view takeField(Scanner& entry) {
    const std::string_view field = entry.takeUpTo(' ');
    entry.skipOne(' ');
    return field;
}

/// Reads "N..." for a file, or "S" and a letter or "." for each change of a submodule.
void setSubmodule(NEBDictionary& record, std::string_view field) {
    if (!field.starts_with('S')) {
        return;
    }
    record.set(NEBSourceControlOperationIsSubmoduleKey, true);
    constexpr std::pair<char, NEBConstant> changes[] = {
        {'C', NEBSourceControlOperationSubmoduleCommitChangedKey},
        {'M', NEBSourceControlOperationSubmoduleModifiedKey},
        {'U', NEBSourceControlOperationSubmoduleHasUntrackedKey},
    };
    for (const auto& [letter, key] : changes) {
        if (field.find(letter, 1) != std::string_view::npos) {
            record.set(key, true);
        }
    }
}

/// Reads the pieces of a status: headers, then entries. A renamed path has a second piece.
class StateParser : public GitNULRecordParser {
public:
    /// Sets the flag if git could not read the branch. The flag must outlive the parser.
    explicit StateParser(bool& lacksBranch) : _lacksBranch(lacksBranch) {}

protected:
    void parsePiece(const Data& output, std::string_view piece,
                    NEBSourceControlResult& records) override {
        if (_renamed) {
            gitSetName(*_renamed, gitOriginalPathKeys, output, piece);
            records.push_back(std::move(*_renamed));
            _renamed.reset();
        } else if (piece.starts_with("# ")) {
            parseHeader(output, piece.substr(2));
        } else if (piece.size() > 2) {
            addHead(records);
            parseEntry(output, piece.front(), Scanner(piece.substr(2)), records);
        }
    }
    void finish(NEBSourceControlResult& records) override { addHead(records); }

private:
    /// "branch.oid ID", "branch.head NAME", "branch.upstream NAME", "branch.ab +AHEAD -BEHIND" or
    /// "stash COUNT". What does not exist is in parentheses; so is "unknown" if git cannot read it.
    void parseHeader(const Data& output, std::string_view header) {
        Scanner scanner(header);
        const std::string_view name = takeField(scanner);
        const std::string_view value = scanner.rest();
        if (name == "branch.oid" && value != "(initial)") {
            gitSetText(_head, NEBSourceControlOperationObjectIDKey, output, value);
        } else if (name == "branch.head" && value != "(detached)") {
            gitSetName(_head, gitNameKeys, output, value);
        } else if (name == "branch.upstream") {
            gitSetName(_head, gitUpstreamKeys, output, value);
        } else if (name == "branch.ab") {
            scanner.skipOne('+');
            gitSetInteger(_head, NEBSourceControlOperationAheadKey, takeField(scanner));
            scanner.skipOne('-');
            gitSetInteger(_head, NEBSourceControlOperationBehindKey, scanner.rest());
        } else if (name == "stash") {
            gitSetInteger(_head, NEBSourceControlOperationStashCountKey, value);
        }
        _hasHeader = true;
    }

    void addHead(NEBSourceControlResult& records) {
        if (_hasHeader) {
            NEBDictionary& record = records.emplace_back();
            record.set(NEBSourceControlOperationKindKey, "head");
            record.addEntriesFrom(_head);
            _lacksBranch = record.text(NEBSourceControlOperationNameKey) == "(unknown)" &&
                           !record.contains(NEBSourceControlOperationObjectIDKey);
            _hasHeader = false;
        }
    }

    /// "1 XY SUB MODE×3 ID×2 PATH", "2 … SCORE PATH", "u XY SUB MODE×4 ID×3 PATH", "? PATH" or
    /// "! PATH", without the first letter.
    void parseEntry(const Data& output, char kind, Scanner entry, NEBSourceControlResult& records) {
        NEBDictionary record;
        switch (kind) {
            case '1':
                record.set(NEBSourceControlOperationKindKey, "changed");
                readChange(record, entry);
                break;
            case '2':
                record.set(NEBSourceControlOperationKindKey, "renamed");
                readChange(record, entry);
                gitSetSimilarity(record, takeField(entry));
                break;
            case 'u':
                record.set(NEBSourceControlOperationKindKey, "conflict");
                readConflict(record, entry);
                break;
            case '?':
                record.set(NEBSourceControlOperationKindKey, "untracked");
                break;
            case '!':
                record.set(NEBSourceControlOperationKindKey, "ignored");
                break;
            default:
                return;  // a kind of a later git
        }
        gitSetName(record, gitPathKeys, output, entry.rest());
        if (kind == '2') {
            _renamed = std::move(record);
        } else {
            records.push_back(std::move(record));
        }
    }

    static void readChange(NEBDictionary& record, Scanner& entry) {
        const std::string_view states = takeField(entry);
        if (states.size() == 2) {
            gitSetState(record, NEBSourceControlOperationIndexStateKey, states);
            gitSetState(record, NEBSourceControlOperationWorkingTreeStateKey, states.substr(1));
        }
        setSubmodule(record, takeField(entry));
        for (const NEBConstant key :
             {NEBSourceControlOperationHEADModeKey, NEBSourceControlOperationIndexModeKey,
              NEBSourceControlOperationWorkingTreeModeKey}) {
            gitSetMode(record, key, takeField(entry));
        }
        for (const NEBConstant key : {NEBSourceControlOperationHEADObjectIDKey,
                                      NEBSourceControlOperationIndexObjectIDKey}) {
            gitSetObjectID(record, key, takeField(entry));
        }
    }

    static void readConflict(NEBDictionary& record, Scanner& entry) {
        const auto* row =
            std::ranges::find(conflictLetters, takeField(entry), &ConflictLetters::letters);
        if (row != std::end(conflictLetters)) {
            record.set(NEBSourceControlOperationConflictKey, row->conflict);
        }
        setSubmodule(record, takeField(entry));
        std::array<std::string_view, stageCount> modes;
        for (std::string_view& mode : modes) {
            mode = takeField(entry);
        }
        gitSetMode(record, NEBSourceControlOperationWorkingTreeModeKey, takeField(entry));
        std::vector<NEBValue> stages;
        for (std::size_t i = 0; i < stageCount; ++i) {
            const std::string_view id = takeField(entry);
            if (id.find_first_not_of('0') != std::string_view::npos) {
                stages.emplace_back(gitStage(static_cast<std::int64_t>(i) + 1, modes[i], id));
            }
        }
        record.set(NEBSourceControlOperationStagesKey, std::move(stages));
    }

    bool& _lacksBranch;
    NEBDictionary _head;
    bool _hasHeader = false;
    std::optional<NEBDictionary> _renamed;  // waits for its original path
};

}  // namespace

GitWorkingCopyStateOperation::GitWorkingCopyStateOperation(
    std::shared_ptr<NEBSourceControlRequest> request)
    : GitComposite(std::move(request)) {
    const NEBSourceControlRequest& asked = *this->request();
    std::vector<std::string> arguments{"status", "--porcelain=v2", "-z", "--branch",
                                       "--show-stash"};
    requireOneOf(NEBSourceControlRequestOptionUntrackedFiles, {"no", "normal", "all"});
    const NEBValue& untracked = asked.option(NEBSourceControlRequestOptionUntrackedFiles);
    if (untracked.isPresent()) {
        arguments.push_back("--untracked-files=" + untracked.description());
    }
    if (asked.option(NEBSourceControlRequestOptionIgnoredFiles).boolValue()) {
        arguments.emplace_back("--ignored");
    }
    appendPaths(arguments);
    setArgumentsBehindDefaults(arguments);
}

std::unique_ptr<NEBSourceControlRecordParser> GitWorkingCopyStateOperation::makeRecordParser() {
    return std::make_unique<StateParser>(_lacksBranch);
}

void GitWorkingCopyStateOperation::main() {
    GitReadingOperation::main();
    if (_lacksBranch && !error() && !isCancelled()) {
        setOperationQueue(std::make_shared<OperationQueue>());
        failIfBranchIsBroken();
    }
}

/// For git status, the branch then has no commits, and all files are new. A log fails. It also
/// fails on a branch with the name "(unknown)" that really has no commits.
void GitWorkingCopyStateOperation::failIfBranchIsBroken() {
    const auto log = runOperation(std::make_shared<GitQueryOperation>(
        request(), std::vector<std::string>{"log", "-1", "--format="}));
    if (log->error() && log->error()->errorClass != NEBSourceControlNoCommitsYetErrorClass) {
        setError(log->error());
        setResult(std::nullopt);
    }
}

}  // namespace neb
