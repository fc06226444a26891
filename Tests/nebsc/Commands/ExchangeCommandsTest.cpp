// `nebsc fetch` and `nebsc push`, run as a program.

#include <filesystem>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/SharingTest.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using JSON = nlohmann::ordered_json;

class ExchangeCommands : public SharingTest {
protected:
    void bareHook(const std::string& name, const std::string& script) const {
        folder.writeProgram("shared.git/hooks/" + name, "#!/bin/sh\n" + script + "\n");
    }
};

// ---- fetch ------------------------------------------------------------------------------------

TEST_F(ExchangeCommands, FetchListsWhatChanged) {
    ann->commitFile("src/b", "b");
    ann->git({"tag", "v1"});
    share(*ann);
    share(*ann, "feature/Grüße");
    ann->git({"push", "--quiet", "origin", "v1"});
    ben->write("src/x", "");
    expectDone(nebsc(*ben, {"fetch", "origin"}, "src"),
               "Fetched from 'origin':\n"
               "    new      origin/feature/Grüße\n"
               "    changed  origin/main\n"
               "    new      tag v1\n");
    EXPECT_EQ(revision(*ben, "origin/main"), shared());
    EXPECT_EQ(revision(*ben), revision(*ann, "HEAD~1")) << "the working copy is left alone";
    expectDone(nebsc(*ben, {"fetch", "origin"}), "Fetched from 'origin'; nothing is new.\n");
    ben->git({"config", "fetch.prune", "true"});
    ann->git({"push", "--quiet", "origin", ":feature/Grüße"});
    expectDone(nebsc(*ben, {"fetch", "origin"}),
               "Fetched from 'origin':\n    deleted  origin/feature/Grüße\n");
}

TEST_F(ExchangeCommands, FetchAcceptsAPath) {
    ann->commitFile("b", "b");
    share(*ann);
    expectDone(nebsc(*ben, {"fetch", bare()}),
               "Fetched from '" + bare() + "'; its latest commit is FETCH_HEAD.\n");
    EXPECT_EQ(revision(*ben, "FETCH_HEAD"), shared());
}

TEST_F(ExchangeCommands, FetchWorksInAnEmptyRepository) {
    const TestRepository empty;
    empty.git({"remote", "add", "origin", bare()});
    expectDone(nebsc(empty, {"fetch", "origin"}),
               "Fetched from 'origin':\n    new      origin/main\n");
}

TEST_F(ExchangeCommands, FetchWithJSONPrintsTheOutcome) {
    const NebscOutcome json = nebsc(*ben, {"fetch", "origin", "--json"});
    EXPECT_EQ(json.json()["type"], NEBSourceControlRequestFetch);
    EXPECT_EQ(json.json()["command"]["arguments"], JSON({"fetch", "-q", "origin"}));
    EXPECT_EQ(json.json()["reports"], JSON::array());
    EXPECT_EQ(json.errors, "");
    EXPECT_EQ(json.exitStatus, 0);
}

TEST_F(ExchangeCommands, FetchReportsFailures) {
    expectFailed(nebsc(*ben, {"fetch", "nosuch"}),
                 HasSubstr("'nosuch' does not appear to be a git repository"));
    const auto arguments = HasSubstr("expected REMOTE or --svn\n");
    expectFailed(nebsc(*ben, {"fetch"}), arguments, 2);
    expectFailed(nebsc(*ben, {"fetch", "--svn", "origin"}), arguments, 2);
    expectFailed(nebsc(*ben, {"fetch", "--", "--upload-pack=x"}),
                 HasSubstr("'--upload-pack=x' begins with"), 2);
    expectFailed(nebsc(*ben, {"fetch", "--svn"}),
                 "nebsc: this repository is not connected to a Subversion repository\n"
                 "'git svn clone URL' creates a connected repository.\n");
    fs::remove_all(bare());
    expectFailed(nebsc(*ben, {"fetch", "origin"}), HasSubstr("not appear to be a git repository"));
    EXPECT_FALSE(nebsc(*ben, {"fetch", "origin", "--json"}).json()["error"].is_null());
    const TemporaryFolder nowhere;
    for (const std::vector<std::string>& call : {std::vector<std::string>{"fetch", "x"},
                                                 {"fetch", "--svn"},
                                                 {"push", "x", "main"},
                                                 {"push", "--svn"}}) {
        expectFailed(runNebsc(call, {.folder = nowhere.path()}),
                     StartsWith("nebsc: the folder is not in a git repository"));
    }
}

TEST_F(ExchangeCommands, FetchReportsAnUnreachableServer) {
    expectFailed(nebsc(*ben, {"fetch", "git://127.0.0.1:1/x"}),
                 AllOf(StartsWith("nebsc: "), HasSubstr("127.0.0.1")));
}

TEST_F(ExchangeCommands, ASilentGitFailureIsAnError) {
    const StandInGit git(ben->path(), "exit 3");
    const std::string message = "nebsc: git exited with status 3 and printed nothing\n";
    expectFailed(nebsc(*ben, {"push", "origin", "main"}, git), message);
    expectFailed(nebsc(*ben, {"fetch", "origin"}, git), message);
}

// ---- push -------------------------------------------------------------------------------------

TEST_F(ExchangeCommands, PushReportsTheBranches) {
    ann->commitFile("src/b", "b");
    expectDone(nebsc(*ann, {"push", "origin", "main:main"}, "src"),
               "Pushed 'main' to 'main' on 'origin'.\n");
    expectFailed(nebsc(*ben, {"push", "origin", ""}),
                 HasSubstr("argument 'BRANCHES' must not be empty"), 2);
    EXPECT_EQ(shared(), revision(*ann));
    expectDone(nebsc(*ann, {"push", "origin", "main:feature/Grüße"}),
               "Pushed 'main' to 'feature/Grüße' on 'origin'.\n");
    EXPECT_EQ(shared("feature/Grüße"), revision(*ann));
    ann->git({"branch", "topic"});
    expectDone(nebsc(*ann, {"push", bare(), "topic"}),
               "Pushed 'topic' to 'topic' on '" + bare() + "'.\n");
    const std::string nothing = "Nothing to push: 'origin' is up to date.\n";
    expectDone(nebsc(*ann, {"push", "origin", "main:main"}), nothing);
    ann->git({"checkout", "--quiet", "--detach"});
    expectDone(nebsc(*ann, {"push", "origin", "main"}), nothing);
}

TEST_F(ExchangeCommands, PushWithJSONPrintsTheOutcome) {
    const NebscOutcome json = nebsc(*ann, {"push", "origin", "main:x", "--json"});
    EXPECT_EQ(json.json()["type"], NEBSourceControlRequestPush);
    EXPECT_EQ(json.json()["command"]["arguments"], JSON({"push", "origin", "main:x"}));
    EXPECT_EQ(json.errors, "");
    const NebscOutcome nothing = nebsc(*ann, {"push", "origin", "main:x", "--json"});
    EXPECT_TRUE(nothing.json()["error"].is_null());
    EXPECT_EQ(nothing.exitStatus, 0);
}

TEST_F(ExchangeCommands, PushShowsTheRemotesOutputEscaped) {
    bareHook("post-receive", "printf 'seen\\033[2J\\n'");
    ann->commitFile("b", "b");
    const NebscOutcome pushed = nebsc(*ann, {"push", "origin", "main:main"});
    EXPECT_EQ(pushed.output, "Pushed 'main' to 'main' on 'origin'.\n");
    EXPECT_THAT(pushed.errors, StartsWith("remote: seen"));
    EXPECT_THAT(pushed.errors, testing::Not(HasSubstr("\x1b")));
    EXPECT_EQ(pushed.exitStatus, 0);
}

TEST_F(ExchangeCommands, PushIsRefusedIfTheRemoteIsAhead) {
    ann->commitFile("b", "ann");
    share(*ann);
    ben->commitFile("c", "ben");
    expectFailed(
        nebsc(*ben, {"push", "origin", "main:main"}),
        AllOf(StartsWith("nebsc: the operation could not be performed because "
                         "'repository' does not have the latest remote changes\n"
                         "Pull the remote changes and try again.\n"),
              HasSubstr("[rejected]"), EndsWith("\n'nebsc update' fetches and merges them.\n")));
    EXPECT_EQ(shared(), revision(*ann));
    const NebscOutcome json = nebsc(*ben, {"push", "origin", "main:main", "--json"});
    EXPECT_EQ(json.json()["error"]["code"], -32);
    EXPECT_EQ(json.exitStatus, 1);
}

TEST_F(ExchangeCommands, PushReportsWhichHookRefused) {
    ann->commitFile("b", "ann");
    bareHook("pre-receive", "echo policy: no; exit 1");
    expectFailed(nebsc(*ann, {"push", "origin", "main:main"}),
                 AllOf(HasSubstr("policy: no"), HasSubstr("[remote rejected]")));
    ann->write(".git/hooks/pre-push", "#!/bin/sh\necho not today >&2\nexit 1\n");
    fs::permissions(ann->path(".git/hooks/pre-push"), fs::perms::owner_all);
    expectFailed(nebsc(*ann, {"push", "origin", "main:main"}),
                 AllOf(StartsWith("nebsc: a hook of the repository refused the push\n"),
                       HasSubstr("not today")));
    ann->write(".git/hooks/pre-push", "#!/bin/sh\necho run make check\nexit 1\n");
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"push", "origin", "main:main"}, {"push", "-u"}}) {
        expectFailed(nebsc(*ann, arguments),
                     AllOf(StartsWith("nebsc: a hook of the repository refused the push\n"),
                           HasSubstr("run make check\n")));
    }
    ann->write(".git/hooks/pre-push", "#!/bin/sh\necho Everything up-to-date >&2\nexit 1\n");
    expectFailed(nebsc(*ann, {"push", "origin", "main:main"}), HasSubstr("failed to push"));
}

TEST_F(ExchangeCommands, PushNeverDeletesOrOverwrites) {
    ben->git({"commit", "--quiet", "--amend", "-m", "another"});
    for (const char* branches : {":main", "main:", "+main:main", "+main", ":"}) {
        expectFailed(nebsc(*ben, {"push", "origin", branches}),
                     HasSubstr("invalid value '" + std::string(branches) +
                               "' for argument 'BRANCHES'; expected LOCAL:DEST\n"),
                     2);
    }
    EXPECT_EQ(shared(), revision(*ann));
}

TEST_F(ExchangeCommands, PushReportsFailures) {
    const auto arguments = HasSubstr("expected REMOTE and LOCAL:DEST, or --svn\n");
    expectFailed(nebsc(*ann, {"push", "origin"}), arguments, 2);
    expectFailed(nebsc(*ann, {"push", "--svn", "origin"}), arguments, 2);
    expectFailed(nebsc(*ann, {"push", "--svn"}),
                 HasSubstr("not connected to a Subversion repository"));
    expectFailed(nebsc(*ann, {"push", "origin", "nosuch:main"}),
                 "nebsc: there is no local branch 'nosuch' to push\n");
    expectFailed(nebsc(*ann, {"push", "nosuch", "main"}), HasSubstr("'nosuch' does not appear"));
    expectFailed(nebsc(*ann, {"push", "--", "--mirror", "main"}),
                 HasSubstr("'--mirror' begins with"), 2);
    expectFailed(nebsc(*ann, {"push", "origin", "--", "--all"}), HasSubstr("'--all' begins with"),
                 2);
    const TestRepository empty;
    empty.git({"remote", "add", "origin", bare()});
    expectFailed(nebsc(empty, {"push", "origin", "main"}),
                 "nebsc: there is no local branch 'main' to push\n");
}

}  // namespace
}  // namespace neb::test
