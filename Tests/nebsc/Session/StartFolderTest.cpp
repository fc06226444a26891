// The option -C.

#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;

class StartFolder : public CommandTest {
protected:
    StartFolder() {
        repository.commitFile("src/a.c", "1\n");
        repository.write("src/a.c", "2\n");
        repository.write("src/deep/b.c", "");
    }
    [[nodiscard]] NebscOutcome outside(const std::vector<std::string>& arguments) const {
        return runNebsc(arguments, {.folder = _folder.path()});
    }

    const TemporaryFolder _folder;
};

TEST_F(StartFolder, RunsTheCommandInTheFolder) {
    const NebscOutcome there = nebsc({"status"}, "src");
    EXPECT_THAT(there.output, HasSubstr("a.c"));
    expectDone(outside({"-C", repository.path("src"), "status"}), there.output);
    expectDone(outside({"-C" + repository.path("src"), "status"}), there.output);
    expectDone(outside({"--color=never", "-C", repository.path("src"), "status"}), there.output);
    expectDone(outside({"--color", "never", "-C", repository.path("src"), "status"}), there.output);
    expectDone(outside({"-C", repository.path("src"), "add", "a.c"}));
    EXPECT_EQ(state(), "M  src/a.c\n?? src/deep/b.c\n");
    EXPECT_THAT(outside({"-C", repository.path(), "doctor"}).output,
                HasSubstr("working copy " + repository.path()));
}

TEST_F(StartFolder, IsRelativeToThePreviousOne) {
    const NebscOutcome there = nebsc({"status"}, "src");
    expectDone(outside({"-C", repository.path(), "-C", "src", "status"}), there.output);
    expectDone(outside({"-C", repository.path("src/deep"), "-C", "..", "status"}), there.output);
    expectDone(outside({"-C", repository.path("src"), "-C", "", "status"}), there.output);
}

TEST_F(StartFolder, RefusesAMissingFolderAndDoesNothing) {
    expectFailed(outside({"-C", "nosuch", "init", "new"}),
                 "nebsc: the folder 'nosuch' cannot be entered: No such file or directory\n", 2);
    EXPECT_FALSE(std::filesystem::exists(_folder.path("new")));
    expectFailed(nebsc({"-C", "src", "-C", "nosuch", "status"}),
                 "nebsc: the folder 'src/nosuch' cannot be entered: No such file or directory\n",
                 2);
    expectFailed(nebsc({"-C", "src/a.c", "status", "--json"}),
                 "nebsc: the folder 'src/a.c' cannot be entered: Not a directory\n", 2);
    expectFailed(nebsc({"-C"}), HasSubstr(" requires a value\n"), 2);
}

TEST_F(StartFolder, MustPrecedeTheCommand) {
    expectFailed(nebsc({"status", "-C", "src"}), HasSubstr(" must precede the command\n"), 2);
    expectFailed(nebsc({"branch", "list", "-C", "src"}), HasSubstr("nebsc -C DIR branch list"), 2);
}

TEST_F(StartFolder, IsInTheHelpAndTheManual) {
    EXPECT_THAT(nebsc({"--help"}).output, HasSubstr("-C DIR"));
    EXPECT_THAT(nebsc({"manual"}).output, HasSubstr("\\-C DIR"));
    EXPECT_THAT(nebsc({"status", "--help"}).output, testing::Not(HasSubstr("-C DIR")));
}

}  // namespace
}  // namespace neb::test
