// `nebsc show`, run as a program.

#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class ShowCommand : public CommandTest {
protected:
    ShowCommand() {
        repository.commitFile("a.c", "1\n", "First");
        repository.git({"tag", "v1"});
        repository.write("b.c", "b\n");
        repository.git({"add", "."});
        repository.commitFile("a.c", "2\n", "Second\n\nWith a body.");
    }
    [[nodiscard]] std::string id(const std::string& revision) const {
        return repository.git({"rev-parse", revision}).substr(0, 40);
    }
    [[nodiscard]] NebscOutcome show(std::vector<std::string> arguments,
                                    std::string_view folder = "") const {
        arguments.insert(arguments.begin(), "show");
        return runNebsc(arguments,
                        {.folder = repository.path(folder), .variables = {{"TZ", "UTC"}}});
    }
    [[nodiscard]] static std::string author() {
        return "Author: Ann Example <ann@example.org>\nDate:   2020-09-13 12:26:40 +0000\n";
    }
};

TEST_F(ShowCommand, ShowsACommitWithItsPatch) {
    const std::string patch =
        repository.git({"diff-tree", "-p", "--no-commit-id", "--root", "HEAD"});
    const std::string head = "commit " + id("HEAD") + " (HEAD -> main)\n" + author() +
                             "\n    Second\n\n    With a body.\n\n";
    expectDone(show({}), head + patch);
    expectDone(show({"HEAD"}), head + patch);
    expectDone(show({"v1"}),
               "commit " + id("v1") + " (tag: v1)\n" + author() + "\n    First\n\n" +
                   repository.git({"diff-tree", "-p", "--no-commit-id", "--root", "v1"}));
}

TEST_F(ShowCommand, LimitsThePatchToFiles) {
    const NebscOutcome outcome = show({"HEAD", "b.c"});
    EXPECT_THAT(outcome.output, HasSubstr("\n+b\n"));
    EXPECT_THAT(outcome.output, Not(HasSubstr("a.c")));
    const NebscOutcome nothing = show({"v1", "--", "b.c"});
    expectDone(nothing, "commit " + id("v1") + " (tag: v1)\n" + author() + "\n    First\n");
    expectDone(show({"HEAD", "--", "b.c"}), outcome.output);
}

TEST_F(ShowCommand, OfAMergeShowsWhatDiffersFromAllParents) {
    repository.git({"checkout", "--quiet", "-b", "topic", "v1"});
    repository.commitFile("a.c", "3\n", "Third");
    ASSERT_EQ(repository.gitStatus({"merge", "--quiet", "main"}), 1);
    repository.write("a.c", "both\n");
    repository.git({"commit", "--quiet", "-a", "-m", "Merge main"});
    const std::string output = show({}).output;
    EXPECT_THAT(output, HasSubstr("\nMerge: " + id("HEAD^1").substr(0, 12) + " " +
                                  id("HEAD^2").substr(0, 12) + "\n"));
    EXPECT_THAT(output, HasSubstr("\n++both\n"));
    EXPECT_THAT(output, Not(HasSubstr("b.c")));
}

TEST_F(ShowCommand, ColoursOnATerminal) {
    const NebscOutcome outcome =
        runNebsc({"show", "v1"}, {.folder = repository.path(),
                                  .variables = {{"TERM", "xterm"}, {"NO_COLOR", std::nullopt}},
                                  .output = NebscOutput::terminal});
    EXPECT_THAT(outcome.output, HasSubstr("\x1b[1;33mtag: v1\x1b[0m"));
    EXPECT_THAT(outcome.output, HasSubstr("\x1b[32m+1\x1b[0m"));
}

TEST_F(ShowCommand, JSONHasTheCommitAndItsFiles) {
    const auto json = nebsc({"show", "--json", "HEAD"}).json();
    EXPECT_EQ(json["type"], 1001);
    ASSERT_EQ(json["result"].size(), 1U);
    EXPECT_EQ(json["result"][0]["NEBSourceControlOperationChangesKey"].size(), 2U);
    const auto one = nebsc({"show", "--json", "HEAD", "b.c"}).json()["result"][0];
    ASSERT_EQ(one["NEBSourceControlOperationChangesKey"].size(), 1U);
    EXPECT_EQ(one["NEBSourceControlOperationChangesKey"][0]["NEBSourceControlOperationPathKey"],
              "b.c");
    const auto none = nebsc({"show", "--json", "HEAD~1", "--", "b.c"}).json()["result"][0];
    EXPECT_EQ(none["NEBSourceControlOperationObjectIDKey"], id("HEAD~1"));
    EXPECT_EQ(none["NEBSourceControlOperationChangesKey"].size(), 0U);
}

TEST_F(ShowCommand, WorksInABareRepository) {
    const TemporaryFolder folder;
    const std::string bare = folder.path("bare.git");
    repository.git({"clone", "--quiet", "--bare", ".", bare});
    EXPECT_THAT(runNebsc({"show", "v1"}, {.folder = bare}).output, HasSubstr("\n+1\n"));
}

TEST_F(ShowCommand, ReportsFailures) {
    expectFailed(show({"nosuch"}), HasSubstr("'nosuch' is neither a revision nor a file"));
    expectFailed(show({"HEAD:a.c"}),
                 "nebsc: 'HEAD:a.c' is not a commit\n"
                 "'nebsc cat HEAD:a.c' prints a file.\n");
    expectFailed(show({"HEAD^{tree}"}), "nebsc: 'HEAD^{tree}' is a tree, not a commit\n");
    const std::string blob = repository.git({"rev-parse", "--short", "HEAD:a.c"}).substr(0, 7);
    expectFailed(show({blob}), "nebsc: '" + blob + "' is a blob, not a commit\n");
    expectFailed(show({blob, "--"}), "nebsc: '" + blob + "' is a blob, not a commit\n");
    const TestRepository empty;
    expectFailed(runNebsc({"show"}, {.folder = empty.path()}),
                 "nebsc: the current branch 'main' does not have any commits yet\n");
}

}  // namespace
}  // namespace neb::test
