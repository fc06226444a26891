// `nebsc pull` where there is nothing to merge with; PublishTest.cpp has the other cases.

#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class PullCommand : public CommandTest {
protected:
    void SetUp() override {
        source.commitFile("a.c", "1\n");
        repository.git({"remote", "add", "origin", source.path()});
        repository.git({"config", "branch.main.remote", "origin"});
        repository.git({"config", "branch.main.merge", "refs/heads/main"});
    }

    TestRepository source;
};

TEST_F(PullCommand, FillsABranchWithoutCommits) {
    repository.write("a.c", "mine\n");
    expectFailed(nebsc({"pull"}), HasSubstr("a.c"));
    std::filesystem::remove(repository.path("a.c"));
    const NebscOutcome outcome = nebsc({"pull", "--rebase"});
    EXPECT_THAT(outcome.output, StartsWith("Pulled"));
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(repository.git({"rev-parse", "HEAD"}), source.git({"rev-parse", "HEAD"}));
    expectDone(nebsc({"pull"}), "Already up to date.\n");
}

TEST_F(PullCommand, NamesWhatABranchWithoutCommitsLacks) {
    repository.git({"config", "--unset", "branch.main.merge"});
    expectFailed(nebsc({"pull"}), HasSubstr("'nebsc pull REMOTE BRANCH' names a branch"));
    const NebscOutcome outcome = nebsc({"pull", "origin", "main"});
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.errors;
    EXPECT_EQ(content("a.c"), "1\n");
}

}  // namespace
}  // namespace neb::test
