#include "GitExtensions/GitChange.h"

#include "GitExtensions/GitRecordFields.h"
#include "GitExtensions/GitUnfinishedOperation.h"
#include "GitOperations/GitRevision.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/Text.h"

namespace neb {

namespace {

/// Whether a change that failed stopped at one of the conflicts; git may word that in another way:
/// "could not revert 0123456...".
bool stoppedAtConflict(const NEBSourceControlOperation& change,
                       const NEBSourceControlResult& conflicts) {
    const auto& errorClass = change.error()->errorClass;
    return !conflicts.empty() && (errorClass == NEBSourceControlMergeFailedErrorClass ||
                                  errorClass == NEBSourceControlUnknownErrorClass);
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
    const Data name = gitBytesOfValue(gitRevisionOfCommit(revision)).value_or(Data());
    return queriedLine({"rev-parse", "--verify", "--end-of-options",
                        std::string(name.bytes()).append("^{commit}")});
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
                              std::vector<std::string> files) {
    auto failure =
        NEBSourceControlError::withDescription(NEBSourceControlGenericError, description);
    failure.errorClass = errorClass;
    failure.files = std::move(files);
    setError(std::move(failure));
}

void GitChangeComposite::failForOption(NEBConstant key) {
    const NEBValue& value = request()->option(key);
    fail(NEBSourceControlRequestInvalidErrorClass,
         value.isPresent()
             ? "The value \"" + value.description() + "\" is not one of " + std::string(key) + "."
             : "The request lacks " + std::string(key) + ".");
}

std::string GitChangeComposite::action(std::string_view usual) const {
    const NEBValue& value = request()->option(NEBSourceControlRequestOptionAction);
    return value.isPresent() ? value.description() : std::string(usual);
}

Data gitNULSeparatedFiles(const NEBSourceControlRequest& request) {
    std::string names;
    for (std::size_t i = 0; i < request.fileCount(); ++i) {
        if (const auto name = gitBytesOfValue((*request.files)[i])) {
            names.append(name->bytes()).append(1, '\0');
        }
    }
    return Data(names);
}

std::vector<std::string> gitNULSeparatedPieces(std::string_view output) {
    std::vector<std::string> pieces;
    forEachField(output, '\0', [&](std::string_view piece) { pieces.emplace_back(piece); });
    pieces.pop_back();
    return pieces;
}

std::optional<Data> gitBytesOfValue(const NEBValue& value) {
    if (!value.isPresent()) {
        return std::nullopt;
    }
    return value.bytes() != nullptr ? *value.bytes() : Data(value.description());
}

}  // namespace neb
