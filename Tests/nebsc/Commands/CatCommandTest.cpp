// `nebsc cat`, run as a program.

#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class CatCommand : public CommandTest {
protected:
    CatCommand() {
        repository.commitFile("src/a b.c", "one\n");
        repository.git({"tag", "v1"});
        repository.commitFile("src/a b.c", "two\n");
    }
};

TEST_F(CatCommand, PrintsAFileOfACommit) {
    expectDone(nebsc({"cat", "v1:src/a b.c"}), "one\n");
    expectDone(nebsc({"cat", "HEAD:src/a b.c"}), "two\n");
    expectDone(nebsc({"cat", "HEAD^{/a commit}:src/a b.c"}), "two\n");
}

TEST_F(CatCommand, PathsStartAtTheTopUnlessTheyBeginWithADot) {
    expectDone(nebsc({"cat", "v1:src/a b.c"}, "src"), "one\n");
    expectDone(nebsc({"cat", "v1:./a b.c"}, "src"), "one\n");
    expectDone(nebsc({"cat", "v1:../src/a b.c"}, "src"), "one\n");
    expectDone(nebsc({"cat", "v1:" + repository.path("src/a b.c")}, "src"), "one\n");
    expectFailed(
        nebsc({"cat", "v1:a b.c"}, "src"),
        "nebsc: there is no file 'a b.c' in 'v1'\n'nebsc ls v1:' lists the top of that commit.\n");
    expectFailed(nebsc({"cat", "v1:../../x"}, "src"), HasSubstr("is outside the working copy"));
}

TEST_F(CatCommand, PrintsTheIndex) {
    repository.write("src/a b.c", "staged\n");
    repository.git({"add", "."});
    repository.write("src/a b.c", "not staged\n");
    expectDone(nebsc({"cat", ":src/a b.c"}), "staged\n");
    expectDone(nebsc({"cat", ":0:src/a b.c"}), "staged\n");
    expectDone(nebsc({"cat", ":./a b.c"}, "src"), "staged\n");
    expectFailed(nebsc({"cat", ":nosuch"}), HasSubstr("path 'nosuch' does not exist"));
    const TestRepository unborn;
    unborn.write("new", "new\n");
    unborn.git({"add", "new"});
    expectDone(runNebsc({"cat", ":new"}, {.folder = unborn.path()}), "new\n");
}

TEST_F(CatCommand, PrintsTheSidesOfAConflict) {
    repository.git({"checkout", "--quiet", "-b", "topic", "v1"});
    repository.commitFile("src/a b.c", "three\n");
    ASSERT_EQ(repository.gitStatus({"merge", "--quiet", "main"}), 1);
    expectDone(nebsc({"cat", ":1:src/a b.c"}), "one\n");
    expectDone(nebsc({"cat", ":2:src/a b.c"}), "three\n");
    expectDone(nebsc({"cat", ":3:src/a b.c"}), "two\n");
    expectFailed(nebsc({"cat", ":src/a b.c"}),
                 StartsWith("nebsc: 'src/a b.c' is in conflict\n'nebsc cat ':1:src/a b.c'' prints "
                            "the common ancestor; ':2:' instead prints our side; ':3:' instead "
                            "prints their side.\n"));
    expectFailed(nebsc({"cat", ":src"}), Not(HasSubstr("in conflict")));
}

TEST_F(CatCommand, NamesTheVersionsThatAConflictHas) {
    repository.git({"checkout", "--quiet", "-b", "topic", "v1"});
    repository.git({"rm", "--quiet", "src/a b.c"});
    repository.git({"commit", "--quiet", "-m", "Delete"});
    ASSERT_EQ(repository.gitStatus({"merge", "--quiet", "main"}), 1);
    expectFailed(nebsc({"cat", ":src/a b.c"}),
                 "nebsc: 'src/a b.c' is in conflict\n'nebsc cat ':1:src/a b.c'' prints the common "
                 "ancestor; ':3:' instead prints their side.\n");
}

TEST_F(CatCommand, KeepsEveryByte) {
    const std::string bytes("\0\x1b[2J\xff\r\n\n no end", 17);
    repository.commitFile("b\xE4r", bytes);
    expectDone(nebsc({"cat", "HEAD:b\xE4r"}), bytes);
    repository.commitFile("empty", "");
    expectDone(nebsc({"cat", "HEAD:empty"}), "");
}

TEST_F(CatCommand, EscapesControlCharactersOnATerminal) {
    repository.commitFile("x", "a\tb\x1b[2J\n");
    const NebscOutcome outcome = runNebsc({"cat", "HEAD:x"}, {.folder = repository.path(),
                                                              .variables = {{"TERM", "dumb"}},
                                                              .output = NebscOutput::terminal});
    EXPECT_EQ(outcome.output, "a\tb\\x1b[2J\r\n");
}

TEST_F(CatCommand, ConvertsForTheWorkingCopyOnRequest) {
    repository.commitFile(".gitattributes", "*.txt text eol=crlf\n");
    repository.commitFile("a.txt", "line\n");
    expectDone(nebsc({"cat", "HEAD:a.txt"}), "line\n");
    expectDone(nebsc({"cat", "--filters", "HEAD:a.txt"}), "line\r\n");
    expectDone(nebsc({"cat", "--filters", ":a.txt"}), "line\r\n");
}

TEST_F(CatCommand, WorksInABareRepository) {
    const TemporaryFolder folder;
    const std::string bare = folder.path("bare.git");
    repository.git({"clone", "--quiet", "--bare", ".", bare});
    expectDone(runNebsc({"cat", "v1:src/a b.c"}, {.folder = bare}), "one\n");
    expectDone(runNebsc({"cat", "v1:./src/a b.c"}, {.folder = bare}), "one\n");
}

TEST_F(CatCommand, ReportsWhatIsNoFile) {
    expectFailed(nebsc({"cat", "HEAD:src"}),
                 "nebsc: 'HEAD:src' is a folder\n'nebsc ls HEAD:src' lists it.\n");
    expectFailed(nebsc({"cat", "HEAD:"}), "nebsc: 'HEAD:' names no file\n");
    repository.git({"submodule", "--quiet", "add", repository.path(), "sub"});
    repository.git({"commit", "--quiet", "-m", "submodule"});
    expectFailed(nebsc({"cat", "HEAD:sub"}),
                 "nebsc: 'HEAD:sub' is a submodule\nIts files belong to another repository.\n");
}

TEST_F(CatCommand, ReportsFailures) {
    expectFailed(nebsc({"cat", "nosuch:x"}), HasSubstr("unknown revision 'nosuch'"));
    EXPECT_EQ(nebsc({"cat", "--json", "nosuch:x"}).json()["error"]["class"], "revision-unknown");
    EXPECT_EQ(nebsc({"cat", "--json", "v1:x"}).json()["error"]["class"], "path-unknown");
    expectFailed(nebsc({"cat", "v1"}), HasSubstr("REVISION:FILE"), 2);
    expectFailed(nebsc({"cat"}), HasSubstr("'OBJECT'"), 2);
    const TemporaryFolder folder;
    expectFailed(runNebsc({"cat", "HEAD:x"}, {.folder = folder.path()}),
                 testing::StartsWith("nebsc: the folder is not in a git repository"));
}

TEST_F(CatCommand, JSONHasTheRecord) {
    const auto json = nebsc({"cat", "--json", "v1:src/a b.c"}).json();
    EXPECT_EQ(json["type"], 1002);
    EXPECT_EQ(json["result"][0]["NEBSourceControlOperationContentKey"], "one\n");
}

/// As git does.
TEST_F(CatCommand, FetchesWhatAPartialCloneLacks) {
    repository.commitFile("src/f", "first\n");
    repository.commitFile("src/f", "second\n");
    repository.git({"config", "uploadpack.allowFilter", "true"});
    const TemporaryFolder folder;
    const std::vector<std::vector<std::string>> commands{{"cat", "HEAD:src/f"},
                                                         {"ls", "HEAD:src"},
                                                         {"log", "-S", "second"},
                                                         {"log", "--files"},
                                                         {"blame", "-L", "1,1", "HEAD", "src/f"},
                                                         {"diff", "--stat", "HEAD~1", "HEAD"}};
    for (const std::vector<std::string>& arguments : commands) {
        const std::string clone = folder.path(arguments.at(0) + arguments.at(1));
        repository.git({"clone", "-q", "--no-checkout", "--filter=blob:none",
                        "file://" + repository.path(), clone});
        const NebscOutcome outcome = runNebsc(arguments, {.folder = clone});
        EXPECT_EQ(outcome.exitStatus, 0) << testing::PrintToString(arguments) << outcome.errors;
        EXPECT_NE(outcome.output, "");
    }
}

}  // namespace
}  // namespace neb::test
