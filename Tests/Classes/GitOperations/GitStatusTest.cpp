#include "GitOperations/GitStatus.h"

#include <gmock/gmock.h>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlManager.h"
#include "Support/Matchers.h"
#include "Support/StatusRecords.h"

namespace neb {
namespace {

using test::requestFor;
using test::textOf;
using test::textsOf;
using testing::ElementsAre;
using testing::IsEmpty;

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

TEST_F(LogMessages, LogUnknownLettersWithoutAStatus) {
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

TEST_F(LogMessages, AreAbsentWithLoggingOff) {
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
        Line{"OneSlashJoinsBaseAndPath", "M  //a", "/w/", "4 /w/a"},
        Line{"WithoutABaseThePathIsAsItIs", "M  //a", "", "4 //a"},
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

TEST(StatusOperation, CoversTheWorkingCopyOrOnePath) {
    auto request = requestFor(NEBSourceControlRequestStatus, "/w");
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
    EXPECT_THAT(textsOf(resultOfOutput(requestFor(NEBSourceControlRequestStatus, "/w"),
                                       " M a.txt\nD  b.txt\n?? ud/\n!! ignored\nR  x -> y\n")),
                ElementsAre("4 /w/a.txt", "2 /w/b.txt", "256 /w/ud/", "4096 /w/y"));
    EXPECT_THAT(
        textsOf(resultOfOutput(requestFor(NEBSourceControlRequestStatus, "/w"), "?? one\n")),
        ElementsAre("256 /w/one"));
    EXPECT_THAT(
        textsOf(resultOfOutput(requestFor(NEBSourceControlRequestStatus, "/w"), " M one\n")),
        ElementsAre("4 /w/one"));
    EXPECT_THAT(textsOf(resultOfOutput(requestFor(NEBSourceControlRequestStatus, "/w"),
                                       " M one\n M no line end")),
                ElementsAre("4 /w/one", "4 /w/no line end"));
}

TEST(StatusOperation, WithoutOutputIsAnEmptyResult) {
    EXPECT_THAT(textsOf(resultOfOutput(requestFor(NEBSourceControlRequestStatus, "/w"), "")),
                IsEmpty());
    EXPECT_THAT(
        textsOf(resultOfOutput(requestFor(NEBSourceControlRequestStatus, "/w"), std::nullopt)),
        IsEmpty());
    EXPECT_THAT(textsOf(resultOfOutput(requestFor(NEBSourceControlRequestStatus, "/w"), "\n\n")),
                IsEmpty());
}

TEST(StatusOperation, OfAnInvalidSourceTreeHasNoRecords) {
    auto request = requestFor(NEBSourceControlRequestStatus, "/w");
    request->sourceTree->isValid = false;
    EXPECT_THAT(textsOf(resultOfOutput(request, " M a.txt\n")), IsEmpty());
    request->sourceTree = nullptr;
    EXPECT_THAT(textsOf(resultOfOutput(request, " M a.txt\n")), IsEmpty());
}

TEST(StatusOperation, WithoutALocationHasThePathsOfGit) {
    EXPECT_THAT(textsOf(resultOfOutput(requestFor(NEBSourceControlRequestStatus, std::nullopt),
                                       " M a.txt\nM  b\n")),
                ElementsAre("4 a.txt", "4 b"));
}

TEST(StatusOperation, ReplacesInvalidBytes) {
    EXPECT_THAT(textsOf(resultOfOutput(requestFor(NEBSourceControlRequestStatus, "/w"),
                                       "?? J\xFC\n?? b\n")),
                ElementsAre("256 /w/J\xEF\xBF\xBD", "256 /w/b"));
}

}  // namespace
}  // namespace neb
