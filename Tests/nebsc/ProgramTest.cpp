// nebsc as a program: colours, versions, and standard output that fails.

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/TestRepository.h"
#include "nebsc/CommandTest.h"
#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

TEST(Program, ColoursDependOnOptionTerminalAndEnvironment) {
    const TestRepository repository;
    repository.write("a", "");
    const auto status =
        [&](const char* colours, NebscOutput output,
            std::vector<std::pair<std::string, std::optional<std::string>>> more = {}) {
            more.emplace_back("TERM", "xterm");
            return runNebsc({"status", "--short", std::string("--color=") + colours},
                            {.folder = repository.path(), .variables = more, .output = output})
                .output;
        };
    const std::string coloured = "\x1b[31muntracked\x1b[0m  a";
    EXPECT_EQ(status("always", NebscOutput::collected), coloured + "\n");
    EXPECT_EQ(status("always", NebscOutput::collected, {{"NO_COLOR", "1"}}), coloured + "\n");
    EXPECT_EQ(status("never", NebscOutput::terminal), "untracked  a\r\n");
    EXPECT_EQ(status("auto", NebscOutput::collected), "untracked  a\n");
    EXPECT_EQ(status("auto", NebscOutput::terminal, {{"NO_COLOR", std::nullopt}}),
              coloured + "\r\n");
    EXPECT_EQ(status("auto", NebscOutput::terminal, {{"NO_COLOR", "1"}}), "untracked  a\r\n");
    const NebscOutcome json =
        runNebsc({"--color=always", "status", "--json"}, {.folder = repository.path()});
    EXPECT_EQ(json.output.find('\x1b'), std::string::npos);
    EXPECT_EQ(json.json()["type"], NEBSourceControlRequestStatus);
}

TEST(Program, PrintsOneVersionPerLine) {
    const TestRepository repository;
    const NebscOutcome outcome = runNebsc({"--version"});
    EXPECT_EQ(outcome.output, "nebsc " NEB_PROJECT_VERSION "\nNEBGit " NEB_PROJECT_VERSION "\n" +
                                  repository.git({"--version"}));
    EXPECT_EQ(outcome.exitStatus, 0);
    const auto json = runNebsc({"--version", "--json"}).json();
    EXPECT_EQ(json["nebsc"], NEB_PROJECT_VERSION);
    EXPECT_EQ(json["plugIn"]["name"], "NEBGit");
    EXPECT_EQ(json["git"].get<std::string>() + "\n", repository.git({"--version"}));
}

TEST(Program, ReportsThatGitHasNoVersion) {
    const StandInGit failing("", "exit 3");
    EXPECT_THAT(runNebsc({"--version"}, {.variables = {failing.path()}}).output,
                testing::EndsWith("\ngit reported no version: exit status 3\n"));
    const StandInGit complaining("/x", "echo 'fatal: bad config' >&2; exit 128");
    EXPECT_THAT(runNebsc({"--version"}, {.variables = {complaining.path()}}).output,
                testing::EndsWith("\ngit reported no version: fatal: bad config\n"));
    const TemporaryFolder broken;
    broken.writeProgram("git", "#!/no/such/interpreter\n");
    const NebscOutcome outcome = runNebsc({"--version"}, {.variables = {{"PATH", broken.path()}}});
    EXPECT_THAT(outcome.output, testing::EndsWith("\ngit was not found\n"));
    EXPECT_EQ(outcome.exitStatus, 0);
}

// ---- standard output --------------------------------------------------------------------------

TEST(Program, FailsIfStandardOutputIsFull) {
    const TestRepository repository;
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"types"}, {"--help"}, {"--version"}, {"status"}}) {
        const NebscOutcome outcome =
            runNebsc(arguments, {.folder = repository.path(), .output = NebscOutput::full});
        EXPECT_EQ(outcome.errors,
                  "nebsc: standard output could not be written: No space left on device\n");
        EXPECT_EQ(outcome.exitStatus, 1);
    }
}

TEST(Program, FailsIfStandardOutputIsClosed) {
    const TestRepository repository;
    repository.commitFile("a", "1");
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"types"},
                                                      {"request"},
                                                      {"status"},
                                                      {"log"},
                                                      {"request", "--stream"}}) {
        const NebscOutcome outcome =
            runNebsc(arguments, {.folder = repository.path(),
                                 .input = R"({"type": 15, "sourceTree": {"location": "/"}})",
                                 .output = NebscOutput::closed});
        EXPECT_EQ(outcome.errors,
                  "nebsc: standard output could not be written: Bad file descriptor\n");
        EXPECT_EQ(outcome.exitStatus, 1);
    }
}

TEST(Program, ReportsAUsageErrorEvenIfStandardOutputIsFull) {
    EXPECT_EQ(runNebsc({"statsu"}, {.output = NebscOutput::full}).exitStatus, 2);
}

}  // namespace
}  // namespace neb::test
