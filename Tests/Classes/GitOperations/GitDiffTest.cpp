#include "GitOperations/GitDiff.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "GitController.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Support/HygienicTest.h"
#include "Support/Matchers.h"
#include "Support/StatusRecords.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

using test::HasErrorClass;
using test::requestFor;
using test::TestRepository;
using test::textsOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

NEBDictionary namesOnly() {
    return {{NEBSourceControlRequestOptionDiffFileNameAndStatusOnly, true}};
}

// ---- the command ------------------------------------------------------------------------------

TEST(DiffCommand, OfABareRequestComparesWithHEAD) {
    EXPECT_THAT(GitDiffOperation(requestFor(NEBSourceControlRequestDiff, "/w")).arguments(),
                ElementsAre("diff", "--no-ext-diff", "HEAD"));
    EXPECT_EQ(
        GitDiffOperation(requestFor(NEBSourceControlRequestDiff, "/w")).currentDirectoryPath(),
        "/w");
}

TEST(DiffCommand, OfAFullRequestHasAllParts) {
    auto request = requestFor(NEBSourceControlRequestDiff, "/w");
    request->startingRevision = "abc";
    request->endingRevision = "def";
    request->destination = "--stat";
    request->files = {NEBValue("/w/a"), NEBValue("/w/b"), NEBValue("/w/a")};
    request->options = NEBDictionary{{NEBSourceControlRequestOptionDiffFileNameAndStatusOnly, true},
                                     {NEBSourceControlRequestOptionDiffFromCommonAncestor, true},
                                     {NEBSourceControlRequestOptionRepositoryPath, "/r"},
                                     {NEBSourceControlRequestOptionWorkingCopyPath, "/w"}};
    EXPECT_THAT(GitDiffOperation(request).arguments(),
                ElementsAre("--git-dir=/r", "--work-tree=/w", "diff", "--no-ext-diff",
                            "--name-status", "abc...def", "--stat", "--", "/w/a", "/w/b", "/w/a"));
    request->files = std::vector<NEBValue>{};
    request->options = std::nullopt;
    EXPECT_THAT(GitDiffOperation(request).arguments(),
                ElementsAre("diff", "--no-ext-diff", "abc..def", "--stat"));
}

struct Revisions {
    const char* name;
    NEBValue start, end, fromCommonAncestor;
    const char* argument;
};

class DiffRevisions : public testing::TestWithParam<Revisions> {};

TEST_P(DiffRevisions, BecomeThisOneArgument) {
    auto request = requestFor(NEBSourceControlRequestDiff, "/w");
    request->startingRevision = GetParam().start;
    request->endingRevision = GetParam().end;
    request->options = NEBDictionary{
        {NEBSourceControlRequestOptionDiffFromCommonAncestor, GetParam().fromCommonAncestor}};
    EXPECT_THAT(GitDiffOperation(request).arguments(),
                ElementsAre("diff", "--no-ext-diff", GetParam().argument));
}

const NEBValue headName(NEBSourceControlHEADRevisionName);
const NEBValue baseName(NEBSourceControlBASERevisionName);

INSTANTIATE_TEST_SUITE_P(
    Rows, DiffRevisions,
    testing::Values(Revisions{"None", {}, {}, {}, "HEAD"},
                    Revisions{"NoneFromCommonAncestor", {}, {}, true, "HEAD"},
                    Revisions{"AnEndAloneIsIgnored", {}, "b2", true, "HEAD"},
                    Revisions{"Start", "a1", {}, {}, "a1"},
                    Revisions{"StartFromCommonAncestor", "a1", {}, true, "a1"},
                    Revisions{"StartByName", baseName, {}, {}, "HEAD"},
                    Revisions{"Both", "a1", "b2", {}, "a1..b2"},
                    Revisions{"BothAndTheOptionFalse", "a1", "b2", false, "a1..b2"},
                    Revisions{"BothFromCommonAncestor", "a1", "b2", true, "a1...b2"},
                    Revisions{"BothByName", headName, baseName, true, "HEAD...HEAD"},
                    Revisions{"EndByName", "a1", headName, {}, "a1..HEAD"},
                    Revisions{"ZeroIsARevisionHere", "a1", "0", {}, "a1..0"},
                    Revisions{"OtherNamesAreNoHEAD",
                              NEBSourceControlLocalRevisionName,
                              {},
                              {},
                              "NEBSourceControlLocalRevisionName"}),
    [](const auto& parameter) { return parameter.param.name; });

TEST(DiffCommand, ListsNamesIfTheOptionIsTrue) {
    auto request = requestFor(NEBSourceControlRequestDiff, "/w");
    request->options = namesOnly();
    EXPECT_THAT(GitDiffOperation(request).arguments(),
                ElementsAre("diff", "--no-ext-diff", "--name-status", "HEAD"));
    request->options =
        NEBDictionary{{NEBSourceControlRequestOptionDiffFileNameAndStatusOnly, false}};
    EXPECT_THAT(GitDiffOperation(request).arguments(),
                ElementsAre("diff", "--no-ext-diff", "HEAD"));
}

// ---- reading what git printed -----------------------------------------------------------------

std::optional<NEBSourceControlResult> resultOf(
    const std::shared_ptr<NEBSourceControlRequest>& request, std::optional<Data> output) {
    GitDiffOperation operation(request);
    operation.setData(std::move(output));
    operation.parseData();
    return operation.result();
}

std::shared_ptr<NEBSourceControlRequest> namesRequest() {
    auto request = requestFor(NEBSourceControlRequestDiff, "/w");
    request->options = namesOnly();
    return request;
}

TEST(DiffOutput, IsOneUnchangedText) {
    for (const std::string text :
         {"diff --git a/x b/x\n-a\r\n+b\t\n\n", "\n", "no line end", "* Unmerged path a\n"}) {
        const auto result = resultOf(requestFor(NEBSourceControlRequestDiff, "/w"), text);
        ASSERT_EQ(result->size(), 1U);
        EXPECT_EQ(result->at(0).size(), 1U);
        if (text.size() > 1) {
            EXPECT_EQ(*result->at(0).value(NEBSourceControlOperationContentKey).string(), text);
        }
    }
    EXPECT_EQ(*resultOf(requestFor(NEBSourceControlRequestDiff, "/w"), "-J\xFCrgen\n+x\n")
                   ->at(0)
                   .value(NEBSourceControlOperationContentKey)
                   .string(),
              "-J\xEF\xBF\xBDrgen\n+x\n");
}

TEST(DiffOutput, WithoutTextHasNoResult) {
    for (const std::optional<Data>& output : {std::optional<Data>(), std::optional<Data>("")}) {
        EXPECT_EQ(resultOf(requestFor(NEBSourceControlRequestDiff, "/w"), output), std::nullopt);
        EXPECT_EQ(resultOf(namesRequest(), output), std::nullopt);
    }
}

TEST(DiffOutput, OfNamesHasARecordPerLine) {
    EXPECT_THAT(textsOf(resultOf(namesRequest(), "M\ta.c\nA\tsrc/b c.c\nD\td\nT\tt\n")),
                ElementsAre("4 /w/a.c", "1 /w/src/b c.c", "2 /w/d", "4 /w/t"));
    EXPECT_THAT(textsOf(resultOf(namesRequest(), "M\ta.c\n")), ElementsAre("4 /w/a.c"));
    EXPECT_THAT(textsOf(resultOf(namesRequest(), "\nnonsense\n \n")), IsEmpty())
        << "what is no record is left out, and the result is still there";
}

/// The line is parsed like that of a status, which has no score.
TEST(DiffOutput, HasTheRestOfTheLineAsPathOfARename) {
    EXPECT_THAT(textsOf(resultOf(namesRequest(), "R094\told.c\tnew.c\nC100\ta\tb\n")),
                ElementsAre("4096 /w/094\told.c\tnew.c", "4096 /w/100\ta\tb"));
}

TEST(DiffOutput, OfNamesIgnoresWhetherTheSourceTreeIsValid) {
    auto request = namesRequest();
    request->sourceTree->isValid = false;
    EXPECT_THAT(textsOf(resultOf(request, "M\ta\n")), ElementsAre("4 /w/a"));
    request->sourceTree->location.reset();
    EXPECT_THAT(textsOf(resultOf(request, "M\ta\n")), ElementsAre("4 a"));
    request->sourceTree = nullptr;
    EXPECT_THAT(textsOf(resultOf(request, "M\ta\n")), ElementsAre("4 a"));
}

// ---- real differences -------------------------------------------------------------------------

class DiffOfRepository : public test::HygienicTest {
protected:
    DiffOfRepository() {
        std::string text;
        for (int i = 0; i < 30; ++i) {
            text += "line " + std::to_string(i) + "\n";
        }
        repository.commitFile("long", text);
        repository.commitFile("sp ace \xC3\xA4.txt", "1\n");
        request->sourceTree->location = repository.path();
    }
    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> run() const {
        auto operation = GitController().operationForRequest(request);
        operation->start();
        return operation;
    }
    [[nodiscard]] std::string content() const {
        const auto operation = run();
        EXPECT_EQ(operation->error(), std::nullopt);
        return operation->result()
            .value()
            .at(0)
            .value(NEBSourceControlOperationContentKey)
            .description();
    }
    [[nodiscard]] std::vector<std::string> names() const {
        request->options = namesOnly();
        return textsOf(run()->result());
    }

    const TestRepository repository;
    const std::shared_ptr<NEBSourceControlRequest> request =
        requestFor(NEBSourceControlRequestDiff, "");
};

TEST_F(DiffOfRepository, WithHEADShowsStagedAndUnstagedChanges) {
    repository.write("staged", "x\n");
    repository.git({"add", "staged"});
    repository.write("sp ace \xC3\xA4.txt", "2\n");
    EXPECT_EQ(content(),
              repository.git({"-c", "core.quotePath=false", "diff-index", "-p", "HEAD"}));
    EXPECT_THAT(names(), ElementsAre("4 " + repository.path("sp ace \xC3\xA4.txt"),
                                     "1 " + repository.path("staged")));
    request->files = {NEBValue(repository.path("staged")), NEBValue(repository.path("long"))};
    EXPECT_THAT(names(), ElementsAre("1 " + repository.path("staged")));
    request->files = {NEBValue(repository.path("nosuch"))};
    EXPECT_EQ(run()->result(), std::nullopt);
}

TEST_F(DiffOfRepository, WithoutADifferenceHasNeitherResultNorError) {
    for (const bool withNames : {false, true}) {
        request->options = withNames ? std::optional(namesOnly()) : std::nullopt;
        const auto operation = run();
        EXPECT_EQ(operation->result(), std::nullopt);
        EXPECT_EQ(operation->error(), std::nullopt);
    }
}

TEST_F(DiffOfRepository, OfARenameWithAChangeHasItsScoreInThePath) {
    repository.git({"mv", "long", "moved"});
    repository.write("moved", "first\n" + repository.git({"show", "HEAD:long"}));
    repository.git({"commit", "-qam", "move"});
    request->startingRevision = "HEAD~1";
    request->endingRevision = NEBSourceControlHEADRevisionName;
    EXPECT_THAT(names(), ElementsAre(testing::MatchesRegex("4096 " + repository.path() +
                                                           "/0[0-9][0-9]\tlong\tmoved")));
}

TEST_F(DiffOfRepository, FromTheCommonAncestorOmitsTheOtherSide) {
    repository.git({"checkout", "-qb", "topic"});
    repository.commitFile("t", "t\n");
    repository.git({"checkout", "-q", "main"});
    repository.commitFile("m", "m\n");
    request->startingRevision = "main";
    request->endingRevision = "topic";
    EXPECT_THAT(names(), ElementsAre("2 " + repository.path("m"), "1 " + repository.path("t")));
    request->options = NEBDictionary{{NEBSourceControlRequestOptionDiffFileNameAndStatusOnly, true},
                                     {NEBSourceControlRequestOptionDiffFromCommonAncestor, true}};
    EXPECT_THAT(textsOf(run()->result()), ElementsAre("1 " + repository.path("t")));
}

TEST_F(DiffOfRepository, IgnoresExternalDiffPrograms) {
    repository.write("long", "changed\n");
    repository.write("binary", std::string("a\0b", 3));
    repository.git({"add", "binary"});
    const std::string plain = content();
    EXPECT_EQ(plain, repository.git({"-c", "core.quotePath=false", "diff-index", "-p", "HEAD"}));
    for (const auto& [key, value] :
         std::initializer_list<std::pair<const char*, const char*>>{{"diff.external", "/bin/false"},
                                                                    {"color.ui", "always"},
                                                                    {"diff.noprefix", "true"},
                                                                    {"diff.mnemonicPrefix", "true"},
                                                                    {"diff.context", "0"},
                                                                    {"diff.renames", "false"},
                                                                    {"core.pager", "/bin/false"},
                                                                    {"core.quotePath", "true"}}) {
        repository.git({"config", key, value});
    }
    EXPECT_EQ(content(), plain);
}

/// The attributes of a file are part of the repository.
TEST_F(DiffOfRepository, UsesTextconv) {
    repository.write(".gitattributes", "long diff=upper\n");
    repository.git({"config", "diff.upper.textconv", "tr a-z A-Z <"});
    repository.write("long", "changed\n");
    EXPECT_THAT(content(), HasSubstr("\n+CHANGED\n"));
}

TEST_F(DiffOfRepository, KeepsBinaryContent) {
    repository.write("long", "J\xFCrgen\n");
    EXPECT_THAT(content(), HasSubstr("\n+J\xEF\xBF\xBDrgen\n"));
    EXPECT_THAT(content(), HasSubstr("\n-line 29\n"));
}

TEST_F(DiffOfRepository, TreatsAFileLiterally) {
    repository.write("x1.c", "1\n");
    repository.write("x[1].c", "1\n");
    repository.git({"add", "."});
    request->files = {NEBValue(repository.path("x[1].c"))};
    EXPECT_THAT(names(), ElementsAre("1 " + repository.path("x[1].c")));
}

TEST_F(DiffOfRepository, IgnoresTheWarningAboutTwoMergeBases) {
    repository.git({"checkout", "-qb", "topic"});
    repository.commitFile("t", "t\n");
    repository.git({"checkout", "-q", "main"});
    repository.commitFile("m", "m\n");
    repository.git({"tag", "m1"});
    repository.git({"merge", "-q", "--no-edit", "topic"});
    repository.git({"checkout", "-q", "topic"});
    repository.git({"merge", "-q", "--no-edit", "m1"});
    repository.commitFile("u", "u\n");
    request->startingRevision = "main";
    request->endingRevision = "topic";
    request->options = NEBDictionary{{NEBSourceControlRequestOptionDiffFromCommonAncestor, true}};
    EXPECT_THAT(content(), HasSubstr("+++ b/u\n"));
}

TEST_F(DiffOfRepository, ReportsFailures) {
    request->startingRevision = "nosuch";
    EXPECT_THAT(run()->error(), HasErrorClass(NEBSourceControlRevisionUnknownErrorClass));
    EXPECT_EQ(run()->result(), std::nullopt);

    repository.git({"checkout", "-q", "--orphan", "other"});
    repository.git({"commit", "-qm", "unrelated"});
    request->startingRevision = "main";
    request->endingRevision = "other";
    request->options = NEBDictionary{{NEBSourceControlRequestOptionDiffFromCommonAncestor, true}};
    EXPECT_THAT(run()->error(), HasErrorClass(NEBSourceControlUnrelatedHistoriesErrorClass));
}

TEST_F(DiffOfRepository, ReportsARepositoryWithoutCommits) {
    const TestRepository empty;
    request->sourceTree->location = empty.path();
    EXPECT_THAT(run()->error(), HasErrorClass(NEBSourceControlNoCommitsYetErrorClass));
}

}  // namespace
}  // namespace neb
