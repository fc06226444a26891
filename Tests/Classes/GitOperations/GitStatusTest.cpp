#include "GitOperations/GitStatus.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "GitController.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlManager.h"
#include "Support/HygienicTest.h"
#include "Support/Matchers.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

using test::HasErrorClass;
using test::IsSourceControlError;
using test::requestFor;
using test::TestRepository;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// A record as "value path", for reading.
std::string textOf(const std::optional<NEBDictionary>& record) {
    if (!record) {
        return "(nothing)";
    }
    EXPECT_EQ(record->size(), 2U);
    return std::to_string(record->value(NEBSourceControlOperationWCStatusKey).integer().value()) +
           " " + *record->value(NEBSourceControlOperationPathKey).string();
}

std::vector<std::string> textsOf(const std::optional<NEBSourceControlResult>& result) {
    std::vector<std::string> texts;
    for (const NEBDictionary& record : result.value()) {
        texts.push_back(textOf(record));
    }
    return texts;
}

// ---- the letters ------------------------------------------------------------------------------

class LogMessages : public testing::Test {
protected:
    void SetUp() override {
        aspect.setSink([this](std::string_view message) { messages.emplace_back(message); });
        aspect.logLevel = 1;
    }
    void TearDown() override {
        aspect.logLevel = 0;
        aspect.setSink({});
    }

    LOMLogAspect& aspect = NEBSourceControlManager::sourceControlLogAspect();
    std::vector<std::string> messages;
};

TEST_F(LogMessages, StatusLettersHaveTheHostsValues) {
    const std::pair<const char*, std::uint32_t> values[] = {{"A", 1},
                                                            {"D", 2},
                                                            {"M", 4},
                                                            {"T", 4},
                                                            {"U", 16},
                                                            {"?", 256},
                                                            {"C", 4096},
                                                            {"R", 4096},
                                                            // the first letter counts
                                                            {"AM", 1},
                                                            {"??", 256},
                                                            {"UU", 16},
                                                            {"R094", 4096},
                                                            {"MX", 4}};
    for (const auto& [letters, value] : values) {
        EXPECT_EQ(nebgit_sourceControlStatus(letters), value) << letters;
    }
    EXPECT_THAT(messages, IsEmpty());
}

TEST_F(LogMessages, OtherLettersAreLoggedAndNothing) {
    for (const char* letters : {"X", "", "!!", "a", "XA", "\xC3\x84"}) {
        EXPECT_EQ(nebgit_sourceControlStatus(letters), 0U) << letters;
    }
    EXPECT_THAT(messages, ElementsAre("ERROR: status value not handled for WC: X",
                                      "ERROR: status value not handled for WC: ",
                                      "ERROR: status value not handled for WC: !!",
                                      "ERROR: status value not handled for WC: a",
                                      "ERROR: status value not handled for WC: XA",
                                      "ERROR: status value not handled for WC: \xC3\x84"));
}

TEST_F(LogMessages, WithLoggingOffNothingIsLogged) {
    aspect.logLevel = 0;
    EXPECT_EQ(nebgit_sourceControlStatus("X"), 0U);
    EXPECT_THAT(messages, IsEmpty());
}

// ---- one line ---------------------------------------------------------------------------------

struct Line {
    const char* name;
    std::string line;
    std::string base;
    std::string record;
};

class StatusLine : public testing::TestWithParam<Line> {};

TEST_P(StatusLine, IsRead) {
    EXPECT_EQ(textOf(GitOperation::parseForStatusAndPathWithLine(GetParam().line, GetParam().base)),
              GetParam().record);
}

INSTANTIATE_TEST_SUITE_P(
    Lines, StatusLine,
    testing::Values(
        Line{"BlankIndexColumn", " M src/x.c", "", "4 src/x.c"},
        Line{"IndexLetterCounts", "AM new.txt", "/w", "1 /w/new.txt"},
        Line{"StagedModification", "M  a", "/w", "4 /w/a"},
        Line{"DeletedInTheWorkTree", " D a", "/w", "2 /w/a"},
        Line{"DeletedFromTheIndex", "D  a", "/w", "2 /w/a"},
        Line{"TypeChange", " T a", "/w", "4 /w/a"}, Line{"Conflict", "UU a", "/w", "16 /w/a"},
        Line{"BothAddedShowsAsAdded", "AA a", "/w", "1 /w/a"},
        Line{"DeletedByUsShowsAsDeleted", "DU a", "/w", "2 /w/a"},
        Line{"RenameKeepsTheNewPath", "R  a.txt -> b.txt", "/w", "4096 /w/b.txt"},
        Line{"CopyCountsAsRename", "C  a -> b", "/w", "4096 /w/b"},
        Line{"QuotedRename", "R  \"with space.txt\" -> \"other space.txt\"", "/w",
             "4096 /w/other space.txt"},
        Line{"QuotedOldNameAlone", "R  \"a b\" -> c", "/w", "4096 /w/c"},
        Line{"Untracked", "?? \"with space.txt\"", "/w", "256 /w/with space.txt"},
        Line{"UntrackedFolderKeepsItsSlash", "?? dir/", "/w", "256 /w/dir/"},
        Line{"EscapesStayAsTheyAre", "?? \"tab\\t\\303\\244\\\"q.txt\"", "/w",
             "256 /w/tab\\t\\303\\244\\\"q.txt"},
        Line{"LeadingBlankInQuotes", "?? \" lead\"", "/w", "256 /w/ lead"},
        Line{"OnlyTheFirstArrowCounts", "R  a -> b -> c", "", "4096 b -> c"},
        Line{"AnArrowInAnyLine", "?? p-> q.txt", "/w", "256 /w/q.txt"},
        Line{"NoBlankBehindTheArrow", "?? p->q.txt", "/w", "256 /w/p->q.txt"},
        Line{"LoneQuote", "?? \"", "/w", "256 /w/"},
        Line{"QuoteAtOneEnd", "?? a\"", "/w", "256 /w/a"},
        Line{"TABsCountAsBlanks", "\tM\t\ta", "/w", "4 /w/a"},
        Line{"NameStatusOfADifference", "R094\told\tnew", "/w", "4096 /w/094\told\tnew"},
        Line{"NoPath", "M", "/w", "4 /w/"}, Line{"NoPathAndNoBase", " M ", "", "4 "},
        Line{"UnknownLetter", "X  a", "/w", "0 /w/a"},
        Line{"BaseWithASlash", " M a", "/w/", "4 /w/a"}, Line{"ALetterRunsOn", "MREADME", "", "4 "},
        Line{"Empty", "", "/w", "(nothing)"}, Line{"Blanks", "   ", "/w", "(nothing)"},
        Line{"TABs", "\t\t", "/w", "(nothing)"}, Line{"Ignored", "!! build/", "/w", "(nothing)"},
        Line{"BranchHeader", "## main...origin/main", "/w", "(nothing)"},
        Line{"SmallLetters", "m a", "/w", "(nothing)"},
        Line{"OtherWhiteSpaceIsNone", "\n M a", "/w", "(nothing)"},
        Line{"NULAndBytes", std::string("M \0\xFF", 4), "", std::string("4 \0\xFF", 4)}),
    [](const auto& parameter) { return parameter.param.name; });

// ---- the operation: its command and its output ------------------------------------------------

TEST(StatusOperation, AsksForTheWholeWorkingCopyOrForOnePath) {
    auto request = requestFor(15, "/w");
    request->options = NEBDictionary{{NEBSourceControlRequestOptionRepositoryPath, "/r"},
                                     {NEBSourceControlRequestOptionWorkingCopyPath, "/w"}};
    request->files = {NEBValue("/w/ignored")};
    EXPECT_THAT(GitStatusOperation(request).arguments(), ElementsAre("status", "--porcelain"))
        << "no default arguments in front";
    request->destination = "/w/src";
    EXPECT_THAT(GitStatusOperation(request).arguments(),
                ElementsAre("status", "--porcelain", "--", "/w/src"));
    request->destination = 5;
    EXPECT_THAT(GitStatusOperation(request).arguments(),
                ElementsAre("status", "--porcelain", "--", "5"));
    EXPECT_EQ(GitStatusOperation(request).currentDirectoryPath(), "/w");
}

std::optional<NEBSourceControlResult> resultOfOutput(
    const std::shared_ptr<NEBSourceControlRequest>& request, std::optional<Data> output) {
    GitStatusOperation operation(request);
    operation.setData(std::move(output));
    operation.parseData();
    return operation.result();
}

TEST(StatusOperation, MakesARecordOfEachLine) {
    EXPECT_THAT(textsOf(resultOfOutput(requestFor(15, "/w"),
                                       " M a.txt\nD  b.txt\n?? ud/\n!! ignored\nR  x -> y\n")),
                ElementsAre("4 /w/a.txt", "2 /w/b.txt", "256 /w/ud/", "4096 /w/y"));
    EXPECT_THAT(textsOf(resultOfOutput(requestFor(15, "/w"), "?? one\n")),
                ElementsAre("256 /w/one"));
    EXPECT_THAT(textsOf(resultOfOutput(requestFor(15, "/w"), " M one\n")), ElementsAre("4 /w/one"));
    EXPECT_THAT(textsOf(resultOfOutput(requestFor(15, "/w"), " M one\n M no line end")),
                ElementsAre("4 /w/one", "4 /w/no line end"));
}

TEST(StatusOperation, NoOutputIsAnEmptyResult) {
    EXPECT_THAT(textsOf(resultOfOutput(requestFor(15, "/w"), "")), IsEmpty());
    EXPECT_THAT(textsOf(resultOfOutput(requestFor(15, "/w"), std::nullopt)), IsEmpty());
    EXPECT_THAT(textsOf(resultOfOutput(requestFor(15, "/w"), "\n\n")), IsEmpty());
}

TEST(StatusOperation, ASourceTreeThatIsNotValidHasNoRecords) {
    auto request = requestFor(15, "/w");
    request->sourceTree->isValid = false;
    EXPECT_THAT(textsOf(resultOfOutput(request, " M a.txt\n")), IsEmpty());
    request->sourceTree = nullptr;
    EXPECT_THAT(textsOf(resultOfOutput(request, " M a.txt\n")), IsEmpty());
}

TEST(StatusOperation, WithoutALocationPathsAreGits) {
    EXPECT_THAT(textsOf(resultOfOutput(requestFor(15, std::nullopt), " M a.txt\nM  b\n")),
                ElementsAre("4 a.txt", "4 b"));
}

TEST(StatusOperation, BytesThatAreNoTextAreReplaced) {
    EXPECT_THAT(textsOf(resultOfOutput(requestFor(15, "/w"), "?? J\xFC\n?? b\n")),
                ElementsAre("256 /w/J\xEF\xBF\xBD", "256 /w/b"));
}

// ---- real repositories ------------------------------------------------------------------------

class StatusOfRepository : public test::HygienicTest {
protected:
    /// Goes a host's way.
    static std::shared_ptr<NEBSourceControlOperation> statusOf(const std::string& location,
                                                               NEBValue destination = {}) {
        auto request = requestFor(15, location);
        request->destination = std::move(destination);
        auto operation = GitController().operationForRequest(request);
        operation->start();
        return operation;
    }
};

TEST_F(StatusOfRepository, TellsEveryStateOfAFile) {
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

TEST_F(StatusOfRepository, TellsAConflict) {
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

TEST_F(StatusOfRepository, IsEmptyWhereNothingChangedAndForAPathThatIsNotThere) {
    const TestRepository repository;
    repository.commitFile("a", "x");
    EXPECT_THAT(textsOf(statusOf(repository.path())->result()), IsEmpty());
    EXPECT_EQ(statusOf(repository.path())->error(), std::nullopt);
    repository.write("b", "x");
    const auto operation = statusOf(repository.path(), repository.path("nosuch"));
    EXPECT_THAT(textsOf(operation->result()), IsEmpty());
    EXPECT_EQ(operation->error(), std::nullopt);
}

TEST_F(StatusOfRepository, KeepsToThePathThatIsAskedFor) {
    const TestRepository repository;
    repository.write("src/a.c", "x");
    repository.write("b", "x");
    EXPECT_THAT(textsOf(statusOf(repository.path(), repository.path("src"))->result()),
                ElementsAre("256 " + repository.path("src/")));
    EXPECT_THAT(textsOf(statusOf("file://" + repository.path(), "b")->result()),
                ElementsAre("256 file://" + repository.path("b")));
}

TEST_F(StatusOfRepository, TakesAPathForANameAndNotForAPattern) {
    const TestRepository repository;
    repository.write("a[1].c", "x");
    repository.write("a1.c", "x");
    repository.write(":magic", "x");
    EXPECT_THAT(textsOf(statusOf(repository.path(), repository.path("a[1].c"))->result()),
                ElementsAre("256 " + repository.path("a[1].c")));
    EXPECT_THAT(textsOf(statusOf(repository.path(), ":magic")->result()),
                ElementsAre("256 " + repository.path(":magic")));
}

TEST_F(StatusOfRepository, TellsNamesAsTheyAre) {
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

TEST_F(StatusOfRepository, DoesNotFollowTheHostsTies) {
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

TEST_F(StatusOfRepository, AFolderThatIsNoRepositoryIsAnErrorWithGitsCause) {
    const test::TemporaryFolder folder;
    const auto operation = statusOf(folder.path());
    EXPECT_THAT(operation->error(),
                IsSourceControlError(
                    -1, "fatal: not a git repository (or any of the parent directories): .git"));
    EXPECT_THAT(operation->error(), HasErrorClass("not-a-repository"));
    EXPECT_THAT(textsOf(operation->result()), IsEmpty());
}

TEST_F(StatusOfRepository, ABareRepositoryAndAMissingFolderAreErrors) {
    const test::TemporaryFolder folder;
    const TestRepository repository;
    repository.git({"init", "-q", "--bare", folder.path("bare.git")});
    EXPECT_THAT(statusOf(folder.path("bare.git"))->error(), HasErrorClass("no-work-tree"));
    const auto missing = statusOf(folder.path("missing"));
    EXPECT_THAT(missing->error(), HasErrorClass("not-started"));
    EXPECT_THAT(missing->error(), IsSourceControlError(-1, HasSubstr(folder.path("missing"))));
    EXPECT_EQ(missing->result(), std::nullopt);
}

TEST_F(StatusOfRepository, APathOutsideIsAnError) {
    const TestRepository repository;
    EXPECT_THAT(statusOf(repository.path(), "/etc/passwd")->error(),
                IsSourceControlError(-1, HasSubstr("is outside repository")));
}

TEST_F(StatusOfRepository, AFolderThatMayNotBeReadIsAnErrorBesideTheRecords) {
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
    // The table calls every refused permission a refused password; the class tells what it is.
    EXPECT_THAT(operation->error(),
                IsSourceControlError(
                    -21, "Authentication failed because the name or password was incorrect."));
    EXPECT_THAT(operation->error(), HasErrorClass("permission-denied"));
    EXPECT_THAT(operation->error()->text.value(), HasSubstr("secret"));
    EXPECT_THAT(textsOf(operation->result()), testing::Contains("256 " + repository.path("a")));
}

TEST_F(StatusOfRepository, ARepositoryOfSomebodyElseIsAnError) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can make somebody else's repository";
    }
    const TestRepository repository;
    const test::AsOrdinaryUser user;
    EXPECT_THAT(statusOf(repository.path())->error(), HasErrorClass("owner-not-trusted"));
}

TEST_F(StatusOfRepository, ADamagedConfigurationIsAnErrorThatNamesTheLine) {
    const TestRepository repository;
    repository.write(".git/config", "[core\n");
    const auto operation = statusOf(repository.path());
    EXPECT_THAT(operation->error(), IsSourceControlError(-1, HasSubstr("bad config line 1")));
    EXPECT_THAT(operation->error(), HasErrorClass("configuration-broken"));
}

}  // namespace
}  // namespace neb
