// `nebsc svn`, run by two users of a Subversion server; svn itself checks the results.

#include <memory>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/SubversionServer.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;

using testing::StartsWith;

const std::string reference = "refs/remotes/git-svn";

class SubversionCommands : public testing::Test {
protected:
    void SetUp() override { connect(ann); }
    /// What `git svn clone` does.
    void connect(const TestRepository& who) const {
        who.git({"svn", "init", server.url() + "/trunk"});
        who.git({"svn", "fetch", "--quiet"});
        who.git({"reset", "--quiet", "--hard", reference});
    }
    [[nodiscard]] static NebscOutcome nebsc(const TestRepository& who,
                                            const std::vector<std::string>& arguments,
                                            std::string_view folder = "") {
        return runNebsc(arguments, {.folder = who.path(folder)});
    }
    [[nodiscard]] static std::string now(const TestRepository& who) {
        return "now at " + who.git({"rev-parse", "HEAD"}).substr(0, 12) + ".\n";
    }
    [[nodiscard]] static std::string content(const TestRepository& who, const std::string& file) {
        return who.git({"show", "HEAD:" + file});
    }

    SubversionServer server;
    TestRepository ann, ben;
};

TEST_F(SubversionCommands, TwoPeopleWorkTogether) {
    connect(ben);
    expectDone(nebsc(ann, {"remote", "list"}),
               "git-svn  " + server.url() + "/trunk (Subversion)\n");
    ann.write("a", "ann\n");
    ann.write("src/new.c", "ann\n");
    expectDone(nebsc(ann, {"add", "."}));
    EXPECT_THAT(nebsc(ann, {"commit", "-m", "from Ann"}).output, StartsWith("Committed "));
    const NebscOutcome pushed = nebsc(ann, {"push", "--svn"}, "src");
    expectDone(pushed, "Pushed to Subversion; " + now(ann));
    EXPECT_EQ(server.content("trunk/a"), "ann\n");
    EXPECT_EQ(server.content("trunk/src/new.c"), "ann\n");
    EXPECT_THAT(server.run({"svn", "log", "-r", "HEAD", server.fileURL()}), HasSubstr("from Ann"));
    expectDone(nebsc(ann, {"push", "--svn"}), "Nothing to push: Subversion has all commits.\n");

    // Ben's commit is rebased; then he pushes, and Ann updates again.
    ben.write("b", "ben\n");
    expectDone(nebsc(ben, {"add", "b"}));
    EXPECT_EQ(nebsc(ben, {"commit", "-m", "from Ben"}).exitStatus, 0);
    const NebscOutcome updated = nebsc(ben, {"update", "--svn"});
    expectDone(updated, "Updated from '" + reference + "'; " + now(ben));
    EXPECT_EQ(content(ben, "a"), "ann\n");
    EXPECT_EQ(content(ben, "b"), "ben\n");
    EXPECT_EQ(ben.git({"rev-list", "--count", reference + "..HEAD"}), "1\n");
    expectDone(nebsc(ben, {"update", "--svn"}), "Already up to date with '" + reference + "'.\n");
    EXPECT_EQ(nebsc(ben, {"push", "--svn"}).exitStatus, 0);
    EXPECT_EQ(server.content("trunk/b"), "ben\n");
    expectDone(nebsc(ann, {"fetch", "--svn"}), "Fetched from Subversion:\n    changed  git-svn\n");
    expectDone(nebsc(ann, {"fetch", "--svn"}), "Fetched from Subversion; nothing is new.\n");
    const NebscOutcome named = nebsc(ann, {"update", "--svn", "git-svn"}, "src");
    expectDone(named, "Updated from 'git-svn'; " + now(ann));
    EXPECT_EQ(content(ann, "b"), "ben\n");
    EXPECT_EQ(ann.git({"diff", "git-svn"}), "");
}

TEST_F(SubversionCommands, AreSubcommandsOfSvn) {
    expectDone(nebsc(ann, {"svn"}), server.url() + "/trunk\n");
    server.commitFile("trunk/a", "theirs\n");
    expectDone(nebsc(ann, {"svn", "fetch"}), "Fetched from Subversion:\n    changed  git-svn\n");
    const NebscOutcome updated = nebsc(ann, {"svn", "update", "git-svn"});
    expectDone(updated, "Updated from 'git-svn'; " + now(ann));
    expectDone(nebsc(ann, {"svn", "push"}), "Nothing to push: Subversion has all commits.\n");
    EXPECT_EQ(nebsc(ann, {"svn", "update", "--json"}).json()["type"],
              NEBSourceControlRequestUpdate);
    const TestRepository plain;
    for (const char* word : {"fetch", "update", "push"}) {
        expectFailed(nebsc(plain, {"svn", word}),
                     HasSubstr("not connected to a Subversion repository"));
    }
    expectFailed(nebsc(plain, {"svn"}), HasSubstr("not connected to a Subversion repository"));
}

TEST_F(SubversionCommands, UpdateReportsDroppedCommits) {
    ann.commitFile("a", "mine\n");
    const std::string mine = ann.git({"rev-parse", "--short=12", "HEAD"});
    server.commitFile("trunk/a", "theirs\n");
    const NebscOutcome updated = nebsc(ann, {"svn", "update"});
    EXPECT_EQ(updated.output, "Updated from '" + reference + "'; " + now(ann));
    EXPECT_EQ(updated.errors,
              "nebsc: both sides changed the same lines or binary files; Subversion's were kept "
              "and yours dropped in:\n    a\n'git diff " +
                  ann.git({"rev-parse", "--short=12", "HEAD"}).substr(0, 12) + "..." +
                  mine.substr(0, 12) +
                  "' shows all changes of the side whose lines were dropped.\n"
                  "nebsc: 1 local commit was dropped, because Subversion has the same changes or "
                  "newer ones; before the update, the branch was at " +
                  mine.substr(0, 12) + "\n");
    EXPECT_EQ(updated.exitStatus, 0);
    EXPECT_EQ(content(ann, "a"), "theirs\n");
    EXPECT_EQ(ann.git({"show", mine.substr(0, 12) + ":a"}), "mine\n");
}

TEST_F(SubversionCommands, UpdateReportsAnUnfinishedRebase) {
    ann.commitFile("b", "mine\n");
    server.commitFile("trunk/a", "theirs\n");
    ann.write(".git/rebase-merge/head-name", "refs/heads/main\n");
    expectFailed(nebsc(ann, {"svn", "update"}),
                 AllOf(StartsWith("nebsc: an earlier rebase is not finished\n'git rebase "
                                  "--continue' continues it, 'git rebase --abort' undoes it.\n"),
                       HasSubstr("rebase-merge directory")));
}

TEST_F(SubversionCommands, JSONPrintsTheOutcomeOfTheLastRequest) {
    server.commitFile("trunk/a", "theirs\n");
    const NebscOutcome json = nebsc(ann, {"update", "--svn", "--json"});
    EXPECT_EQ(json.json()["type"], NEBSourceControlRequestUpdate);
    EXPECT_EQ(json.json()["commands"][0]["arguments"].back(), reference);
    EXPECT_EQ(json.json()["reports"].size(), 0U);
    EXPECT_EQ(json.errors, "");
    EXPECT_EQ(nebsc(ann, {"push", "--svn", "--json"}).json()["type"], NEBSourceControlRequestPush);
    EXPECT_EQ(nebsc(ann, {"fetch", "--svn", "--json"}).json()["type"],
              NEBSourceControlRequestFetch);
}

TEST_F(SubversionCommands, PushIsRefusedIfTheServerIsAhead) {
    ann.commitFile("a", "mine\n");
    server.commitFile("trunk/a", "theirs\n");
    expectFailed(
        nebsc(ann, {"push", "--svn"}),
        AllOf(HasSubstr("does not have the latest remote changes"),
              EndsWith("\n'nebsc update --svn' fetches them and rebases the current branch.\n")));
    EXPECT_EQ(server.content("trunk/a"), "theirs\n");
}

TEST_F(SubversionCommands, ReportRefusalsOfTheServerAndTheWorkingCopy) {
    ann.commitFile("a", "mine\n");
    server.refuseCommits("not on a Friday");
    expectFailed(nebsc(ann, {"push", "--svn"}), HasSubstr("not on a Friday"));
    ann.write("a", "not committed\n");
    expectFailed(nebsc(ann, {"push", "--svn"}), HasSubstr("uncommitted changes"));
    expectFailed(nebsc(ann, {"update", "--svn"}), HasSubstr("uncommitted changes"));
    expectFailed(nebsc(ann, {"update"}),
                 EndsWith("\n'nebsc update --svn' updates from Subversion.\n"));
    expectFailed(nebsc(ann, {"update", "--svn", "nosuch"}), HasSubstr("nosuch"));
    expectFailed(nebsc(ann, {"update", "--svn", "--", "--root"}), HasSubstr("'--root' begins with"),
                 2);
    EXPECT_EQ(server.content("trunk/a"), "first\n");
}

TEST_F(SubversionCommands, ReportAnUnreachableServer) {
    ann.git({"config", "svn-remote.svn.url", "svn://127.0.0.1:1/trunk"});
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"fetch", "--svn"}, {"update", "--svn"}}) {
        expectFailed(nebsc(ann, arguments), StartsWith("nebsc: "));
    }
    EXPECT_EQ(nebsc(ann, {"update", "--svn", "--json"}).json()["type"],
              NEBSourceControlRequestFetch);
}

}  // namespace
}  // namespace neb::test
