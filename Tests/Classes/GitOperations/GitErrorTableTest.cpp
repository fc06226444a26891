#include "GitOperations/GitErrorTable.h"

#include <gmock/gmock.h>

#include "GitOperations/GitOperation.h"
#include "NEBFoundation/NEBSourceControlErrorTexts.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Support/Matchers.h"

namespace neb {
namespace {

using test::IsSourceControlError;
using test::requestFor;

constexpr const char* credentials =
    "Authentication failed because the name or password was incorrect.";
constexpr const char* notMerged =
    "Branch removal failed because the branch has either not been merged into its ancestor or its "
    "ancestor has been removed.";
constexpr const char* uncommitted =
    "The operation could not be performed because the working copy \"demo\" has uncommitted "
    "changes.";
constexpr const char* behind =
    "The operation could not be performed because \"demo\" does not have the latest remote "
    "changes.";
constexpr const char* noPermission =
    "The operation could not be performed because you do not have permission to modify "
    "\"there\".";
constexpr const char* targetExists =
    "The file could not be renamed because a file with that name already exists.";
constexpr const char* certificate = "The server certificate failed to verify.";
constexpr const char* missing = "This file does not exist at the requested revision.";
constexpr const char* notInIndex = "This file does not exist in the index.";
constexpr const char* upToDate = "\"demo\" is already up to date.";
constexpr const char* remoteUpToDate = "The remote repository \"there\" is already up to date.";
constexpr const char* noTracking =
    "The operation could not be performed because the tracking branch for the current branch could "
    "not be located.";
constexpr const char* notVersioned =
    "The operation could not be performed because the file is not under version control.";
constexpr const char* theMessage = "(the message)";
constexpr const char* noUserInfo = "(none)";

struct Row {
    const char* name;
    std::string message;
    std::int64_t code;
    std::string description;
    const char* suggestion = nullptr;
    bool credentialsMark = false;
    std::int32_t type = NEBSourceControlRequestLog;
};

const std::string pullSuggestion = "Pull the remote changes and try again.";

class ErrorTable : public testing::TestWithParam<Row> {};

TEST_P(ErrorTable, TranslatesTheText) {
    const Row& row = GetParam();
    auto request = requestFor(row.type, "/w");
    request->destination = "there";
    GitOperation operation(request);
    const auto error = operation.errorFromErrorMessage(row.message);
    const std::string expected = row.description == theMessage ? row.message : row.description;
    EXPECT_THAT(error, IsSourceControlError(row.code, expected));
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->localizedRecoverySuggestion(), row.suggestion != nullptr
                                                        ? std::optional<std::string>(row.suggestion)
                                                        : std::nullopt);
    EXPECT_EQ(error->userInfo.value(NEBSourceControlAuthenticationErrorTypeKey),
              row.credentialsMark ? NEBValue(NEBSourceControlAuthenticationCredentialsIncorrect)
                                  : NEBValue());
    const std::size_t entries = (expected == noUserInfo ? 0U : 1U) +
                                (row.suggestion != nullptr ? 1U : 0U) +
                                (row.credentialsMark ? 1U : 0U);
    EXPECT_EQ(error->userInfo.size(), entries) << "nothing else in the user info";
}

/// Every sentence in its own language, so that a text which has no key is not found.
NEBSourceControlErrorTexts englishTexts() {
    std::string table;
    for (const NEBSourceControlErrorSentence& sentence : NEBSourceControlErrorSentences()) {
        table += sentence.key + " = " + sentence.english + "\n";
    }
    return NEBSourceControlErrorTexts::fromText(table);
}

TEST_P(ErrorTable, HasSentencesWithKeys) {
    auto request = requestFor(GetParam().type, "/w");
    request->destination = "there";
    const auto error = gitErrorTableLookUp(GetParam().message, *request).error;
    const bool isOwnSentence =
        GetParam().description != theMessage && GetParam().description != noUserInfo;
    if (error && isOwnSentence) {
        EXPECT_EQ(englishTexts().description(*error), error->localizedDescription());
        EXPECT_EQ(englishTexts().suggestion(*error), error->localizedRecoverySuggestion());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ErrorTable,
    testing::Values(
        Row{"R01PermissionDenied", "x: Permission denied\n", -21, credentials, nullptr, true},
        Row{"R01AuthenticationFailed", "fatal: Authentication failed for 'https://h/r.git/'", -21,
            credentials, nullptr, true},
        Row{"R02BranchNotMerged", "error: not merged.\nrun 'git branch -D x'.\n", -91, notMerged},
        Row{"R03NotRefreshed", "a: needs update\nupdate-index --refresh: command returned error: 1",
            -31, uncommitted},
        Row{"R04MergeFirst", "Merge the remote changes (e.g. 'git pull') before pushing again.",
            -32, behind, "Pull the remote changes and try again."},
        Row{"R04OutOfDate", "Transaction is out of date: File '/trunk/a'", -32, behind,
            "Pull the remote changes and try again."},
        Row{"R05NoPermission",
            "error: insufficient permission for adding an object to repository database x", 513,
            noPermission},
        Row{"R06TargetExists", "fatal: destination exists, source=a, destination=b", -60,
            targetExists},
        Row{"R07Certificate", "error: SSL certificate problem, verify that the CA cert is OK", -21,
            certificate, nullptr, true},
        Row{"R08PathNotFound", "svn: path not found: /a", 4, missing},
        Row{"R08NoObject", "fatal: Not a valid object name nosuch", 4, missing},
        Row{"R08NotFoundForFile", "The revision x was not found for the file y", 4, missing},
        Row{"R09NoMatch", "fatal: pathspec 'x' did not match any files", -71, notInIndex},
        Row{"R10FastForward", "From /r\nfatal: Not possible to fast-forward, aborting.\n", -200,
            theMessage},
        Row{"R11UpToDate", "Already up-to-date.", -34, upToDate},
        Row{"R12PushUpToDate", "Everything up-to-date\n", -25, remoteUpToDate, nullptr, false, 33},
        Row{"R13NoTrackingBranch",
            "You asked to pull. Because this is not the default configured remote\nfor your "
            "current "
            "branch, you must specify a branch.",
            -92, noTracking,
            "Check that the local repository is configured properly and try again"},
        Row{"R14NotVersioned", "fatal: not under version control, source=u", -71, notVersioned,
            "Try adding the file to a working copy."},
        Row{"R15BinaryMerge", "warning: Cannot merge binary files: bin (HEAD vs. bt)\n", -300,
            theMessage},
        Row{"R17EmptySource", "fatal: source directory is empty, source=d", -70, noUserInfo},
        // texts that the host translates
        Row{"R18Unknown", "fatal: never heard of", -1, theMessage},
        Row{"R12OtherThanPush", "Everything up-to-date\n", -1, theMessage, nullptr, false, 37},
        Row{"R12AfterAFailedTransfer",
            "error: RPC failed; HTTP 413 curl 22 The requested URL returned error: 413\n"
            "Everything up-to-date\n",
            -1, "The HTTP server refused the request.",
            "Check that your account has access to the repository. If the server limits requests, "
            "try again later.",
            false, 33},
        Row{"R12AfterAHangUp",
            "fatal: the remote end hung up unexpectedly\nEverything up-to-date\n", -20,
            "The connection to the server was lost.",
            "Try again. If it happens again, check the network connection and the limits of the "
            "server.",
            false, 33},
        Row{"R13OnOneLine",
            "Because this is not the default configured remote for your current branch", -92,
            "The branch has no upstream branch.",
            "Name the remote and the branch, or set the upstream branch with \"git branch "
            "--set-upstream-to=REMOTE/BRANCH\"."},
        Row{"R16OtherKey", "Warning: Permanently added 'h' (ED25519) to the list of known hosts.",
            -1, theMessage},
        Row{"R16NotAtTheStart",
            "x Warning: Permanently added 'h' (RSA) to the list of known hosts.", -1, theMessage},
        Row{"R17NotAtTheStart", "x fatal: source directory is empty", -70,
            "The folder to move has no tracked files.", "Move it without git."},
        Row{"CaseCounts", "permission DENIED by someone in particular", 513,
            "The operating system denied access to a file or folder.",
            "Check the permissions of the file or folder."},
        // the order
        Row{"O01Before02", "run 'git branch -D x': Permission denied", -21, credentials, nullptr,
            true},
        Row{"O01Before05",
            "Permission denied\nerror: insufficient permission for adding an object to repository "
            "database",
            -21, credentials, nullptr, true},
        Row{"O01Before16",
            "Warning: Permanently added Permission denied (RSA) to the list of known "
            "hosts.",
            -21, credentials, nullptr, true},
        Row{"O02Before03", "update-index --refresh: git branch -D", -91, notMerged},
        Row{"O03Before04", "Transaction is out of date update-index --refresh:", -31, uncommitted},
        Row{"O04Before05",
            "error: insufficient permission for adding an object to repository database "
            "Transaction is out of date",
            -32, behind, "Pull the remote changes and try again."},
        Row{"O05Before06",
            "fatal: destination exists error: insufficient permission for adding an object to "
            "repository database",
            513, noPermission},
        Row{"O06Before07", "error: SSL certificate problem fatal: destination exists", -60,
            targetExists},
        Row{"O07Before08", "path not found error: SSL certificate problem", -21, certificate,
            nullptr, true},
        Row{"O08Before09", "did not match any files path not found", 4, missing},
        Row{"O09Before10", "fatal: Not possible to fast-forward did not match any files", -71,
            notInIndex},
        Row{"O09Before11", "Already up-to-date did not match any files", -71, notInIndex},
        Row{"O10Before11", "Already up-to-date fatal: Not possible to fast-forward", -200,
            theMessage},
        Row{"O11Before12", "Everything up-to-date Already up-to-date", -34, upToDate, nullptr,
            false, 33},
        Row{"O12Before13",
            "Because this is not the default configured remote\nfor your current branch Everything "
            "up-to-date",
            -25, remoteUpToDate, nullptr, false, 33},
        Row{"O13WhereItIsNoPush",
            "Everything up-to-date Because this is not the default configured remote\nfor your "
            "current branch",
            -92, noTracking,
            "Check that the local repository is configured properly and try again"},
        Row{"O13Before14",
            "fatal: not under version control Because this is not the default configured "
            "remote\nfor your current branch",
            -92, noTracking,
            "Check that the local repository is configured properly and try again"},
        Row{"O14Before15", "warning: Cannot merge binary files fatal: not under version control",
            -71, notVersioned, "Try adding the file to a working copy."},
        Row{"O15Before16",
            "Warning: Permanently added warning: Cannot merge binary files (RSA) to the list of "
            "known hosts.",
            -300, theMessage},
        Row{"O15Before17", "fatal: source directory is empty warning: Cannot merge binary files",
            -300, theMessage}),
    [](const auto& parameter) { return parameter.param.name; });

TEST(ErrorTableRows, NamesTheRepositoryWithoutADestination) {
    GitOperation operation(requestFor(NEBSourceControlRequestAdd, "/w"));
    EXPECT_THAT(operation.errorFromErrorMessage(
                    "error: insufficient permission for adding an object to repository database"),
                IsSourceControlError(513,
                                     "The operation could not be performed because you do not "
                                     "have permission to modify the repository."));
}

TEST(ErrorTableRows, PrintsNullForAnAbsentName) {
    auto request = requestFor(NEBSourceControlRequestPush, "/w");
    request->sourceTree = nullptr;
    GitOperation operation(request);
    EXPECT_THAT(operation.errorFromErrorMessage("Already up-to-date."),
                IsSourceControlError(-34, "\"(null)\" is already up to date."));
    EXPECT_THAT(
        operation.errorFromErrorMessage("Everything up-to-date"),
        IsSourceControlError(-25, "The remote repository \"(null)\" is already up to date."));
}

TEST(ErrorTableRows, IgnoreTheNoticeOfANewHostKey) {
    GitOperation operation(requestFor(NEBSourceControlRequestFetch, "/w"));
    const std::string notice =
        "Warning: Permanently added 'example.org' (RSA) to the list of known hosts.";
    EXPECT_EQ(operation.errorFromErrorMessage(notice), std::nullopt);
    EXPECT_TRUE(gitErrorTableLookUp(notice, *operation.request()).isKnown);
    EXPECT_FALSE(gitErrorTableLookUp(notice + "\nmore", *operation.request()).isKnown);
}

TEST(ErrorTableRows, MatchTextThatTheOperationMoved) {
    class MovingOperation : public GitOperation {
    public:
        using GitOperation::GitOperation;
        std::string launchPath() override { return "/bin/sh"; }
        void parseData() override { setErrorData(std::nullopt); }
    };
    MovingOperation operation(requestFor(NEBSourceControlRequestPush, std::nullopt));
    operation.setArguments({"-c", "echo \"run 'git branch -D x'\" >&2; exit 1"});
    operation.start();
    EXPECT_THAT(operation.error(), IsSourceControlError(-91, notMerged));
}

TEST(ErrorTableRows, IgnoreAnAbsentMessage) {
    GitOperation operation(requestFor(NEBSourceControlRequestFetch, "/w"));
    EXPECT_EQ(operation.errorFromErrorMessage(std::nullopt), std::nullopt);
}

}  // namespace
}  // namespace neb
