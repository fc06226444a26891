// How many git processes a command starts. Those that git itself starts do not count.

#include <algorithm>
#include <fstream>
#include <iterator>

#include "nebsc/SharingTest.h"

namespace neb::test {
namespace {

class ProcessCount : public SharingTest {
protected:
    void SetUp() override {
        SharingTest::SetUp();
        ben->commitFile("src/b", "1\n2\n");
        ben->git({"tag", "v1"});
        ben->git({"branch", "topic", "HEAD~1"});
        share(*ben);
        programs.writeProgram("git", "#!/bin/sh\nprintf '%s\\n' \"$*\" >>'" + log() +
                                         "'\nexec /usr/bin/git \"$@\"\n");
    }
    [[nodiscard]] std::string log() const { return programs.path("log"); }

    /// Expects that the command succeeds and starts so many processes of git.
    void expectProcesses(std::ptrdiff_t count, const std::vector<std::string>& arguments) const {
        std::ofstream(log(), std::ios::trunc).close();
        const NebscOutcome outcome = runNebsc(
            arguments,
            {.folder = ben->path(), .variables = {{"PATH", programs.path() + ":/usr/bin:/bin"}}});
        EXPECT_EQ(outcome.exitStatus, 0) << testing::PrintToString(arguments) << outcome.errors;
        std::ifstream file(log());
        const std::string started{std::istreambuf_iterator<char>(file),
                                  std::istreambuf_iterator<char>()};
        EXPECT_EQ(std::count(started.begin(), started.end(), '\n'), count)
            << testing::PrintToString(arguments) << "\n"
            << started;
    }

    TemporaryFolder programs;
};

/// Without a revision or file to ask about, an ordinary working copy is found without git.
TEST_F(ProcessCount, IsOneWhereTheRequestIsAllThatGitIsAsked) {
    ben->write("src/b", "changed\n");
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"status"},
             {"status", "--short"},
             {"log", "-n", "20"},
             {"log", "--all", "--decorate"},
             {"branch"},
         }) {
        expectProcesses(1, arguments);
    }
    ben->git({"pack-refs", "--all"});
    expectProcesses(1, {"log"});
}

/// A setting that moves the working copy leaves the discovery to git, beside the request.
TEST_F(ProcessCount, IsTwoWhereTheWorkingCopyMayBeElsewhere) {
    ben->git({"config", "core.worktree", ben->path()});
    expectProcesses(2, {"status"});
    expectProcesses(2, {"log", "-n", "20"});
    expectProcesses(2, {"branch"});
}

TEST_F(ProcessCount, IsTwoForACommandThatReads) {
    ben->write("src/b", "changed\n");
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"status", "src"},
             {"log", "v1"},
             {"log", "src"},
             {"log", "--files", "v1", "src/b"},
             {"log", "topic..main"},
             {"log", "--graph", "topic..main"},
             {"log", "--author", "Ann", "v1"},
             {"log", "--follow", "src/b"},
             {"log", "topic..."},
             {"log", "--branch", "topic"},
             {"branch", "current"},
             {"blame", "src/b"},
             {"blame", "v1", "src/b"},
             {"blame", "-L", "1,2", "src/b"},
             {"diff"},
             {"diff", "--staged"},
             {"diff", "--stat"},
             {"diff", "v1"},
             {"diff", "src"},
             {"diff", "--name-status", "topic", "--", "src/b"},
             {"diff", "topic", "main"},
             {"diff", "topic...main"},
             {"ls"},
             {"ls", "v1:src"},
             {"cat", "v1:src/b"},
             {"cat", ":src/b"},
         }) {
        expectProcesses(2, arguments);
    }
}

/// The discovery, the commit, and its patch.
TEST_F(ProcessCount, IsThreeForACommitWithItsPatch) {
    expectProcesses(3, {"show"});
    expectProcesses(3, {"show", "topic"});
}

/// The discovery, the settings, the fetch, how the two sides are related, and the merge.
TEST_F(ProcessCount, OfAnUpdateIsSmall) {
    expectProcesses(5, {"update"});
    ann->git({"pull", "--quiet", "origin", "main"});
    ann->commitFile("a", "ann\n");
    share(*ann);
    expectProcesses(5, {"update"});
    expectProcesses(5, {"update", "origin", "main"});
    expectProcesses(3, {"update", "--ff"});
    ann->commitFile("a", "ann again\n");
    share(*ann);
    expectProcesses(3, {"update", "--ff"});
}

}  // namespace
}  // namespace neb::test
