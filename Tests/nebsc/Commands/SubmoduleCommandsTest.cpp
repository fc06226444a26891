// `nebsc submodule` and its subcommands, run as a program.

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;

class SubmoduleCommands : public CommandTest {
protected:
    void SetUp() override {
        inner.commitFile("z.c", "1\n");
        inner.git({"tag", "v1"});
        const TestRepository source;
        source.git({"submodule", "--quiet", "add", inner.path(), "lib/zip"});
        source.git({"commit", "-q", "-m", "Add zip"});
        repository.git({"pull", "-q", source.path()});
        id = inner.git({"rev-parse", "HEAD"}).substr(0, 12);
    }

    TestRepository inner;
    std::string id;
};

TEST_F(SubmoduleCommands, ListInitAndUpdate) {
    expectDone(nebsc({"submodule"}), "not initialized  " + id + "  lib/zip\n");
    expectDone(nebsc({"submodule", "init", "zip"}, "lib"), "not cloned  " + id + "  zip\n");
    expectDone(nebsc({"submodule", "update"}), "current  " + id + "  lib/zip  (v1)\n");
    repository.git({"-C", "lib/zip", "commit", "-q", "--allow-empty", "-m", "New"});
    EXPECT_THAT(nebsc({"submodule", "list"}).output,
                AllOf(HasSubstr("other commit"), HasSubstr("lib/zip  (v1-1-g")));
    EXPECT_EQ(nebsc({"submodule", "--json"}).json()["type"], NEBSourceControlRequestSubmodules);
}

TEST_F(SubmoduleCommands, UpdateInitializesOnDemand) {
    const NebscOutcome refused = nebsc({"submodule", "update", "lib/zip"});
    EXPECT_EQ(refused.output, "not initialized  " + id + "  lib/zip\n");
    EXPECT_THAT(refused.errors,
                AllOf(HasSubstr("'lib/zip' was not updated: it is not initialized"),
                      HasSubstr("'nebsc submodule update --init' initializes it first.\n")));
    EXPECT_EQ(refused.exitStatus, 1);
    const auto json = nebsc({"submodule", "update", "lib/zip", "--json"}).json();
    EXPECT_THAT(json["error"]["localizedRecoverySuggestion"].get<std::string>(),
                HasSubstr("'nebsc submodule update --init' initializes it first."));
    expectDone(nebsc({"submodule", "update", "--init", "--recursive", "lib"}),
               "current  " + id + "  lib/zip  (v1)\n");
    EXPECT_TRUE(isThere("lib/zip/z.c"));
}

TEST_F(SubmoduleCommands, SayWhatIsMissing) {
    expectFailed(nebsc({"submodule", "init", "nosuch"}),
                 testing::AllOf(HasSubstr("no submodule 'nosuch'\n"),
                                HasSubstr("\n'git submodule status' lists the submodules.\n")));
    const TestRepository plain;
    expectDone(runNebsc({"submodule"}, {.folder = plain.path()}));
    expectDone(runNebsc({"submodule", "update"}, {.folder = plain.path()}),
               "There are no submodules.\n");
    const TemporaryFolder nowhere;
    expectFailed(runNebsc({"submodule"}, {.folder = nowhere.path()}),
                 HasSubstr("not in a git repository"));
}

}  // namespace
}  // namespace neb::test
