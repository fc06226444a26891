// A folder's way from its first commit on, command by command, as the README tells it.

#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::MatchesRegex;

TEST(Walkthrough, AFolderGoesFromInitToInfo) {
    const TemporaryFolder folder;
    const std::string demo = folder.path("demo");
    const auto run = [&](const std::vector<std::string>& words) {
        const NebscOutcome outcome = runNebsc(words, {.folder = demo});
        EXPECT_EQ(outcome.errors, "") << words[0];
        EXPECT_EQ(outcome.exitStatus, 0) << words[0];
        return outcome.output;
    };
    const auto committed = MatchesRegex("Committed [0-9a-f]+\\.\n");

    expectDone(runNebsc({"init", "demo"}, {.folder = folder.path()}),
               "Made an empty repository in \"" + demo + "\".\n");
    folder.write("demo/hello.c", "int main() { return 0; }\n");
    EXPECT_EQ(run({"add", "hello.c"}), "");
    EXPECT_THAT(run({"commit", "-m", "Say hello"}), committed);

    // A branch, made with git itself, on which the same line changes.
    expectDone(runProgram("/usr/bin/env", {"git", "branch", "topic"}, {.folder = demo}));
    EXPECT_EQ(run({"checkout", "topic"}), "Now on topic.\n");
    folder.write("demo/hello.c", "int main() { return 2; }\n");
    folder.write("demo/extra.c", "int extra;\n");
    EXPECT_EQ(run({"add", "."}), "");
    EXPECT_THAT(run({"commit", "-m", "Return 2"}), committed);
    EXPECT_EQ(run({"checkout", "main"}), "Now on main.\n");
    folder.write("demo/hello.c", "int main() { return 1; }\n");
    EXPECT_THAT(run({"commit", "-m", "Return 1", "hello.c"}), committed);

    EXPECT_THAT(run({"merge", "topic"}), MatchesRegex("Merged \"topic\"; now at [0-9a-f]+\\.\n"));
    EXPECT_EQ(folder.read("demo/hello.c"), "int main() { return 1; }\n");
    EXPECT_EQ(folder.read("demo/extra.c"), "int extra;\n");
    EXPECT_EQ(run({"merge", "topic"}), "Already up to date: \"topic\" is merged.\n");

    EXPECT_EQ(run({"mkdir", "src"}), "");
    EXPECT_EQ(run({"mv", "hello.c", "src"}), "");
    EXPECT_EQ(run({"cp", "extra.c", "src/more.c"}), "");
    EXPECT_EQ(run({"rm", "extra.c"}), "");
    const std::string status = run({"status"});
    EXPECT_THAT(status, HasSubstr("renamed    src/hello.c\n"));
    EXPECT_THAT(run({"commit", "-m", "Move it all to src"}), committed);
    EXPECT_EQ(run({"status"}), "Nothing to report: the working copy \"demo\" has no changes.\n");

    folder.write("demo/src/more.c", "oops\n");
    EXPECT_EQ(run({"revert", "src/more.c"}), "");
    EXPECT_EQ(folder.read("demo/src/more.c"), "int extra;\n");
    EXPECT_THAT(run({"merge-base", "main", "topic"}), MatchesRegex("[0-9a-f]{12}\n"));
    EXPECT_EQ(run({"info"}),
              "The repository \"demo\" has no remote \"origin\" and none of Subversion.\n");

    expectDone(runNebsc({"clone", "demo", "copy"}, {.folder = folder.path()}),
               "Cloned into \"" + folder.path("copy") + "\".\n");
    expectDone(runNebsc({"info"}, {.folder = folder.path("copy/src")}),
               "origin      " + demo + "\nroot        " + folder.path("copy") + "\n");
}

}  // namespace
}  // namespace neb::test
