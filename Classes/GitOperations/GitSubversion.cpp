#include "GitOperations/GitSubversion.h"

#include "NEBFoundation/NEBSourceControlAssertions.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Platform/PathString.h"

namespace neb {

namespace {

std::size_t countOf(const NEBSourceControlOperation& operation) {
    return operation.result() ? operation.result()->size() : 0;
}

void addLastRecord(NEBDictionary& remote, const NEBSourceControlOperation& operation) {
    if (countOf(operation) > 0) {
        remote.addEntriesFrom(operation.result()->back());
    }
}

/// A fetch over the bridge also prints the latter.
bool isHarmless(std::string_view text) {
    return gitIsBridgeNotice(text) ||
           (text.starts_with("Found possible branch point") &&
            text.find("Successfully followed parent") != std::string_view::npos);
}

}  // namespace

bool gitIsBridgeNotice(std::string_view text) {
    return text.starts_with("Couldn't find revmap") || text.starts_with("W: -empty_dir:");
}

GitFetchSVNRemoteNameOperation::GitFetchSVNRemoteNameOperation(
    std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    setArguments({"config", "--get", "svn-remote.svn.fetch"});
    setEmptyOutputIsValid();
    setCurrentDirectoryToOneFile();
}

/// Reads "path on the server:reference".
void GitFetchSVNRemoteNameOperation::parseData() {
    if (!data() || data()->empty()) {
        return;
    }
    const std::string text = *_nebsc_stringFromData(data());
    const std::string name = lastPathComponent(text.substr(text.rfind(':') + 1));
    NEBDictionary record;
    if (!name.empty()) {
        record.set(NEBSourceControlOperationRemoteNameKey, name);
        record.set(NEBSourceControlOperationTypeKey, "fetch");
    }
    setResult({{std::move(record)}});
}

void GitListSVNRemoteOperation::main() {
    if (error()) {
        return;
    }
    setOperationQueue(std::make_shared<OperationQueue>());
    const auto origin = run<GitFetchSVNRemoteOriginOperation>(request());
    if (origin->error()) {
        setError(origin->error());
        return;
    }
    const auto name = run<GitFetchSVNRemoteNameOperation>(request());
    if (name->error() && name->error()->errorClass == NEBSourceControlKilledErrorClass) {
        setError(name->error());
        return;
    }
    NEBSourceControlAssert({.function = "-[GitListSVNRemoteOperation main]",
                            .file = "Classes/GitOperations",
                            .line = 1405},
                           countOf(*origin) == countOf(*name),
                           "[fetchSVNRemoteOriginOperation.result count] == "
                           "[fetchSVNRemoteNameOperation.result count]");
    if (countOf(*origin) == 0) {
        setResult(NEBSourceControlResult{});
        return;
    }
    NEBDictionary remote{{NEBSourceControlOperationUsesGitSVNKey, true}};
    addLastRecord(remote, *origin);
    addLastRecord(remote, *name);
    setResult({{std::move(remote)}});
}

GitSvnFetchOperation::GitSvnFetchOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    setChangesRepository();
    setArguments({"svn", "fetch"});
}

void GitSvnFetchOperation::parseData() {
    if (data() && isHarmless(_nebsc_stringFromData(errorData()).value_or(""))) {
        setErrorData(std::nullopt);
        setResult(NEBSourceControlResult{});
    }
}

GitSvnRebaseOperation::GitSvnRebaseOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    const NEBValue& destination = this->request()->destination;
    NEBSourceControlAssertNonEmptyString({.function = "-[GitSvnRebaseOperation initWithRequest:]",
                                          .file = "Classes/GitOperations",
                                          .line = 1804},
                                         destination, "self.request.destination");
    setChangesRepository();
    std::vector<std::string> arguments{"rebase", "-s", "recursive", "-X", "ours"};
    appendIfPresent(arguments, destination);
    setArguments(std::move(arguments));
}

}  // namespace neb
