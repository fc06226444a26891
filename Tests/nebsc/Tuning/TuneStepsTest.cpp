// The steps of `nebsc tune`: what decides about them, their failures, and how they are undone.

#include <csignal>
#include <filesystem>
#include <thread>

#include "Doctor/CommitGraphFile.h"
#include "Doctor/IndexFile.h"
#include "nebsc/Tuning/TuneTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::Pair;
using testing::UnorderedElementsAre;

using TuneSteps = TuneTest;

constexpr const char* tuneRecord = ".git/nebsc-tune.json";
constexpr const char* commitGraph = ".git/objects/info/commit-graph";

// ---- settings that decide ---------------------------------------------------------------------

TEST_F(TuneSteps, RespectsDecisionsInSettings) {
    repository.git({"config", "core.untrackedCache", "false"});
    repository.git({"config", "index.version", "2"});
    repository.git({"config", "core.commitGraph", "false"});
    const NebscOutcome outcome = tune({"--yes", "--json"});
    EXPECT_THAT(statesIn(outcome), UnorderedElementsAre(Pair("commit-graph", "left")));
    EXPECT_THAT(messageIn(outcome, "commit-graph"), HasSubstr("core.commitGraph is false"));
}

TEST_F(TuneSteps, AFormerValueOfASettingIsRestored) {
    repository.git({"config", "core.untrackedCache", "keep"});
    static_cast<void>(tune({"--yes"}));
    EXPECT_EQ(repository.git({"config", "core.untrackedCache"}), "true\n");
    static_cast<void>(tune({"--undo"}));
    EXPECT_EQ(repository.git({"config", "core.untrackedCache"}), "keep\n");
}

TEST_F(TuneSteps, ASettingThatWasChangedSinceStays) {
    static_cast<void>(tune({"--yes"}));
    repository.git({"config", "core.untrackedCache", "keep"});
    EXPECT_THAT(tune({"--undo"}).output,
                HasSubstr("undone    untracked-cache  the setting core.untrackedCache was changed "
                          "since and stays\n"));
    EXPECT_EQ(repository.git({"config", "core.untrackedCache"}), "keep\n");
}

// ---- commit-graphs ----------------------------------------------------------------------------

TEST_F(TuneSteps, AGraphWithoutChangedPathsGetsThemAndLosesThemAgain) {
    for (const bool isChain : {false, true}) {
        const char* split = isChain ? "--split=replace" : "--no-progress";
        repository.git({"commit-graph", "write", "--reachable", "--no-changed-paths", split});
        EXPECT_EQ(statesIn(tune({"--yes", "--json"})).at("commit-graph"), "applied");
        const std::string objects = repository.path(".git/objects");
        EXPECT_TRUE(nebsc::commitGraphIn(objects).hasChangedPaths());
        EXPECT_EQ(nebsc::commitGraphIn(objects).isChain, isChain);
        static_cast<void>(tune({"--undo"}));
        EXPECT_FALSE(nebsc::commitGraphIn(objects).hasChangedPaths());
        EXPECT_EQ(nebsc::commitGraphIn(objects).isChain, isChain);
        std::filesystem::remove_all(repository.path(commitGraph));
    }
}

TEST_F(TuneSteps, AGraphOfAnAlternateIsNotTakenForAFormerOne) {
    repository.git({"commit-graph", "write", "--reachable", "--no-changed-paths"});
    repository.git({"clone", "--quiet", "--shared", ".", "shared"});
    const std::string folder = repository.path("shared");
    EXPECT_THAT(tuneIn(folder, {"--yes"}).output, HasSubstr("applied   commit-graph"));
    EXPECT_TRUE(isThere("shared/.git/objects/info/commit-graph"));
    EXPECT_EQ(tuneIn(folder, {"--undo"}).exitStatus, 0);
    EXPECT_FALSE(isThere("shared/.git/objects/info/commit-graph"));
    EXPECT_TRUE(isThere(commitGraph));
}

TEST_F(TuneSteps, GraphsThatGitCannotUseAreNotWritten) {
    repository.git({"config", "remote.origin.partialclonefilter", "tree:0"});
    EXPECT_THAT(messageIn(tune({"--yes", "--json"}), "commit-graph"),
                HasSubstr("trees that this partial clone lacks"));
    repository.git({"config", "--unset", "remote.origin.partialclonefilter"});
    repository.git({"replace", "HEAD", "HEAD~1"});
    EXPECT_THAT(messageIn(tune({"--dry-run", "--json"}), "commit-graph"),
                HasSubstr("while commits are replaced"));
    EXPECT_FALSE(isThere(commitGraph));
}

TEST_F(TuneSteps, AnOutdatedGraphIsUpdatedUnlessGitDoesSo) {
    repository.git({"commit-graph", "write", "--reachable", "--changed-paths"});
    std::string stream;
    for (int i = 0; i < 101; ++i) {
        stream += std::string("commit refs/heads/main\ncommitter C <c@x> 1 +0000\ndata 0\n") +
                  (i == 0 ? "from refs/heads/main^0\n" : "");
    }
    repository.gitWithInput({"fast-import", "--quiet"}, stream);
    EXPECT_THAT(tune({"--dry-run"}).output, HasSubstr("the commit-graph lacks the newest commits"));
    repository.git({"config", "fetch.writeCommitGraph", "true"});
    EXPECT_THAT(tune({"--dry-run"}).output, Not(HasSubstr("commit-graph")));
}

TEST_F(TuneSteps, AGraphThatGitHasWrittenSinceStays) {
    static_cast<void>(tune({"--yes"}));
    repository.commitFile("c.c", "3\n");
    repository.git({"commit-graph", "write", "--reachable"});
    EXPECT_THAT(tune({"--undo"}).output,
                HasSubstr("undone    commit-graph     git has written objects/info/commit-graph "
                          "again since, and it stays\n"));
    EXPECT_TRUE(isThere(commitGraph));
    EXPECT_FALSE(isThere(tuneRecord));
}

// ---- failures ---------------------------------------------------------------------------------

TEST_F(TuneSteps, AFailedStepIsUndoneAndTheOthersAreApplied) {
    intercept("*--test-untracked-cache*) echo 'directory stat info does not change' >&2; exit 1;;");
    const NebscOutcome outcome = tune({"--yes", "--json"});
    EXPECT_THAT(statesIn(outcome), UnorderedElementsAre(Pair("commit-graph", "applied"),
                                                        Pair("untracked-cache", "failed"),
                                                        Pair("index-version", "applied")));
    EXPECT_EQ(messageIn(outcome, "untracked-cache"), "directory stat info does not change");
    EXPECT_EQ(outcome.json()["error"], "not every step succeeded");
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_THAT(settings(), Not(HasSubstr("untrackedcache")));
    EXPECT_THAT(tune({"--undo"}).output, Not(HasSubstr("untracked-cache")));
}

TEST_F(TuneSteps, AnInterruptedStepCanBeUndone) {
    intercept("*commit-graph*) /usr/bin/git \"$@\"; touch started; exec sleep 600;;");
    Nebsc nebsc({"tune", "--all", "--yes"}, surroundings(repository.path()));
    while (!isThere("started")) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    nebsc.send(SIGINT);
    const NebscOutcome interrupted = nebsc.outcome();
    EXPECT_EQ(interrupted.exitStatus, 130);
    EXPECT_THAT(interrupted.errors,
                HasSubstr("nebsc: 'nebsc tune --undo' undoes the interrupted step\n"));
    EXPECT_TRUE(isThere(commitGraph));
    intercept("");
    expectDone(tune({"--undo"}), "undone    commit-graph\n");
    EXPECT_FALSE(isThere(commitGraph));
    EXPECT_FALSE(isThere(tuneRecord));
}

TEST_F(TuneSteps, WithoutTheFormerSettingsNothingIsChangedOrForgotten) {
    intercept("*--get-all*) exit 3;;");
    const NebscOutcome refused = tune({"--yes", "--json"});
    EXPECT_EQ(messageIn(refused, "untracked-cache"),
              "git cannot read the settings of the repository");
    EXPECT_THAT(settings(), Not(HasSubstr("untrackedcache")));
    intercept("");
    static_cast<void>(tune({"--yes"}));
    intercept("*--get-all*) exit 3;;");
    EXPECT_EQ(statesIn(tune({"--undo", "--json"}))["untracked-cache"], "failed");
    intercept("");
    expectDone(tune({"--undo"}), "undone    untracked-cache\n");
    EXPECT_THAT(settings(), Not(HasSubstr("untrackedcache")));
}

TEST_F(TuneSteps, AfterAKillTheFormerStateIsStillRestored) {
    intercept(
        "*untracked-cache*) /usr/bin/git update-index --untracked-cache; "
        "touch started; exec sleep 600;;");
    Nebsc nebsc({"tune", "--all", "--yes"}, surroundings(repository.path()));
    while (!isThere("started")) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    nebsc.send(SIGKILL);
    static_cast<void>(nebsc.outcome());
    intercept("");
    EXPECT_EQ(tune({"--undo"}).exitStatus, 0);
    EXPECT_FALSE(nebsc::indexFileAt(repository.path(".git/index"), 20)->hasUntrackedCache);
    EXPECT_FALSE(isThere(tuneRecord));
}

TEST_F(TuneSteps, TheFolderOfAnInterruptedTestIsRemoved) {
    intercept(
        "*--test-untracked-cache*) mkdir mtime-test-abcdef; touch mtime-test-abcdef/x; "
        "exit 1;;");
    repository.write("mtime-test-mine/x", "");
    static_cast<void>(tune({"--yes"}));
    EXPECT_FALSE(isThere("mtime-test-abcdef"));
    EXPECT_TRUE(isThere("mtime-test-mine/x"));
}

TEST_F(TuneSteps, ADamagedRecordIsReportedAndNothingIsChanged) {
    for (const auto& [text, reason] :
         {std::pair{"junk", "is damaged; remove it to forget the changes that it lists"},
          std::pair{R"({"version": 1, "steps": [{}]})", "is damaged"},
          std::pair{R"({"version": 2, "steps": []})", "was written by a newer nebsc"}}) {
        repository.write(tuneRecord, text);
        EXPECT_THAT(tune({"--undo"}).errors,
                    HasSubstr("nebsc: '" + repository.path(tuneRecord) + "' " + reason));
        EXPECT_EQ(tune({"--yes"}).exitStatus, 1);
        EXPECT_FALSE(isThere(commitGraph));
    }
}

TEST_F(TuneSteps, AStepThatIsUnknownStaysRecorded) {
    repository.write(tuneRecord, R"({"version": 1, "steps": [{"cause": "magic", "folder": "",
        "isComplete": true, "formerState": {}, "settings": [], "files": []}]})");
    const NebscOutcome outcome = tune({"--undo", "--json"});
    EXPECT_EQ(messageIn(outcome, "magic"), "this nebsc does not know the step");
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_TRUE(isThere(tuneRecord));
}

/// A record is not trusted more than the table: it cannot name other files or settings.
TEST_F(TuneSteps, ARecordCannotRemoveOtherFilesOrSettings) {
    repository.write(tuneRecord, R"({"version": 1, "steps": [{"cause": "commit-graph", "folder": "",
        "isComplete": false, "formerState": {},
        "settings": [{"key": "core.bare", "formerValues": []}],
        "files": [{"path": "HEAD", "existed": false, "fingerprint": ""}]}]})");
    const std::string settingsBefore = settings();
    EXPECT_THAT(tune({"--undo"}).output, HasSubstr("the setting core.bare is unknown and stays"));
    EXPECT_TRUE(isThere(".git/HEAD"));
    EXPECT_EQ(settings(), settingsBefore);
}

// ---- objects and packs ------------------------------------------------------------------------

class TuneObjects : public TuneTest {
protected:
    TuneObjects() { repository.git({"config", "maintenance.auto", "true"}); }

    /// Returns the message about the cause if the step is left, else its state.
    [[nodiscard]] std::string dryRunOf(const std::string& cause) const {
        const NebscOutcome outcome = tune({"--dry-run", "--json"});
        const auto states = statesIn(outcome);
        const auto state = states.find(cause);
        return state == states.end()     ? "not found"
               : state->second == "left" ? messageIn(outcome, cause)
                                         : state->second;
    }
};

constexpr const char* afterNextCommand = " after the next commit, merge or fetch.";

TEST_F(TuneObjects, LooseObjectsArePackedAndStaySoAfterUndo) {
    std::string stream = "commit refs/heads/many\ncommitter C <c@x> 1 +0000\ndata 0\n";
    for (int i = 1000; i < 2000; ++i) {
        const std::string number = std::to_string(i);
        stream.append("M 100644 inline f" + number + "\ndata 4\n" + number + "\n");
    }
    repository.gitWithInput(
        {"-c", "core.fsync=none", "-c", "fastimport.unpackLimit=100000", "fast-import", "--quiet"},
        stream);
    EXPECT_EQ(statesIn(tune({"--yes", "--json"})).at("loose-objects"), "applied");
    EXPECT_THAT(repository.git({"count-objects", "-v"}), HasSubstr("count: 0\n"));
    EXPECT_THAT(tune({"--undo"}).output,
                HasSubstr("undone    loose-objects    the objects stay packed\n"));
    EXPECT_EQ(repository.git({"cat-file", "blob", "many:f1007"}), "1007");
}

TEST_F(TuneObjects, LooseObjectsThatGitPacksAreLeftToIt) {
    EXPECT_EQ(dryRunOf("loose-objects"), "not found");
    for (int i = 1000; i < 2030; ++i) {
        repository.write(".git/objects/ab/" + std::string(34, '0') + std::to_string(i), "");
    }
    EXPECT_EQ(dryRunOf("loose-objects"), "planned");
    repository.git({"config", "gc.auto", "1k"});
    EXPECT_EQ(dryRunOf("loose-objects"),
              std::string("git's automatic maintenance packs them") + afterNextCommand);
    repository.write(".git/gc.log", "error: a failure of git gc stops it for a day\n");
    EXPECT_EQ(dryRunOf("loose-objects"), "planned");
}

TEST_F(TuneObjects, PacksGetAMultiPackIndexThatUndoRemoves) {
    // git 2.54 and newer combine packs after a commit.
    repository.git({"config", "maintenance.auto", "false"});
    for (int i = 0; i < 10; ++i) {
        repository.commitFile("p" + std::to_string(i), std::to_string(i));
        repository.git({"repack", "-d", "-q"});
    }
    repository.git({"config", "maintenance.auto", "true"});
    constexpr const char* index = ".git/objects/pack/multi-pack-index";
    EXPECT_EQ(statesIn(tune({"--yes", "--json"})).at("packs"), "applied");
    EXPECT_TRUE(isThere(index));
    EXPECT_EQ(dryRunOf("packs"), "not found");
    static_cast<void>(tune({"--undo"}));
    EXPECT_FALSE(isThere(index));
    repository.git({"config", "gc.autoPackLimit", "5"});
    EXPECT_EQ(dryRunOf("packs"),
              std::string("git's automatic maintenance combines them") + afterNextCommand);
}

}  // namespace
}  // namespace neb::test
