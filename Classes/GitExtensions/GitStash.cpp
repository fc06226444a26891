#include "GitExtensions/GitStash.h"

#include <algorithm>
#include <iterator>

#include "GitExtensions/GitRecordFields.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/Scanner.h"

namespace neb {

namespace {

constexpr std::string_view stashReference = "refs/stash";

std::string stashName(std::size_t index) {
    return "stash@{" + std::to_string(index) + "}";
}

bool isObjectID(std::string_view text) {
    constexpr std::size_t sizes[] = {40, 64};
    return std::ranges::find(sizes, text.size()) != std::end(sizes) &&
           text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

/// Reads id, time and subject, each on a line; a NUL byte ends the subject.
class StashParser : public GitNULRecordParser {
protected:
    void parsePiece(const Data& output, std::string_view text,
                    NEBSourceControlResult& records) override {
        NEBDictionary& record = records.emplace_back();
        record.set(NEBSourceControlOperationNameKey, stashName(_index++));
        Scanner scanner(text);
        gitSetText(record, NEBSourceControlOperationObjectIDKey, output, scanner.takeUpTo('\n'));
        scanner.skipOne('\n');
        gitSetTime(record, gitTimeKeys, scanner.takeUpTo('\n'));
        scanner.skipOne('\n');
        gitSetText(record, NEBSourceControlOperationSubjectKey, output, scanner.rest());
    }

private:
    std::size_t _index = 0;
};

}  // namespace

GitStashListOperation::GitStashListOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitReadingOperation(std::move(request)) {
    setArgumentsBehindDefaults({"stash", "list", "-z", "--date=raw", "--format=%H%n%cd%n%gs"});
}

std::unique_ptr<NEBSourceControlRecordParser> GitStashListOperation::makeRecordParser() {
    return std::make_unique<StashParser>();
}

void GitStashOperation::perform() {
    struct Row {
        std::string_view action;
        void (GitStashOperation::*carryOut)();
    };
    constexpr Row rows[] = {
        {"list", &GitStashOperation::list},      {"push", &GitStashOperation::push},
        {"show", &GitStashOperation::show},      {"apply", &GitStashOperation::applyOrPop},
        {"pop", &GitStashOperation::applyOrPop}, {"drop", &GitStashOperation::drop},
    };
    const auto* row = std::ranges::find(rows, action("list"), &Row::action);
    if (row == std::end(rows)) {
        failForOption(NEBSourceControlRequestOptionAction);
    } else {
        (this->*row->carryOut)();
    }
}

std::string GitStashOperation::requestedName() const {
    const NEBValue& revision = request()->startingRevision;
    return revision.isPresent() ? revision.description() : stashName(0);
}

std::optional<NEBDictionary> GitStashOperation::queriedStash() {
    const std::string name = requestedName();
    const auto list = run<GitStashListOperation>(request());
    if (!goesOnAfter(*list)) {
        return std::nullopt;
    }
    const NEBSourceControlResult stashes = list->result().value_or(NEBSourceControlResult());
    const auto find = [&stashes](NEBConstant key, const std::string& text) {
        return std::ranges::find_if(
            stashes, [&](const NEBDictionary& stash) { return stash.text(key) == text; });
    };
    auto found = find(
        isObjectID(name) ? NEBSourceControlOperationObjectIDKey : NEBSourceControlOperationNameKey,
        name);
    if (found == stashes.end() && !isObjectID(name)) {
        const auto commit = queriedCommit(name);
        found = commit ? find(NEBSourceControlOperationObjectIDKey, *commit) : found;
    }
    if (found == stashes.end()) {
        if (!error()) {
            fail(NEBSourceControlRevisionUnknownErrorClass, "There is no stash \"" + name + "\".");
        }
        return std::nullopt;
    }
    return *found;
}

std::optional<std::string> GitStashOperation::queriedName() {
    if (!isObjectID(requestedName())) {
        return requestedName();
    }
    const auto stash = queriedStash();
    return stash ? std::optional(std::string(stash->text(NEBSourceControlOperationNameKey)))
                 : std::nullopt;
}

void GitStashOperation::list() {
    const auto stashes = runList<GitStashListOperation>(request());
    if (goesOnAfter(*stashes)) {
        setResult(stashes->result());
    }
}

/// git itself names a file with the magic of pathspecs: ":(,prefix:0)name".
bool GitStashOperation::knowsFiles() {
    const std::vector<std::string> files = gitFileNames(*request());
    std::vector<std::string> arguments{"ls-files", "-z", "--error-unmatch", "--"};
    arguments.insert(arguments.end(), files.begin(), files.end());
    return files.empty() || goesOnAfter(*runQuery(request(), arguments));
}

/// git itself replaces untracked files in place of deleted ones, and keeps them nowhere.
bool GitStashOperation::keepsUntrackedFiles() {
    std::vector<std::string> replaced;
    const auto changes = queriedLocalChanges(gitFileNames(*request()));
    for (const NEBDictionary& change : changes.value_or(NEBSourceControlResult())) {
        if (change.text(NEBSourceControlOperationStateKey) == "untracked") {
            replaced.emplace_back(change.text(NEBSourceControlOperationPathKey));
        }
    }
    if (!replaced.empty()) {
        fail(NEBSourceControlUntrackedInTheWayErrorClass,
             "Untracked files are in place of deleted ones, and would be lost.",
             std::move(replaced));
    }
    return !error();
}

/// git prints nothing if it cannot write the index; a command that only writes it names the cause.
void GitStashOperation::explainSilence() {
    if (isCancelled() || !error() || error()->text.has_value() ||
        error()->errorClass != NEBSourceControlUnknownErrorClass) {
        return;
    }
    const auto write = runOperation(std::make_shared<GitChangeOperation>(
        gitRequestWithoutNames(*request()),
        std::vector<std::string>{"update-index", "--force-write-index"}));
    if (write->error()) {
        setError(write->error());
    }
}

void GitStashOperation::push() {
    const std::vector<std::string> query{"rev-parse", "--verify", "--quiet",
                                         std::string(stashReference)};
    const auto before = acceptsMessage() ? queriedLine(query) : std::nullopt;
    if (!before) {
        return;
    }
    std::vector<std::string> arguments{"stash", "push"};
    if (hasOption(NEBSourceControlRequestOptionIncludeUntracked)) {
        arguments.emplace_back("--include-untracked");
    } else if (!knowsFiles() || !keepsUntrackedFiles()) {
        return;
    }
    if (hasOption(NEBSourceControlRequestOptionKeepIndex)) {
        arguments.emplace_back("--keep-index");
    }
    if (const auto message =
            gitBytesOfValue(request()->option(NEBSourceControlRequestOptionMessage))) {
        arguments.push_back("--message=" + std::string(message->bytes()));
    }
    std::optional<Data> paths;
    if (request()->fileCount() > 0) {
        arguments.insert(arguments.end(), {"--pathspec-from-file=-", "--pathspec-file-nul"});
        paths = gitNULSeparatedFiles(*request());
    }
    const auto after = runChange(arguments, std::move(paths)) ? queriedLine(query) : std::nullopt;
    if (!after) {
        explainSilence();
        return;
    }
    NEBSourceControlResult records;
    if (*after != *before) {
        records.push_back({{NEBSourceControlOperationNameKey, stashName(0)},
                           {NEBSourceControlOperationObjectIDKey, *after}});
    }
    setResult(std::move(records));
}

void GitStashOperation::show() {
    const auto stash = queriedStash();
    if (!stash) {
        return;
    }
    const std::string commit(stash->text(NEBSourceControlOperationObjectIDKey));
    const auto files = runQuery(request(), {"diff-tree", "-r", "-z", "--name-status",
                                            "--no-renames", commit + "^1", commit});
    if (!goesOnAfter(*files)) {
        return;
    }
    NEBSourceControlResult records;
    const auto pieces = gitNULSeparatedPieces(files->output());
    for (std::size_t i = 0; i + 1 < pieces.size(); i += 2) {
        NEBDictionary& record = records.emplace_back();
        gitSetState(record, NEBSourceControlOperationStateKey, pieces[i]);
        gitSetName(record, gitPathKeys, pieces[i + 1]);
    }
    const auto untracked = queriedLine({"rev-parse", "--verify", "--quiet", commit + "^3"});
    if (untracked && !untracked->empty()) {
        const auto tree =
            runQuery(request(), {"ls-tree", "-r", "-z", "--full-tree", "--name-only", *untracked});
        for (const std::string& path : gitNULSeparatedPieces(tree->output())) {
            NEBDictionary& record = records.emplace_back();
            record.set(NEBSourceControlOperationStateKey, "untracked");
            gitSetName(record, gitPathKeys, path);
        }
        if (!goesOnAfter(*tree)) {
            return;
        }
    }
    if (!error()) {
        setResult(std::move(records));
    }
}

void GitStashOperation::applyOrPop() {
    if (const auto name = queriedName()) {
        std::vector<std::string> arguments{"stash", action(""), "--quiet"};
        if (hasOption(NEBSourceControlRequestOptionRestoreIndex)) {
            arguments.emplace_back("--index");
        }
        arguments.insert(arguments.end(), {"--", *name});
        runStoppable(arguments);
    }
}

void GitStashOperation::drop() {
    const auto name = queriedName();
    const auto id = name ? queriedCommit(*name) : std::nullopt;
    if (id && runChange({"stash", "drop", "--quiet", "--", *name})) {
        setResult({{{{NEBSourceControlOperationNameKey, *name},
                     {NEBSourceControlOperationObjectIDKey, *id}}}});
    }
}

}  // namespace neb
