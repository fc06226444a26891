// The work on a repository from init on, command by command.

#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::MatchesRegex;

TEST(Walkthrough, AFolderGoesFromInitToInfo) {
    const TemporaryFolder folder;
    const std::string demo = folder.path("demo");
    const auto run = [&](const std::vector<std::string>& arguments) {
        const NebscOutcome outcome = runNebsc(arguments, {.folder = demo});
        EXPECT_EQ(outcome.errors, "") << arguments[0];
        EXPECT_EQ(outcome.exitStatus, 0) << arguments[0];
        return outcome.output;
    };
    const auto committed = MatchesRegex("Committed [0-9a-f]+\\.\n");

    expectDone(runNebsc({"init", "demo"}, {.folder = folder.path()}),
               "Created an empty repository in '" + demo + "'.\n");
    folder.write("demo/hello.c", "int main() { return 0; }\n");
    EXPECT_EQ(run({"add", "hello.c"}), "");
    EXPECT_THAT(run({"commit", "-m", "Say hello"}), committed);

    // A branch, made with git itself, on which the same line changes.
    expectDone(runProgram("/usr/bin/env", {"git", "branch", "topic"}, {.folder = demo}));
    EXPECT_EQ(run({"checkout", "topic"}), "Now on branch 'topic'.\n");
    folder.write("demo/hello.c", "int main() { return 2; }\n");
    folder.write("demo/extra.c", "int extra;\n");
    EXPECT_EQ(run({"add", "."}), "");
    EXPECT_THAT(run({"commit", "-m", "Return 2"}), committed);
    EXPECT_EQ(run({"checkout", "main"}), "Now on branch 'main'.\n");
    folder.write("demo/hello.c", "int main() { return 1; }\n");
    EXPECT_THAT(run({"commit", "-m", "Return 1", "hello.c"}), committed);

    const NebscOutcome merged = runNebsc({"merge", "topic"}, {.folder = demo});
    EXPECT_THAT(merged.output, MatchesRegex("Merged 'topic'; now at [0-9a-f]+\\.\n"));
    EXPECT_THAT(merged.errors, HasSubstr("dropped in:\n    hello.c\n"));
    EXPECT_EQ(merged.exitStatus, 0);
    EXPECT_EQ(folder.read("demo/hello.c"), "int main() { return 1; }\n");
    EXPECT_EQ(folder.read("demo/extra.c"), "int extra;\n");
    EXPECT_EQ(run({"merge", "topic"}), "Already up to date: 'topic' is merged.\n");

    EXPECT_EQ(run({"mkdir", "src"}), "");
    EXPECT_EQ(run({"mv", "hello.c", "src"}), "");
    EXPECT_EQ(run({"cp", "extra.c", "src/more.c"}), "");
    EXPECT_EQ(run({"rm", "extra.c"}), "");
    const std::string status = run({"status"});
    EXPECT_THAT(status, HasSubstr("  renamed       hello.c -> src/hello.c\n"));
    EXPECT_THAT(run({"commit", "-m", "Move it all to src"}), committed);
    EXPECT_EQ(run({"status"}), "On branch main\n\nNo changes in the working copy 'demo'.\n");

    folder.write("demo/src/more.c", "oops\n");
    EXPECT_EQ(run({"revert", "src/more.c"}), "");
    EXPECT_EQ(folder.read("demo/src/more.c"), "int extra;\n");
    EXPECT_THAT(run({"merge-base", "main", "topic"}), MatchesRegex("[0-9a-f]{12}\n"));
    EXPECT_EQ(
        run({"info"}),
        "The repository 'demo' has no remote 'origin' and no connected Subversion repository.\n");

    expectDone(runNebsc({"clone", "demo", "copy"}, {.folder = folder.path()}),
               "Cloned into '" + folder.path("copy") + "'.\n");
    expectDone(runNebsc({"info"}, {.folder = folder.path("copy/src")}),
               "origin      " + demo + "\nroot        " + folder.path("copy") + "\n");
}

TEST(Walkthrough, TwoPeopleShareABareRepository) {
    const TemporaryFolder folder;
    const auto run = [&](const char* who, const std::vector<std::string>& arguments) {
        const NebscOutcome outcome = runNebsc(arguments, {.folder = folder.path(who)});
        EXPECT_EQ(outcome.errors, "") << arguments[0];
        EXPECT_EQ(outcome.exitStatus, 0) << arguments[0];
        return outcome.output;
    };
    const auto commit = [&](const char* who, const std::string& file) {
        folder.write(who + ("/" + file), "int x;\n");
        run(who, {"add", file});
        EXPECT_THAT(run(who, {"commit", "-m", "Add " + file}), HasSubstr("Committed "));
    };
    run("", {"init", "--bare", "shared.git"});
    run("", {"clone", "shared.git", "ann"});
    commit("ann", "hello.c");
    const std::string pushed = "Pushed 'main' to 'main' on 'origin'.\n";
    EXPECT_EQ(run("ann", {"push", "origin", "main:main"}), pushed);

    run("", {"clone", "shared.git", "ben"});
    EXPECT_EQ(run("ben", {"branch", "create", "more"}), "Created branch 'more'.\n");
    EXPECT_EQ(run("ben", {"checkout", "more"}), "Now on branch 'more'.\n");
    commit("ben", "more.c");
    EXPECT_EQ(run("ben", {"push", "origin", "more:feature/more"}),
              "Pushed 'more' to 'feature/more' on 'origin'.\n");

    EXPECT_EQ(run("ann", {"branch", "track", "review", "origin/feature/more"}),
              "Created branch 'review', which tracks 'origin/feature/more'.\n");
    EXPECT_THAT(run("ann", {"merge", "review"}), HasSubstr("Merged 'review'; now at "));
    EXPECT_EQ(run("ann", {"push", "origin", "main:main"}), pushed);

    run("ben", {"checkout", "main"});
    commit("ben", "ben.c");
    const std::vector<std::string> push{"push", "origin", "main:main"};
    expectFailed(runNebsc(push, {.folder = folder.path("ben")}),
                 HasSubstr("does not have the latest remote changes"));
    EXPECT_THAT(run("ben", {"update"}), HasSubstr("Updated from 'origin/main'; now at "));
    EXPECT_EQ(run("ben", push), pushed);

    EXPECT_THAT(run("ann", {"update", "--ff"}), HasSubstr("Updated from 'origin/main'; now at "));
    for (const char* file : {"hello.c", "more.c", "ben.c"}) {
        EXPECT_EQ(folder.read("ann/" + std::string(file)), "int x;\n");
    }
}

}  // namespace
}  // namespace neb::test
