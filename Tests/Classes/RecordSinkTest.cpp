// A record sink gets the same records as a result, for each type of request.

#include <gmock/gmock.h>

#include "Classes/Configuration/RequestMatrix.h"
#include "GitOperations/GitBlame.h"
#include "GitOperations/GitBranch.h"
#include "GitOperations/GitDiff.h"
#include "GitOperations/GitList.h"
#include "GitOperations/GitLog.h"
#include "GitOperations/GitRemote.h"
#include "GitOperations/GitStatus.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

using std::string_literals::operator""s;
using test::HasErrorClass;
using test::outcomeOf;
using test::outcomeWithSink;
using test::preparedRequest;
using test::RequestCase;
using test::requestFor;
using test::requestMatrix;
using test::StandIn;
using test::TemporaryFolder;
using test::TestRepository;
using test::World;
using testing::ElementsAre;

// ---- each type --------------------------------------------------------------------------------

class WithSink : public test::HygienicTest, public testing::WithParamInterface<RequestCase> {};

TEST_P(WithSink, GetsTheRecordsOfTheResult) {
    const World plain;
    const World streamed;
    EXPECT_EQ(outcomeWithSink(streamed, preparedRequest(streamed, GetParam())),
              outcomeOf(plain, preparedRequest(plain, GetParam())));
}

INSTANTIATE_TEST_SUITE_P(EachType, WithSink, testing::ValuesIn(requestMatrix()),
                         [](const auto& tested) { return tested.param.name; });

// ---- outputs that arrive in parts -------------------------------------------------------------

struct OutputCase {
    const char* name;
    /// Returns an operation that parses the output.
    std::shared_ptr<NEBSourceControlTaskOperation> (*make)();
    std::string output;
};

template <typename Op>
std::shared_ptr<NEBSourceControlTaskOperation> make() {
    auto request = requestFor(NEBSourceControlRequestStatus, "/w");
    request->options = NEBDictionary{{NEBSourceControlRequestOptionDiffFileNameAndStatusOnly, true},
                                     {NEBSourceControlRequestOptionLogOutputFilesChanged, true}};
    return std::make_shared<Op>(request);
}

const std::vector<OutputCase> outputCases{
    {"Status", make<GitStatusOperation>, " M a\n?? b \xE4\nR  c -> d\n"},
    {"StatusOfOneFile", make<GitStatusOperation>, "?? b\n"},
    {"Diff", make<GitDiffOperation>, "M\ta\nR100\tb\tc\n"},
    {"Blame", make<GitBlameOperation>,
     "1234567890123456\t(  Ann\t2020-09-13 17:28:20 +0100\t1)one\n"
     "1234567890123456\t(Bob \xE4\t2020-09-13 17:28:20 +0100\t2)two\n"},
    {"BlameOfOneLine", make<GitBlameOperation>,
     "12345678\t(Ann\t2020-09-13 17:28:20 +0100\t1)one\n"},
    {"ALineThatIsNoRow", make<GitBlameOperation>, "12345678 \xE4\r\n"},
    {"Branches", make<GitListBranchesOperation>, "* main\n  topic\n"},
    {"RemoteBranches", make<GitListRemoteBranchesOperation>, "1234567890123\trefs/heads/a\n"},
    {"Remotes", make<GitListStandardRemotesOperation>, "o\tu (fetch)\no\tu (push)\n"},
    {"List", make<GitListFilesOperation>,
     "100644 blob 1\ta\0\0100644 blob 1\t\xE4\0004 tree 1\tb\0"s},
    {"ListWithoutLastNUL", make<GitListFilesOperation>, "100644 blob 1\ta\0004 tree 1\tb"s},
    {"Log", make<GitLogOperation>,
     "\0a1\nAnn\na@x\n1\nfirst\n\x01\n\nM\ta\n\n\0a2\nBob \xE4\nb@x\n2\nsecond \x01 \n\x01\n"s},
};

class ArrivingOutput : public testing::TestWithParam<OutputCase> {};

TEST_P(ArrivingOutput, HasTheSameRecordsHoweverItIsCut) {
    const std::string& output = GetParam().output;
    const auto whole = GetParam().make();
    whole->setData(output);
    whole->parseData();
    ASSERT_TRUE(whole->result());
    for (std::size_t step = 1; step < output.size(); ++step) {
        const auto operation = GetParam().make();
        const auto parser = operation->makeRecordParser();
        NEBSourceControlResult records;
        std::string buffer;
        for (std::size_t begin = 0; begin < output.size(); begin += step) {
            buffer += output.substr(begin, step);
            buffer.erase(0, parser->parse(buffer, 0, output.size(), records));
        }
        parser->parseToEnd(buffer, 0, records);
        ASSERT_EQ(records, *whole->result()) << "in parts of " << step << " bytes";
    }
}

TEST(ArrivingStatus, LeavesTheTextsOfEarlierRecordsWhereTheyAre) {
    GitStatusLines lines("/a/folder/with/a/long/name");
    const auto record = lines.recordOf("?? first.c");
    const NEBValue path = record->value(NEBSourceControlOperationPathKey);
    const char* const place = path.string()->data();
    for (int i = 0; i < 10000; ++i) {
        static_cast<void>(lines.recordOf("?? a/file/" + std::to_string(i)));
    }
    EXPECT_EQ(path.string()->data(), place) << "another thread may read it";
    EXPECT_EQ(path.string(), "/a/folder/with/a/long/name/first.c");
}

INSTANTIATE_TEST_SUITE_P(EachList, ArrivingOutput, testing::ValuesIn(outputCases),
                         [](const auto& tested) { return tested.param.name; });

// ---- logs whose commits come slowly -----------------------------------------------------------

/// Returns the block of a commit as git writes it, from the line end of the previous one on.
std::string block(std::string_view message, bool isFirst = false) {
    return (isFirst ? ""s : "\n"s) + "\0a1\nAnn\na@x\n1\n"s + std::string(message) + "\n\x01";
}

std::vector<std::string> messagesOf(const NEBSourceControlResult& records) {
    std::vector<std::string> messages;
    for (const NEBDictionary& record : records) {
        messages.push_back(record.value(NEBSourceControlOperationMessageKey).description());
    }
    return messages;
}

/// Parses what git has written so far, in parts that it wrote at once, and returns the messages.
std::vector<std::string> messagesOfParts(const std::vector<std::string>& parts) {
    auto request = requestFor(NEBSourceControlRequestLog, "/w");
    request->files = test::valuesOf({"rare"});
    GitLogOperation operation(request);
    operation.setRecordSink([](const NEBSourceControlResult&) {});
    const auto parser = operation.makeRecordParser();
    NEBSourceControlResult records;
    std::string buffer;
    for (const std::string& part : parts) {
        buffer += part;
        const std::size_t position = parser->parse(buffer, 0, 1000, records);
        buffer.erase(0, parser->parseWrittenPiece(buffer, position, records));
    }
    return messagesOf(records);
}

TEST(SlowLog, ACommitIsDeliveredBeforeTheNextOneIsFound) {
    EXPECT_THAT(messagesOfParts({block("one", true)}), ElementsAre("one"));
    EXPECT_THAT(messagesOfParts({block("one", true) + "\n\nM\trare\n"}), ElementsAre("one"));
    EXPECT_THAT(messagesOfParts({block("one", true), block("two"), block("three") + block("four")}),
                ElementsAre("one", "two", "three", "four"));
}

TEST(SlowLog, AFullBufferIsNotTheEndOfACommit) {
    for (const bool isFirst : {true, false}) {
        const std::size_t header = block("", isFirst).size() - 2;
        const std::string message = std::string(4095 - header, 'x') + "\x01 and the rest";
        const std::string commit = block(message, isFirst);
        ASSERT_EQ(commit[4095], '\x01');
        std::vector<std::string> parts{commit.substr(0, 4096)};
        if (!isFirst) {
            parts.insert(parts.begin(), block("first", true));
        }
        EXPECT_EQ(messagesOfParts(parts).size(), parts.size() - 1);
        parts.push_back(commit.substr(4096));
        EXPECT_EQ(messagesOfParts(parts).size(), parts.size() - 1);
    }
}

TEST(SlowLog, AHeaderWithoutItsEndIsNotACommit) {
    EXPECT_THAT(messagesOfParts({block("one", true).substr(0, 15)}), ElementsAre());
    EXPECT_THAT(messagesOfParts({block("one", true), "\n"}), ElementsAre("one"));
}

class LogWithSink : public test::HygienicTest {};

/// The stand-in for git waits for a file before it writes the second commit.
TEST_F(LogWithSink, GetsARareCommitWhileGitLooksForTheNext) {
    const TemporaryFolder folder;
    folder.writeProgram("git",
                        "#!/bin/sh\n[ -z \"$GIT_FLUSH\" ] || exit 1\n"
                        "printf '\\000a1\\nAnn\\na@x\\n1\\none\\n\\001'\n"
                        "while ! [ -e " +
                            folder.path("seen") +
                            " ]; do sleep 0.01; done\n"
                            "printf '\\n\\000a2\\nAnn\\na@x\\n1\\ntwo\\n\\001'\n");
    auto request = requestFor(NEBSourceControlRequestLog, folder.path());
    request->files = test::valuesOf({"rare"});
    StandIn<GitLogOperation> operation(folder.path("git"), request);
    std::vector<std::vector<std::string>> batches;
    operation.setRecordSink([&](const NEBSourceControlResult& records) {
        batches.push_back(messagesOf(records));
        folder.write("seen", "");
    });
    operation.start();
    EXPECT_EQ(operation.error(), std::nullopt);
    EXPECT_THAT(batches, ElementsAre(ElementsAre("one"), ElementsAre("two")));
}

TEST_F(LogWithSink, GetsNoHalfCommitOfAGitThatDied) {
    const TemporaryFolder folder;
    folder.writeProgram("git",
                        "#!/bin/sh\nprintf '\\000a1\\nAnn\\na@x\\n1\\none\\n\\001\\n\\000a2\\nAn'\n"
                        "kill -9 $$\n");
    StandIn<GitLogOperation> operation(folder.path("git"),
                                       requestFor(NEBSourceControlRequestLog, folder.path()));
    NEBSourceControlResult records;
    operation.setRecordSink([&records](const NEBSourceControlResult& batch) {
        records.insert(records.end(), batch.begin(), batch.end());
    });
    operation.start();
    EXPECT_THAT(operation.error(), HasErrorClass(NEBSourceControlKilledErrorClass));
    EXPECT_THAT(messagesOf(records), ElementsAre("one"));
}

TEST_F(LogWithSink, ReportsOmittedCommits) {
    const TestRepository repository;
    repository.commitFile("a", "1", "first");
    const std::string tree = repository.git({"rev-parse", "HEAD^{tree}"});
    const std::string person = " Ann <a@x> 1 +0000\n";
    const std::string commit =
        repository.gitWithInput({"hash-object", "-t", "commit", "-w", "--stdin"},
                                "tree " + tree + "parent " + repository.git({"rev-parse", "HEAD"}) +
                                    "author" + person + "committer" + person + "\nnot \xE4\n");
    repository.git({"reset", "--quiet", commit.substr(0, commit.find('\n'))});
    NEBSourceControlResult records;
    const auto operation =
        test::performWithSink(requestFor(NEBSourceControlRequestLog, repository.path()), records);
    EXPECT_THAT(messagesOf(records), ElementsAre("first"));
    EXPECT_EQ(operation->omittedRevisions().size(), 1U);
}

}  // namespace
}  // namespace neb
