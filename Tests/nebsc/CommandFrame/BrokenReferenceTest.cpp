// Branches with a damaged file or a lost commit: no command reports that they do not exist.

#include <filesystem>

#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class BrokenReference : public CommandTest {
protected:
    void SetUp() override {
        repository.commitFile("a", "1\n");
        repository.git({"branch", "topic"});
        repository.commitFile("a", "2\n");
    }
    void breakReference(const std::string& name, std::string_view content = "junk\n") const {
        repository.write(".git/" + name, content);
    }
    void expectNamed(const std::vector<std::string>& arguments, const std::string& name,
                     const std::string& reason) const {
        SCOPED_TRACE(arguments.front());
        expectFailed(nebsc(arguments),
                     StartsWith("nebsc: the reference '" + name + "' is broken: " + reason));
    }

    static constexpr const char* junk = "its file does not hold the name of a commit\n";
};

TEST_F(BrokenReference, OfTheCurrentBranchIsReportedByEveryCommand) {
    breakReference("refs/heads/main");
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"log"},
                                               {"log", "HEAD"},
                                               {"log", "main"},
                                               {"log", "--branch", "main"},
                                               {"blame", "a"},
                                               {"blame", "main~1", "a"},
                                               {"diff"},
                                               {"diff", "HEAD", "--", "a"},
                                               {"ls"},
                                               {"export", "main", "a", "../exported"},
                                               {"branch", "list"},
                                               {"branch", "current"},
                                               {"branch", "create", "new"},
                                               {"branch", "create", "new", "main"},
                                               {"merge", "main"},
                                               {"merge-base", "main", "topic"},
                                               {"checkout", "main"},
                                               {"commit", "-m", "m", "a"},
                                               {"update"}}) {
        expectNamed(arguments, "refs/heads/main", junk);
    }
}

/// git status lists all files as new.
TEST_F(BrokenReference, OfTheCurrentBranchIsReportedByEachStatus) {
    breakReference("refs/heads/main");
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"status"},
                                               {"status", "--short"},
                                               {"status", "--short", "--all"},
                                               {"status", "--short", "a"},
                                               {"status", "--ignored"}}) {
        expectNamed(arguments, "refs/heads/main", junk);
        auto json = arguments;
        json.emplace_back("--json");
        const auto outcome = nebsc(json).json();
        EXPECT_EQ(outcome["error"]["class"], "reference-broken");
        EXPECT_EQ(outcome["result"], nullptr);
    }
}

TEST_F(BrokenReference, IsALinkToNothing) {
    fs::remove(repository.path(".git/refs/heads/main"));
    fs::create_symlink("nowhere", repository.path(".git/refs/heads/main"));
    for (const std::string command : {"log", "status", "ls"}) {
        expectNamed({command}, "refs/heads/main",
                    "its file is a link to a file that does not exist\n");
    }
}

TEST_F(BrokenReference, HasAnEmptyFile) {
    breakReference("refs/heads/main", "");
    expectNamed({"log"}, "refs/heads/main", "its file is empty\n");
}

TEST_F(BrokenReference, HasAFileThatCannotBeRead) {
    fs::remove(repository.path(".git/refs/heads/main"));
    fs::create_symlink("main", repository.path(".git/refs/heads/main"));
    const char* reason = "its file cannot be read: Too many levels of symbolic links\n";
    expectNamed({"log"}, "refs/heads/main", reason);
    const NebscOutcome status = nebsc({"status"});
    EXPECT_THAT(
        status.errors,
        StartsWith(std::string("nebsc: the reference 'refs/heads/main' is broken: ") + reason));
    EXPECT_THAT(status.output, Not(HasSubstr("no commits yet")));
    EXPECT_EQ(status.exitStatus, 1);
}

TEST_F(BrokenReference, NamesTheLogOfItsCommits) {
    breakReference("refs/heads/main");
    const std::string folder = repository.path(".git/");
    EXPECT_THAT(
        nebsc({"log"}).errors,
        HasSubstr("\nWrite the last commit in '" + folder + "logs/refs/heads/main' to the file '" +
                  folder + "refs/heads/main', or remove that file and fetch the branch again.\n"));
    fs::remove_all(repository.path(".git/logs"));
    EXPECT_THAT(nebsc({"log"}).errors, HasSubstr("\nWrite the name of its commit to the file"));
}

TEST_F(BrokenReference, OfAnotherBranchIsReported) {
    breakReference("refs/heads/topic");
    breakReference("refs/tags/v1");
    expectNamed({"log", "topic"}, "refs/heads/topic", junk);
    expectNamed({"log", "main..topic", "--"}, "refs/heads/topic", junk);
    expectNamed({"diff", "v1"}, "refs/tags/v1", junk);
    EXPECT_EQ(nebsc({"log"}).exitStatus, 0);
    expectFailed(nebsc({"log", "nosuch", "--"}), "nebsc: unknown revision 'nosuch'\n");
    expectFailed(nebsc({"log", "config", "--"}), "nebsc: unknown revision 'config'\n");
    expectFailed(nebsc({"log", "../config", "--"}), "nebsc: unknown revision '../config'\n");
}

TEST_F(BrokenReference, ReportsALostCommit) {
    const std::string lost(40, '1');
    breakReference("refs/heads/topic", lost + "\n");
    expectNamed({"log", "topic"}, "refs/heads/topic",
                "it names 111111111111, which is not in the repository");
    EXPECT_EQ(nebsc({"log", "--json", "topic"}).json()["error"]["class"], "objects-damaged");
    breakReference("refs/heads/main", lost + "\n");
    expectNamed({"log"}, "refs/heads/main", "it names 111111111111");
    expectNamed({"blame", "a"}, "refs/heads/main", "it names 111111111111");
}

TEST_F(BrokenReference, RefersToItself) {
    breakReference("refs/heads/main", "ref: refs/heads/main\n");
    expectNamed({"log"}, "refs/heads/main", "it refers to itself\n");
}

TEST_F(BrokenReference, DoesNotLeadOutOfTheRepository) {
    repository.write("precious", "not a commit\n");
    for (const std::string& target :
         {std::string("refs/heads/../../../precious"), repository.path("precious")}) {
        breakReference("refs/heads/main", "ref: " + target + "\n");
        const NebscOutcome outcome = nebsc({"log"});
        expectFailed(outcome, StartsWith("nebsc: the reference 'refs/heads/main' is broken: its "
                                         "file does not hold the name of a valid reference\n"));
        EXPECT_THAT(outcome.errors, Not(HasSubstr("precious', or remove")));
    }
}

TEST_F(BrokenReference, IsQuotedForTheShellInTheAdvice) {
    breakReference("refs/heads/$(id)", std::string(40, '1') + "\n");
    EXPECT_THAT(nebsc({"log", "$(id)"}).errors,
                HasSubstr("'git update-ref 'refs/heads/$(id)' COMMIT'"));
}

TEST_F(BrokenReference, HasAnErrorClass) {
    breakReference("refs/heads/main");
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"log", "--json"}, {"blame", "--json", "a"}, {"diff", "--json"}}) {
        const auto json = nebsc(arguments).json();
        EXPECT_EQ(json["error"]["class"], "reference-broken") << arguments.front();
        EXPECT_THAT(json["error"]["localizedDescription"].dump(), HasSubstr("refs/heads/main"));
    }
}

TEST_F(BrokenReference, IsFoundInPackedRefs) {
    breakReference("packed-refs");
    for (const char* command : {"log", "diff", "ls", "status"}) {
        const NebscOutcome outcome = nebsc({command});
        EXPECT_THAT(outcome.errors, HasSubstr("packed-refs")) << command;
        EXPECT_THAT(outcome.errors, Not(HasSubstr("no commits"))) << command;
        EXPECT_EQ(outcome.exitStatus, 1) << command;
    }
}

TEST_F(BrokenReference, IsNotABranchWithoutACommit) {
    repository.git({"checkout", "--quiet", "--orphan", "fresh"});
    expectFailed(nebsc({"log"}),
                 "nebsc: the current branch 'fresh' does not have any commits yet\n");
    EXPECT_EQ(nebsc({"status", "--short"}).output, "added      a\n");
}

}  // namespace
}  // namespace neb::test
