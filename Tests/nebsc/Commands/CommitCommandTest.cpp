// `nebsc commit`, run as a program.

#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
using JSON = nlohmann::ordered_json;

class CommitCommand : public CommandTest {
protected:
    /// Creates two commits, then a staged and an unstaged change.
    void SetUp() override {
        repository.commitFile("a.c", "first\n");
        repository.commitFile("src/b é.c", "first\n");
        repository.write("a.c", "second\n");
        repository.write("src/b é.c", "second\n");
        repository.git({"add", "a.c"});
    }
    [[nodiscard]] std::string latest(const char* format) const {
        return repository.git({"log", "-1", std::string("--format=") + format});
    }
    void expectCommitted(const NebscOutcome& outcome) const {
        EXPECT_THAT(outcome.output, MatchesRegex("Committed [0-9a-f]{12}\\.\n"));
        const std::string revision = outcome.output.substr(10, outcome.output.find('.') - 10);
        EXPECT_THAT(latest("%H"), testing::StartsWith(revision));
        EXPECT_EQ(outcome.errors, "");
        EXPECT_EQ(outcome.exitStatus, 0);
    }
};

TEST_F(CommitCommand, CommitsWhatIsStaged) {
    expectCommitted(nebsc({"commit", "-m", "Say \"hello\"\n\nat length"}, "src"));
    EXPECT_EQ(latest("%B"), "Say \"hello\"\n\nat length\n\n");
    EXPECT_EQ(state(), " M \"src/b é.c\"\n");
}

TEST_F(CommitCommand, CommitsOnlyTheNamedFiles) {
    expectCommitted(nebsc({"commit", "--message=one file", "b é.c"}, "src"));
    EXPECT_EQ(state(), "M  a.c\n");
    expectCommitted(nebsc({"commit", "-m", "-dash", "--", "../a.c"}, "src"));
    EXPECT_EQ(latest("%s"), "-dash\n");
    EXPECT_EQ(state(), "");
}

TEST_F(CommitCommand, EachMessageIsAParagraph) {
    expectCommitted(
        nebsc({"commit", "-m", "Say hello", "-m", "At length.\n", "--message=The end"}));
    EXPECT_EQ(latest("%B"), "Say hello\n\nAt length.\n\nThe end\n\n");
    EXPECT_EQ(state(), " M \"src/b é.c\"\n");
    // An argument after a message is a file.
    expectCommitted(nebsc({"commit", "-m", "one", "-m", "two", "src/b é.c"}));
    EXPECT_EQ(latest("%B"), "one\n\ntwo\n\n");
    EXPECT_EQ(state(), "");
}

/// Linux limits each argument to 128 KiB.
TEST_F(CommitCommand, AcceptsAMessageThatIsTooLongForAnArgument) {
    const std::string first(100'000, 'a');
    const std::string second(100'000, 'b');
    expectCommitted(nebsc({"commit", "-m", first, "-m", second}));
    EXPECT_EQ(latest("%B"), first + "\n\n" + second + "\n\n");
}

TEST_F(CommitCommand, ReportsTheFirstCommitAndOneOnADetachedHEAD) {
    repository.git({"commit", "--quiet", "-m", "all"});
    repository.git({"checkout", "--quiet", "--detach"});
    const NebscOutcome detached = nebsc({"commit", "-m", "x", "--allow-empty"});
    expectCommitted(detached);
    EXPECT_EQ(detached.output.size(), std::string("Committed 0123456789ab.\n").size());
    const TestRepository empty;
    const NebscOutcome first =
        runNebsc({"commit", "--allow-empty", "-m", "x"}, {.folder = empty.path()});
    EXPECT_EQ(first.output,
              "Committed " + empty.git({"log", "-1", "--format=%H"}).substr(0, 12) + ".\n");
}

TEST_F(CommitCommand, AmendReplacesTheLatestCommit) {
    const std::string parent = latest("%P");
    const std::string message = latest("%B");
    const NebscOutcome kept = nebsc({"commit", "--amend"}, "src");
    expectDone(kept, "Amended; now at " + latest("%H").substr(0, 12) + ".\n");
    EXPECT_EQ(latest("%P"), parent);
    EXPECT_EQ(latest("%B"), message);
    EXPECT_EQ(repository.git({"show", "HEAD:a.c"}), "second\n");
    EXPECT_EQ(state(), " M \"src/b é.c\"\n");
    const NebscOutcome amended = nebsc({"commit", "--amend", "-m", "Other", "src/b é.c"});
    expectDone(amended, "Amended; now at " + latest("%H").substr(0, 12) + ".\n");
    EXPECT_EQ(latest("%B%P"), "Other\n" + parent);
    EXPECT_EQ(state(), "");
}

TEST_F(CommitCommand, CommitsAllTrackedFilesForAnotherAuthor) {
    repository.write("new", "1");
    const NebscOutcome all =
        nebsc({"commit", "-a", "-s", "-m", "All", "--author", "Zoë <zoe@example.org>"});
    expectCommitted(all);
    EXPECT_EQ(latest("%an <%ae>"), "Zoë <zoe@example.org>\n");
    EXPECT_THAT(latest("%B"), testing::StartsWith("All\n\nSigned-off-by: "));
    EXPECT_EQ(state(), "?? new\n");
    expectFailed(nebsc({"commit", "-a", "-m", "x", "a.c"}), HasSubstr("either FILE or --all"), 2);
    expectFailed(nebsc({"commit", "-m", "x", "--allow-empty", "--author", "nosuch"}),
                 HasSubstr("nosuch"));
    EXPECT_EQ(nebsc({"commit", "--amend", "--json"}).json()["name"], "create commit");
}

TEST_F(CommitCommand, RequiresAMessage) {
    expectFailed(nebsc({"commit"}), HasSubstr("--message"), 2);
    expectFailed(nebsc({"commit", "a.c"}), HasSubstr("--message"), 2);
    expectFailed(nebsc({"commit", "-m"}), HasSubstr("--message"), 2);
    EXPECT_EQ(state(), "M  a.c\n M \"src/b é.c\"\n");
}

TEST_F(CommitCommand, RefusesAnEmptyMessage) {
    expectFailed(nebsc({"commit", "-m", ""}), testing::ContainsRegex("empty.*message"));
}

TEST_F(CommitCommand, ReportsThatThereIsNothingToCommit) {
    repository.git({"commit", "--quiet", "--all", "-m", "all"});
    expectFailed(nebsc({"commit", "-m", "x"}), HasSubstr("nothing to commit"));
    const NebscOutcome json = nebsc({"commit", "--json", "-m", "x"});
    EXPECT_EQ(json.json()["error"]["class"], "nothing-to-commit");
    EXPECT_EQ(json.exitStatus, 1);
    expectCommitted(nebsc({"commit", "-m", "x", "--allow-empty"}));
}

TEST_F(CommitCommand, ReportsAnUntrackedFile) {
    repository.write("mine.c", "");
    expectFailed(nebsc({"commit", "-m", "x", "mine.c"}), HasSubstr("mine.c"));
}

TEST_F(CommitCommand, ListsEveryFileInConflict) {
    const std::string blob = repository.git({"rev-parse", "HEAD:a.c"}).substr(0, 40);
    std::string stages;
    for (const char* name : {"commit", "conf", "file", "zebra"}) {
        for (const char stage : {'1', '2', '3'}) {
            stages.append("100644 ").append(blob).append(" ").append(1, stage);
            stages.append("\t").append(name).append("\n");
        }
    }
    repository.gitWithInput({"update-index", "--index-info"}, stages);
    expectFailed(nebsc({"commit", "-m", "x"}),
                 testing::EndsWith("\n    commit\n    conf\n    file\n    zebra\n"));
}

TEST_F(CommitCommand, ReportsARefusingHook) {
    const std::string hook = repository.path(".git/hooks/pre-commit");
    repository.write(".git/hooks/pre-commit", "#!/bin/sh\necho 'no tabs, please'\nexit 1\n");
    std::filesystem::permissions(hook, std::filesystem::perms::owner_all);
    expectFailed(nebsc({"commit", "-m", "x"}),
                 testing::AllOf(HasSubstr("hook"), HasSubstr("no tabs, please")));
    repository.write(".git/hooks/pre-commit", "#!/bin/sh\nexit 1\n");
    expectFailed(nebsc({"commit", "-m", "x"}), HasSubstr("hook"));
}

TEST_F(CommitCommand, ReportsAnUnknownIdentity) {
    const TemporaryFolder home;
    const NebscOutcome outcome =
        runNebsc({"commit", "-m", "x"}, {.folder = repository.path(),
                                         .variables = {{"HOME", home.path()},
                                                       {"XDG_CONFIG_HOME", home.path()},
                                                       {"GIT_AUTHOR_NAME", std::nullopt},
                                                       {"GIT_CONFIG_COUNT", "1"},
                                                       {"GIT_CONFIG_KEY_0", "user.useConfigOnly"},
                                                       {"GIT_CONFIG_VALUE_0", "true"},
                                                       {"EMAIL", std::nullopt}}});
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.errors, HasSubstr("identity"));
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST_F(CommitCommand, JSONPrintsOnlyTheOutcome) {
    const NebscOutcome outcome = nebsc({"commit", "--json", "-m", "x", "--allow-empty"}, "src");
    const JSON json = outcome.json();
    EXPECT_EQ(json["command"]["arguments"], JSON({"commit", "--allow-empty", "-m", "x", "--"}));
    EXPECT_THAT(latest("%H"),
                testing::StartsWith(
                    json["result"][0]["NEBSourceControlOperationRevisionKey"].get<std::string>()));
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

TEST_F(CommitCommand, ASilentGitFailureIsAnError) {
    const StandInGit git(repository.path(), "exit 128");
    expectFailed(nebsc({"commit", "-m", "x"}, git),
                 "nebsc: git exited with status 128 and printed nothing\n");
}

TEST_F(CommitCommand, ReportsNoCommitThatGitDidNotMake) {
    const std::string before = latest("%H");
    const StandInGit git(repository.path(), "exit 0");
    const char* message =
        "nebsc: git reported success, but HEAD names the same commit as before\n"
        "'git reflog' shows whether a hook has moved it. If not, check with 'git --version' that "
        "git is "
        "the program you expect.\n";
    expectFailed(nebsc({"commit", "-m", "x"}, git), message);
    const auto json = nebsc({"commit", "--json", "-m", "x"}, git).json();
    EXPECT_EQ(json["error"]["class"], "unknown");
    EXPECT_EQ(json["result"], nullptr);
    EXPECT_EQ(latest("%H"), before);
    const TestRepository empty;
    const TemporaryFolder bin;
    bin.writeProgram("git", "#!/bin/sh\n[ \"$1\" = commit ] || exec /usr/bin/git \"$@\"\n");
    expectFailed(
        runNebsc({"commit", "-m", "x"},
                 {.folder = empty.path(), .variables = {{"PATH", bin.path() + ":/usr/bin:/bin"}}}),
        message);
}

TEST_F(CommitCommand, ReportsACommitThatIsAmendedWithoutAChange) {
    repository.git({"commit", "--quiet", "-m", "x"});
    for (int i = 0; i < 3; ++i) {  // within a second, the id stays
        EXPECT_THAT(nebsc({"commit", "--amend", "--no-edit"}).output, HasSubstr("Amended"));
    }
}

TEST_F(CommitCommand, PrintsNothingIfTheCommitIsUnknown) {
    const TemporaryFolder bin;
    bin.writeProgram("git", "#!/bin/sh\n[ \"$1\" = commit ] && : >.git/HEAD && echo one-word");
    const NebscOutcome outcome = runNebsc(
        {"commit", "-m", "x"}, {.folder = repository.path(), .variables = {{"PATH", bin.path()}}});
    expectDone(outcome);
}

}  // namespace
}  // namespace neb::test
