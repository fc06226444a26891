// `nebsc info`, run as a program.

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class InfoCommand : public CommandTest {
protected:
    void SetUp() override { repository.write("src/a.c", ""); }
    void configure(const char* key, const char* value) const {
        repository.git({"config", key, value});
    }
};

TEST_F(InfoCommand, ShowsOriginAndTheTop) {
    configure("remote.origin.url", "https://example.org/demo.git");
    expectDone(nebsc({"info"}, "src"),
               "origin      https://example.org/demo.git\n"
               "root        " +
                   repository.path() + "\n");
    const NebscOutcome json = nebsc({"info", "--json"});
    EXPECT_EQ(json.json()["result"][0]["NEBSourceControlOperationRemoteOriginKey"],
              "https://example.org/demo.git");
    EXPECT_EQ(json.errors, "");
}

TEST_F(InfoCommand, ShowsTheConnectedSubversionRepository) {
    configure("svn-remote.svn.url", "file:///svn/demo");
    expectDone(nebsc({"info"}),
               "Subversion  file:///svn/demo\n"
               "root        " +
                   repository.path() + "\n");
}

/// Inspect mode runs more git commands.
TEST_F(InfoCommand, NamesTheKindOfRepositoryInInspectMode) {
    configure("svn-remote.svn.url", "file:///svn/demo");
    EXPECT_THAT(nebsc({"info", "--inspect"}).output, StartsWith("Subversion  file:///svn/demo\n"));
    configure("remote.origin.url", "https://example.org/demo.git");
    EXPECT_THAT(nebsc({"info", "--inspect"}).output,
                StartsWith("origin      https://example.org/demo.git\n"));
}

TEST_F(InfoCommand, ReportsARepositoryWithoutURL) {
    configure("remote.upstream.url", "https://example.org/demo.git");
    expectDone(nebsc({"info"}),
               "The repository 'repository' has no remote 'origin' and no connected Subversion "
               "repository.\n");
}

TEST_F(InfoCommand, FailsOutsideARepository) {
    const TemporaryFolder folder;
    expectFailed(runNebsc({"info"}, {.folder = folder.path()}),
                 StartsWith("nebsc: the folder is not in a git repository"));
    const NebscOutcome json = runNebsc({"info", "--json"}, {.folder = folder.path()});
    EXPECT_EQ(json.json()["type"], NEBSourceControlRequestInfo);
    EXPECT_THAT(json.errors, HasSubstr("not in a git repository"));
    EXPECT_EQ(json.exitStatus, 1);
}

TEST_F(InfoCommand, FailsOutsideARepositoryWithAURLInTheUsersConfiguration) {
    const TemporaryFolder folder;
    folder.write(".gitconfig", "[remote \"origin\"]\n\turl = https://example.org/x\n");
    expectFailed(
        runNebsc({"info"}, {.folder = folder.path(), .variables = {{"HOME", folder.path()}}}),
        StartsWith("nebsc: the folder is not in a git repository"));
}

TEST_F(InfoCommand, ReportsARepositoryOfAnotherUser) {
    // What git prints for a repository of another user; git config prints nothing then.
    const TemporaryFolder bin;
    bin.writeProgram("git",
                     "#!/bin/sh\n[ \"$1\" = config ] && exit 1\n"
                     "echo \"fatal: detected dubious ownership in repository at '/x'\" >&2\n"
                     "exit 128\n");
    expectFailed(runNebsc({"info"}, {.folder = repository.path(),
                                     .variables = {{"PATH", bin.path() + ":/usr/bin:/bin"}}}),
                 HasSubstr("dubious ownership"));
}

TEST_F(InfoCommand, ASilentGitFailureIsAnError) {
    const StandInGit git(repository.path(), "exit 3");
    expectFailed(nebsc({"info"}, git), "nebsc: git exited with status 3 and printed nothing\n");
}

TEST_F(InfoCommand, ReportsAnUnreadableConfiguration) {
    repository.write(".git/config", "[broken\n");
    expectFailed(nebsc({"info"}), HasSubstr("config"));
}

}  // namespace
}  // namespace neb::test
