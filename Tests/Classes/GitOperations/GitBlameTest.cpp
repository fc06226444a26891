#include "GitOperations/GitBlame.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <sstream>

#include "GitController.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Support/HygienicTest.h"
#include "Support/Matchers.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

using test::HasErrorClass;
using test::requestFor;
using test::TestRepository;
using testing::ElementsAre;
using testing::IsEmpty;

// ---- the command ------------------------------------------------------------------------------

std::shared_ptr<NEBSourceControlRequest> blameRequest(NEBValue revision,
                                                      std::string location = "/w",
                                                      std::vector<NEBValue> files = {"/w/a.c"}) {
    auto request = requestFor(NEBSourceControlRequestBlame, std::move(location));
    request->startingRevision = std::move(revision);
    request->files = std::move(files);
    return request;
}

TEST(BlameCommand, UsesTheWorkingCopyForSymbolicRevisions) {
    const NEBValue names[] = {
        {},
        NEBSourceControlLocalRevisionName,
        NEBSourceControlInMemoryRevisionName,
        NEBSourceControlHEADRevisionName,
        NEBSourceControlBASERevisionName,
    };
    for (const NEBValue& name : names) {
        EXPECT_THAT(GitBlameOperation(blameRequest(name)).arguments(),
                    ElementsAre("blame", "-c", "-l", "--", "/w/a.c"))
            << name.description();
    }
}

TEST(BlameCommand, PassesOtherRevisionsUnchanged) {
    for (const char* revision : {"0123456789abcdef", "v1.0", "topic", "HEAD", "BASE", ""}) {
        EXPECT_THAT(GitBlameOperation(blameRequest(revision)).arguments(),
                    ElementsAre("blame", "-c", "-l", revision, "--", "/w/a.c"));
    }
}

TEST(BlameCommand, BeginsWithTheDefaultArguments) {
    auto request = blameRequest("v1");
    request->options = NEBDictionary{{NEBSourceControlRequestOptionRepositoryPath, "/r"},
                                     {NEBSourceControlRequestOptionWorkingCopyPath, "/w"}};
    EXPECT_THAT(
        GitBlameOperation(request).arguments(),
        ElementsAre("--git-dir=/r", "--work-tree=/w", "blame", "-c", "-l", "v1", "--", "/w/a.c"));
    EXPECT_EQ(GitBlameOperation(request).currentDirectoryPath(), "/w");
}

TEST(BlameCommand, NamesAFileOnlyIfThereIsExactlyOne) {
    auto request = blameRequest("v1", "/w", {});
    EXPECT_THAT(GitBlameOperation(request).arguments(), ElementsAre("blame", "-c", "-l", "v1"));
    request->files = {NEBValue("/w/a"), NEBValue("/w/b")};
    EXPECT_THAT(GitBlameOperation(request).arguments(), ElementsAre("blame", "-c", "-l", "v1"));
    request->files.reset();
    EXPECT_THAT(GitBlameOperation(request).arguments(), ElementsAre("blame", "-c", "-l", "v1"));
}

// ---- reading what git printed -----------------------------------------------------------------

/// Returns a record as "revision|author|date|number", with "-" for absent values.
std::string textOf(const NEBDictionary& record) {
    std::string text;
    for (const NEBConstant key :
         {NEBSourceControlOperationRevisionKey, NEBSourceControlOperationAuthorKey,
          NEBSourceControlOperationDateKey, NEBSourceControlOperationLineNumberKey}) {
        text += (text.empty() ? "" : "|") +
                (record.contains(key) ? record.value(key).description() : "-");
    }
    return text;
}

std::vector<std::string> linesOf(Data output) {
    GitBlameOperation operation(blameRequest({}));
    operation.setData(std::move(output));
    operation.parseData();
    std::vector<std::string> texts;
    for (const NEBDictionary& record : operation.result().value()) {
        texts.push_back(textOf(record));
    }
    return texts;
}

const std::string revision = "0123456789abcdef0123456789abcdef01234567";
const std::string date = "2020-09-13 17:28:20 +0100";
const std::string nothing = "-|-|-|-";

/// The last line has a line end too; the empty text after it becomes a record.
TEST(BlameOutput, HasARecordPerLineAndAnEmptyOneAtTheEnd) {
    EXPECT_THAT(linesOf(revision + "\t(Ann Example\t" + date + "\t1)one\n" +  //
                        revision + "\t(Bob\t" + date + "\t2)two\n" +          //
                        revision + "\t(Ann Example\t" + date + "\t3)\n"),
                ElementsAre("0123456789ab|Ann Example|2020-09-13T16:28:20Z|1",
                            "0123456789ab|Bob|2020-09-13T16:28:20Z|2",
                            "0123456789ab|Ann Example|2020-09-13T16:28:20Z|3", nothing));
    EXPECT_THAT(linesOf(revision + "\t(Ann\t" + date + "\t1)no line end"),
                ElementsAre("0123456789ab|Ann|2020-09-13T16:28:20Z|1"));
    EXPECT_THAT(linesOf(revision + "\t(Ann\t" + date + "\t1)one line\n"),
                ElementsAre("0123456789ab|Ann|2020-09-13T16:28:20Z|1", nothing));
}

TEST(BlameOutput, WithoutTextHasNoResult) {
    for (const std::optional<Data>& output : {std::optional<Data>(), std::optional<Data>("")}) {
        GitBlameOperation operation(blameRequest({}));
        operation.setData(output);
        operation.parseData();
        EXPECT_EQ(operation.result(), std::nullopt);
    }
}

struct BlameLine {
    const char* name;
    std::string line;
    std::string record;
};

class BlameLines : public testing::TestWithParam<BlameLine> {};

TEST_P(BlameLines, AreParsedAsFarAsPossible) {
    EXPECT_THAT(linesOf(GetParam().line + "\n\n"),
                ElementsAre(GetParam().record, nothing, nothing));
}

INSTANTIATE_TEST_SUITE_P(
    Lines, BlameLines,
    testing::Values(
        BlameLine{"RevisionOf12Characters", "0123456789ab\t(A\t" + date + "\t1)x",
                  "0123456789ab|A|2020-09-13T16:28:20Z|1"},
        BlameLine{"ShortRevision", "0123456\t(A\t" + date + "\t1)x",
                  "0123456|A|2020-09-13T16:28:20Z|1"},
        BlameLine{"PaddedAuthorLosesTheBlanksInFront", "r\t(        Al\t" + date + "\t1)x",
                  "r|Al|2020-09-13T16:28:20Z|1"},
        BlameLine{"BlanksBehindTheAuthorStay", "r\t( Al  \t" + date + "\t1)x",
                  "r|Al  |2020-09-13T16:28:20Z|1"},
        BlameLine{"SpacesOfUnicodeInFrontOfTheAuthorGoToo",
                  "r\t( \xC2\xA0\xE3\x80\x80"
                  "Al\t" +
                      date + "\t1)x",
                  "r|Al|2020-09-13T16:28:20Z|1"},
        BlameLine{"AuthorWithParentheses", "r\t(J\xC3\xBCrgen (Team)\t" + date + "\t1)x",
                  "r|J\xC3\xBCrgen (Team)|2020-09-13T16:28:20Z|1"},
        BlameLine{"AuthorThatBeginsWithAParenthesis", "r\t((Al)\t" + date + "\t1)x",
                  "r|(Al)|2020-09-13T16:28:20Z|1"},
        // The rest of the name is at the position of the date.
        BlameLine{"AuthorWithATAB", "r\t(Al\tSmith\t" + date + "\t1)x",
                  "r|Al|-|2020-09-13 17:28:20 +0100\t1"},
        // Only white space precedes the date then, including the TAB.
        BlameLine{"AuthorWithoutAName", "r\t(          \t" + date + "\t1)x",
                  "r|2020-09-13 17:28:20 +0100|-|-"},
        BlameLine{"DateThatIsNone", "r\t(A\t6 years ago\t1)x", "r|A|-|1"},
        BlameLine{"NoDate", "r\t(A\t\t1)x", "r|A|-|1"},
        BlameLine{"LineNumberIsText", "r\t(A\t" + date + "\t 007)x",
                  "r|A|2020-09-13T16:28:20Z| 007"},
        BlameLine{"ContentWithSeparators", "r\t(A\t" + date + "\t1)a\t(b)\tc) d",
                  "r|A|2020-09-13T16:28:20Z|1"},
        BlameLine{"ContentWithOtherLineEnds",
                  "r\t(A\t" + date +
                      "\t1)a\r\xE2\x80\xA8"
                      "b\r",
                  "r|A|2020-09-13T16:28:20Z|1"},
        BlameLine{"NoRevision", "\t(A\t" + date + "\t1)x", "-|A|2020-09-13T16:28:20Z|1"},
        BlameLine{"NoParenthesis", "r\tA\t" + date + "\t1)x", "r|A|2020-09-13T16:28:20Z|1"},
        BlameLine{"NoEndOfTheNumber", "r\t(A\t" + date + "\t12", "r|A|2020-09-13T16:28:20Z|12"},
        BlameLine{"OnlyARevision", "r", "r|-|-|-"}, BlameLine{"OnlyATAB", "\t", nothing},
        BlameLine{"OnlyTheBeginning", "r\t(", "r|-|-|-"},
        BlameLine{"NoNumber", "r\t(A\t" + date + "\t)x", "r|A|2020-09-13T16:28:20Z|-"},
        BlameLine{"NotUTF8", "r\t(J\xFCrgen\t" + date + "\t1)\xE4",
                  "r|J\xEF\xBF\xBDrgen|2020-09-13T16:28:20Z|1"}),
    [](const auto& parameter) { return parameter.param.name; });

// ---- real files -------------------------------------------------------------------------------

class BlameOfRepository : public test::HygienicTest {
protected:
    static std::shared_ptr<NEBSourceControlOperation> run(
        const std::shared_ptr<NEBSourceControlRequest>& request) {
        auto operation = GitController().operationForRequest(request);
        operation->start();
        return operation;
    }
    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> blame(const char* file,
                                                                   NEBValue of = {}) const {
        return run(blameRequest(std::move(of), repository.path(), {repository.path(file)}));
    }
    static std::vector<std::string> textsOf(const NEBSourceControlOperation& operation) {
        EXPECT_EQ(operation.error(), std::nullopt);
        std::vector<std::string> texts;
        for (const NEBDictionary& record : operation.result().value()) {
            texts.push_back(textOf(record));
        }
        return texts;
    }
    void commitAs(const char* name, const char* when, const char* file,
                  std::string_view bytes) const {
        ::setenv("GIT_AUTHOR_DATE", when, 1);
        repository.write(file, bytes);
        repository.git({"add", "--", file});
        repository.git({"commit", "-qm", "m", "--author", std::string(name) + " <a@x>"});
        ::setenv("GIT_AUTHOR_DATE", "2020-09-13T12:26:40Z", 1);
    }
    [[nodiscard]] std::string head() const {
        return repository.git({"rev-parse", "HEAD"}).substr(0, 12);
    }

    const TestRepository repository;
};

/// Returns the same annotation from the porcelain format.
std::vector<std::string> porcelainBlame(const TestRepository& repository, const char* file) {
    std::istringstream stream(repository.git({"blame", "--line-porcelain", "--", file}));
    std::vector<std::string> texts;
    std::string revisionAndNumber;
    std::string author;
    for (std::string line; std::getline(stream, line);) {
        if (line.starts_with("author ")) {
            author = line.substr(7);
        } else if (line.starts_with("author-time ")) {
            const NEBDate when(std::chrono::seconds(std::stoll(line.substr(12))));
            std::istringstream words(revisionAndNumber);
            std::string name;
            std::string original;
            std::string number;
            words >> name >> original >> number;
            std::string text = name.substr(0, 12);
            text.append("|").append(author).append("|").append(textOfDate(when)).append("|");
            texts.push_back(text + number);
        } else if (!line.starts_with('\t') && line.find_first_not_of("0123456789abcdef") == 40) {
            revisionAndNumber = line;
        }
    }
    texts.push_back(nothing);
    return texts;
}

TEST_F(BlameOfRepository, EqualsThePorcelainFormat) {
    std::string text = "one\n";
    const char* names[] = {
        "Ann Example", "J\xC3\xBCrgen (Team)",     "Al",
        "x) y (z",     "\xE6\x97\xA5\xE6\x9C\xAC", "A name that is rather long for a column"};
    const char* dates[] = {"2001-02-03T04:05:06+0530", "@4116033490 -0330",
                           "1970-01-01T00:00:01Z",     "1999-12-31T23:59:59-1200",
                           "2021-03-14T02:30:00+1400", "@253402300800 +0545"};
    for (int i = 0; i < 6; ++i) {
        text += std::string("line ") + names[i] + "\twith\t(TABs)\r\n";
        commitAs(names[i], dates[i], "a.txt", text);
    }
    repository.write("a.txt", "not committed yet\n" + text);
    for (const char* zone : {"America/New_York", "Asia/Kolkata", "UTC"}) {
        ::setenv("TZ", zone, 1);
        const auto operation = blame("a.txt");
        ::unsetenv("TZ");
        auto texts = textsOf(*operation);
        const auto expected = porcelainBlame(repository, "a.txt");
        ASSERT_EQ(texts.size(), 9U);
        EXPECT_THAT(texts[0], testing::MatchesRegex("0{12}\\|Not Committed Yet\\|20.*Z\\|1"));
        EXPECT_TRUE(std::equal(texts.begin() + 1, texts.end(), expected.begin() + 1))
            << testing::PrintToString(texts);
    }
}

TEST_F(BlameOfRepository, DatesUncommittedLinesNow) {
    commitAs("Ann", "2001-02-03T04:05:06+0530", "a", "x\n");
    repository.write("a", "x\nnew\n");
    const auto before = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    ::setenv("TZ", "America/St_Johns", 1);
    const auto operation = blame("a");
    ::unsetenv("TZ");
    const auto after = std::chrono::system_clock::now();
    const NEBDate when =
        operation->result()->at(1).value(NEBSourceControlOperationDateKey).date().value();
    EXPECT_GE(when, before);
    EXPECT_LE(when, after);
}

TEST_F(BlameOfRepository, UsesTheFileAtTheRevision) {
    commitAs("Ann", "2001-02-03T04:05:06Z", "a", "x\n");
    const std::string first = head();
    commitAs("Bob", "2002-02-03T04:05:06Z", "a", "x\ny\n");
    const std::string second = head();
    repository.write("a", "z\n");
    EXPECT_THAT(textsOf(*blame("a", NEBValue(first))),
                ElementsAre(first + "|Ann|2001-02-03T04:05:06Z|1", nothing));
    EXPECT_THAT(textsOf(*blame("a", "HEAD")),
                ElementsAre(first + "|Ann|2001-02-03T04:05:06Z|1",
                            second + "|Bob|2002-02-03T04:05:06Z|2", nothing));
    EXPECT_THAT(textsOf(*blame("a", NEBSourceControlHEADRevisionName)),
                ElementsAre(testing::HasSubstr("000000000000|Not Committed Yet|"), nothing))
        << "the host's name stands for the working copy";
}

TEST_F(BlameOfRepository, DoesNotDependOnTheUsersConfiguration) {
    commitAs("Ann", "2001-02-03T04:05:06Z", "a", "x\n");
    const std::string first = head();
    for (const auto& [key, value] : std::initializer_list<std::pair<const char*, const char*>>{
             {"blame.date", "relative"},
             {"blame.showEmail", "true"},
             {"blame.blankBoundary", "true"},
             {"blame.coloring", "repeatedLines"},
             {"color.ui", "always"},
             {"log.date", "unix"}}) {
        repository.git({"config", key, value});
    }
    EXPECT_THAT(textsOf(*blame("a")), ElementsAre(first + "|Ann|2001-02-03T04:05:06Z|1", nothing));
}

TEST_F(BlameOfRepository, KeepsAllLinesOfBinaryContent) {
    commitAs("Ann", "2001-02-03T04:05:06Z", "latin", "J\xFCrgen\nplain\n\xE4");
    EXPECT_THAT(
        textsOf(*blame("latin")),
        ElementsAre(head() + "|Ann|2001-02-03T04:05:06Z|1", head() + "|Ann|2001-02-03T04:05:06Z|2",
                    head() + "|Ann|2001-02-03T04:05:06Z|3", nothing));
}

TEST_F(BlameOfRepository, OfAnEmptyFileHasNoResult) {
    commitAs("Ann", "2001-02-03T04:05:06Z", "empty", "");
    const auto operation = blame("empty");
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(operation->result(), std::nullopt);
}

TEST_F(BlameOfRepository, ReportsAnUnknownFileOrRevision) {
    commitAs("Ann", "2001-02-03T04:05:06Z", "a", "x\n");
    EXPECT_THAT(blame("nosuch")->error(), HasErrorClass(NEBSourceControlPathUnknownErrorClass));
    EXPECT_EQ(blame("nosuch")->result(), std::nullopt);
    EXPECT_THAT(blame("a", "nosuch")->error(),
                HasErrorClass(NEBSourceControlRevisionUnknownErrorClass));
}

}  // namespace
}  // namespace neb
