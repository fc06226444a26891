// `nebsc ignore`, run as a program; git itself reports what is ignored.

#include <fstream>
#include <iterator>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class IgnoreCommand : public CommandTest {
protected:
    void SetUp() override { repository.commitFile("a.c", "first\n"); }
    [[nodiscard]] std::string list() const { return readFile(repository.path(".gitignore")); }
};

TEST_F(IgnoreCommand, HidesFilesAndFoldersFromTheStatus) {
    repository.write("build/x.o", "");
    repository.write("src/notes.txt", "");
    expectDone(nebsc({"ignore", "../build", "notes.txt", "later"}, "src"),
               "Added to '../.gitignore':\n    /build/\n    /src/notes.txt\n    /src/later\n");
    EXPECT_EQ(list(), "/build/\n/src/notes.txt\n/src/later\n");
    repository.write("src/later", "");
    EXPECT_EQ(state(), "?? .gitignore\n");
    expectDone(nebsc({"ignore", "build"}), "Already ignored.\n");
    EXPECT_EQ(list(), "/build/\n/src/notes.txt\n/src/later\n");
}

TEST_F(IgnoreCommand, TakesNamesLiterally) {
    for (const char* name : {"x[1]", "x1", "s*", "star", "q?", "qq", "b\\s", "end ", "#a", "!b"}) {
        repository.write(name, "");
        if (name != std::string("x1") && name != std::string("star") && name != std::string("qq")) {
            EXPECT_EQ(nebsc({"ignore", name}).exitStatus, 0);
        }
    }
    EXPECT_EQ(state(), "?? .gitignore\n?? qq\n?? star\n?? x1\n");
}

TEST_F(IgnoreCommand, KeepsTheLinesOfTheFile) {
    repository.write(".gitignore", "*.o");
    repository.write("b", "");
    EXPECT_EQ(nebsc({"ignore", "b"}).exitStatus, 0);
    EXPECT_EQ(list(), "*.o\n/b\n");
}

TEST_F(IgnoreCommand, RefusesWhatCannotBeIgnored) {
    expectFailed(nebsc({"ignore", "a.c"}),
                 StartsWith("nebsc: 'a.c' is tracked, so its changes cannot be ignored\n"));
    expectFailed(nebsc({"ignore", "."}), "nebsc: the whole working copy cannot be ignored\n");
    expectFailed(nebsc({"ignore", ".git"}), HasSubstr("inside the git directory"));
    expectFailed(nebsc({"ignore", "b", "../x"}), HasSubstr("is outside the working copy"));
    expectFailed(nebsc({"ignore", "a\nb"}), HasSubstr("contains a line end"));
    EXPECT_FALSE(isThere(".gitignore"));
    const TemporaryFolder plain;
    EXPECT_EQ(runNebsc({"ignore", "x"}, {.folder = plain.path()}).exitStatus, 1);
}

TEST_F(IgnoreCommand, WritesOnlyToARegularFile) {
    const TemporaryFolder elsewhere;
    const std::string target = elsewhere.write("target", "mine\n");
    fs::create_symlink(target, repository.path(".gitignore"));
    expectFailed(nebsc({"ignore", "b"}), HasSubstr("cannot write"));
    EXPECT_EQ(elsewhere.read("target"), "mine\n");
    const auto outcome = nebsc({"ignore", "b", "--json"});
    EXPECT_EQ(outcome.json()["type"], NEBSourceControlRequestIgnore);
    EXPECT_EQ(outcome.json()["error"]["domain"], "NEBPOSIXErrorDomain");
    EXPECT_EQ(outcome.exitStatus, 1);
}

}  // namespace
}  // namespace neb::test
