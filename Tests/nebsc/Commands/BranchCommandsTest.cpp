// `nebsc branch` and its subcommands, run as a program.

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;
using JSON = nlohmann::ordered_json;

class BranchCommands : public CommandTest {
protected:
    void SetUp() override { repository.commitFile("src/a.c", "first\n"); }
    /// Returns the first 12 characters of a commit id.
    [[nodiscard]] std::string revision(const std::string& name) const {
        return repository.git({"rev-parse", name}).substr(0, 12);
    }
    /// Creates another repository with these branches, and adds it as a remote of this name.
    void makeRemote(const std::string& name, const std::vector<std::string>& branches) const {
        const std::string bare = folder.path(name);
        repository.git({"init", "--quiet", "--bare", bare});
        repository.git({"config", "remote." + name + ".url", bare});
        repository.git(
            {"config", "remote." + name + ".fetch", "+refs/heads/*:refs/remotes/" + name + "/*"});
        for (const std::string& branch : branches) {
            repository.git({"push", "--quiet", name, "main:refs/heads/" + branch});
        }
    }
    [[nodiscard]] static NebscOutcome outside(std::vector<std::string> arguments) {
        const TemporaryFolder nowhere;
        arguments.insert(arguments.begin(), "branch");
        return runNebsc(arguments, {.folder = nowhere.path()});
    }

    TemporaryFolder folder;
};

TEST_F(BranchCommands, AreSubcommands) {
    EXPECT_THAT(nebsc({"branch", "--help"}).output, HasSubstr("nebsc branch create topic"));
    for (const char* name :
         {"list", "current", "create", "delete", "rename", "upstream", "track", "tracking"}) {
        EXPECT_THAT(nebsc({"branch", "--help"}).output, HasSubstr("\n  " + std::string(name)));
        const NebscOutcome help = nebsc({"branch", name, "--help"});
        EXPECT_THAT(help.output, testing::ContainsRegex("\nExamples?:\n(.*\n)* .*nebsc branch " +
                                                        std::string(name)));
        EXPECT_EQ(help.exitStatus, 0);
    }
    expectFailed(nebsc({"branch", "lsit"}), AllOf(HasSubstr("lsit"), HasSubstr("; did you mean ")),
                 2);
    expectFailed(nebsc({"branch", "create"}),
                 AllOf(HasSubstr("NAME"), HasSubstr("branch create --help")), 2);
    expectFailed(nebsc({"branch", "list", "current"}), HasSubstr("current"), 2);
    expectDone(nebsc({"branch", "create", "list"}), "Created branch 'list'.\n");
    expectDone(nebsc({"branch", "create", "status"}), "Created branch 'status'.\n");
}

// ---- list and current -------------------------------------------------------------------------

TEST_F(BranchCommands, ListMarksTheCurrentBranch) {
    repository.git({"branch", "feature/x.y"});
    repository.git({"branch", "Grüße"});
    const std::string all = "  Grüße\n  feature/x.y\n* main\n";
    expectDone(nebsc({"branch"}), all);
    expectDone(nebsc({"branch", "list"}, "src"), all);
    expectDone(nebsc({"branch", "current"}, "src"), "main\n");
    repository.git({"checkout", "--quiet", "Grüße"});
    expectDone(nebsc({"branch", "list"}), "* Grüße\n  feature/x.y\n  main\n");
    expectDone(nebsc({"branch", "current"}), "Grüße\n");
}

TEST_F(BranchCommands, ListColoursTheCurrentBranchOnATerminal) {
    repository.git({"branch", "topic"});
    const auto onTerminal = [&](const char* noColour) {
        return runNebsc({"branch"}, {.folder = repository.path(),
                                     .variables = {{"TERM", "xterm"}, {"NO_COLOR", noColour}},
                                     .output = NebscOutput::terminal})
            .output;
    };
    EXPECT_EQ(onTerminal(""), "* \x1b[32mmain\x1b[0m\r\n  topic\r\n");
    EXPECT_EQ(onTerminal("1"), "* main\r\n  topic\r\n");
}

TEST_F(BranchCommands, IgnoreATagOfTheSameName) {
    repository.git({"tag", "main"});
    expectDone(nebsc({"branch"}), "* main\n");
    expectDone(nebsc({"branch", "current"}), "main\n");
}

TEST_F(BranchCommands, ListShowsABranchOfAnotherWorkingTreeByItsName) {
    repository.git({"worktree", "add", "--quiet", "-b", "there", folder.path("there")});
    expectDone(nebsc({"branch"}), "* main\n  there\n");
    const std::vector<std::string> arguments{"branch"};
    expectDone(runNebsc(arguments, {.folder = folder.path("there")}), "  main\n* there\n");
}

TEST_F(BranchCommands, ListShowsASymbolicBranchByItsName) {
    repository.git({"symbolic-ref", "refs/heads/alias", "refs/heads/main"});
    expectDone(nebsc({"branch"}), "  alias\n* main\n");
    repository.git({"symbolic-ref", "HEAD", "refs/heads/alias"});
    expectDone(nebsc({"branch"}), "  alias\n* main\n");
    expectDone(nebsc({"branch", "current"}), "main\n");
}

TEST_F(BranchCommands, ReportADetachedHEAD) {
    repository.git({"checkout", "--quiet", "--detach"});
    const std::string now = "HEAD is detached at " + revision("HEAD") + ".\n";
    expectDone(nebsc({"branch"}), "  main\n" + now);
    expectFailed(nebsc({"branch", "current"}),
                 "nebsc: HEAD is detached at " + revision("HEAD") + "\n");
    const JSON record = nebsc({"branch", "current", "--json"}).json()["result"][0];
    EXPECT_THAT(record["NEBSourceControlOperationNameKey"], HasSubstr("HEAD detached"));
}

TEST_F(BranchCommands, ReportABranchWithoutCommits) {
    const TestRepository empty;
    const std::string unborn = "The current branch 'main' does not have any commits yet.\n";
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"branch"}, {"branch", "list"}}) {
        expectDone(runNebsc(arguments, {.folder = empty.path()}), unborn);
    }
    expectDone(runNebsc({"branch", "current"}, {.folder = empty.path()}), "main\n");
    EXPECT_TRUE(
        runNebsc({"branch", "--json"}, {.folder = empty.path()}).json()["result"].is_null());
    repository.git({"checkout", "--quiet", "--orphan", "new"});
    expectDone(nebsc({"branch"}),
               "  main\nThe current branch 'new' does not have any commits yet.\n");
}

TEST_F(BranchCommands, JSONPrintsOnlyTheOutcome) {
    const NebscOutcome list = nebsc({"branch", "--json"});
    EXPECT_EQ(list.json()["type"], NEBSourceControlRequestListBranches);
    EXPECT_EQ(list.json()["result"].size(), 2U) << "with the record that ends the listing";
    EXPECT_EQ(list.errors, "");
    EXPECT_EQ(nebsc({"branch", "current", "--json"}).json()["type"],
              NEBSourceControlRequestCurrentBranch);
    EXPECT_EQ(nebsc({"--json", "branch", "create", "x"}).json()["type"],
              NEBSourceControlRequestCreateBranch);
    const NebscOutcome deleted = nebsc({"branch", "--json", "delete", "--force", "x"});
    EXPECT_EQ(deleted.json()["command"]["arguments"], JSON({"branch", "-D", "x"}));
    const NebscOutcome unknown = nebsc({"branch", "create", "y", "nosuch", "--json"});
    EXPECT_FALSE(unknown.json()["error"].is_null());
    EXPECT_EQ(unknown.exitStatus, 1);
}

TEST_F(BranchCommands, FailsOutsideARepository) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{},
                                                      {"list"},
                                                      {"current"},
                                                      {"create", "x"},
                                                      {"delete", "x"},
                                                      {"track", "x", "origin/x"},
                                                      {"tracking", "x"}}) {
        expectFailed(outside(arguments),
                     StartsWith("nebsc: the folder is not in a git repository"));
    }
}

TEST_F(BranchCommands, ASilentGitFailureIsAnError) {
    const StandInGit git(repository.path(), "exit 3");
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"branch"},
                                                      {"branch", "current"},
                                                      {"branch", "create", "x"},
                                                      {"branch", "delete", "x"},
                                                      {"branch", "tracking", "x"}}) {
        expectFailed(nebsc(arguments, git),
                     "nebsc: git exited with status 3 and printed nothing\n");
    }
}

TEST_F(BranchCommands, EscapeControlCharactersInNames) {
    const StandInGit git(repository.path(), "printf '* a\\033[2Jb\\n'");
    EXPECT_THAT(nebsc({"branch", "list"}, git).output, HasSubstr("a\\x1b[2Jb\n"));
}

// ---- create and delete ------------------------------------------------------------------------

TEST_F(BranchCommands, CreateStartsAtHEADOrAtARevision) {
    repository.commitFile("src/a.c", "second\n");
    expectDone(nebsc({"branch", "create", "feature/Grüße"}, "src"),
               "Created branch 'feature/Grüße'.\n");
    EXPECT_EQ(revision("feature/Grüße"), revision("main"));
    expectDone(nebsc({"branch", "create", "old", "main~1"}), "Created branch 'old'.\n");
    EXPECT_EQ(revision("old"), revision("main~1"));
    expectDone(nebsc({"branch", "create", "between", "main...old"}), "Created branch 'between'.\n");
    EXPECT_EQ(revision("between"), revision("old"));
}

TEST_F(BranchCommands, CreateFromARemoteBranchTracksIt) {
    makeRemote("origin", {"a/b"});
    repository.git({"fetch", "--quiet", "origin"});
    expectDone(nebsc({"branch", "create", "x", "origin/a/b"}),
               "Created branch 'x', which tracks 'origin/a/b'.\n");
}

TEST_F(BranchCommands, CreateReportsFailures) {
    expectFailed(nebsc({"branch", "create", "main"}), HasSubstr("'main' already exists"));
    expectFailed(nebsc({"branch", "create", "a b"}), HasSubstr("'a b' is not a valid"));
    expectFailed(nebsc({"branch", "create", ""}), HasSubstr("'NAME' must not be empty"), 2);
    expectFailed(nebsc({"branch", "create", "x", "nosuch"}), "nebsc: unknown revision 'nosuch'\n");
    expectFailed(nebsc({"branch", "create", "--", "-D"}), HasSubstr("'-D' begins with '-'"), 2);
    expectFailed(nebsc({"branch", "create", "x", "--", "-f"}), HasSubstr("'-f' begins"), 2);
    const TestRepository empty;
    expectFailed(
        runNebsc({"branch", "create", "x"}, {.folder = empty.path()}),
        "nebsc: cannot create a branch: the current branch does not have any commits yet\n");
    EXPECT_EQ(repository.git({"branch"}), "* main\n");
}

TEST_F(BranchCommands, DeleteAcceptsThePreviousBranch) {
    repository.git({"checkout", "--quiet", "-b", "former"});
    repository.git({"checkout", "--quiet", "main"});
    expectDone(nebsc({"branch", "delete", "@{-1}"}),
               "Deleted branch 'former' (was " + revision("main") + ").\n");
}

TEST_F(BranchCommands, DeleteRequiresForceForAnUnmergedBranch) {
    repository.git({"branch", "merged"});
    expectDone(nebsc({"branch", "delete", "merged"}, "src"),
               "Deleted branch 'merged' (was " + revision("main") + ").\n");
    repository.git({"checkout", "--quiet", "-b", "apart"});
    repository.commitFile("b", "b");
    repository.git({"checkout", "--quiet", "main"});
    const std::string commit = revision("apart");
    expectFailed(nebsc({"branch", "delete", "apart"}),
                 AllOf(StartsWith("nebsc: branch removal failed"),
                       testing::EndsWith("\n'nebsc branch delete --force' deletes it anyway.\n")));
    EXPECT_EQ(revision("apart"), commit);
    expectDone(nebsc({"branch", "delete", "--force", "apart"}),
               "Deleted branch 'apart' (was " + commit + ").\n");
    EXPECT_EQ(repository.git({"branch"}), "* main\n");
}

/// git deletes the branch, only warns about the settings, and exits with status 0.
TEST_F(BranchCommands, DeleteReportsSettingsThatCouldNotBeRemoved) {
    repository.git({"branch", "--track", "topic"});
    repository.write(".git/config.lock", "");
    const NebscOutcome outcome = nebsc({"branch", "delete", "topic"});
    expectFailed(outcome, HasSubstr("error: could not lock config file .git/config\n"));
    EXPECT_THAT(outcome.errors,
                testing::EndsWith("\nThe branch 'topic' (was " + revision("main") +
                                  ") was deleted, but its settings were not removed. 'git config "
                                  "--remove-section branch.topic' removes them.\n"));
    EXPECT_EQ(repository.git({"branch"}), "* main\n");
    EXPECT_EQ(repository.git({"config", "branch.topic.remote"}), ".\n");
}

TEST_F(BranchCommands, DeleteReportsFailures) {
    expectFailed(nebsc({"branch", "delete", "main"}),
                 AllOf(HasSubstr("'main'"), testing::Not(HasSubstr("--force"))));
    expectFailed(nebsc({"branch", "delete", "nosuch"}), HasSubstr("'nosuch' not found"));
    expectFailed(nebsc({"branch", "delete", "--", "-r"}), HasSubstr("'-r' begins"), 2);
    expectFailed(nebsc({"branch", "delete"}), HasSubstr("NAME"), 2);
}

// ---- track and tracking -----------------------------------------------------------------------

TEST_F(BranchCommands, TrackFetchesARemoteBranch) {
    makeRemote("origin", {"feature/Grüße"});
    repository.git({"update-ref", "-d", "refs/remotes/origin/feature/Grüße"});
    expectDone(nebsc({"branch", "track", "mine", "origin/feature/Grüße"}, "src"),
               "Created branch 'mine', which tracks 'origin/feature/Grüße'.\n");
    expectDone(nebsc({"branch", "tracking", "mine"}, "src"),
               "'mine' tracks 'origin/feature/Grüße'.\n");
    const NebscOutcome json = nebsc({"branch", "tracking", "mine", "--json"});
    EXPECT_EQ(json.json()["result"][0]["NEBSourceControlOperationRemoteNameKey"], "origin");
    EXPECT_EQ(json.json()["result"][0]["NEBSourceControlOperationNameKey"], "Grüße");
    EXPECT_EQ(nebsc({"branch", "track", "m2", "origin/feature/Grüße", "--json"}).json()["type"],
              36);
}

TEST_F(BranchCommands, CreateTakesNoNameOfAPreviousBranch) {
    repository.git({"checkout", "-q", "-b", "topic"});
    repository.git({"checkout", "-q", "-"});
    for (const std::string name : {"@{-1}x", "main@{u}x"}) {
        expectFailed(nebsc({"branch", "create", name}),
                     "nebsc: '" + name + "' is not a valid name for a branch\n");
    }
    EXPECT_EQ(repository.gitStatus({"rev-parse", "-q", "--verify", "refs/heads/topicx"}), 1);
}

TEST_F(BranchCommands, TrackAcceptsARemoteNameWithASlash) {
    makeRemote("team/one", {"b/c"});
    expectDone(nebsc({"branch", "track", "mine", "team/one/b/c"}),
               "Created branch 'mine', which tracks 'team/one/b/c'.\n");
    EXPECT_EQ(repository.git({"config", "branch.mine.remote"}), "team/one\n");
    EXPECT_EQ(repository.git({"config", "branch.mine.merge"}), "refs/heads/b/c\n");
}

TEST_F(BranchCommands, TrackReportsFailures) {
    makeRemote("origin", {"topic"});
    for (const char* name : {"topic", "/topic", "origin/"}) {
        expectFailed(nebsc({"branch", "track", "x", name}),
                     HasSubstr("invalid value '" + std::string(name) +
                               "' for argument 'REMOTE/BRANCH'; expected a remote and its branch"),
                     2);
    }
    expectFailed(nebsc({"branch", "track", "x", "nosuch/topic"}),
                 "nebsc: 'nosuch/topic' does not begin with the name of a remote; 'nebsc remote "
                 "list' lists them\n");
    expectFailed(nebsc({"branch", "track", "x", "origin/nosuch"}),
                 "nebsc: the remote 'origin' has no branch 'nosuch'\n'nebsc remote "
                 "branches origin' lists its branches.\n");
    expectFailed(nebsc({"branch", "track", "main", "origin/topic"}), HasSubstr("already exists"));
    expectFailed(nebsc({"branch", "track", "x", "--", "-u/x"}), HasSubstr("'-u' begins"), 2);
    expectFailed(nebsc({"branch", "track", "--", "-u", "origin/topic"}), HasSubstr("'-u' begins"),
                 2);
    std::filesystem::remove_all(folder.path("origin"));
    expectFailed(nebsc({"branch", "track", "x", "origin/topic"}),
                 HasSubstr("does not appear to be a git repository"));
    EXPECT_EQ(repository.git({"branch"}), "* main\n");
}

TEST_F(BranchCommands, TrackSucceedsIfOnlyATagCannotBeFetched) {
    makeRemote("origin", {"topic"});
    repository.git({"tag", "v1"});
    repository.git({"push", "--quiet", "origin", "v1"});
    repository.commitFile("b", "2\n");
    repository.git({"tag", "--force", "v1"});
    repository.git({"config", "remote.origin.tagOpt", "--tags"});
    const NebscOutcome outcome = nebsc({"branch", "track", "mine", "origin/topic"});
    EXPECT_EQ(outcome.output, "Created branch 'mine', which tracks 'origin/topic'.\n");
    EXPECT_EQ(outcome.errors,
              "nebsc: the fetch did not complete; 'nebsc fetch origin' shows why\n");
    EXPECT_EQ(outcome.exitStatus, 0);
    expectFailed(nebsc({"fetch", "origin"}),
                 testing::AllOf(HasSubstr("nebsc: a tag or branch was not updated"),
                                HasSubstr("v1  (would clobber existing tag)\n")));
}

TEST_F(BranchCommands, ReportsABranchThatTheRefspecsLeaveOut) {
    makeRemote("origin", {"main", "topic", "to/topic", "it's"});
    repository.git({"config", "remote.origin.fetch", "+refs/heads/main:refs/remotes/origin/main"});
    const NebscOutcome outcome = nebsc({"branch", "track", "x", "origin/topic"});
    expectFailed(outcome,
                 "nebsc: the remote 'origin' has the branch 'topic', but the setting "
                 "'remote.origin.fetch' does not fetch it as 'origin/topic'\n"
                 "'git remote set-branches --add origin topic' adds it to the setting.\n");
    expectFailed(nebsc({"branch", "track", "x", "origin/it's"}),
                 HasSubstr("set-branches --add origin 'it'\\''s'' adds"));
    expectFailed(nebsc({"branch", "track", "x", "origin/opic"}), HasSubstr("has no branch 'opic'"));
    const auto error = nebsc({"branch", "track", "x", "origin/topic", "--json"}).json()["error"];
    EXPECT_EQ(error["class"], "remote-branch-unknown");
    EXPECT_EQ(error["localizedRecoverySuggestion"],
              "'git remote set-branches --add origin topic' adds it to the setting.");
    repository.git({"update-ref", "-d", "refs/remotes/origin/topic"});
    EXPECT_EQ(nebsc({"branch", "track", "x", "origin/topic"}).errors, outcome.errors);
    repository.git({"remote", "set-branches", "--add", "origin", "topic"});
    expectDone(nebsc({"branch", "track", "x", "origin/topic"}),
               "Created branch 'x', which tracks 'origin/topic'.\n");
}

TEST_F(BranchCommands, TrackMakesNoClaimAboutAnUnreachableRemote) {
    makeRemote("origin", {"main"});
    const StandInGit git(repository.path(),
                         "[ \"$1\" = --literal-pathspecs ] && shift\n"
                         "[ \"$1\" = ls-remote ] && exit 128\n"
                         "PATH=${PATH#*:} exec git \"$@\"");
    expectFailed(
        nebsc({"branch", "track", "x", "origin/topic"}, git),
        testing::StartsWith(
            "nebsc: the fetch from the remote 'origin' did not bring the branch 'topic'\n"));
}

TEST_F(BranchCommands, TrackingReportsABranchWithoutUpstream) {
    expectFailed(nebsc({"branch", "tracking", "main"}), "nebsc: 'main' does not track a branch\n");
    expectFailed(nebsc({"branch", "tracking", "nosuch"}),
                 "nebsc: the branch 'nosuch' does not exist\n");
    const NebscOutcome json = nebsc({"branch", "tracking", "main", "--json"});
    EXPECT_EQ(json.json()["result"], JSON::parse("[{}]"));
    EXPECT_EQ(json.exitStatus, 1);
    const TestRepository empty;
    expectFailed(runNebsc({"branch", "tracking", "main"}, {.folder = empty.path()}),
                 "nebsc: 'main' does not track a branch\n");
}

TEST_F(BranchCommands, TrackingShowsLocalBranchesAndURLs) {
    repository.git({"branch", "--quiet", "--track", "local", "main"});
    expectDone(nebsc({"branch", "tracking", "local"}), "'local' tracks 'main'.\n");
    repository.git({"config", "branch.local.remote", "/somewhere.git"});
    expectDone(nebsc({"branch", "tracking", "local"}),
               "'local' tracks 'main' of '/somewhere.git'.\n");
}

}  // namespace
}  // namespace neb::test
