// Every type of request has a command that makes it.

#include <set>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using Words = std::vector<std::string>;

/// The words of a call that makes a request of the type, in a working copy with a remote "origin"
/// that has the branch "main"; none for a type that stands for no work.
struct Row {
    std::int32_t type;
    Words words;
};

const Row rows[] = {
    {0, {"add", "--all"}},
    {1, {"branch", "create", "new"}},
    {2, {"branch", "delete", "spare"}},
    {3, {"commit", "-m", "empty", "--allow-empty"}},
    {4, {"ignore", "build"}},
    {5, {"rm", "b.c"}},
    {6, {"add", "a.c"}},
    {7, {"revert", "a.c"}},
    {8, {"mkdir", "folder"}},
    {9, {"merge", "main"}},
    {10, {"cp", "a.c", "copy.c"}},
    {11, {"mv", "c.c", "d.c"}},
    {12, {}},
    {13, {"update", "--ff", "origin", "main"}},
    {14, {"checkout", "main"}},
    {15, {"status"}},
    {16, {}},
    {17, {"ls"}},
    {18, {"log"}},
    {19, {"info"}},
    {20, {"export", "HEAD", "a.c"}},
    {21, {"export", "HEAD", "a.c", "exported.c"}},
    {22, {"export-tree", "tree"}},
    {23, {}},
    {24, {"remote", "list"}},
    {25, {"branch", "list"}},
    {26, {"branch", "current"}},
    {27, {"init", "inner"}},
    {28, {"blame", "a.c"}},
    {29, {"clone", ".", "clone"}},
    {30, {"diff"}},
    {31, {"remote", "branches"}},
    {32, {"remote", "branches", "origin"}},
    {33, {"push", "origin", "main:other"}},
    {34, {"remote", "add", "second", "/nowhere"}},
    {35, {"remote", "rm", "spare"}},
    {36, {"branch", "track", "tracked", "origin/main"}},
    {37, {"fetch", "origin"}},
    {38, {"branch", "tracking", "main"}},
    {39, {"merge-base", "main", "main"}},
};

class EveryType : public CommandTest {
protected:
    void SetUp() override {
        for (const char* name : {"a.c", "b.c", "c.c"}) {
            repository.commitFile(name, "first\n");
        }
        repository.git({"clone", "--quiet", "--bare", ".", origin.path("origin.git")});
        repository.git({"remote", "add", "origin", origin.path("origin.git")});
        repository.git({"remote", "add", "spare", origin.path("origin.git")});
        repository.git({"fetch", "--quiet", "origin"});
        repository.git({"branch", "--quiet", "--set-upstream-to=origin/main", "main"});
        repository.git({"branch", "spare"});
    }

    TemporaryFolder origin;
};

TEST_F(EveryType, HasACommandThatMakesIt) {
    std::set<std::int32_t> types;
    for (const Row& row : rows) {
        EXPECT_TRUE(types.insert(row.type).second) << row.type;
        const bool isNothing = NEBSourceControlRequestTypeName(row.type) == "unsupported";
        EXPECT_EQ(row.words.empty(), isNothing) << row.type;
        if (isNothing) {
            continue;
        }
        Words words = row.words;
        words.emplace_back("--json");
        const NebscOutcome outcome = nebsc(words);
        ASSERT_EQ(outcome.exitStatus, 0) << testing::PrintToString(words) << outcome.errors;
        EXPECT_EQ(outcome.json()["type"], row.type);
    }
    for (auto type = NEBSourceControlFirstRequestType; type <= NEBSourceControlLastRequestType;
         ++type) {
        EXPECT_TRUE(types.contains(type)) << type;
    }
}

}  // namespace
}  // namespace neb::test
