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

TEST_F(ProcessCount, IsTwoForACommandThatReads) {
    ben->write("src/b", "changed\n");
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"status"},
             {"status", "src"},
             {"status", "--short"},
             {"log", "-n", "20"},
             {"log", "v1"},
             {"log", "src"},
             {"log", "--files", "v1", "src/b"},
             {"log", "topic..main"},
             {"log", "--all", "--decorate"},
             {"log", "--graph", "topic..main"},
             {"log", "--author", "Ann", "v1"},
             {"log", "--follow", "src/b"},
             {"log", "topic..."},
             {"log", "--branch", "topic"},
             {"branch"},
             {"branch", "current"},
             {"blame", "src/b"},
             {"blame", "v1", "src/b"},
             {"blame", "-L", "1,2", "src/b"},
             {"diff"},
             {"diff", "v1"},
             {"diff", "src"},
             {"diff", "--name-status", "topic", "--", "src/b"},
             {"diff", "topic", "main"},
             {"diff", "topic...main"},
             {"diff", "--staged"},
             {"diff", "--stat"},
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
