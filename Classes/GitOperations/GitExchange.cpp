#include "GitOperations/GitExchange.h"

#include "LOMFoundation/LOMFormat.h"
#include "NEBFoundation/NEBSourceControlAssertions.h"
#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
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

bool contains(std::string_view text, std::string_view words) {
    return text.find(words) != std::string_view::npos;
}

void appendIfPresent(std::vector<std::string>& arguments, const NEBValue& value) {
    if (value.isPresent()) {
        arguments.push_back(value.description());
    }
}

}  // namespace

// ---- fetch ------------------------------------------------------------------------------------

GitFetchOperation::GitFetchOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    const NEBSourceControlRequest& asked = *this->request();
    assertNonEmptyOption(asked, NEBSourceControlRequestOptionRemoteName, remoteNameExpression,
                         "-[GitFetchOperation initWithRequest:]", 634);
    std::vector<std::string> arguments{"fetch", "-q"};
    appendIfPresent(arguments, asked.option(NEBSourceControlRequestOptionRemoteName));
    setArguments(std::move(arguments));
}

void GitFetchOperation::parseData() {
    if (!data()) {
        return;
    }
    const std::string words = _nebsc_stringFromData(errorData()).value_or("");
    if (words.starts_with("Couldn't find revmap") || words.starts_with("W: -empty_dir:")) {
        setErrorData(std::nullopt);
    }
    setResult(NEBSourceControlResult{});
}

/// git names what it rejects in the listing that its quiet mode leaves out.
std::optional<NEBSourceControlError> GitFetchOperation::errorFromUnknownFailure(
    std::optional<NEBSourceControlError> error) {
    if (error) {
        return error;
    }
    auto rejection = NEBSourceControlError::withDescription(
        NEBSourceControlGenericError,
        "A tag or branch was not updated: it differs from the remote's and would be overwritten.");
    rejection.errorClass = NEBSourceControlReferenceRejectedErrorClass;
    return rejection;
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
    std::vector<std::string> arguments{"pull", "--ff-only"};
    appendIfPresent(arguments, asked.option(NEBSourceControlRequestOptionRemoteName));
    appendIfPresent(arguments, asked.option(NEBSourceControlRequestOptionBranch));
    setArgumentsBehindDefaults(arguments);
}

void GitPullOperation::parseData() {
    setResult(NEBSourceControlResult{});
    if (data()) {
        const std::string output = *_nebsc_stringFromData(data());
        // Until git 2.14 with hyphens.
        if (contains(output, "Already up-to-date") || contains(output, "Already up to date")) {
            auto upToDate = NEBSourceControlError::withDescription(
                NEBSourceControlUpToDateError,
                formattedText("The local repository \"%@\" is up to date.",
                              {request()->sourceTreeName()}),
                // Its wording is what hosts have always shown.
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
    if (!errorData()) {
        setResult(NEBSourceControlResult{});
        return;
    }
    const std::string words = *_nebsc_stringFromData(errorData());
    if (contains(words, "fatal")) {
        return;
    }
    setData(errorData());
    setErrorData(std::nullopt);
    setResult({{{{NEBSourceControlOperationContentKey, words}}}});
}

/// git then says no more than that it failed: the hook ran before it had spoken to the remote.
std::optional<NEBSourceControlError> GitPushOperation::errorFromUnknownFailure(
    std::optional<NEBSourceControlError> error) {
    bool hasFailedAtOnce = false;
    bool hasSaidMore = false;
    forEachPiece(error && error->text ? *error->text : std::string(), '\n',
                 [&](std::string_view line) {
                     if (line.starts_with("error: failed to push some refs to '")) {
                         hasFailedAtOnce = true;
                     } else if (line.starts_with("error: ") || line.starts_with("fatal: ") ||
                                line.starts_with("To ") || line.starts_with(" ! ")) {
                         hasSaidMore = true;
                     }
                 });
    if (!hasFailedAtOnce || hasSaidMore) {
        return error;
    }
    auto refusal = NEBSourceControlError::withDescription(
        NEBSourceControlGenericError, "A hook of the repository refused the push.");
    refusal.errorClass = NEBSourceControlLocalHookErrorClass;
    refusal.text = error->text;
    return refusal;
}

}  // namespace neb
