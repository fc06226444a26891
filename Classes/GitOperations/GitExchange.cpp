#include "GitOperations/GitExchange.h"

#include "GitOperations/GitHookFailure.h"
#include "GitOperations/GitSubversion.h"
#include "LOMFoundation/LOMFormat.h"
#include "NEBFoundation/NEBSourceControlAssertions.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Platform/Text.h"

namespace neb {

namespace {

constexpr std::string_view remoteNameExpression =
    "[request.options objectForKey:NEBSourceControlRequestOptionRemoteName]";
constexpr std::string_view branchExpression =
    "[request.options objectForKey:NEBSourceControlRequestOptionBranch]";

void assertNonEmptyOption(const NEBSourceControlRequest& request, NEBConstant key,
                          std::string_view expression, std::string_view function, int line) {
    NEBSourceControlAssertNonEmptyString(
        {.function = function, .file = "Classes/GitOperations", .line = line}, request.option(key),
        expression);
}

bool contains(std::string_view text, std::string_view substring) {
    return text.find(substring) != std::string_view::npos;
}

/// Whether one of the lines of the text equals `line`.
bool hasLine(std::string_view text, std::string_view line) {
    bool isThere = false;
    forEachField(text, '\n', [&](std::string_view other) { isThere = isThere || other == line; });
    return isThere;
}

/// Returns the lines for rejected references in the listing of a fetch: " ! [rejected]        v1
/// -> v1  (would clobber existing tag)".
std::string rejectionsIn(std::string_view listing) {
    std::string rejections;
    forEachField(listing, '\n', [&](std::string_view line) {
        if (line.starts_with(" ! [rejected]")) {
            rejections.append(line).append("\n");
        }
    });
    return rejections;
}

}  // namespace

// ---- fetch ------------------------------------------------------------------------------------

GitFetchOperation::GitFetchOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    const NEBSourceControlRequest& asked = *this->request();
    assertNonEmptyOption(asked, NEBSourceControlRequestOptionRemoteName, remoteNameExpression,
                         "-[GitFetchOperation initWithRequest:]", 634);
    setChangesRepository();
    if (asked.type != NEBSourceControlRequestFetch) {
        setEmptyOutputIsValid();
    }
    std::vector<std::string> arguments{"fetch", "-q"};
    appendIfPresent(arguments, asked.option(NEBSourceControlRequestOptionRemoteName));
    setArguments(std::move(arguments));
}

void GitFetchOperation::parseData() {
    if (!data()) {
        return;
    }
    if (gitIsBridgeNotice(_nebsc_stringFromData(errorData()).value_or(""))) {
        setErrorData(std::nullopt);
    }
    setResult(NEBSourceControlResult{});
}

std::optional<NEBSourceControlError> GitFetchOperation::errorFromUnknownFailure(
    std::optional<NEBSourceControlError> error) {
    const bool wasSilent = !error;
    error = GitOperation::errorFromUnknownFailure(std::move(error));
    if (!wasSilent || !error || terminationStatus()->exitStatus() != 1) {
        return error;
    }
    const auto dryRun = std::make_shared<GitFetchDryRunOperation>(request());
    _dryRun.setQueue(std::make_shared<OperationQueue>());
    _dryRun.add(*this, dryRun);
    _dryRun.wait(*this);
    if (isCancelled()) {
        return NEBSourceControlCancelledError();
    }
    std::string rejections = rejectionsIn(_nebsc_stringFromData(dryRun->errorData()).value_or(""));
    if (rejections.empty()) {
        return error;
    }
    // The only two reasons for which a fetch rejects a reference and prints nothing.
    auto rejection = NEBSourceControlError::withDescription(
        NEBSourceControlGenericError,
        "A tag or branch was not updated: it differs from the remote's and would be overwritten.");
    rejection.errorClass = NEBSourceControlReferenceRejectedErrorClass;
    rejection.text = std::move(rejections);
    return rejection;
}

void GitFetchOperation::cancel() {
    GitOperation::cancel();
    _dryRun.cancelAll();
}

GitFetchDryRunOperation::GitFetchDryRunOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    std::vector<std::string> arguments{"fetch", "--dry-run", "--no-auto-gc",
                                       "--no-recurse-submodules"};
    appendIfPresent(arguments, this->request()->option(NEBSourceControlRequestOptionRemoteName));
    setArguments(std::move(arguments));
}

// ---- pull -------------------------------------------------------------------------------------

GitPullOperation::GitPullOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    constexpr std::string_view function = "-[GitPullOperation initWithRequest:]";
    const NEBSourceControlRequest& asked = *this->request();
    assertNonEmptyOption(asked, NEBSourceControlRequestOptionRemoteName, remoteNameExpression,
                         function, 1818);
    assertNonEmptyOption(asked, NEBSourceControlRequestOptionBranch, branchExpression, function,
                         1819);
    setChangesRepository();
    std::vector<std::string> arguments{"pull", "--ff-only"};
    appendIfPresent(arguments, asked.option(NEBSourceControlRequestOptionRemoteName));
    appendIfPresent(arguments, asked.option(NEBSourceControlRequestOptionBranch));
    setArgumentsBehindDefaults(arguments);
}

void GitPullOperation::parseData() {
    setResult(NEBSourceControlResult{});
    if (data()) {
        const std::string output = *_nebsc_stringFromData(data());
        const bool isSuccess = !terminationStatus() || terminationStatus()->isSuccess();
        // Until git 2.14 "up-to-date", which can also be the name of a fetched file.
        if (isSuccess &&
            (contains(output, "Already up-to-date") || hasLine(output, "Already up to date."))) {
            auto upToDate = NEBSourceControlError::withDescription(
                NEBSourceControlUpToDateError,
                formattedText("The local repository \"%@\" is up to date.",
                              {request()->sourceTreeName()}),
                // The text that hosts have always shown.
                formattedText("The are no changes to pull from \"%@\".",
                              {request()->destination.description()}));
            upToDate.errorClass = NEBSourceControlUpToDateErrorClass;
            setError(std::move(upToDate));
        } else {
            setResult({{{{NEBSourceControlOperationContentKey, output}}}});
        }
    }
    if (errorData() && !contains(*_nebsc_stringFromData(errorData()), "fatal")) {
        setErrorData(std::nullopt);
    }
}

// ---- push -------------------------------------------------------------------------------------

GitPushOperation::GitPushOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    constexpr std::string_view function = "-[GitPushOperation initWithRequest:]";
    const NEBSourceControlRequest& asked = *this->request();
    setChangesRepository();
    if (asked.remote && asked.remote->representsGitSVNBridge) {
        setArguments({"svn", "dcommit", "--quiet"});
        return;
    }
    NEBSourceControlAssertNonEmptyString(
        {.function = function, .file = "Classes/GitOperations", .line = 1868}, asked.destination,
        "self.request.destination");
    assertNonEmptyOption(asked, NEBSourceControlRequestOptionRemoteName, remoteNameExpression,
                         function, 1869);
    assertNonEmptyOption(asked, NEBSourceControlRequestOptionBranch, branchExpression, function,
                         1870);
    std::vector<std::string> arguments{"push"};
    appendIfPresent(arguments, asked.option(NEBSourceControlRequestOptionRemoteName));
    arguments.push_back(
        formattedText("%@:%@", {asked.option(NEBSourceControlRequestOptionBranch).description(),
                                asked.destination.description()}));
    setArguments(std::move(arguments));
}

void GitPushOperation::parseData() {
    _output = data().value_or(Data());
    if (!errorData()) {
        setResult(NEBSourceControlResult{});
        return;
    }
    const std::string stderrText = *_nebsc_stringFromData(errorData());
    if (contains(stderrText, "fatal")) {
        return;
    }
    setData(errorData());
    setErrorData(std::nullopt);
    setResult({{{{NEBSourceControlOperationContentKey, stderrText}}}});
}

std::optional<NEBSourceControlError> GitPushOperation::diagnoseFailure(
    std::string_view text) const {
    return gitReportsRefusalBeforeSending(text) ? std::optional(gitErrorOfPushHook(_output, text))
                                                : std::nullopt;
}

}  // namespace neb
