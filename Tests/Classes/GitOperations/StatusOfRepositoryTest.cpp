// The status of real repositories.

#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "GitController.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Support/HygienicTest.h"
#include "Support/Matchers.h"
#include "Support/StatusRecords.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

using test::HasErrorClass;
using test::IsSourceControlError;
using test::requestFor;
using test::TestRepository;
using test::textsOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class StatusOfRepository : public test::HygienicTest {
protected:
    /// Runs the request like a host.
    static std::shared_ptr<NEBSourceControlOperation> statusOf(const std::string& location,
                                                               NEBValue destination = {}) {
        auto request = requestFor(NEBSourceControlRequestStatus, location);
        request->destination = std::move(destination);
        auto operation = GitController().operationForRequest(request);
        operation->start();
        return operation;
    }
};

TEST_F(StatusOfRepository, ReportsEveryStateOfAFile) {
    const TestRepository repository;
    for (const char* name : {"modified", "deleted", "staged", "removed", "renamed", "type"}) {
        repository.write(name, std::string(name) + "\n1\n2\n3\n");
    }
    repository.git({"add", "."});
    repository.git({"commit", "-qm", "first"});
    repository.write("modified", "new");
    std::filesystem::remove(repository.path("deleted"));
    repository.write("staged", "new");
    repository.git({"add", "staged"});
    repository.git({"rm", "-q", "--cached", "removed"});
    repository.git({"mv", "renamed", "moved"});
    std::filesystem::remove(repository.path("type"));
    std::filesystem::create_symlink("modified", repository.path("type"));
    repository.write("added", "x");
    repository.git({"add", "added"});
    repository.write("untracked/folder/file", "x");
    repository.write("with blank", "x");

    const auto operation = statusOf(repository.path());
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_THAT(
        textsOf(operation->result()),
        UnorderedElementsAre(
            "4 " + repository.path("modified"), "2 " + repository.path("deleted"),
            "4 " + repository.path("staged"), "2 " + repository.path("removed"),
            "256 " + repository.path("removed"), "4096 " + repository.path("moved"),
            "4 " + repository.path("type"), "1 " + repository.path("added"),
            "256 " + repository.path("untracked/"), "256 " + repository.path("with blank")));
}

TEST_F(StatusOfRepository, ReportsAConflict) {
    const TestRepository repository;
    repository.commitFile("a", "base\n");
    repository.git({"checkout", "-qb", "topic"});
    repository.commitFile("a", "topic\n");
    repository.git({"checkout", "-q", "main"});
    repository.commitFile("a", "main\n");
    EXPECT_EQ(repository.gitStatus({"merge", "-q", "topic"}), 1);
    EXPECT_THAT(textsOf(statusOf(repository.path())->result()),
                ElementsAre("16 " + repository.path("a")));
}

TEST_F(StatusOfRepository, IsEmptyWithoutChangesAndForAMissingPath) {
    const TestRepository repository;
    repository.commitFile("a", "x");
    EXPECT_THAT(textsOf(statusOf(repository.path())->result()), IsEmpty());
    EXPECT_EQ(statusOf(repository.path())->error(), std::nullopt);
    repository.write("b", "x");
    const auto operation = statusOf(repository.path(), repository.path("nosuch"));
    EXPECT_THAT(textsOf(operation->result()), IsEmpty());
    EXPECT_EQ(operation->error(), std::nullopt);
}

TEST_F(StatusOfRepository, IsLimitedToTheDestination) {
    const TestRepository repository;
    repository.write("src/a.c", "x");
    repository.write("b", "x");
    EXPECT_THAT(textsOf(statusOf(repository.path(), repository.path("src"))->result()),
                ElementsAre("256 " + repository.path("src/")));
    EXPECT_THAT(textsOf(statusOf("file://" + repository.path(), "b")->result()),
                ElementsAre("256 file://" + repository.path("b")));
}

TEST_F(StatusOfRepository, TreatsAPathLiterally) {
    const TestRepository repository;
    repository.write("a[1].c", "x");
    repository.write("a1.c", "x");
    repository.write(":magic", "x");
    EXPECT_THAT(textsOf(statusOf(repository.path(), repository.path("a[1].c"))->result()),
                ElementsAre("256 " + repository.path("a[1].c")));
    EXPECT_THAT(textsOf(statusOf(repository.path(), ":magic")->result()),
                ElementsAre("256 " + repository.path(":magic")));
}

TEST_F(StatusOfRepository, PreservesNames) {
    const TestRepository repository;
    const std::string umlaut = "\xC3\xA4\xE6\x97\xA5.txt";
    repository.write(umlaut, "x");
    EXPECT_THAT(textsOf(statusOf(repository.path())->result()),
                ElementsAre("256 " + repository.path(umlaut)));
}

TEST_F(StatusOfRepository, DoesNotDependOnTheConfiguration) {
    const TestRepository repository;
    repository.commitFile("old name", "1\n2\n3\n4\n5\n");
    repository.git({"mv", "old name", "new name"});
    repository.write("sub/untracked", "x");
    const auto expected = textsOf(statusOf(repository.path())->result());
    ASSERT_THAT(expected, ElementsAre("4096 " + repository.path("new name"),
                                      "256 " + repository.path("sub/")));
    const std::pair<const char*, const char*> settings[] = {
        {"status.showUntrackedFiles", "no"}, {"status.showUntrackedFiles", "all"},
        {"status.renames", "false"},         {"status.short", "true"},
        {"status.branch", "true"},           {"color.ui", "always"},
        {"color.status", "always"},          {"column.ui", "always"},
        {"core.quotePath", "true"},          {"status.relativePaths", "false"},
        {"diff.renames", "false"},           {"diff.noprefix", "true"},
        {"status.showStash", "true"},        {"status.submoduleSummary", "true"},
    };
    for (const auto& [key, value] : settings) {
        repository.git({"config", key, value});
        EXPECT_EQ(textsOf(statusOf(repository.path())->result()), expected) << key << "=" << value;
        repository.git({"config", "--unset", key});
    }
}

TEST_F(StatusOfRepository, IgnoresRepositoryVariablesOfTheHost) {
    const TestRepository repository;
    const TestRepository other;
    repository.write("mine", "x");
    ::setenv("GIT_DIR", other.path(".git").c_str(), 1);
    ::setenv("GIT_TRACE", "1", 1);
    const auto operation = statusOf(repository.path());
    ::unsetenv("GIT_DIR");
    ::unsetenv("GIT_TRACE");
    EXPECT_THAT(textsOf(operation->result()), ElementsAre("256 " + repository.path("mine")));
    EXPECT_EQ(operation->error(), std::nullopt);
}

TEST_F(StatusOfRepository, ReportsAFolderOutsideARepository) {
    const test::TemporaryFolder folder;
    const auto operation = statusOf(folder.path());
    EXPECT_THAT(operation->error(),
                IsSourceControlError(-1, "The folder is not in a git repository."));
    EXPECT_EQ(operation->error()->text,
              "fatal: not a git repository (or any of the parent directories): .git");
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlNotARepositoryErrorClass));
    EXPECT_THAT(textsOf(operation->result()), IsEmpty());
}

TEST_F(StatusOfRepository, ReportsABareRepositoryAndAMissingFolder) {
    const test::TemporaryFolder folder;
    const TestRepository repository;
    repository.git({"init", "-q", "--bare", folder.path("bare.git")});
    EXPECT_THAT(statusOf(folder.path("bare.git"))->error(),
                HasErrorClass(NEBSourceControlNoWorkTreeErrorClass));
    const auto missing = statusOf(folder.path("missing"));
    EXPECT_THAT(missing->error(), HasErrorClass(NEBSourceControlNotStartedErrorClass));
    EXPECT_THAT(missing->error(), IsSourceControlError(-1, HasSubstr(folder.path("missing"))));
    EXPECT_EQ(missing->result(), std::nullopt);
}

TEST_F(StatusOfRepository, ReportsAPathOutside) {
    const TestRepository repository;
    EXPECT_THAT(statusOf(repository.path(), "/etc/passwd")->error(),
                IsSourceControlError(-1, "The path is outside the working copy."));
}

TEST_F(StatusOfRepository, ReportsAnUnreadableFolderBesideTheRecords) {
    const TestRepository repository;
    repository.write("a", "x");
    repository.write("secret/b", "x");
    repository.git({"config", "--global", "--add", "safe.directory", repository.path()});
    const auto noRights = std::filesystem::perms::none;
    std::filesystem::permissions(repository.path("secret"), noRights);
    std::shared_ptr<NEBSourceControlOperation> operation;
    {
        const test::AsOrdinaryUser user;
        operation = statusOf(repository.path());
    }
    std::filesystem::permissions(repository.path("secret"), std::filesystem::perms::owner_all);
    repository.git({"config", "--global", "--unset-all", "safe.directory"});
    // The table takes any "Permission denied" for a wrong password; the class is correct.
    EXPECT_THAT(operation->error(),
                IsSourceControlError(
                    -21, "Authentication failed because the name or password was incorrect."));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlPermissionDeniedErrorClass));
    EXPECT_THAT(operation->error()->text.value(), HasSubstr("secret"));
    EXPECT_THAT(textsOf(operation->result()), testing::Contains("256 " + repository.path("a")));
}

TEST_F(StatusOfRepository, ReportsARepositoryOfAnotherUser) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can create a repository of another user";
    }
    const TestRepository repository;
    const test::AsOrdinaryUser user;
    EXPECT_THAT(statusOf(repository.path())->error(),
                HasErrorClass(NEBSourceControlOwnerNotTrustedErrorClass));
}

TEST_F(StatusOfRepository, ReportsTheLineOfADamagedConfiguration) {
    const TestRepository repository;
    repository.write(".git/config", "[core\n");
    const auto operation = statusOf(repository.path());
    EXPECT_THAT(operation->error()->text, testing::Optional(HasSubstr("bad config line 1")));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlConfigurationBrokenErrorClass));
}

}  // namespace
}  // namespace neb
