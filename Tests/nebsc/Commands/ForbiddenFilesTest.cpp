// Files that git may not read or write: the plug-in's own table takes their errors for those of a
// wrong password. No command does, whichever of its requests fails.

#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class ForbiddenFiles : public CommandTest {
protected:
    void SetUp() override {
        repository.commitFile("a", "1\n");
        repository.git({"remote", "add", "origin", repository.path()});
        repository.git({"fetch", "--quiet", "origin"});
        repository.git({"branch", "--quiet", "--set-upstream-to=origin/main"});
    }
    /// Runs nebsc with a git whose command fails at a file.
    [[nodiscard]] NebscOutcome nebscWithout(const std::string& command,
                                            const std::vector<std::string>& arguments) const {
        const StandInGit git(repository.path(),
                             "case \" $* \" in *' " + command +
                                 " '*) echo \"error: cannot open '.git/file': Permission denied\" "
                                 ">&2; exit 128;; esac\nexec /usr/bin/git \"$@\"");
        return nebsc(arguments, git);
    }
};

TEST_F(ForbiddenFiles, AreNoWrongPassword) {
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"fetch", {"update"}},
        {"branch", {"switch", "-c", "new"}},
        {"checkout", {"checkout", "main"}},
        {"mv", {"mv", "a", "b"}},
    };
    for (const auto& [command, arguments] : cases) {
        EXPECT_THAT(nebscWithout(command, arguments).errors,
                    StartsWith("nebsc: the operating system denied access to a file or folder\n"))
            << command;
        auto json = arguments;
        json.emplace_back("--json");
        const auto error = nebscWithout(command, json).json()["error"];
        EXPECT_EQ(error["class"], "permission-denied") << command;
        EXPECT_EQ(error["code"], 513) << command;
        EXPECT_FALSE(error["userInfo"].contains("NEBSourceControlAuthenticationErrorTypeKey"));
    }
}

TEST_F(ForbiddenFiles, OfACopyAreNoWrongPassword) {
    const NebscOutcome outcome = nebscWithout("add", {"cp", "a", "b"});
    EXPECT_THAT(outcome.errors,
                StartsWith("nebsc: the operating system denied access to a file or folder\n"));
    EXPECT_THAT(outcome.errors, HasSubstr("The copy was created but not staged.\n"));
    EXPECT_EQ(outcome.exitStatus, 1);
}

}  // namespace
}  // namespace neb::test
