// Commands with a plug-in that is not for git.

#include <cstdlib>
#include <filesystem>

#include "Support/TestRepository.h"
#include "nebsc/CommandTest.h"
#include "nebsc/MercurialTest.h"
#include "nebsc/Server/ServerClient.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::MatchesRegex;

class MercurialCommands : public Mercurial {};

TEST_F(MercurialCommands, StatusShowsALineForEachFile) {
    expectDone(nebsc({"status"}), "No changes in the working copy 'work'.\n");
    folder.write("work/a.txt", "changed\n");
    folder.write("work/sub/new.txt", "n\n");
    EXPECT_THAT(nebsc({"status"}).output,
                MatchesRegex("modified +a.txt\nuntracked +sub/new.txt\n"));
    EXPECT_THAT(nebsc({"status", "--short"}, "work/sub").output,
                MatchesRegex("modified +../a.txt\nuntracked +new.txt\n"));
    EXPECT_THAT(nebsc({"status", "a.txt"}).output, MatchesRegex("modified +a.txt\n"));
    EXPECT_THAT(nebsc({"status", top + "/sub"}, "").output,
                MatchesRegex("untracked +" + top + "/sub/new.txt\n"));
    EXPECT_EQ(nebsc({"status", "--json"}).json()["result"].size(), 2U);
}

TEST_F(MercurialCommands, LogShowsCommits) {
    const NebscOutcome log = nebsc({"log"});
    EXPECT_THAT(log.output, MatchesRegex(idOf("1") + "  .*  Ann Example  Grüße\n" + idOf("0") +
                                         "  .*  Ann Example  First\n"));
    EXPECT_THAT(nebsc({"log", "-n", "1", "--files"}).output, HasSubstr("b.txt"));
    EXPECT_EQ(nebsc({"log", "b.txt"}).output, nebsc({"log", "-n", "1"}).output);
    EXPECT_THAT(nebsc({"log", "--full", "0"}).output, HasSubstr("First"));
    EXPECT_EQ(nebsc({"log", "--branch", "default"}).output, log.output);
    expectFailed(nebsc({"log", "zz"}),
                 HasSubstr("nebsc: there is no such branch, tag or commit\n"));
    expectFailed(nebsc({"log", "0..1"}), HasSubstr("'0..1' is a range of git"));
}

TEST_F(MercurialCommands, DiffShowsThePatchOrTheNames) {
    folder.write("work/a.txt", "one\n");
    expectDone(nebsc({"diff"}), hg({"diff", "--git"}));
    EXPECT_THAT(nebsc({"diff", "--name-status"}).output, MatchesRegex("modified +a.txt\n"));
    expectDone(nebsc({"diff", "0", "1", "--", "b.txt"}),
               hg({"diff", "--git", "--rev=0", "--rev=1", "b.txt"}));
}

TEST_F(MercurialCommands, APatchKeepsItsBytes) {
    folder.write("work/a.txt", "\xe4\n");
    expectDone(nebsc({"diff"}), hg({"diff", "--git"}));
}

TEST_F(MercurialCommands, BlameShowsTheTextOfTheLines) {
    folder.write("work/a.txt", "one\ntwo\nthree\n");
    EXPECT_THAT(
        nebsc({"blame", "a.txt"}).output,
        MatchesRegex(idOf("0") + "  Ann Example.*1  one\n" + idOf("1") + "  Ann Example.*2  two\n" +
                     "------------  Not committed yet.*3  three\n"));
    EXPECT_THAT(nebsc({"blame", "0", "./a.txt"}).output,
                MatchesRegex(idOf("0") + "  Ann Example.*1  one\n"));
}

TEST_F(MercurialCommands, CatShowsAFileOfACommit) {
    expectDone(nebsc({"cat", "0:a.txt"}), "one\n");
    folder.write("work/sub/x.txt", "");
    expectDone(nebsc({"cat", ".:../a.txt"}, "work/sub"), "one\ntwo\n");
    expectFailed(nebsc({"cat", "0:b.txt"}), HasSubstr("nebsc: the commit has no such file\n"));
    expectFailed(nebsc({"cat", ":a.txt"}), HasSubstr("nebsc: the plug-in has no index\n"));
}

TEST_F(MercurialCommands, FilesAreAddedDeletedAndCommitted) {
    folder.write("work/new.txt", "n\n");
    expectDone(nebsc({"add", "new.txt"}));
    expectFailed(nebsc({"rm", "new.txt"}), HasSubstr("uncommitted changes would be lost"));
    const NebscOutcome commit = nebsc({"commit", "-m", "Add", "-m", "It is new."});
    EXPECT_EQ(commit.output, "Committed " + idOf("tip") + ".\n") << commit.errors;
    EXPECT_EQ(hg({"log", "--rev=tip", "--template={desc}"}), "Add\n\nIt is new.");
    expectDone(nebsc({"rm", "new.txt"}));
    EXPECT_FALSE(fs::exists(folder.path("work/new.txt")));
    expectDone(nebsc({"add", "--all"}));
    EXPECT_EQ(hg({"status"}), "R new.txt\n");
    expectFailed(nebsc({"commit", "-m", "x", "a.txt"}),
                 HasSubstr("nebsc: there is nothing to commit\n"));
    EXPECT_EQ(nebsc({"commit"}).exitStatus, 2) << "no editor is started";
}

TEST_F(MercurialCommands, BranchesAreListed) {
    expectDone(nebsc({"branch"}), "* default\n");
    hg({"branch", "--quiet", "topic"});
    expectDone(nebsc({"branch", "list"}), "  default\n* topic\n");
    expectDone(nebsc({"branch", "current"}), "topic\n");
}

// ---- limits -----------------------------------------------------------------------------------

TEST_F(MercurialCommands, ACommandThatAsksGitIsRefused) {
    expectFailed(nebsc({"stash"}),
                 HasSubstr("nebsc: the plug-in 'Mercurial' does not support 'nebsc stash'\n"));
    expectFailed(nebsc({"branch", "create", "x"}), HasSubstr("support 'nebsc branch create'\n"));
    expectFailed(nebsc({"doctor"}), HasSubstr("does not support 'nebsc doctor'\n"));
    expectFailed(nebsc({"diff", "--stat"}), HasSubstr("support '--stat' of 'nebsc diff'\n"));
    expectFailed(nebsc({"log", "--graph"}), HasSubstr("support '--graph' of 'nebsc log'\n"));
    EXPECT_EQ(nebsc({"types"}).exitStatus, 0);
}

/// A command of the help runs no git: it is refused, or asks the plug-in.
TEST_F(MercurialCommands, GitAnswersNothingAboutARepositoryAroundTheFolder) {
    const TestRepository around;
    around.write("tracked.txt", "x\n");
    around.git({"add", "."});
    around.git({"commit", "--quiet", "-m", "Of git"});
    hg({"init", around.path("inner")});
    const TemporaryFolder bin;
    bin.writeProgram("git", "#!/bin/sh\necho run >>" + bin.path("log") + "\nexit 1\n");
    const char* path = std::getenv("PATH");
    const NebscSurroundings surroundings{
        .folder = around.path("inner"),
        .variables = {{"PATH", bin.path() + ":" + (path == nullptr ? "" : path)}}};
    const std::vector<std::vector<std::string>> commands{{"status"},
                                                         {"log"},
                                                         {"diff"},
                                                         {"branch"},
                                                         {"add", "--all"},
                                                         {"branch", "current"},
                                                         {"info"},
                                                         {"blame", "tracked.txt"},
                                                         {"ls"},
                                                         {"cat", "HEAD:tracked.txt"},
                                                         {"show"},
                                                         {"rm", "tracked.txt"},
                                                         {"stash", "list"},
                                                         {"commit", "-m", "x"},
                                                         {"tag"},
                                                         {"config"},
                                                         {"--json", "diff"},
                                                         {"--json", "log"}};
    for (const std::vector<std::string>& command : commands) {
        std::vector<std::string> arguments{"--plugin", plugIn};
        arguments.insert(arguments.end(), command.begin(), command.end());
        const NebscOutcome outcome = runNebsc(arguments, surroundings);
        EXPECT_THAT(outcome.output + outcome.errors, testing::Not(HasSubstr("Of git")));
        EXPECT_EQ(bin.read("log"), "") << command.front() << " ran git";
    }
}

TEST_F(MercurialCommands, OutsideARepositoryTheErrorIsThatOfThePlugIn) {
    fs::create_directory(folder.path("plain"));
    for (const char* command : {"status", "log", "diff", "branch"}) {
        expectFailed(nebsc({command}, "plain"),
                     HasSubstr("nebsc: the folder is not in a Mercurial repository\n"));
    }
}

TEST_F(MercurialCommands, TheServerCarriesOutRequestsAndWatchesNothing) {
    const std::string script = std::string("exec \"$0\" --plugin ") + plugIn + " \"$@\"";
    ServerClient server({}, {"/bin/sh", "-c", script});
    server.initialize();
    server.send(1, "sourceControl/perform", {{"type", 26}, {"sourceTree", {{"location", top}}}});
    EXPECT_EQ(server.answerTo(1)["result"]["result"][0]["NEBSourceControlOperationNameKey"],
              "default");
    server.send(2, "sourceControl/watch", {{"sourceTree", {{"location", top}}}});
    EXPECT_THAT(server.answerTo(2)["error"]["message"].get<std::string>(),
                HasSubstr("the plug-in is not for git"));
}

}  // namespace
}  // namespace neb::test
