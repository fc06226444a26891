#include "GitOperations/GitErrorTable.h"

#include <algorithm>
#include <string>

#include "LOMFoundation/LOMFormat.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"

namespace neb {

namespace {

/// How a row tests a message. Case-sensitive.
enum class Test {
    containsAny,           // any of the texts, anywhere
    containsFirstForPush,  // the first text, if the request is a push whose transfer did not fail
    beginsAndEnds,         // begins with the first text and ends with the second
};

/// The replacement of "%@" in a description, or the whole description.
enum class Fill {
    nothing,
    sourceTreeName,
    destination,  // of the request; without one, the other description of the row is used
    wholeMessage,
};

struct Row {
    Test test;
    std::string_view texts[3];
    std::int64_t code;
    Fill fill;
    std::string_view description;  // empty: no user info
    std::string_view suggestion = {};
    std::string_view descriptionWithoutDestination = {};
    bool credentialsWereIncorrect = false;
    bool isNoError = false;
};

/// In the order of the tests; the first match decides. "Permission denied" is an authentication
/// failure at any position. The certificate row also marks the credentials as incorrect, so that a
/// host asks for them again.
constexpr Row rows[] = {
    {.test = Test::containsAny,
     .texts = {"Permission denied", "fatal: Authentication failed"},
     .code = NEBSourceControlAuthenticationError,
     .fill = Fill::nothing,
     .description = "Authentication failed because the name or password was incorrect.",
     .credentialsWereIncorrect = true},
    {.test = Test::containsAny,
     .texts = {"git branch -D"},
     .code = NEBSourceControlBranchRemovalError,
     .fill = Fill::nothing,
     .description = "Branch removal failed because the branch has either not been merged into its "
                    "ancestor or its ancestor has been removed."},
    {.test = Test::containsAny,
     .texts = {"update-index --refresh:"},
     .code = NEBSourceControlUncommittedChangesError,
     .fill = Fill::sourceTreeName,
     .description = "The operation could not be performed because the working copy \"%@\" has "
                    "uncommitted changes."},
    {.test = Test::containsAny,
     .texts = {"Merge the remote changes (e.g. 'git pull') before pushing again.",
               "Transaction is out of date"},
     .code = NEBSourceControlRemoteAheadError,
     .fill = Fill::sourceTreeName,
     .description = "The operation could not be performed because \"%@\" does not have the latest "
                    "remote changes.",
     .suggestion = "Pull the remote changes and try again."},
    {.test = Test::containsAny,
     .texts = {"error: insufficient permission for adding an object to repository database"},
     .code = NEBSourceControlNoPermissionError,
     .fill = Fill::destination,
     .description = "The operation could not be performed because you do not have permission to "
                    "modify \"%@\".",
     .descriptionWithoutDestination = "The operation could not be performed because you do not "
                                      "have permission to modify the repository."},
    {.test = Test::containsAny,
     .texts = {"fatal: destination exists"},
     .code = NEBSourceControlRenameTargetExistsError,
     .fill = Fill::nothing,
     .description = "The file could not be renamed because a file with that name already exists."},
    {.test = Test::containsAny,
     .texts = {"error: SSL certificate problem"},
     .code = NEBSourceControlAuthenticationError,
     .fill = Fill::nothing,
     .description = "The server certificate failed to verify.",
     .credentialsWereIncorrect = true},
    {.test = Test::containsAny,
     .texts = {"path not found", "Not a valid object name", "was not found for the file"},
     .code = NEBSourceControlFileMissingAtRevisionError,
     .fill = Fill::nothing,
     .description = "This file does not exist at the requested revision."},
    {.test = Test::containsAny,
     .texts = {"did not match any files"},
     .code = NEBSourceControlNotVersionedError,
     .fill = Fill::nothing,
     .description = "This file does not exist in the index."},
    {.test = Test::containsAny,
     .texts = {"fatal: Not possible to fast-forward"},
     .code = NEBSourceControlFastForwardError,
     .fill = Fill::wholeMessage,
     .description = "%@"},
    {.test = Test::containsAny,
     .texts = {"Already up-to-date"},
     .code = NEBSourceControlUpToDateError,
     .fill = Fill::sourceTreeName,
     .description = "\"%@\" is already up to date."},
    {.test = Test::containsFirstForPush,
     .texts = {"Everything up-to-date"},
     .code = NEBSourceControlRemoteUpToDateError,
     .fill = Fill::destination,
     .description = "The remote repository \"%@\" is already up to date."},
    {.test = Test::containsAny,
     .texts = {"Because this is not the default configured remote\nfor your current branch"},
     .code = NEBSourceControlTrackingBranchNotFoundError,
     .fill = Fill::nothing,
     .description = "The operation could not be performed because the tracking branch for the "
                    "current branch could not be located.",
     .suggestion = "Check that the local repository is configured properly and try again"},
    {.test = Test::containsAny,
     .texts = {"fatal: not under version control"},
     .code = NEBSourceControlNotVersionedError,
     .fill = Fill::nothing,
     .description = "The operation could not be performed because the file is not under version "
                    "control.",
     .suggestion = "Try adding the file to a working copy."},
    {.test = Test::containsAny,
     .texts = {"warning: Cannot merge binary files"},
     .code = NEBSourceControlBinaryMergeError,
     .fill = Fill::wholeMessage,
     .description = "%@"},
    // ssh prints this notice for a newly recorded host key.
    {.test = Test::beginsAndEnds,
     .texts = {"Warning: Permanently added", "(RSA) to the list of known hosts."},
     .code = 0,
     .fill = Fill::nothing,
     .description = "",
     .isNoError = true},
    {.test = Test::beginsAndEnds,
     .texts = {"fatal: source directory is empty", ""},
     .code = NEBSourceControlSourceDirectoryEmptyError,
     .fill = Fill::nothing,
     .description = ""},
};

bool contains(std::string_view message, std::string_view text) {
    return !text.empty() && message.find(text) != std::string_view::npos;
}

/// git also prints "Everything up-to-date" after a failed transfer.
bool reportsFailedTransfer(std::string_view message) {
    return contains(message, "RPC failed") || contains(message, "hung up unexpectedly");
}

bool passes(std::string_view message, const NEBSourceControlRequest& request, const Row& row) {
    switch (row.test) {
        case Test::containsAny:
            return std::any_of(
                std::begin(row.texts), std::end(row.texts),
                [message](std::string_view text) { return contains(message, text); });
        case Test::containsFirstForPush:
            return request.type == NEBSourceControlRequestPush && contains(message, row.texts[0]) &&
                   !reportsFailedTransfer(message);
        case Test::beginsAndEnds:
            return message.starts_with(row.texts[0]) && message.ends_with(row.texts[1]);
    }
    return false;
}

std::string descriptionOf(const Row& row, std::string_view message,
                          const NEBSourceControlRequest& request) {
    switch (row.fill) {
        case Fill::sourceTreeName:
            return formattedText(row.description, {request.sourceTreeName()});
        case Fill::destination:
            if (!request.destination.isPresent() && !row.descriptionWithoutDestination.empty()) {
                return std::string(row.descriptionWithoutDestination);
            }
            return formattedText(row.description, {request.destination.description()});
        case Fill::wholeMessage:
            return formattedText(row.description, {std::string(message)});
        case Fill::nothing:
            break;
    }
    return std::string(row.description);
}

NEBSourceControlError errorOf(const Row& row, std::string_view message,
                              const NEBSourceControlRequest& request) {
    NEBSourceControlError error;
    error.code = row.code;
    if (!row.description.empty()) {
        error.userInfo.set(NEBLocalizedDescriptionKey, descriptionOf(row, message, request));
    }
    if (!row.suggestion.empty()) {
        error.userInfo.set(NEBLocalizedRecoverySuggestionKey, row.suggestion);
    }
    if (row.credentialsWereIncorrect) {
        error.userInfo.set(NEBSourceControlAuthenticationErrorTypeKey,
                           NEBSourceControlAuthenticationCredentialsIncorrect);
    }
    return error;
}

}  // namespace

GitErrorTranslation gitErrorTableLookUp(std::string_view message,
                                        const NEBSourceControlRequest& request) {
    for (const Row& row : rows) {
        if (passes(message, request, row)) {
            return {.isKnown = true,
                    .error = row.isNoError ? std::nullopt
                                           : std::optional(errorOf(row, message, request))};
        }
    }
    return {};
}

}  // namespace neb
