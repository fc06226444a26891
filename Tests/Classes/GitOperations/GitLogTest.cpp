#include "GitOperations/GitLog.h"

#include <gmock/gmock.h>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Support/Matchers.h"
#include "Support/RequestRun.h"
#include "Support/TemporaryFolder.h"

namespace neb {
namespace {

using test::requestFor;
using testing::ElementsAre;
using testing::IsEmpty;

using Arguments = std::vector<std::string>;

std::shared_ptr<NEBSourceControlRequest> logRequest(bool withFiles) {
    auto request = requestFor(NEBSourceControlRequestLog, "/w");
    request->options =
        NEBDictionary{{NEBSourceControlRequestOptionLogOutputFilesChanged, withFiles}};
    return request;
}

/// Returns the fields of a record, one per line; "files" only if present.
std::string textOf(const NEBDictionary& record) {
    std::string text;
    for (const auto& entry : record) {
        text += entry.value().description() + "|";
    }
    text.pop_back();
    EXPECT_EQ(record.size(), record.contains(NEBSourceControlOperationFilesKey) ? 6U : 5U);
    return text;
}

std::vector<std::string> messagesOf(Data output, bool withFiles = false) {
    GitLogOperation operation(logRequest(withFiles));
    operation.setData(std::move(output));
    operation.parseData();
    std::vector<std::string> texts;
    for (const NEBDictionary& record : operation.result().value()) {
        texts.push_back(textOf(record));
    }
    return texts;
}

/// Returns the output of git for a commit up to the 0x01.
std::string block(std::string_view message, std::string_view seconds = "1600000000",
                  std::string_view revision = "0123456789ab") {
    return std::string(1, '\0') + std::string(revision) + "\nAnn Example\nann@example.org\n" +
           std::string(seconds) + "\n" + std::string(message) + "\x01";
}

const std::string annOn = "0123456789ab|Ann Example|ann@example.org|";
const std::string ann = annOn + "2020-09-13T12:26:40Z|";

TEST(LogOutput, HasARecordPerCommitInOrder) {
    EXPECT_THAT(messagesOf(block("one\n") + "\n" + block("two\n\nbody\n", "1", "abcdefabcdef")),
                ElementsAre(ann + "one",
                            "abcdefabcdef|Ann Example|ann@example.org|"
                            "1970-01-01T00:00:01Z|two\n\nbody"));
}

TEST(LogOutput, WithoutCommitsIsAnEmptyResult) {
    EXPECT_THAT(messagesOf(""), IsEmpty());
    EXPECT_THAT(messagesOf(std::string(3, '\0')), IsEmpty());
    GitLogOperation operation(logRequest(false));
    operation.parseData();
    EXPECT_EQ(operation.result(), NEBSourceControlResult{}) << "no data is no reason for no result";
}

TEST(LogOutput, CutsARevisionTo12Characters) {
    const auto revisionOf = [](std::string_view revision) {
        const std::string text = messagesOf(block("m", "1", revision)).at(0);
        return text.substr(0, text.find('|'));
    };
    EXPECT_EQ(revisionOf("0123456789abc"), "0123456789ab");
    EXPECT_EQ(revisionOf("0123456789abcdef0123456789abcdef01234567"), "0123456789ab");
    EXPECT_EQ(revisionOf("0123456789ab"), "0123456789ab");
    EXPECT_EQ(revisionOf("0123456"), "0123456");
}

TEST(LogOutput, RemovesLineEndsAroundAMessage) {
    const std::pair<std::string, std::string> messages[] = {
        {"subject\n", "subject"},
        {"no line end", "no line end"},
        {"", ""},
        {"\n", ""},
        {"\n\n\n", ""},
        {"\n\nleading lines\n", "leading lines"},
        {"a\n\n\nb\n\n\n", "a\n\n\nb"},
        {" blanks stay \n", " blanks stay "},
        {"a\r\nb\r\n", "a\r\nb"},
        {"M\tsrc/a.c\nlooks like files\n", "M\tsrc/a.c\nlooks like files"},
        {"\ttabs\t\n", "\ttabs\t"},
        {"a\xE2\x80\xA8"
         "b\xE2\x80\xA8\n",
         "a\xE2\x80\xA8"
         "b"},
        {"\xC2\x85\v\f\r\xE2\x80\xA9x\xE2\x80\xA9\r\f\v\xC2\x85\n", "x"},
        {"\xE2\x80\xA7stays, no line end\xE2\x80\xAA",
         "\xE2\x80\xA7stays, no line end\xE2\x80\xAA"},
        {"12345\nann@example.org\n", "12345\nann@example.org"},
    };
    for (const auto& [printed, kept] : messages) {
        EXPECT_THAT(messagesOf(block(printed)), ElementsAre(ann + kept)) << printed;
        EXPECT_THAT(messagesOf(block(printed) + "\n\n", true), ElementsAre(ann + kept)) << printed;
    }
}

TEST(LogOutput, ParsesTheDateAsA32BitNumber) {
    const std::pair<const char*, const char*> dates[] = {
        {"0", "1970-01-01T00:00:00Z"},
        {"1", "1970-01-01T00:00:01Z"},
        {"-1", "1969-12-31T23:59:59Z"},
        {"+7", "1970-01-01T00:00:07Z"},
        {"  12", "1970-01-01T00:00:12Z"},
        {"\t12", "1970-01-01T00:00:12Z"},
        {"12x9", "1970-01-01T00:00:12Z"},
        {"12 9", "1970-01-01T00:00:12Z"},
        {"12.9", "1970-01-01T00:00:12Z"},
        {"", "1970-01-01T00:00:00Z"},
        {"x", "1970-01-01T00:00:00Z"},
        {"-", "1970-01-01T00:00:00Z"},
        {"2147483647", "2038-01-19T03:14:07Z"},
        // The time is clamped to 32 bits.
        {"2147483648", "2038-01-19T03:14:07Z"},
        {"4102444800", "2038-01-19T03:14:07Z"},
        {"99999999999999999999999999", "2038-01-19T03:14:07Z"},
        {"-2147483648", "1901-12-13T20:45:52Z"},
        {"-2147483649", "1901-12-13T20:45:52Z"},
        {"-99999999999999999999999999", "1901-12-13T20:45:52Z"},
        {"00000000000000000000000000000007", "1970-01-01T00:00:07Z"},
    };
    for (const auto& [seconds, date] : dates) {
        EXPECT_THAT(messagesOf(block("m", seconds)), ElementsAre(annOn + date + "|m")) << seconds;
    }
}

TEST(LogOutput, ListsTheFilesWithTheirStates) {
    EXPECT_THAT(messagesOf(block("m\n") + "\nM\ta.c\nA\tsrc/b c.c\nD\td\nT\tt\nU\tu\nX\tx\n", true),
                ElementsAre(ann + "m|{a.c = 4, src/b c.c = 1, d = 2, t = 4, u = 16, x = 0}"));
    EXPECT_THAT(messagesOf(block("m\n") + "\nM\ta.c\n\n" + block("n\n") + "\nA\tb.c\n", true),
                ElementsAre(ann + "m|{a.c = 4}", ann + "n|{b.c = 1}"));
}

TEST(LogOutput, KeepsTheOldPathOfARenameAndOfACopy) {
    EXPECT_THAT(messagesOf(block("m\n") + "\nR094\told.c\tnew.c\nC100\tfrom\tto\n", true),
                ElementsAre(ann + "m|{old.c = 4096, from = 4096}"));
}

TEST(LogOutput, KeepsTheLaterOfTwoLinesForOnePath) {
    EXPECT_THAT(messagesOf(block("m\n") + "\nM\ta\nA\tb\nD\ta\n", true),
                ElementsAre(ann + "m|{a = 2, b = 1}"));
}

TEST(LogOutput, HasNoFilesKeyWithoutFilesOrWithoutTheOption) {
    EXPECT_THAT(messagesOf(block("m\n") + "\n\n", true), ElementsAre(ann + "m"));
    EXPECT_THAT(messagesOf(block("m\n"), true), ElementsAre(ann + "m"));
    EXPECT_THAT(messagesOf(block("m\n") + "\nM\ta\n", false), ElementsAre(ann + "m"));
}

TEST(LogOutput, LeavesOutAFileLineWithoutATAB) {
    EXPECT_THAT(messagesOf(block("m\n") + "\nnonsense\nM\ta\n\nA\tb\n", true),
                ElementsAre(ann + "m|{a = 4, b = 1}"));
    EXPECT_THAT(messagesOf(block("m\n") + "\nnonsense\n", true), ElementsAre(ann + "m|{}"));
}

/// The header ends with the first such byte, and the list of files begins after the last one. A
/// message with that byte is cut, but its files are correct.
TEST(LogOutput, EndsAMessageAtTheByteThatEndsAHeader) {
    EXPECT_THAT(messagesOf(block("before\x01 after\nM\tnone\n") + "\nM\ta\n", true),
                ElementsAre(ann + "before|{a = 4}"));
    EXPECT_THAT(messagesOf(block("\x01\x01")), ElementsAre(ann));
}

/// The header is also parsed as the list of files then; git always prints the byte.
TEST(LogOutput, UsesABlockWithoutHeaderEndForBothParts) {
    std::string whole = block("m\nM\ta\n");
    whole.pop_back();
    EXPECT_THAT(messagesOf(whole, true), ElementsAre(ann + "m\nM\ta|{a = 4}"));
    EXPECT_THAT(messagesOf(whole, false), ElementsAre(ann + "m\nM\ta"));
}

TEST(LogOutput, TreatsMissingHeaderLinesAsEmpty) {
    using std::string_literals::operator""s;
    EXPECT_THAT(messagesOf("\0abc"s), ElementsAre("abc|||1970-01-01T00:00:00Z|"));
    EXPECT_THAT(messagesOf("\0abc\nAnn\x01\nM\ta"s, true),
                ElementsAre("abc|Ann||1970-01-01T00:00:00Z||{a = 4}"));
    EXPECT_THAT(messagesOf("\0\x01"s), ElementsAre("|||1970-01-01T00:00:00Z|"));
    EXPECT_THAT(messagesOf("\0h\n\n\n5\nm\x01"s), ElementsAre("h|||1970-01-01T00:00:05Z|m"))
        << "an author without a name is no missing line";
    EXPECT_THAT(messagesOf("text before\0h\na\ne\n5\nm\x01"s),
                ElementsAre("text before|||1970-01-01T00:00:00Z|", "h|a|e|1970-01-01T00:00:05Z|m"));
}

TEST(LogOutput, OmitsAndReportsACommitThatIsNotUTF8) {
    using std::string_literals::operator""s;
    const std::string output = block("one\n") + "\n" +
                               block("raw \xE4 byte\n", "1", "0123456789abcdef") + "\n" +
                               "\0abc\nAnn \xE4\na@b\n1\nm\x01\nM\ta\n"s +
                               block("before\x01 \xE4\n", "1", "def") + block("three\n");
    for (const bool withFiles : {false, true}) {
        GitLogOperation operation(logRequest(withFiles));
        operation.setData(output);
        operation.parseData();
        EXPECT_THAT(operation.omittedRevisions(), ElementsAre("0123456789ab", "abc", "def"));
        EXPECT_THAT(messagesOf(output, withFiles), ElementsAre(ann + "one", ann + "three"));
    }
    EXPECT_THAT(messagesOf("\0no header \xE4"s, true), IsEmpty());
}

TEST(LogOutput, QuotesAPathThatIsNotUTF8) {
    const std::pair<std::string, std::string> paths[] = {
        {"lat\xE4.txt", R"("lat\344.txt")"},
        {"\xFF", R"("\377")"},
        {"gr\xC3\xBC\xDF e", R"("gr\303\274\337 e")"},
        {R"("tab\t)"
         "\xE4"
         R"(\001")",
         R"("tab\t\344\001")"},
        {R"("\"quoted\")"
         "\x80\"",
         R"("\"quoted\"\200")"},
        {"gr\xC3\xBC\xC3\x9F", "gr\xC3\xBC\xC3\x9F"},
        {R"("tab\t")", R"("tab\t")"},
    };
    for (const auto& [printed, key] : paths) {
        std::string line = "M\t" + printed + "\nA\tplain \xE2\x80\xA8.c\n";
        EXPECT_THAT(messagesOf(block("m\n") + "\n" + line, true),
                    ElementsAre(ann + "m|{" + key + " = 4, plain \xE2\x80\xA8.c = 1}"));
        line = "R100\t" + printed + "\tnew \xE4\nR050\told\tto \xE4\n";
        EXPECT_THAT(messagesOf(block("m\n") + "\n" + line, true),
                    ElementsAre(ann + "m|{" + key + " = 4096, old = 4096}"));
    }
    EXPECT_THAT(messagesOf(block("m\n") + "\nM\t\xE4\xE2\x80\xA8\n", true),
                ElementsAre(ann + R"(m|{"\344\342\200\250" = 4})"))
        << "a line end of another kind belongs to the name";
    EXPECT_THAT(messagesOf(block("m\n") + "\nM\t\xE4\n", false), ElementsAre(ann + "m"));
}

/// Parses the output as it arrives from a child, in chunks of about this size.
std::vector<std::string> readAhead(const std::string& output, std::size_t pieceSize) {
    GitLogOperation operation(logRequest(true));
    const auto parser = operation.makeRecordParser();
    NEBSourceControlResult records;
    std::size_t position = 0;
    for (std::size_t size = pieceSize; size < output.size(); size += pieceSize) {
        position = parser->parse(output.substr(0, size), position, output.size(), records);
    }
    parser->parseToEnd(output, position, records);
    EXPECT_EQ(operation.omittedRevisions().size(), 1143U);
    std::vector<std::string> texts;
    for (const NEBDictionary& record : records) {
        texts.push_back(textOf(record));
    }
    return texts;
}

TEST(LogOutput, IsTheSameWhenParsedIncrementally) {
    std::string output;
    for (int i = 0; i < 8000; ++i) {
        output += block("message " + std::to_string(i) + (i % 7 == 0 ? " \xE4" : "\n\nbody\n"));
        output += "\nM\tfile" + std::to_string(i % 100) + (i % 5 == 0 ? "\xE4\n" : "\n");
    }
    output += block("one long block\n") + "\n";
    for (int i = 0; i < 50000; ++i) {
        output += "A\tfolder/file" + std::to_string(i) + "\n";
    }
    output += block("the last\n") + "\nD\tfile\n";
    const std::vector<std::string> whole = messagesOf(output, true);
    EXPECT_EQ(whole.size(), 8002 - 1143U);
    for (const std::size_t pieceSize : {70'001U, 300'000U, 1'000'000U}) {
        EXPECT_EQ(readAhead(output, pieceSize), whole) << pieceSize;
    }
    // A chunk may end before or after a NUL byte.
    for (const std::size_t place : {output.rfind('\0'), output.rfind('\0') + 1}) {
        EXPECT_EQ(readAhead(output, place), whole) << place;
    }
}

TEST(LogOutput, IsKeptBesideAnErrorAtTheEnd) {
    const test::TemporaryFolder folder;
    std::string output;
    for (int i = 0; i < 8000; ++i) {
        output += block("message " + std::to_string(i)) + "\n";
    }
    folder.write("log", output);
    const std::string git =
        folder.writeProgram("git", "#!/bin/sh\ncat '" + folder.path("log") +
                                       "'\necho 'fatal: bad object HEAD' >&2\nexit 128\n");
    auto request = logRequest(false);
    request->sourceTree->location = folder.path();
    test::StandIn<GitLogOperation> operation(git, request);
    operation.start();
    EXPECT_EQ(operation.result()->size(), 8000U);
    EXPECT_EQ(operation.error()->errorClass, NEBSourceControlObjectsDamagedErrorClass);
    EXPECT_EQ(*operation.data(), output);
}

TEST(LogOutput, ParsesACommitWithVeryManyFiles) {
    std::string output = block("m\n") + "\n";
    for (int i = 0; i < 200000; ++i) {
        output += "A\tfolder/file" + std::to_string(i) + "\n";
    }
    GitLogOperation operation(logRequest(true));
    operation.setData(std::move(output));
    operation.parseData();
    const NEBDictionary* files =
        operation.result()->at(0).value(NEBSourceControlOperationFilesKey).dictionary();
    EXPECT_EQ(files->size(), 200000U);
    EXPECT_EQ(files->value("folder/file199999").integer(), 1);
}

}  // namespace
}  // namespace neb
