// `nebsc tune`, run as a program in a repository.

#include <sys/file.h>

#include <csignal>
#include <filesystem>

#include "Doctor/CommitGraphFile.h"
#include "Doctor/IndexFile.h"
#include "Platform/FileDescriptor.h"
#include "nebsc/Tuning/TuneTest.h"

namespace neb::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::Pair;
using testing::UnorderedElementsAre;

using TuneCommand = TuneTest;

constexpr const char* record = ".git/nebsc-tune.json";
constexpr const char* graph = ".git/objects/info/commit-graph";

TEST_F(TuneCommand, AppliesAllStepsWithYesAndUndoesThem) {
    const std::string settingsBefore = settings();
    const NebscOutcome applied = tune({"--yes"});
    EXPECT_THAT(applied.output, AllOf(HasSubstr("applied   commit-graph     git log --format=%H: "),
                                      HasSubstr("applied   untracked-cache  git status: "),
                                      HasSubstr("applied   index-version    reading the index: "),
                                      HasSubstr(" ms before, ")));
    EXPECT_EQ(applied.errors, "");
    EXPECT_EQ(applied.exitStatus, 0);
    EXPECT_TRUE(nebsc::commitGraphIn(repository.path(".git/objects")).hasChangedPaths());
    auto index = nebsc::indexFileAt(repository.path(".git/index"), 20);
    EXPECT_TRUE(index && index->version == 4 && index->hasUntrackedCache);
    EXPECT_EQ(repository.git({"config", "core.untrackedCache"}), "true\n");
    EXPECT_TRUE(isThere(record));

    expectDone(tune({"--undo"}),
               "undone    index-version\nundone    untracked-cache\nundone    commit-graph\n");
    EXPECT_FALSE(isThere(graph));
    index = nebsc::indexFileAt(repository.path(".git/index"), 20);
    EXPECT_TRUE(index && index->version == 2 && !index->hasUntrackedCache);
    EXPECT_EQ(settings(), settingsBefore);
    EXPECT_FALSE(isThere(record));
    expectDone(tune({"--undo"}), "There is nothing to undo.\n");
}

TEST_F(TuneCommand, FindsNothingAfterATuning) {
    static_cast<void>(tune({"--yes"}));
    expectDone(tune({"--yes"}), "There is nothing to tune.\n");
}

TEST_F(TuneCommand, LeavesOutStepsThatSaveLittle) {
    expectDone(runNebsc({"tune", "--yes"}, surroundings(repository.path())),
               "There is nothing to tune.\n");
}

TEST_F(TuneCommand, DryRunShowsTheCommandsAndChangesNothing) {
    const NebscOutcome outcome = tune({"--dry-run"});
    EXPECT_THAT(outcome.output, HasSubstr("planned   commit-graph     there is no commit-graph: "));
    EXPECT_THAT(outcome.output, HasSubstr("git commit-graph write --reachable --changed-paths\n"));
    EXPECT_THAT(outcome.output, HasSubstr("git config core.untrackedCache true\n"));
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_FALSE(isThere(record));
    EXPECT_FALSE(isThere(graph));
    EXPECT_THAT(settings(), Not(HasSubstr("untrackedcache")));
    static_cast<void>(tune({"--yes"}));
    EXPECT_THAT(tune({"--undo", "--dry-run"}).output, HasSubstr("undoable  commit-graph\n"));
    EXPECT_TRUE(isThere(graph));
}

TEST_F(TuneCommand, ChangesNothingWithoutATerminal) {
    const NebscOutcome outcome = tune({});
    EXPECT_THAT(outcome.output, HasSubstr("planned   commit-graph"));
    EXPECT_EQ(outcome.errors,
              "nebsc: nothing was changed, because there is no terminal to ask at; '--yes' applies "
              "all planned steps, '--dry-run' only shows them\n");
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_FALSE(isThere(record));
    EXPECT_FALSE(isThere(graph));
}

TEST_F(TuneCommand, AsksForEachStepAtATerminal) {
    NebscSurroundings terminal = surroundings(repository.path());
    terminal.hasTerminalForErrors = terminal.hasTerminalForInput = true;
    Nebsc nebsc({"tune", "--all", "--json"}, terminal);
    EXPECT_THAT(nebsc.awaitErrors("[y/N] "),
                HasSubstr("Do you want to write a commit-graph with changed paths?"));
    nebsc.type("n\n");
    EXPECT_THAT(nebsc.awaitErrors("[y/N] "), HasSubstr("git config core.untrackedCache true"));
    nebsc.type("Yes\n");
    nebsc.awaitErrors("[y/N] ");
    nebsc.type("\n");
    EXPECT_THAT(statesIn(nebsc.outcome()), UnorderedElementsAre(Pair("commit-graph", "declined"),
                                                                Pair("untracked-cache", "applied"),
                                                                Pair("index-version", "declined")));
    EXPECT_FALSE(isThere(graph));
}

TEST_F(TuneCommand, ASignalEndsTheQuestion) {
    NebscSurroundings terminal = surroundings(repository.path());
    terminal.hasTerminalForErrors = terminal.hasTerminalForInput = true;
    Nebsc nebsc({"tune", "--all"}, terminal);
    nebsc.awaitErrors("[y/N] ");
    nebsc.send(SIGINT);
    EXPECT_EQ(nebsc.outcome().exitStatus, 130);
    EXPECT_FALSE(isThere(record));
}

TEST_F(TuneCommand, PrintsJSON) {
    const NebscOutcome outcome = tune({"--yes", "--json"});
    const auto json = outcome.json();
    EXPECT_TRUE(json["error"].is_null());
    ASSERT_EQ(json["steps"].size(), 3U);
    const auto& step = json["steps"][0];
    EXPECT_EQ(step["cause"], "commit-graph");
    EXPECT_EQ(step["state"], "applied");
    EXPECT_EQ(step["commands"][0], "git commit-graph write --reachable --changed-paths");
    EXPECT_EQ(step["comparisons"][0]["command"], "git log --format=%H");
    EXPECT_GT(step["comparisons"][0]["before"], 0.0);
    EXPECT_GT(step["comparisons"][0]["after"], 0.0);
    const auto refused = tune({"--json", "--undo"});
    EXPECT_EQ(refused.json()["steps"][2]["state"], "undone");
}

TEST_F(TuneCommand, OutsideARepositoryItIsRefused) {
    const TemporaryFolder plain;
    expectFailed(tuneIn(plain.path(), {"--yes"}),
                 "nebsc: " + plain.path() + " is not in a repository\n");
    const NebscOutcome outcome = tuneIn(plain.path(), {"--yes", "--json"});
    EXPECT_EQ(outcome.json()["error"]["class"], "not-a-repository");
    EXPECT_EQ(outcome.exitStatus, 1);
}

// ---- kinds of repositories --------------------------------------------------------------------

TEST_F(TuneCommand, ABareRepositoryHasNoStepsForAnIndex) {
    repository.git({"clone", "--quiet", "--bare", ".", "bare.git"});
    const std::string bare = repository.path("bare.git");
    EXPECT_THAT(statesIn(tuneIn(bare, {"--yes", "--json"})),
                UnorderedElementsAre(Pair("commit-graph", "applied")));
    EXPECT_TRUE(isThere("bare.git/nebsc-tune.json"));
    expectDone(tuneIn(bare, {"--undo"}), "undone    commit-graph\n");
    EXPECT_FALSE(isThere("bare.git/objects/info/commit-graph"));
}

TEST_F(TuneCommand, ALinkedWorktreeSharesTheRecordAndHasItsOwnIndex) {
    repository.git({"worktree", "add", "--quiet", "-b", "other", "linked"});
    static_cast<void>(tuneIn(repository.path("linked"), {"--yes"}));
    EXPECT_TRUE(isThere(record));
    EXPECT_TRUE(isThere(graph));
    const std::string index = repository.path(".git/worktrees/linked/index");
    EXPECT_EQ(nebsc::indexFileAt(index, 20)->version, 4U);
    EXPECT_EQ(nebsc::indexFileAt(repository.path(".git/index"), 20)->version, 2U);
    EXPECT_EQ(tune({"--undo"}).exitStatus, 0);
    EXPECT_EQ(nebsc::indexFileAt(index, 20)->version, 2U);
    EXPECT_FALSE(isThere(record));
}

TEST_F(TuneCommand, AStepInARemovedWorktreeIsForgotten) {
    repository.git({"worktree", "add", "--quiet", "-b", "other", "linked"});
    static_cast<void>(tuneIn(repository.path("linked"), {"--yes"}));
    repository.git({"worktree", "remove", "--force", "linked"});
    const NebscOutcome outcome = tune({"--undo"});
    EXPECT_THAT(outcome.output, HasSubstr("undone    index-version    the working copy '" +
                                          repository.path("linked") + "' is gone\n"));
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_THAT(settings(), Not(HasSubstr("untrackedcache")));
}

TEST_F(TuneCommand, AShallowCloneGetsNoCommitGraph) {
    const TestRepository origin;
    repository.git({"clone", "--quiet", "--depth=1", "file://" + repository.path(), "shallow"});
    const NebscOutcome outcome = tuneIn(repository.path("shallow"), {"--yes", "--json"});
    EXPECT_EQ(statesIn(outcome).at("commit-graph"), "left");
    EXPECT_THAT(messageIn(outcome, "commit-graph"), HasSubstr("shallow clone"));
    EXPECT_FALSE(isThere("shallow/.git/objects/info/commit-graph"));
}

TEST_F(TuneCommand, ASHA256RepositoryIsTunedAndRestored) {
    repository.git({"init", "--quiet", "--object-format=sha256", "long"});
    repository.write("long/a.c", "1\n");
    const std::string folder = repository.path("long");
    repository.git({"-C", "long", "add", "."});
    repository.git({"-C", "long", "commit", "--quiet", "-m", "a"});
    EXPECT_EQ(statesIn(tuneIn(folder, {"--yes", "--json"})).size(), 3U);
    EXPECT_TRUE(nebsc::indexFileAt(repository.path("long/.git/index"), 32)->hasUntrackedCache);
    EXPECT_EQ(tuneIn(folder, {"--undo"}).exitStatus, 0);
    EXPECT_FALSE(nebsc::indexFileAt(repository.path("long/.git/index"), 32)->hasUntrackedCache);
    EXPECT_FALSE(isThere("long/.git/objects/info/commit-graph"));
}

TEST_F(TuneCommand, AnEmptyRepositoryHasNothingToTune) {
    repository.git({"init", "--quiet", "empty"});
    expectDone(tuneIn(repository.path("empty"), {"--yes"}), "There is nothing to tune.\n");
}

TEST_F(TuneCommand, ARecordThatCannotBeWrittenPreventsEveryStep) {
    std::filesystem::create_directories(repository.path(std::string(record) + ".new/x"));
    const NebscOutcome outcome = tune({"--yes"});
    EXPECT_THAT(outcome.output, HasSubstr("'" + repository.path(record) +
                                          "' could not be written: Is a directory"));
    EXPECT_EQ(outcome.errors, "nebsc: not every step succeeded\n");
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_FALSE(isThere(graph));
    EXPECT_THAT(settings(), Not(HasSubstr("untrackedcache")));
}

TEST_F(TuneCommand, TwoAtOnceAreRefused) {
    const FileDescriptor lock(
        ::open(repository.path(".git").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ASSERT_EQ(::flock(lock.get(), LOCK_EX), 0);
    EXPECT_EQ(tune({"--yes"}).errors,
              "nebsc: another 'nebsc tune' is changing '" + repository.path(".git") + "'\n");
    EXPECT_FALSE(isThere(graph));
}

}  // namespace
}  // namespace neb::test
