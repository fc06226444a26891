// `nebsc tag` and its subcommands, run as a program.

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;

class TagCommands : public CommandTest {
protected:
    void SetUp() override {
        repository.commitFile("a.c", "1");
        repository.commitFile("a.c", "2");
    }
    [[nodiscard]] std::string idOf(const std::string& revision) const {
        std::string id = repository.git({"rev-parse", revision});
        id.pop_back();
        return id;
    }
};

TEST_F(TagCommands, CreateListAndDelete) {
    expectDone(nebsc({"tag"}));
    expectDone(nebsc({"tag", "create", "v1/ä"}), "Created tag 'v1/ä'.\n");
    expectDone(nebsc({"tag", "create", "v0", "HEAD~1", "-m", "Old\n\n# kept"}),
               "Created tag 'v0'.\n");
    EXPECT_EQ(repository.git({"cat-file", "-t", "v0"}), "tag\n");
    EXPECT_EQ(idOf("v0^{commit}"), idOf("HEAD~1"));
    EXPECT_EQ(repository.git({"tag", "-l", "--format=%(contents)", "v0"}), "Old\n\n# kept\n\n");
    EXPECT_EQ(repository.git({"cat-file", "-t", "v1/ä"}), "commit\n");
    expectDone(nebsc({"tag", "list"}), "v0\nv1/ä\n");
    const std::string id = idOf("v0");
    expectDone(nebsc({"tag", "delete", "v0"}), "Deleted tag 'v0', which was " + id + ".\n");
    expectDone(nebsc({"tag"}), "v1/ä\n");
    EXPECT_EQ(nebsc({"tag", "--json"}).json()["type"], NEBSourceControlRequestReferences);
}

TEST_F(TagCommands, ReplaceATagOnlyByForce) {
    repository.git({"tag", "v1", "HEAD~1"});
    const std::string before = idOf("v1");
    expectFailed(nebsc({"tag", "create", "v1"}),
                 HasSubstr("'nebsc tag create --force' replaces the tag."));
    EXPECT_EQ(idOf("v1"), before);
    expectDone(nebsc({"tag", "create", "--force", "v1"}), "Created tag 'v1'.\n");
    EXPECT_EQ(idOf("v1"), idOf("HEAD"));
}

TEST_F(TagCommands, SayWhatIsMissing) {
    expectFailed(nebsc({"tag", "create", "v1", "nosuch"}), "nebsc: unknown revision 'nosuch'\n");
    expectFailed(nebsc({"tag", "delete", "nosuch"}), HasSubstr("there is no tag 'nosuch'"));
    expectFailed(nebsc({"tag", "create", "a b"}), HasSubstr("a b"));
    expectFailed(nebsc({"tag", "create"}), HasSubstr("missing argument 'NAME'"), 2);
    expectDone(nebsc({"tag"}));
    const TestRepository empty;
    EXPECT_THAT(runNebsc({"tag", "create", "v1"}, {.folder = empty.path()}).errors,
                HasSubstr("does not have any commits"));
}

}  // namespace
}  // namespace neb::test
