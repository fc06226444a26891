#include "GitExtensions/GitChange.h"

#include <algorithm>
#include <filesystem>

#include "GitExtensions/GitRecordFields.h"
#include "GitExtensions/GitStatusEntries.h"
#include "GitExtensions/GitUnfinishedOperation.h"
#include "GitOperations/GitRevision.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/Interceptor.h"
#include "Platform/PathString.h"
#include "Platform/Text.h"

namespace neb {

namespace {

/// Whether a change that failed stopped at one of the conflicts; git may word that in another way:
/// "could not revert 0123456...".
bool stoppedAtConflict(const NEBSourceControlOperation& change,
                       const NEBSourceControlResult& conflicts) {
    const auto& errorClass = change.error()->errorClass;
    constexpr NEBConstant classes[] = {NEBSourceControlConflictErrorClass,
                                       NEBSourceControlMergeFailedErrorClass,
                                       NEBSourceControlUnknownErrorClass};
    return !conflicts.empty() && std::ranges::any_of(classes, [&](const NEBConstant& other) {
        return errorClass == other;
    });
}

/// Returns what lies in place of the folders of a deleted file, or of the file itself; empty for
/// nothing.
std::string_view searchObstacle(const std::string& folder, std::string_view path) {
    namespace fs = std::filesystem;
    std::error_code failure;
    const auto statusOf = [&](std::string_view part) {
        return fs::symlink_status(pathByAppendingComponent(folder, part), failure);
    };
    for (std::size_t slash = path.find('/'); slash != std::string_view::npos;
         slash = path.find('/', slash + 1)) {
        const fs::file_status status = statusOf(path.substr(0, slash));
        if (!fs::exists(status)) {
            return {};
        }
        if (!fs::is_directory(status)) {
            return path.substr(0, slash);
        }
    }
    const bool isFolder = fs::is_directory(statusOf(path));
    return isFolder && !fs::is_empty(pathByAppendingComponent(folder, path), failure)
               ? path
               : std::string_view();
}

std::string obstacleOf(const std::string& folder, std::string_view path) {
    return interceptedText("obstacle of", pathByAppendingComponent(folder, path),
                           [&] { return std::string(searchObstacle(folder, path)); });
}

std::vector<std::string> pathsOfConflicts(const NEBSourceControlResult& conflicts) {
    std::vector<std::string> paths;
    for (const NEBDictionary& conflict : conflicts) {
        paths.emplace_back(conflict.text(NEBSourceControlOperationPathKey));
    }
    return paths;
}

}  // namespace

GitChangeOperation::GitChangeOperation(std::shared_ptr<NEBSourceControlRequest> request,
                                       const std::vector<std::string>& arguments,
                                       std::optional<Data> input)
    : GitOperation(std::move(request)) {
    setChangesRepository();
    // git-push(1) has "--set-upstream", git-branch(1) "--set-upstream-to=NAME".
    if (std::ranges::any_of(arguments, [](const std::string& argument) {
            return argument.starts_with("--set-upstream");
        })) {
        setChangesBranchSettings();
    }
    setArgumentsBehindDefaults(arguments);
    setInput(std::move(input));
}

void GitChangeComposite::main() {
    if (error()) {
        return;
    }
    setOperationQueue(std::make_shared<OperationQueue>());
    perform();
}

bool GitChangeComposite::goesOnAfter(const NEBSourceControlOperation& operation) {
    if (!error() && operation.error()) {
        setError(operation.error());
    }
    return !error();
}

bool GitChangeComposite::runChange(const std::vector<std::string>& arguments,
                                   std::optional<Data> input) {
    return goesOnAfter(*runOperation(
        std::make_shared<GitChangeOperation>(request(), arguments, std::move(input))));
}

std::optional<std::string> GitChangeComposite::queriedLine(
    const std::vector<std::string>& arguments) {
    const auto query = runQuery(request(), arguments);
    return goesOnAfter(*query) ? std::optional(std::string(query->line())) : std::nullopt;
}

std::optional<std::string> GitChangeComposite::queriedHead() {
    return queriedLine({"rev-parse", "--verify", "--quiet", "HEAD^{commit}"});
}

std::optional<std::string> GitChangeComposite::queriedCommit(const NEBValue& revision) {
    // Unlike rev-parse, this names the revision in its error.
    const Data name = gitBytesOfValue(gitRevisionOfCommit(revision)).value_or(Data());
    return queriedLine(
        {"merge-base", "--independent", "--end-of-options", std::string(name.bytes())});
}

std::optional<std::vector<std::string>> GitChangeComposite::queriedObstacles(
    const std::vector<std::string>& deleted, PathOrigin origin) {
    std::vector<std::string> obstacles;
    if (deleted.empty()) {
        return obstacles;
    }
    auto folder = queriedLine({"rev-parse", "--show-toplevel"});
    if (folder && origin == PathOrigin::workingDirectory) {
        const auto prefix = queriedLine({"rev-parse", "--show-prefix"});
        folder = prefix ? std::optional(pathByAppendingComponent(*folder, *prefix)) : std::nullopt;
    }
    if (!folder) {
        return std::nullopt;
    }
    for (const std::string& path : deleted) {
        const std::string obstacle = obstacleOf(*folder, path);
        if (!obstacle.empty() && (obstacles.empty() || obstacles.back() != obstacle)) {
            obstacles.emplace_back(obstacle);
        }
    }
    return obstacles;
}

std::optional<std::vector<std::string>> GitChangeComposite::queriedUntracked(
    std::vector<std::string> paths) {
    if (paths.empty()) {
        return paths;
    }
    std::vector<std::string> arguments{"ls-files", "--others", "-z", "--full-name", "--"};
    for (const std::string& path : paths) {
        arguments.push_back(":(top,literal)" + path);
    }
    const auto query = runQuery(gitRequestWithoutNames(*request()), arguments);
    if (!goesOnAfter(*query)) {
        return std::nullopt;
    }
    const std::vector<std::string> files = gitNULSeparatedPieces(query->output());
    std::erase_if(paths, [&files](const std::string& path) {
        return std::ranges::none_of(files, [&path](const std::string& file) {
            return file == path || file.starts_with(path + "/");
        });
    });
    return paths;
}

std::optional<NEBSourceControlResult> GitChangeComposite::queriedLocalChanges(
    const std::vector<std::string>& paths) {
    std::vector<std::string> arguments{"status",
                                       "--porcelain",
                                       "-z",
                                       "--untracked-files=no",
                                       "--no-renames",
                                       "--ignore-submodules=all",
                                       "--"};
    arguments.insert(arguments.end(), paths.begin(), paths.end());
    const auto status = runQuery(request(), arguments);
    if (!goesOnAfter(*status)) {
        return std::nullopt;
    }
    NEBSourceControlResult records;
    std::vector<std::string> deleted;
    const auto addRecord = [&records](const std::string& path) -> NEBDictionary& {
        gitSetName(records.emplace_back(), gitPathKeys, path);
        return records.back();
    };
    for (const GitStatusEntry& entry : gitStatusEntries(status->output())) {
        const char letter = entry.letterOfFile();
        gitSetState(addRecord(entry.path), NEBSourceControlOperationStateKey,
                    std::string(1, letter));
        if (letter == 'D') {
            deleted.push_back(entry.path);
        }
    }
    auto obstacles = queriedObstacles(deleted, PathOrigin::top);
    // Staged ones have records of their own.
    const auto untracked = obstacles ? queriedUntracked(*std::move(obstacles)) : std::nullopt;
    if (!untracked) {
        return std::nullopt;
    }
    for (const std::string& path : *untracked) {
        addRecord(path).set(NEBSourceControlOperationStateKey, "untracked");
    }
    return records;
}

void GitChangeComposite::runStoppable(const std::vector<std::string>& arguments) {
    const auto before = queriedHead();
    if (!before) {
        return;
    }
    const auto change = runOperation(std::make_shared<GitChangeOperation>(request(), arguments));
    const auto after = error() ? std::nullopt : queriedHead();
    if (!after) {
        return;
    }
    const auto conflicts = run<GitConflictsOperation>(request());
    if (!goesOnAfter(*conflicts)) {
        return;
    }
    NEBSourceControlResult records;
    NEBDictionary& head = records.emplace_back();
    head.set(NEBSourceControlOperationKindKey, "head");
    const Data ids(*before + *after);
    const std::string_view both = ids;
    gitSetText(head, NEBSourceControlOperationOldObjectIDKey, ids, both.substr(0, before->size()));
    gitSetText(head, NEBSourceControlOperationObjectIDKey, ids, both.substr(before->size()));
    const NEBSourceControlResult found = conflicts->result().value_or(NEBSourceControlResult());
    records.insert(records.end(), found.begin(), found.end());
    setResult(std::move(records));
    if (goesOnAfter(*change) ? !found.empty() : stoppedAtConflict(*change, found)) {
        failAtConflicts(pathsOfConflicts(found));
    }
}

/// Keeps the text of the error that git reported, if there is one.
void GitChangeComposite::failAtConflicts(std::vector<std::string> paths) {
    const auto reported = error();
    auto conflict = NEBSourceControlError::withDescription(
        NEBSourceControlGenericError,
        "There are conflicts that could not be resolved automatically.");
    conflict.errorClass = NEBSourceControlConflictErrorClass;
    conflict.files = std::move(paths);
    if (reported) {
        conflict.text = reported->text;
        conflict.hints = reported->hints;
        conflict.terminationStatus = reported->terminationStatus;
    }
    setError(std::move(conflict));
}

void GitChangeComposite::fail(std::string_view errorClass, const std::string& description,
                              std::vector<std::string> files, const std::string& advice) {
    auto failure =
        NEBSourceControlError::withDescription(NEBSourceControlGenericError, description);
    failure.errorClass = errorClass;
    failure.files = std::move(files);
    if (!advice.empty()) {
        failure.userInfo.set(NEBLocalizedRecoverySuggestionKey, advice);
    }
    setError(std::move(failure));
}

void GitChangeComposite::failForOption(NEBConstant key) {
    setError(gitErrorOfOption(*request(), key));
}

bool GitChangeComposite::acceptsReference(const NEBValue& name) {
    const std::string text = name.description();
    if (name.isPresent() && !gitNamesOneReference(text)) {
        fail(NEBSourceControlRequestInvalidErrorClass,
             "\"" + text + "\" is not the name of one branch or tag.");
    }
    return !error();
}

bool GitChangeComposite::acceptsMessage() {
    const auto message = gitBytesOfValue(request()->option(NEBSourceControlRequestOptionMessage));
    if (message && message->bytes().find('\0') != std::string_view::npos) {
        fail(NEBSourceControlRequestInvalidErrorClass, "The message has a NUL byte.");
    }
    return !error();
}

std::string GitChangeComposite::action(std::string_view usual) const {
    const NEBValue& value = request()->option(NEBSourceControlRequestOptionAction);
    return value.isPresent() ? value.description() : std::string(usual);
}

std::vector<std::string> gitFileNames(const NEBSourceControlRequest& request) {
    std::vector<std::string> names;
    for (const NEBValue& file : request.files.value_or(std::vector<NEBValue>())) {
        if (const auto name = gitBytesOfValue(file)) {
            names.emplace_back(name->bytes());
        }
    }
    return names;
}

Data gitNULSeparatedFiles(const NEBSourceControlRequest& request) {
    std::string names;
    for (const std::string& name : gitFileNames(request)) {
        names.append(name).append(1, '\0');
    }
    return Data(names);
}

std::vector<std::string> gitNULSeparatedPieces(std::string_view output) {
    std::vector<std::string> pieces;
    forEachField(output, '\0', [&](std::string_view piece) { pieces.emplace_back(piece); });
    pieces.pop_back();
    return pieces;
}

bool gitNamesOneReference(std::string_view text) {
    return !text.empty() && text.front() != '+' &&
           text.find_first_of(":*") == std::string_view::npos;
}

std::optional<Data> gitBytesOfValue(const NEBValue& value) {
    if (!value.isPresent()) {
        return std::nullopt;
    }
    return value.bytes() != nullptr ? *value.bytes() : Data(value.description());
}

}  // namespace neb
