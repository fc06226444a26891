// The log of real repositories, compared record by record with the plumbing commands of git.

#include <gmock/gmock.h>

#include <cstdlib>
#include <map>
#include <sstream>

#include "GitController.h"
#include "GitOperations/GitStatus.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/Text.h"
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

class LogOfRepository : public test::HygienicTest {
protected:
    static std::shared_ptr<NEBSourceControlRequest> logRequest(const TestRepository& repository,
                                                               bool withFiles = true) {
        auto request = requestFor(NEBSourceControlRequestLog, repository.path());
        request->options =
            NEBDictionary{{NEBSourceControlRequestOptionLogOutputFilesChanged, withFiles}};
        return request;
    }
    static std::shared_ptr<NEBSourceControlOperation> run(
        const std::shared_ptr<NEBSourceControlRequest>& request) {
        auto operation = GitController().operationForRequest(request);
        operation->start();
        return operation;
    }
    /// Returns the messages of a log that must have succeeded.
    static std::vector<std::string> messagesOf(
        const std::shared_ptr<NEBSourceControlRequest>& request) {
        const auto operation = run(request);
        EXPECT_EQ(operation->error(), std::nullopt);
        std::vector<std::string> messages;
        for (const NEBDictionary& record : operation->result().value()) {
            messages.emplace_back(*record.value(NEBSourceControlOperationMessageKey).string());
        }
        return messages;
    }
};

// ---- another reading of the same history ------------------------------------------------------

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// Returns "Name <e-mail>" from the line "author Name <e-mail> seconds zone".
std::string identityIn(const std::string& authorLine) {
    return authorLine.substr(7, authorLine.rfind('>') - 6);
}

/// Reads a commit from its raw object, and its files from a comparison of trees.
NEBDictionary recordByPlumbing(const TestRepository& repository, const std::string& commit,
                               bool withFiles) {
    const std::string raw = repository.git({"cat-file", "commit", commit});
    const std::size_t blank = raw.find("\n\n");
    const std::size_t author = raw.find("\nauthor ") + 1;
    const std::string authorLine = raw.substr(author, raw.find('\n', author) - author);
    const std::string seconds = authorLine.substr(authorLine.rfind('>') + 2);
    const std::string mapped =
        linesOf(repository.git({"check-mailmap", identityIn(authorLine)})).at(0);
    const std::size_t bracket = mapped.rfind('<');

    NEBDictionary record;
    record.set(NEBSourceControlOperationRevisionKey, commit.substr(0, 12));
    record.set(NEBSourceControlOperationAuthorKey,
               mapped.substr(0, bracket == 0 ? 0 : bracket - 1));
    record.set(NEBSourceControlOperationAuthorEmailKey,
               mapped.substr(bracket + 1, mapped.size() - bracket - 2));
    record.set(NEBSourceControlOperationDateKey,
               NEBDate(std::chrono::seconds(std::atoll(seconds.c_str()))));
    record.set(NEBSourceControlOperationMessageKey, textByTrimmingLineEnds(raw.substr(blank + 2)));
    if (withFiles) {
        NEBDictionary files;
        for (const std::string& line :
             linesOf(repository.git({"-c", "core.quotePath=false", "diff-tree", "--root", "-r",
                                     "-M", "--no-commit-id", "--name-status", commit}))) {
            const std::size_t tab = line.find('\t');
            files.set(line.substr(tab + 1, line.find('\t', tab + 1) - tab - 1),
                      nebgit_sourceControlStatus(line.substr(0, tab)));
        }
        if (!files.isEmpty()) {
            record.set(NEBSourceControlOperationFilesKey, files);
        }
    }
    return record;
}

void expectLogAsByPlumbing(const TestRepository& repository, const NEBSourceControlResult& log,
                           bool withFiles) {
    const std::vector<std::string> commits = linesOf(repository.git({"rev-list", "HEAD"}));
    ASSERT_EQ(log.size(), commits.size());
    for (std::size_t i = 0; i < commits.size(); ++i) {
        EXPECT_EQ(log[i], recordByPlumbing(repository, commits[i], withFiles)) << commits[i];
    }
}

/// Commits with the exact bytes of message and author.
void commitRaw(const TestRepository& repository, const std::string& author,
               const std::string& message) {
    std::string raw = "tree " + repository.git({"rev-parse", "HEAD^{tree}"});
    raw += "parent " + repository.git({"rev-parse", "HEAD"});
    raw += "author " + author + "\ncommitter Ann Example <ann@example.org> 1600000000 +0000\n\n";
    raw += message;
    std::string commit = repository.gitWithInput(
        {"hash-object", "-t", "commit", "-w", "--stdin", "--literally"}, raw);
    commit.pop_back();
    repository.git({"update-ref", "HEAD", commit});
}

const std::string bob = "Bob <bob@example.org> 1600000100 +0530";

/// Renames, a copy, a merge, an octopus merge, a submodule, names and texts of all kinds.
void makeEventfulHistory(const TestRepository& repository) {
    repository.commitFile(".mailmap", "Ann Proper <ann.proper@example.org> <ann@example.org>\n");
    std::string text;
    for (int i = 0; i < 40; ++i) {
        text += "line " + std::to_string(i) + "\n";
    }
    repository.commitFile("src/old name.c", text, "add\n\nwith a body\n\nof two paragraphs");
    repository.git({"mv", "src/old name.c", "new.c"});
    repository.write("new.c", text + "changed\n");
    repository.git({"commit", "-qam", "rename and change"});
    repository.commitFile("\xC3\xA4\xE6\x97\xA5.txt", "x", "non-ASCII \xC3\xA4\xE6\x97\xA5");
    repository.commitFile("tab\there", "x", "M\tsrc/none.c\nA\tneither\n\nD\tnor this");
    repository.git({"rm", "-q", "new.c"});
    repository.git({"commit", "-qm", "delete"});
    repository.git({"commit", "-q", "--allow-empty", "--allow-empty-message", "-m", ""});
    for (const char* branch : {"one", "two", "three"}) {
        repository.git({"checkout", "-qb", branch, "main"});
        repository.commitFile(branch, branch, std::string("on ") + branch);
    }
    repository.git({"checkout", "-q", "main"});
    repository.git({"merge", "-q", "--no-ff", "-m", "merge of two", "one"});
    repository.git({"merge", "-q", "-m", "octopus", "two", "three"});
    repository.git({"-c", "protocol.file.allow=always", "submodule", "--quiet", "add",
                    repository.path(), "module"});
    repository.git({"commit", "-qm", "add a submodule"});
    commitRaw(repository, "J\xC3\xBCrgen (Team) <j@x> 1600000000 -0330", "umlaut author\n");
    commitRaw(repository, " <anonymous@x> 0 +0000", "no name, no time\n");
    commitRaw(repository, bob, "CRLF\r\n\r\nlines\r\n");
    commitRaw(repository, bob, "U+2028\xE2\x80\xA8 inside and at the end\xE2\x80\xA8");
    commitRaw(repository, bob, "\n\nblank lines in front\n\n\n");
    commitRaw(repository, bob, "");
    commitRaw(repository, "Bob <bob@example.org> 2147483647 +1400", "the last of 32 bits\n");
}

TEST_F(LogOfRepository, EqualsThePlumbingCommands) {
    const TestRepository repository;
    makeEventfulHistory(repository);
    for (const bool withFiles : {true, false}) {
        const auto operation = run(logRequest(repository, withFiles));
        EXPECT_EQ(operation->error(), std::nullopt);
        expectLogAsByPlumbing(repository, operation->result().value(), withFiles);
    }
}

TEST_F(LogOfRepository, DoesNotDependOnTheUsersConfigurationOrTimeZone) {
    const TestRepository repository;
    makeEventfulHistory(repository);
    for (const auto& [key, value] : std::initializer_list<std::pair<const char*, const char*>>{
             {"log.date", "relative"},
             {"log.showSignature", "true"},
             {"log.decorate", "full"},
             {"log.follow", "true"},
             {"log.diffMerges", "first-parent"},
             {"log.mailmap", "false"},
             {"diff.renames", "false"},
             {"core.quotePath", "true"},
             {"core.abbrev", "5"},
             {"color.ui", "always"},
             {"format.pretty", "oneline"},
             {"format.notes", "*"},
             {"i18n.logOutputEncoding", "ISO-8859-1"}}) {
        repository.git({"config", key, value});
    }
    repository.git({"notes", "add", "-m", "a note", "HEAD"});
    ::setenv("TZ", "America/St_Johns", 1);
    const auto operation = run(logRequest(repository));
    ::unsetenv("TZ");
    for (const char* key : {"diff.renames", "log.mailmap", "color.ui", "i18n.logOutputEncoding"}) {
        repository.git({"config", "--unset", key});
    }
    expectLogAsByPlumbing(repository, operation->result().value(), true);
}

TEST_F(LogOfRepository, ListsAll20000Commits) {
    const TestRepository repository;
    constexpr int count = 20000;
    std::string stream;
    for (int i = 1; i <= count; ++i) {
        const std::string number = std::to_string(i);
        const std::string message = "commit " + number + "\n\nM\tnot/a/file\n" + number + "\n";
        stream += "commit refs/heads/main\nauthor Author " + std::to_string(i % 7) + " <a" +
                  std::to_string(i % 7) + "@example.org> " + std::to_string(1600000000 + i) +
                  " +0200\ncommitter C <c@x> " + std::to_string(1600000000 + i) + " +0200\ndata " +
                  std::to_string(message.size()) + "\n" + message + "M 100644 inline folder/file" +
                  std::to_string(i % 300) + "\ndata " + std::to_string(number.size()) + "\n" +
                  number + "\n";
    }
    repository.gitWithInput({"fast-import", "--quiet"}, stream);
    const std::vector<std::string> commits = linesOf(repository.git({"rev-list", "main"}));
    ASSERT_EQ(commits.size(), static_cast<std::size_t>(count));

    const auto operation = run(logRequest(repository));
    EXPECT_EQ(operation->error(), std::nullopt);
    const NEBSourceControlResult& log = operation->result().value();
    ASSERT_EQ(log.size(), commits.size());
    for (std::size_t i = 0; i < log.size(); ++i) {
        const int number = count - static_cast<int>(i);
        const std::string author = std::to_string(number % 7);
        NEBDictionary record{
            {NEBSourceControlOperationRevisionKey, commits[i].substr(0, 12)},
            {NEBSourceControlOperationAuthorKey, "Author " + author},
            {NEBSourceControlOperationAuthorEmailKey, "a" + author + "@example.org"},
            {NEBSourceControlOperationDateKey, NEBDate(std::chrono::seconds(1600000000 + number))},
            {NEBSourceControlOperationMessageKey,
             "commit " + std::to_string(number) + "\n\nM\tnot/a/file\n" + std::to_string(number)},
            {NEBSourceControlOperationFilesKey,
             NEBDictionary{{"folder/file" + std::to_string(number % 300), number <= 300 ? 1 : 4}}}};
        ASSERT_EQ(log[i], record) << number;
    }
}

/// The paths of a log without commits' other text, of a renamed file both.
std::vector<std::string> columnsOf(const std::string& line) {
    std::vector<std::string> columns;
    std::istringstream stream(line);
    for (std::string column; std::getline(stream, column, '\t');) {
        columns.push_back(column);
    }
    return columns;
}

TEST_F(LogOfRepository, QuotesANameThatIsNotUTF8AsGitDoes) {
    const TestRepository repository;
    const std::string names[] = {"lat\xE4.txt",       "\xFF",           "tab\t\xE4",
                                 "\"\xE4\"",          "back\\\xE4",     "\x01\x7F\xE4\x80\r",
                                 "bl ank \xE4 ",      "gr\xC3\xBC\xE4", "x\xE4\xE2\x80\xA8",
                                 "line\nfeed\x1B\xE4"};
    for (const std::string& name : names) {
        repository.commitFile(name, name);
        repository.git({"mv", name, name + "\xFE moved"});
        repository.git({"commit", "-qm", "to other bytes"});
        repository.git({"mv", name + "\xFE moved", "text"});
        repository.git({"commit", "-qm", "to text"});
        repository.git({"mv", "text", name});
        repository.git({"commit", "-qm", "from text"});
    }
    std::vector<std::string> expected;
    for (const std::string& line : linesOf(repository.git(
             {"-c", "core.quotePath=true", "log", "-M", "--format=", "--name-status"}))) {
        expected.push_back(columnsOf(line).at(1));
    }
    const auto operation = run(logRequest(repository));
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_THAT(operation->omittedRevisions(), IsEmpty());
    std::vector<std::string> keys;
    for (const NEBDictionary& record : operation->result().value()) {
        const NEBDictionary* files = record.value(NEBSourceControlOperationFilesKey).dictionary();
        ASSERT_NE(files, nullptr);
        ASSERT_EQ(files->size(), 1U);
        keys.emplace_back(files->begin()->key());
    }
    EXPECT_EQ(keys, expected);
}

// ---- which commits ----------------------------------------------------------------------------

class LogSelection : public LogOfRepository {
protected:
    /// main: a1, a2; topic, from a1: t1.
    LogSelection() {
        repository.commitFile("a", "1", "a1");
        repository.git({"checkout", "-qb", "topic"});
        repository.commitFile("t", "1", "t1");
        repository.git({"checkout", "-q", "main"});
        repository.commitFile("a", "2", "a2");
        repository.git({"tag", "tagtwo"});
        request->sourceTree->location = repository.path();
    }

    const TestRepository repository;
    const std::shared_ptr<NEBSourceControlRequest> request =
        requestFor(NEBSourceControlRequestLog, "");
};

TEST_F(LogSelection, DefaultsToTheCurrentBranch) {
    EXPECT_THAT(messagesOf(request), ElementsAre("a2", "a1"));
    request->startingRevision = NEBSourceControlBASERevisionName;
    EXPECT_THAT(messagesOf(request), ElementsAre("a2", "a1"));
    request->startingRevision = "topic";
    EXPECT_THAT(messagesOf(request), ElementsAre("t1", "a1"));
}

/// Three dots: commits that are reachable from exactly one of the two.
TEST_F(LogSelection, OfARangeHasBothSides) {
    request->startingRevision = "topic";
    request->endingRevision = "tagtwo";
    EXPECT_THAT(messagesOf(request), testing::UnorderedElementsAre("t1", "a2"));
    request->startingRevision = {};
    request->endingRevision = "topic";
    EXPECT_THAT(messagesOf(request), testing::UnorderedElementsAre("t1", "a2"));
    request->endingRevision = "tagtwo";
    EXPECT_THAT(messagesOf(request), IsEmpty()) << "HEAD...tagtwo, which is HEAD";
}

TEST_F(LogSelection, HonoursBranchLimitAndFile) {
    request->options = NEBDictionary{{NEBSourceControlRequestOptionBranch, "topic"}};
    EXPECT_THAT(messagesOf(request), ElementsAre("t1", "a1"));
    request->options = NEBDictionary{{NEBSourceControlRequestOptionLogOutputLimit, 1}};
    EXPECT_THAT(messagesOf(request), ElementsAre("a2"));
    request->options = NEBDictionary{{NEBSourceControlRequestOptionBranch, "topic"}};
    request->files = {NEBValue(repository.path("a"))};
    EXPECT_THAT(messagesOf(request), ElementsAre("a1"));
    request->files = {NEBValue(repository.path("nosuch")), NEBValue(repository.path("a"))};
    EXPECT_THAT(messagesOf(request), IsEmpty()) << "the second file has no say";
}

TEST_F(LogSelection, WorksWithARepositoryPathOnly) {
    request->sourceTree = nullptr;
    request->options =
        NEBDictionary{{NEBSourceControlRequestOptionRepositoryPath, repository.path(".git")}};
    EXPECT_THAT(messagesOf(request), ElementsAre("a2", "a1"));
}

TEST_F(LogSelection, TreatsAFileLiterally) {
    repository.commitFile("x1.c", "1", "plain");
    repository.commitFile("x[1].c", "1", "brackets");
    request->files = {NEBValue(repository.path("x[1].c"))};
    EXPECT_THAT(messagesOf(request), ElementsAre("brackets"));
}

// ---- what goes wrong --------------------------------------------------------------------------

TEST_F(LogOfRepository, ReportsARepositoryWithoutCommits) {
    const TestRepository repository;
    const auto operation = run(logRequest(repository));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlNoCommitsYetErrorClass));
    EXPECT_EQ(operation->result(), NEBSourceControlResult{});
}

TEST_F(LogSelection, ReportsAnUnknownRevision) {
    request->startingRevision = "nosuch";
    const auto operation = run(request);
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlRevisionUnknownErrorClass));
    EXPECT_EQ(operation->error()->code, 4);
    EXPECT_THAT(operation->error()->text, testing::Optional(testing::HasSubstr("nosuch")));
}

TEST_F(LogSelection, IgnoresAWarningOfASuccess) {
    repository.git({"tag", "topic", "HEAD"});
    request->startingRevision = "topic";
    EXPECT_THAT(messagesOf(request), ElementsAre("a2", "a1")) << "git warns that it is ambiguous";
}

TEST_F(LogSelection, HandlesControlBytesInvalidTextAndLateDates) {
    commitRaw(repository, bob, "with \x01 inside\nand after\n");
    repository.git({"tag", "cut"});
    commitRaw(repository, bob, "raw \xE4 byte\n");
    EXPECT_THAT(messagesOf(request), ElementsAre("with ", "a2", "a1"))
        << "what is no UTF-8 is left out whole";
    EXPECT_THAT(run(request)->omittedRevisions(),
                ElementsAre(repository.git({"rev-parse", "HEAD"}).substr(0, 12)));
    commitRaw(repository, "Bob <bob@example.org> 4102444800 +0000", "in 2100\n");
    const auto operation = run(request);
    EXPECT_EQ(operation->result()->at(0).value(NEBSourceControlOperationDateKey).description(),
              "2038-01-19T03:14:07Z")
        << "the record holds no later time than 32 bits do";
}

}  // namespace
}  // namespace neb
