// The findings of `nebsc doctor` about speed.

#include "Doctor/SpeedExamination.h"
#include "nebsc/Doctor/DoctorTest.h"

namespace neb::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

class SpeedCheck : public DoctorTest {
protected:
    SpeedCheck() { repository.commitFile("a.c", "1\n"); }

    /// Returns the findings with a git that runs the cases of a shell's `case` first.
    [[nodiscard]] nlohmann::ordered_json findingsWith(const std::string& cases) const {
        _programs.writeProgram(
            "git", "#!/bin/sh\ncase \"$*\" in\n" + cases + "\nesac\nexec /usr/bin/git \"$@\"\n");
        return findings("speed", {{"PATH", _programs.path() + ":/usr/bin:/bin"}});
    }

    /// Returns the findings whose text contains the other text.
    [[nodiscard]] static nlohmann::ordered_json about(const std::string& text,
                                                      const nlohmann::ordered_json& findings) {
        auto chosen = nlohmann::ordered_json::array();
        for (const auto& finding : findings) {
            if (finding["text"].get<std::string>().find(text) != std::string::npos) {
                chosen.push_back(finding);
            }
        }
        return chosen;
    }

    TemporaryFolder _programs;
};

TEST_F(SpeedCheck, ASmallRepositoryIsFastEnough) {
    EXPECT_THAT(findings("speed"),
                IsOneFinding("ok", "no setting or missing file slows git down", ""));
}

TEST_F(SpeedCheck, SlowCommandsAreReportedWithTheirTimeAndAnEstimate) {
    EXPECT_THAT(about("commit-graph", findingsWith("*log*format=%H*) sleep 0.1;;")),
                IsOneFinding(
                    "note",
                    MatchesRegex(
                        "there is no commit-graph: git log --format=%H takes 1[0-9][0-9] ms, about "
                        "[0-9.]+ ms without this \\(estimated\\); git log of one file "
                        "takes 1[0-9][0-9] ms, about [0-9.]+ ms without this .*"),
                    "'nebsc tune' offers to write a commit-graph with changed paths."));
    EXPECT_THAT(about("untracked", findingsWith("*ls-files*--others*) sleep 0.1;;")),
                IsOneFinding("note",
                             MatchesRegex("the index has no untracked cache: searching for "
                                          "untracked files takes 1[0-9][0-9] ms, about .*"),
                             HasSubstr("'nebsc tune' offers to remember the untracked files")));
}

TEST_F(SpeedCheck, ACommandThatTakesLongIsEndedAndTheRestIsChecked) {
    const auto found = findingsWith("*log*format=%H*) exec sleep 600;;");
    EXPECT_THAT(
        about("commit-graph", found),
        IsOneFinding(
            "note",
            MatchesRegex(
                "there is no commit-graph: git log --format=%H takes more than 300 ms, about "
                "2[0-9] % of that without this \\(estimated\\); git log of one "
                "file takes more than 300 ms, about [12][0-9] % of that .*"),
            HasSubstr("nebsc tune")));
    EXPECT_THAT(about("no time was left", found), IsEmpty());
}

TEST_F(SpeedCheck, WhatThereWasNoTimeForIsNamed) {
    EXPECT_THAT(about("no time", findingsWith("*for-each-ref*refs/replace*) exec sleep 600;;")),
                IsOneFinding("note",
                             "no time was left to check: commit-graph, untracked-cache, "
                             "index-version, loose-objects, packs, file-system-monitor",
                             "'nebsc tune --dry-run' takes more time."));
}

TEST_F(SpeedCheck, AFileSystemMonitorIsSuggestedWhereGitHasOne) {
    const std::string cases =
        "*build-options*) echo 'feature: fsmonitor--daemon'; exit;;\n"
        "*ls-files*--deleted*) sleep 0.1;;";
    EXPECT_THAT(about("monitor", findingsWith(cases)),
                IsOneFinding("note",
                             HasSubstr("git's file system monitor is not in use: searching for "
                                       "changed files takes 1"),
                             HasSubstr("'git config core.fsmonitor true' starts it")));
    repository.git({"config", "core.fsmonitor", "false"});
    EXPECT_THAT(about("monitor", findingsWith(cases)), IsEmpty());
}

/// A filter is a program that the configuration names; git status would run it.
TEST_F(SpeedCheck, RunsNoFilter) {
    repository.git({"config", "filter.f.clean", "touch " + _programs.path("run") + "; cat"});
    repository.write(".gitattributes", "*.c filter=f\n");
    repository.write("a.c", "2\n");
    EXPECT_EQ(findings("speed").size(), 1U);
    EXPECT_THAT(_programs.read("run"), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(_programs.path("run")));
}

TEST(SpeedText, DurationsHaveASuitableUnit) {
    using nebsc::Timing;
    using std::chrono::milliseconds;
    EXPECT_EQ(nebsc::textOf(Timing{.time = std::chrono::microseconds(3210)}), "3.2 ms");
    EXPECT_EQ(nebsc::textOf(Timing{.time = milliseconds(10)}), "10 ms");
    EXPECT_EQ(nebsc::textOf(Timing{.time = milliseconds(999)}), "999 ms");
    EXPECT_EQ(nebsc::textOf(Timing{.time = milliseconds(1000)}), "1.0 s");
    EXPECT_EQ(nebsc::textOf(Timing{.time = milliseconds(300), .isCut = true}), "more than 300 ms");
}

}  // namespace
}  // namespace neb::test
