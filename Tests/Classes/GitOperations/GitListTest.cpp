#include "GitOperations/GitList.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>

#include "GitController.h"
#include "LOMFoundation/LOMDeveloperPaths.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Support/HygienicTest.h"
#include "Support/Matchers.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

using std::string_literals::operator""s;
using test::HasErrorClass;
using test::requestFor;
using test::TestRepository;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::shared_ptr<NEBSourceControlRequest> listRequest(std::string folder,
                                                     const std::string& location = "/w") {
    auto request = requestFor(NEBSourceControlRequestList, location);
    request->files = {NEBValue(std::move(folder))};
    return request;
}

/// Returns the name of a record, with a "/" unless it is a leaf.
std::vector<std::string> markedNamesOf(const std::optional<NEBSourceControlResult>& result) {
    std::vector<std::string> texts;
    for (const NEBDictionary& record : result.value()) {
        EXPECT_EQ(record.size(), 2U);
        texts.push_back(record.value(NEBSourceControlOperationNameKey).description() +
                        (*record.value(NEBSourceControlOperationIsLeafKey).boolean() ? "" : "/"));
    }
    return texts;
}

// ---- the command ------------------------------------------------------------------------------

/// Returns the command line after the path of git.
std::string commandOf(const std::shared_ptr<NEBSourceControlRequest>& request) {
    GitListFilesOperation operation(request);
    EXPECT_EQ(operation.launchPath(), "/bin/sh");
    EXPECT_EQ(operation.arguments().size(), 2U);
    EXPECT_EQ(operation.arguments().at(0), "-c");
    const std::string git = operation.GitOperation::launchPath();
    EXPECT_EQ(operation.arguments().at(1).substr(0, git.size()), git);
    return operation.arguments().at(1).substr(git.size());
}

TEST(ListCommand, LetsTheShellExpandTheFolder) {
    EXPECT_EQ(commandOf(listRequest("src")), " ls-tree -z HEAD^{tree} src/*");
    EXPECT_EQ(commandOf(listRequest("/w/src/lib")), " ls-tree -z HEAD^{tree} /w/src/lib/*");
    EXPECT_EQ(commandOf(listRequest("src/")), " ls-tree -z HEAD^{tree} src//*");
    EXPECT_EQ(GitListFilesOperation(listRequest("src")).currentDirectoryPath(), "/w");
}

TEST(ListCommand, HasNoRepositoryPathAndOnlyTheFirstFolder) {
    auto request = listRequest("a");
    request->files->emplace_back("b");
    request->options = NEBDictionary{{NEBSourceControlRequestOptionRepositoryPath, "/r"},
                                     {NEBSourceControlRequestOptionWorkingCopyPath, "/w"}};
    EXPECT_EQ(commandOf(request), " ls-tree -z HEAD^{tree} a/*");
}

/// The pattern is replaced with a syntax error, so that the root is not listed.
TEST(ListCommand, OfTheEmptyNameIsASyntaxError) {
    EXPECT_EQ(commandOf(listRequest("")), " ls-tree -z HEAD^{tree} (null)");
    EXPECT_EQ(commandOf(requestFor(NEBSourceControlRequestList, "/w")),
              " ls-tree -z HEAD^{tree} (null)");
}

TEST(ListCommand, UsesTheBranchAsTheSuffixOfHEAD) {
    auto request = listRequest("src");
    request->options = NEBDictionary{{NEBSourceControlRequestOptionBranch, "topic"}};
    EXPECT_EQ(commandOf(request), " ls-tree -z HEAD^{topic} src/*");
    request->options = NEBDictionary{{NEBSourceControlRequestOptionBranch, "$(touch x)"}};
    EXPECT_EQ(commandOf(request), " ls-tree -z HEAD^{\\$\\(touch x\\)} src/*");
}

TEST(ListCommand, KeepsBlanksAndWildcardsAndEscapesTheRest) {
    EXPECT_EQ(commandOf(listRequest("a dir")), " ls-tree -z HEAD^{tree} a dir/*");
    EXPECT_EQ(commandOf(listRequest("s*c")), " ls-tree -z HEAD^{tree} s*c/*");
    EXPECT_EQ(commandOf(listRequest("a&b;c")), " ls-tree -z HEAD^{tree} a\\&b\\;c/*");
    EXPECT_EQ(commandOf(listRequest("~")), " ls-tree -z HEAD^{tree} \\~/*");
    EXPECT_EQ(commandOf(listRequest("a\nb")), " ls-tree -z HEAD^{tree} a'\n'b/*");
    EXPECT_EQ(commandOf(listRequest("(null)")), " ls-tree -z HEAD^{tree} \\(null\\)/*");
}

// ---- reading what git printed -----------------------------------------------------------------

std::vector<std::string> namesIn(std::optional<Data> output) {
    GitListFilesOperation operation(listRequest("src"));
    operation.setData(std::move(output));
    operation.parseData();
    return markedNamesOf(operation.result());
}

const std::string object = " 0123456789abcdef0123456789abcdef01234567\t";

TEST(ListOutput, HasARecordPerEntryInOrder) {
    EXPECT_THAT(namesIn("100644 blob" + object + "src/a.c\0"s + "040000 tree" + object +
                        "src/lib\0"s + "160000 commit" + object + "src/module\0"s + "120000 blob" +
                        object + "src/link\0"s),
                ElementsAre("a.c", "lib/", "module/", "link"));
}

TEST(ListOutput, WithoutTextIsAnEmptyResult) {
    EXPECT_THAT(namesIn(""), IsEmpty());
    EXPECT_THAT(namesIn(std::nullopt), IsEmpty());
}

TEST(ListOutput, PreservesNames) {
    EXPECT_THAT(namesIn("100644 blob" + object + "src/with blank\0"s + "100644 blob" + object +
                        "src/\ttab\nline\0"s + "100644 blob" + object + " lead\0"s + "100644 blob" +
                        object + "\xC3\xA4\0"s),
                ElementsAre("with blank", "\ttab\nline", " lead", "\xC3\xA4"));
    EXPECT_THAT(namesIn("100644 blob" + object + "a\0"s + "100644 blob" + object + "J\xFC\0"s +
                        "100644 blob" + object + "b"),
                ElementsAre("a", "b"))
        << "a name that is no UTF-8 is left out";
}

TEST(ListOutput, MakesARecordOfInvalidLinesToo) {
    EXPECT_THAT(namesIn("\0"s), ElementsAre("/"));
    EXPECT_THAT(namesIn("nonsense"), ElementsAre("/"));
    EXPECT_THAT(namesIn("blob x\ty"), ElementsAre("y"))
        << "without a mode the first word is the type's";
    EXPECT_THAT(namesIn("100644 blob x"), ElementsAre(""));
    EXPECT_THAT(namesIn("100644 Blob" + object + "dir/a"), ElementsAre("a/"));
    EXPECT_THAT(namesIn("100644\t\xC2\xA0"
                        "blob \t x\ta b/c"),
                ElementsAre("c"))
        << "any white space separates";
}

// ---- real folders -----------------------------------------------------------------------------

class ListOfRepository : public test::HygienicTest {
protected:
    static std::shared_ptr<NEBSourceControlOperation> run(
        const std::shared_ptr<NEBSourceControlRequest>& request) {
        auto operation = GitController().operationForRequest(request);
        operation->start();
        return operation;
    }
    [[nodiscard]] std::vector<std::string> list(std::string folder) const {
        const auto operation = run(listRequest(std::move(folder), repository.path()));
        EXPECT_EQ(operation->error(), std::nullopt);
        return markedNamesOf(operation->result());
    }

    const TestRepository repository;
};

TEST_F(ListOfRepository, DistinguishesFilesFromFoldersAndSubmodules) {
    repository.write("src/a.c", "x");
    repository.write("src/lib/b.c", "x");
    repository.write("src/.hidden", "x");
    repository.write("top", "x");
    repository.git({"add", "."});
    repository.git({"commit", "-qm", "first"});
    repository.git({"-c", "protocol.file.allow=always", "submodule", "--quiet", "add",
                    repository.path(), "src/module"});
    repository.git({"commit", "-qm", "second"});
    repository.write("src/untracked", "x");
    EXPECT_THAT(list("src"), ElementsAre("a.c", "lib/", "module/"))
        << "the shell leaves out what begins with a dot";
    EXPECT_THAT(list(repository.path("src")), ElementsAre("a.c", "lib/", "module/"));
    EXPECT_THAT(list("src/lib"), ElementsAre("b.c"));
    EXPECT_THAT(list("."), ElementsAre("src/", "top"));
    EXPECT_THAT(list("nosuch"), IsEmpty());
    EXPECT_THAT(list("top"), IsEmpty());
    // The shell does not find entries that no longer exist on disk.
    std::filesystem::remove(repository.path("src/a.c"));
    EXPECT_THAT(list("src"), ElementsAre("lib/", "module/"));
}

TEST_F(ListOfRepository, SplitsAtBlanksAndExpandsWildcards) {
    repository.write("a dir/x", "x");
    repository.write("dir/y", "x");
    repository.write("d2/z", "x");
    repository.git({"add", "."});
    repository.git({"commit", "-qm", "first"});
    EXPECT_THAT(list("a dir"), ElementsAre("y"));
    EXPECT_THAT(list("d?"), ElementsAre("z"));
    EXPECT_THAT(list("[d]*"), ElementsAre("z", "y"));
}

/// The kernel limits command lines to two megabytes.
TEST_F(ListOfRepository, ReportsACommandLineThatIsTooLong) {
    repository.commitFile("full/a", "x");
    for (int i = 0; i < 9000; ++i) {
        repository.write("full/" + std::string(245, 'n') + std::to_string(i), "");
    }
    const auto operation = run(listRequest("full", repository.path()));
    EXPECT_EQ(operation->error()->errorClass, NEBSourceControlSystemLimitErrorClass);
    EXPECT_THAT(operation->error()->text,
                testing::Optional(testing::HasSubstr("Argument list too long")));
}

/// Names that try to run a command, each of which would create a file.
TEST_F(ListOfRepository, OfAFolderWithAHostileNameListsItAndRunsNothing) {
    const std::string names[] = {
        "a;touch$IFS"
        "ran",
        "`touch${IFS}ran`",
        "$(touch${IFS}ran)",
        "a&touch$IFS"
        "ran&",
        "a|touch$IFS"
        "ran",
        "a>ran",
        "<ran",
        "a\ntouch\nran",
        "';touch$IFS"
        "ran;'",
        "\";touch$IFS"
        "ran;\"",
        "\\",
        "a\\",
        "a\\;touch$IFS"
        "ran",
        "#",
        "!",
        "~",
        "~root",
        "$HOME",
        "${HOME}",
        "$((1))",
        "(a)",
        "{a,b}",
        "HEAD^{tree}",
        "(null)",
        ":",
        ":(glob)x",
        ":!x",
        "\x01\x7F",
        "\xC3\x81\xC3\xA0",  // has bytes that a shell may use internally
    };
    for (const std::string& name : names) {
        repository.write(name + "/entry of " + std::to_string(name.size()), "x");
    }
    repository.git({"add", "."});
    repository.git({"commit", "-qm", "hostile"});
    for (const std::string& name : names) {
        for (const std::string& folder : {name, repository.path(name)}) {
            EXPECT_THAT(list(folder), ElementsAre("entry of " + std::to_string(name.size())))
                << folder;
        }
        auto request = listRequest("~", repository.path());
        request->options = NEBDictionary{{NEBSourceControlRequestOptionBranch, name}};
        EXPECT_NE(run(request)->error(), std::nullopt) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(repository.path("ran")));
    EXPECT_FALSE(std::filesystem::exists(repository.path("a")));
}

TEST_F(ListOfRepository, RefusesABranchAndTheEmptyName) {
    repository.commitFile("src/a", "x");
    auto request = listRequest("src", repository.path());
    request->options = NEBDictionary{{NEBSourceControlRequestOptionBranch, "main"}};
    const auto ofBranch = run(request);
    EXPECT_THAT(ofBranch->error(), HasErrorClass(NEBSourceControlRevisionUnknownErrorClass));
    EXPECT_THAT(markedNamesOf(ofBranch->result()), IsEmpty());

    const auto ofNothing = run(listRequest("", repository.path()));
    EXPECT_THAT(ofNothing->error(), test::IsSourceControlError(-1, HasSubstr("yntax error")));
    EXPECT_THAT(markedNamesOf(ofNothing->result()), IsEmpty());
}

TEST_F(ListOfRepository, ReportsAMissingCommitOrRepository) {
    repository.write("src/a", "x");
    EXPECT_THAT(run(listRequest("src", repository.path()))->error(),
                HasErrorClass(NEBSourceControlRevisionUnknownErrorClass));
    const test::TemporaryFolder folder;
    EXPECT_THAT(run(listRequest("src", folder.path()))->error(),
                HasErrorClass(NEBSourceControlNotARepositoryErrorClass));
}

TEST_F(ListOfRepository, ReportsAFolderOutsideTheWorkingCopy) {
    repository.commitFile("src/a", "x");
    const test::TemporaryFolder elsewhere;
    for (const std::string& folder :
         {elsewhere.path(), elsewhere.path("nosuch"), std::string("/nosuch"), std::string(".."),
          "file://" + repository.path("src")}) {
        const auto operation = run(listRequest(folder, repository.path()));
        EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlPathOutsideErrorClass))
            << folder;
        EXPECT_THAT(markedNamesOf(operation->result()), IsEmpty()) << folder;
    }
    EXPECT_THAT(list(repository.path("src")), ElementsAre("a"));
    EXPECT_THAT(list(repository.path("nosuch")), IsEmpty());
}

TEST_F(ListOfRepository, ClassifiesAMissingFolder) {
    repository.commitFile("src/a", "x");
    const auto operation = run(listRequest("", repository.path()));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlPathInvalidErrorClass));
    EXPECT_THAT(markedNamesOf(operation->result()), IsEmpty());
}

TEST_F(ListOfRepository, DoesNothingAfterAnError) {
    const auto operation = initWithRequest<GitListOperation>(listRequest("src", repository.path()));
    operation->setError(NEBSourceControlError::withDescription(-1, "before"));
    operation->start();
    EXPECT_EQ(operation->result(), std::nullopt);
    EXPECT_EQ(operation->operationQueue(), nullptr);
    EXPECT_EQ(operation->command(), std::nullopt);
}

}  // namespace
}  // namespace neb
