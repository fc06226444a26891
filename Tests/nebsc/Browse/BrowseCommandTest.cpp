#include <gmock/gmock.h>

#include <filesystem>

#include "Support/TemporaryFolder.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

using BrowseCommand = CommandTest;

TEST_F(BrowseCommand, RefusesAFolderWithoutRepository) {
    if (!std::filesystem::exists(NEB_BUILD_FOLDER "/bin/nebsc-browse")) {
        GTEST_SKIP() << "nebsc-browse, which looks for the repository, is not built";
    }
    const TemporaryFolder folder;
    expectFailed(nebsc({"browse", folder.path()}),
                 StartsWith("nebsc: the folder is not in a git repository\n"));
}

TEST_F(BrowseCommand, RefusesOptionsThatWouldHaveNoEffect) {
    expectFailed(nebsc({"browse", "--no-open", "--json"}),
                 StartsWith("nebsc: option '--json' cannot be combined with 'browse'\n"), 2);
    expectFailed(nebsc({"--record", repository.path("../file"), "browse", "--no-open"}),
                 StartsWith("nebsc: option '--record' cannot be combined with 'browse'\n"), 2);
    EXPECT_FALSE(isThere("../file"));
    expectFailed(nebsc({"--inspect", "browse", "--no-open", "--trust"}),
                 StartsWith("nebsc: option '--trust' cannot be combined with '--inspect'\n"), 2);
}

TEST_F(BrowseCommand, SaysWhichProgramIsMissing) {
    const TemporaryFolder folder;
    const std::string copy = folder.path("nebsc");
    std::filesystem::copy_file(NEB_BUILD_FOLDER "/bin/nebsc", copy);
    const NebscOutcome outcome = runProgram(
        copy, {"--plugin", NEB_BUILD_FOLDER "/lib/NEBGit.so", "browse"},
        {.folder = repository.path(), .variables = {{"LD_LIBRARY_PATH", NEB_BUILD_FOLDER "/lib"}}});
    expectFailed(outcome, AllOf(StartsWith("nebsc: cannot start '"),
                                HasSubstr("/nebsc-browse': No such file or directory\n"),
                                HasSubstr("nebgit-browse"), HasSubstr("cpp-httplib")));
}

TEST_F(BrowseCommand, ShowsItsHelp) {
    EXPECT_THAT(nebsc({"browse", "--help"}).output, HasSubstr("--stay"));
}

}  // namespace
}  // namespace neb::test
