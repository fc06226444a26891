#include "GitOperations/GitRemote.h"

#include "GitOperations/GitLineParser.h"
#include "GitOperations/GitSubversion.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Platform/Scanner.h"

namespace neb {

namespace {

/// Reads "name TAB location BLANK (direction)".
NEBDictionary recordOf(const Data& text, std::string_view line) {
    static_cast<void>(text);
    Scanner scanner(line);
    const std::string_view name = scanner.takeUpTo('\t');
    scanner.skipOne('\t');
    const std::string_view location = scanner.takeUpTo(' ');
    scanner.skipOne(' ');
    const std::string_view direction = scanner.rest();

    NEBDictionary record;
    if (!name.empty()) {
        record.set(NEBSourceControlOperationRemoteNameKey, name);
    }
    if (!location.empty()) {
        record.set(NEBSourceControlOperationRemoteOriginKey, location);
    }
    if (direction == "(fetch)") {
        record.set(NEBSourceControlOperationTypeKey, "fetch");
    } else if (direction == "(push)") {
        record.set(NEBSourceControlOperationTypeKey, "push");
    }
    return record;
}

void appendRecords(NEBSourceControlResult& records, const NEBSourceControlOperation& operation) {
    if (operation.result()) {
        records.insert(records.end(), operation.result()->begin(), operation.result()->end());
    }
}

}  // namespace

GitListStandardRemotesOperation::GitListStandardRemotesOperation(
    std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    setArgumentsBehindDefaults({"remote", "-v"});
}

std::unique_ptr<NEBSourceControlRecordParser> GitListStandardRemotesOperation::makeRecordParser() {
    return std::make_unique<GitLineParser>(recordOf);
}

void GitListStandardRemotesOperation::parseData() {
    if (hasOutput()) {
        GitOperation::parseData();
    }
}

void GitListRemotesOperation::main() {
    if (error()) {
        return;
    }
    setOperationQueue(std::make_shared<OperationQueue>());
    const auto standard = runList<GitListStandardRemotesOperation>(request());
    if (standard->error()) {
        setError(standard->error());
        return;
    }
    NEBSourceControlResult remotes;
    appendRecords(remotes, *standard);
    const auto subversion = run<GitListSVNRemoteOperation>(request());
    if (!subversion->error()) {
        appendRecords(remotes, *subversion);
    } else if (subversion->error()->errorClass == NEBSourceControlKilledErrorClass) {
        setError(subversion->error());
        return;
    }
    setResult(std::move(remotes));
}

GitAddRemoteOperation::GitAddRemoteOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    setChangesRepository();
    std::vector<std::string> arguments{"remote", "add"};
    appendIfPresent(arguments, this->request()->destination);
    if (this->request()->fileCount() == 1) {
        appendFiles(arguments);
    }
    setArgumentsBehindDefaults(arguments);
}

GitRemoveRemoteOperation::GitRemoveRemoteOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    setChangesRepository();
    std::vector<std::string> arguments{"remote", "rm"};
    appendIfPresent(arguments, this->request()->destination);
    setArgumentsBehindDefaults(arguments);
}

}  // namespace neb
