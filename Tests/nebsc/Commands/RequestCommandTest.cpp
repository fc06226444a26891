// `nebsc request`, run as a program.

#include <gmock/gmock.h>
#include <signal.h>

#include <filesystem>
#include <map>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/TestRepository.h"
#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using JSON = nlohmann::ordered_json;

std::string statusRequest(const std::string& location) {
    return JSON{{"type", NEBSourceControlRequestStatus}, {"sourceTree", {{"location", location}}}}
        .dump();
}

/// Returns the outcome with fixed values in place of those that differ between runs.
std::string steady(JSON outcome) {
    for (JSON& run : outcome["commands"]) {
        EXPECT_TRUE(run["milliseconds"].is_number_float());
        run["milliseconds"] = 0;
    }
    return outcome.dump();
}

TEST(RequestCommand, PrintsTheOutcomeOfAStatus) {
    const TestRepository repository;
    repository.write("a b.txt", "new");
    const StandInGit git("", "printf '?? \"a b.txt\"\\n M c.c\\n'");
    const NebscOutcome outcome =
        runRequest(statusRequest(repository.path()), {.variables = {git.path()}});
    const std::string command = R"({"launchPath":")" + git.launchPath() +
                                R"(","arguments":["status","--porcelain"],)"
                                R"("currentDirectoryPath":")" +
                                repository.path() + "\"";
    EXPECT_EQ(steady(outcome.json()),
              R"({"type":15,"name":"status","authenticationRequired":false,"valid":true,)"
              R"("operation":"GitStatusOperation","command":)" +
                  command + R"(,"pipeTo":null},"commands":[)" + command +
                  R"(,"terminationStatus":0,"milliseconds":0}],"reports":[],"result":[)"
                  R"({"NEBSourceControlOperationWCStatusKey":256,)"
                  R"("NEBSourceControlOperationPathKey":")" +
                  repository.path("a b.txt") +
                  R"("},{"NEBSourceControlOperationWCStatusKey":4,)"
                  R"("NEBSourceControlOperationPathKey":")" +
                  repository.path("c.c") + R"("}],"error":null})");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

/// git is started again as long as the index is locked.
TEST(RequestCommand, WaitsForLocksAsLongAsItSays) {
    const TestRepository repository;
    repository.write("new", "1\n");
    repository.write(".git/index.lock", "");
    JSON request{{"type", NEBSourceControlRequestAddFiles},
                 {"sourceTree", {{"location", repository.path()}}},
                 {"files", {"new"}}};
    for (const int wait : {0, 120}) {
        request["limits"] = {{"lockWaitMilliseconds", wait}};
        const JSON outcome = runRequest(request.dump()).json();
        EXPECT_EQ(outcome["error"]["class"], "index-locked");
        EXPECT_EQ(outcome["commands"].size() > 1, wait > 0) << outcome["commands"];
    }
}

TEST(RequestCommand, ADryRunRunsNothing) {
    const TemporaryFolder folder;
    const std::string file = folder.write("request.json", statusRequest(folder.path()));
    const StandInGit git("", "touch '" + folder.path("ran") + "'");
    const NebscOutcome outcome =
        runNebsc({"request", "--dry-run", file}, {.variables = {git.path()}});
    const JSON json = outcome.json();
    EXPECT_EQ(json["operation"], "GitStatusOperation");
    EXPECT_EQ(json["command"]["arguments"], JSON({"status", "--porcelain"}));
    EXPECT_EQ(json["command"]["currentDirectoryPath"], folder.path());
    EXPECT_EQ(json["commands"], JSON::array());
    EXPECT_TRUE(json["result"].is_null());
    EXPECT_TRUE(json["error"].is_null());
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_FALSE(std::filesystem::exists(folder.path("ran")));
}

TEST(RequestCommand, ReadsStandardInputAndFiles) {
    const TemporaryFolder folder;
    const std::string file = folder.write("-request", R"({"type": 4})");
    const std::string expected = runRequest(R"({"type": 4})").output;
    EXPECT_EQ(JSON::parse(expected)["operation"], "GitIgnoreOperation");
    EXPECT_EQ(runNebsc({"request", "-"}, {.input = R"({"type": 4})"}).output, expected);
    EXPECT_EQ(runNebsc({"request", file}).output, expected);
    EXPECT_EQ(runNebsc({"request", "--", "-request"}, {.folder = folder.path()}).output, expected);
    EXPECT_EQ(runNebsc({"--json", "request", "--json", file}).output, expected);
}

TEST(RequestCommand, AnEmptyOperationHasNeitherResultNorError) {
    const NebscOutcome outcome = runRequest(R"({"type": 4})");
    EXPECT_EQ(outcome.output,
              R"({"type":4,"name":"ignore","authenticationRequired":false,"valid":true,)"
              R"("operation":"GitIgnoreOperation","command":null,"commands":[],"reports":[],)"
              R"("result":null,"error":null})"
              "\n");
    EXPECT_EQ(outcome.exitStatus, 0);
}

/// The types without an operation, and those outside the known range.
const std::map<std::string, std::string> typesWithoutOperation{
    {"-1", "-1"},
    {"12", "12 (unsupported)"},
    {"16", "16 (unsupported)"},
    {"23", "23 (unsupported)"},
    {"40", "40"},
    {"2147483647", "2147483647"},
};

TEST(RequestCommand, ATypeWithoutOperationIsAnError) {
    for (const auto& [type, shown] : typesWithoutOperation) {
        const NebscOutcome outcome = runRequest(R"({"type": )" + type + "}");
        const JSON json = outcome.json();
        EXPECT_EQ(json["valid"], true) << type;
        for (const char* member : {"operation", "command", "result"}) {
            EXPECT_TRUE(json[member].is_null()) << type << member;
        }
        EXPECT_EQ(json["commands"], JSON::array());
        EXPECT_EQ(json["reports"], JSON::array());
        const JSON& error = json["error"];
        ASSERT_TRUE(error.is_object()) << outcome.output;
        EXPECT_EQ(error["domain"], "NEBSourceControlErrorDomain");
        EXPECT_EQ(error["code"], -1);
        EXPECT_EQ(error["class"], "request-invalid");
        EXPECT_EQ(error["localizedDescription"],
                  "The plug-in has no operation for the request type " + shown + ".");
        EXPECT_THAT(error["localizedRecoverySuggestion"], HasSubstr("nebsc types"));
        EXPECT_EQ(outcome.errors, "");
        EXPECT_EQ(outcome.exitStatus, 1);
    }
}

TEST(RequestCommand, ADryRunReportsATypeWithoutOperationToo) {
    const NebscOutcome outcome = runNebsc({"request", "--dry-run"}, {.input = R"({"type": 16})"});
    EXPECT_EQ(outcome.json()["error"]["class"], "request-invalid");
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST(RequestCommand, AFailedValidationIsTheOutcome) {
    const NebscOutcome outcome = runRequest(
        R"({"type": 33, "sourceTree": {"name": "demo"}, "repositoryToAuthenticate":
            {"class": "NEBSourceControlRepository", "reachable": false}})");
    const std::string sentence =
        R"("The operation could not be performed because the repository \"demo\" could not be )"
        R"(reached.")";
    EXPECT_EQ(outcome.output,
              R"({"type":33,"name":"push","authenticationRequired":true,"valid":false,)"
              R"("operation":null,"command":null,"commands":[],"reports":[],"result":null,)"
              R"("error":{"domain":"NEBSourceControlErrorDomain","code":-20,"class":null,)"
              R"("terminationStatus":null,"text":null,"hints":[],"remoteLines":[],"files":[],)"
              R"("localizedDescription":)" +
                  sentence + R"(,"localizedRecoverySuggestion":null,"userInfo":)" +
                  R"({"NEBLocalizedDescriptionKey":)" + sentence + "}}}\n");
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST(RequestCommand, ReportsAreOnlyInTheOutcome) {
    const NebscOutcome outcome =
        runNebsc({"request", "--dry-run"}, {.input = R"({"type": 36, "destination": 1.50})"});
    const JSON reports = outcome.json()["reports"];
    ASSERT_EQ(reports.size(), 3U);
    EXPECT_EQ(reports[0].dump(),
              R"-({"function":"-[GitController operationForRequest:]",)-"
              R"-("file":"Classes/GitController","line":199,)-"
              R"-("message":"request.destination should be a non-empty string, but it is 1.50",)-"
              R"-("condition":"CFGetTypeID(request.destination) == CFStringGetTypeID()"})-");
    EXPECT_EQ(reports[1]["line"], 200);
    EXPECT_EQ(reports[2]["line"], 201);
    EXPECT_EQ(outcome.errors, "");
}

TEST(RequestCommand, AFailureOfGitIsTheErrorOfTheOutcome) {
    const TemporaryFolder folder;
    const NebscOutcome outcome = runRequest(statusRequest(folder.path()));
    const JSON json = outcome.json();
    EXPECT_EQ(json["commands"][0]["terminationStatus"], 128);
    EXPECT_EQ(json["error"]["domain"], "NEBSourceControlErrorDomain");
    EXPECT_EQ(json["error"]["localizedDescription"], "The folder is not in a git repository.");
    EXPECT_THAT(json["error"]["text"].get<std::string>(), HasSubstr("not a git repository"));
    EXPECT_FALSE(json["error"]["class"].is_null());
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST(RequestCommand, AGitKilledByASignalHasNoTerminationStatus) {
    const TemporaryFolder folder;
    const StandInGit git("", "kill -KILL $$");
    const NebscOutcome outcome =
        runRequest(statusRequest(folder.path()), {.variables = {git.path()}});
    const JSON json = outcome.json();
    ASSERT_EQ(json["commands"].size(), 1U);
    EXPECT_TRUE(json["commands"][0]["terminationStatus"].is_null());
    EXPECT_EQ(json["error"]["class"], "killed");
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST(RequestCommand, InvalidUTF8BecomesReplacementCharacters) {
    const TemporaryFolder folder;
    const StandInGit git("", R"(printf ' M lat\344.c\n?? tab\tx\n')");
    const NebscOutcome outcome =
        runRequest(statusRequest(folder.path()), {.variables = {git.path()}});
    const JSON result = outcome.json()["result"];
    ASSERT_EQ(result.size(), 2U);
    EXPECT_EQ(result[0]["NEBSourceControlOperationPathKey"], folder.path("lat\xEF\xBF\xBD.c"));
    EXPECT_EQ(result[1]["NEBSourceControlOperationPathKey"], folder.path("tab\tx"));
}

TEST(RequestCommand, AValueThatGitWouldTakeForAnOptionIsRefused) {
    const TemporaryFolder folder;
    const StandInGit git("", "touch '" + folder.path("ran") + "'");
    const NebscOutcome outcome = runRequest(
        R"({"type": 18, "sourceTree": {"location": "/"}, "startingRevision": "--output=x"})",
        {.variables = {git.path()}});
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors,
              "nebsc: the request's member 'startingRevision' is '--output=x', which is "
              "refused, because git would take it for an option\n");
    EXPECT_EQ(outcome.exitStatus, 2);
    EXPECT_FALSE(std::filesystem::exists(folder.path("ran")));
}

TEST(RequestCommand, ANumberThatGitWouldTakeForAnOptionIsRefused) {
    const TemporaryFolder folder;
    const StandInGit git("", "touch '" + folder.path("ran") + "'");
    const NebscOutcome outcome = runRequest(
        R"({"type": 33, "sourceTree": {"location": "/", "reachable": true},
            "repositoryToAuthenticate": {"location": "/", "reachable": true},
            "remote": {}, "destination": "repo", "options": {
            "NEBSourceControlRequestOptionRemoteName": -4,
            "NEBSourceControlRequestOptionBranch": "host.example"}})",
        {.variables = {git.path()}});
    EXPECT_EQ(outcome.errors,
              "nebsc: the request's member 'options.NEBSourceControlRequestOptionRemoteName' is "
              "'-4', which is refused, because git would take it for an option\n");
    EXPECT_EQ(outcome.exitStatus, 2);
    EXPECT_FALSE(std::filesystem::exists(folder.path("ran")));
}

TEST(RequestCommand, RefusesInvalidRequestsInOneLine) {
    for (const char* json : {"", "[]", "{", R"({"type": 15} x)", R"({"type": 15.0})", "{}",
                             "{\"type\": 15, \"a\nb\": 1}", R"({"type": 15, "a\nb": 1})",
                             "{\"type\": \"\x1b\xff\"}"}) {
        const NebscOutcome outcome = runRequest(json);
        EXPECT_EQ(outcome.output, "") << json;
        EXPECT_THAT(outcome.errors, testing::StartsWith("nebsc: the request")) << json;
        EXPECT_EQ(outcome.errors.find('\n'), outcome.errors.size() - 1) << json;
        EXPECT_EQ(outcome.errors.find('\x1b'), std::string::npos) << json;
        EXPECT_EQ(outcome.exitStatus, 2) << json;
    }
}

TEST(RequestCommand, ReportsAnUnreadableFile) {
    const TemporaryFolder folder;
    const std::string missing = folder.path("none.json");
    NebscOutcome outcome = runNebsc({"request", missing});
    EXPECT_EQ(outcome.errors,
              "nebsc: the file '" + missing + "' could not be read: No such file or directory\n");
    EXPECT_EQ(outcome.exitStatus, 2);
    outcome = runNebsc({"request", folder.path()});
    EXPECT_EQ(outcome.errors,
              "nebsc: the file '" + folder.path() + "' could not be read: Is a directory\n");
    EXPECT_EQ(outcome.exitStatus, 2);
    outcome = runNebsc({"request"}, {.hasClosedInput = true});
    EXPECT_EQ(outcome.errors, "nebsc: standard input could not be read: Bad file descriptor\n");
    EXPECT_EQ(outcome.exitStatus, 2);
}

TEST(RequestCommand, PrintsALargeResult) {
    const TemporaryFolder folder;
    const StandInGit git("", "yes '?? a-name-of-some-length.txt' | head -n 100000");
    const NebscOutcome outcome =
        runRequest(statusRequest(folder.path()), {.variables = {git.path()}});
    EXPECT_EQ(outcome.json()["result"].size(), 100000U);
}

TEST(RequestCommand, ReportsThatAnotherProcessHeldTheOutput) {
    const TemporaryFolder folder;
    const StandInGit git("", "echo ' M a.c'; sleep 600 & echo $! > '" + folder.path("pid") + "'");
    const NebscOutcome outcome =
        runRequest(statusRequest(folder.path()), {.variables = {git.path()}});
    EXPECT_EQ(outcome.json()["result"].size(), 1U);
    EXPECT_EQ(outcome.errors,
              "nebsc: a process that git left behind still held its output open; what it wrote "
              "later is missing here\n");
    ::kill(std::stoi(folder.read("pid")), SIGKILL);
}

TEST(RequestCommand, RefusesEndlessInput) {
    const NebscOutcome outcome = runNebsc({"request", "/dev/zero"});
    EXPECT_EQ(outcome.errors, "nebsc: the file '/dev/zero' has more than 67108864 bytes\n");
    EXPECT_EQ(outcome.exitStatus, 2);
}

}  // namespace
}  // namespace neb::test
