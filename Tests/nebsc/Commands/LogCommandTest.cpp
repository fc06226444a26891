// `nebsc log`, run as a program.

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using JSON = nlohmann::ordered_json;

/// The minute of the commits of the tests, in a time zone with a half-hour offset.
constexpr const char* zone = "IST-5:30";
constexpr const char* minute = "2020-09-13 17:56";

class LogCommand : public CommandTest {
protected:
    void SetUp() override {
        repository.commitFile("a.c", "1\n", "First");
        repository.commitFile("src/grüße dir/b c.c", "1\n", "Second\nof two lines\n\nThe body.\n");
        repository.commitFile("a.c", "2\n", "Third");
    }
    [[nodiscard]] NebscOutcome log(std::vector<std::string> arguments,
                                   std::string_view folder = "") const {
        arguments.insert(arguments.begin(), "log");
        return runNebsc(arguments,
                        {.folder = repository.path(folder), .variables = {{"TZ", zone}}});
    }
    /// Returns the first 12 characters of a commit id.
    [[nodiscard]] std::string revision(const std::string& name) const {
        return repository.git({"rev-parse", name}).substr(0, 12);
    }
    [[nodiscard]] std::string line(const std::string& name, const std::string& subject) const {
        return revision(name) + "  " + minute + "  Ann Example  " + subject + "\n";
    }
};

TEST_F(LogCommand, ShowsEachCommitOnALine) {
    const std::string all =
        line("HEAD", "Third") + line("HEAD~1", "Second of two lines") + line("HEAD~2", "First");
    expectDone(log({}), all);
    expectDone(log({}, "src"), all);
    expectDone(log({"-n", "1"}), line("HEAD", "Third"));
    expectDone(log({"--limit=2"}, "src"),
               line("HEAD", "Third") + line("HEAD~1", "Second of two lines"));
}

TEST_F(LogCommand, AlignsAuthors) {
    repository.git({"commit", "--quiet", "--allow-empty", "-m", "wide", "--author",
                    "\xE4\xBD\xA0\xE5\xA5\xBD <a@b>"});
    repository.git({"commit", "--quiet", "--allow-empty", "-m", "long", "--author",
                    "A name of more than twenty characters <a@b>"});
    repository.git({"commit", "--quiet", "--allow-empty", "--allow-empty-message", "-m", "",
                    "--author", "B <b@b>"});
    expectDone(log({"-n", "4"}),
               revision("HEAD") + "  " + minute + "  B\n" + revision("HEAD~1") + "  " + minute +
                   "  A name of more than twenty characters  long\n" + revision("HEAD~2") + "  " +
                   minute + "  \xE4\xBD\xA0\xE5\xA5\xBD                  wide\n" +
                   revision("HEAD~3") + "  " + minute + "  Ann Example           Third\n");
}

TEST_F(LogCommand, ShowsFilesRelativeToTheCurrentFolder) {
    repository.git({"mv", "a.c", "new name.c"});
    repository.git({"commit", "--quiet", "-m", "Move"});
    expectDone(log({"--files", "-n", "3"}, "src"),
               line("HEAD", "Move") + "    renamed    ../a.c\n" + line("HEAD~1", "Third") +
                   "    modified   ../a.c\n" + line("HEAD~2", "Second of two lines") +
                   "    added      grüße dir/b c.c\n");
}

TEST_F(LogCommand, ShowsFullMessages) {
    const std::string head =
        "\nAuthor: Ann Example <ann@example.org>\nDate:   2020-09-13 17:56:40 +0530\n";
    expectDone(log({"--full", "--files", "HEAD~1"}),
               "commit " + revision("HEAD~1") + head +
                   "\n    Second\n    of two lines\n\n    The body.\n"
                   "\n    added      src/grüße dir/b c.c\n\ncommit " +
                   revision("HEAD~2") + head + "\n    First\n\n    added      a.c\n");
    repository.git({"commit", "--quiet", "--allow-empty", "--allow-empty-message", "-m", ""});
    expectDone(log({"--full", "-n1"}), "commit " + revision("HEAD") + head);
}

TEST_F(LogCommand, LimitsTheHistoryToAFileOrFolder) {
    const std::string second = line("HEAD~1", "Second of two lines");
    expectDone(log({"b c.c"}, "src/grüße dir"), second);
    expectDone(log({"src"}), second);
    expectDone(log({"HEAD~1", "a.c"}), line("HEAD~2", "First"));
    repository.git({"rm", "--quiet", "-r", "src"});
    repository.git({"commit", "--quiet", "-m", "Remove"});
    expectFailed(log({"src"}), HasSubstr("'src' is neither a revision nor a file; put '--'"));
    expectDone(log({"--", "src"}), line("HEAD", "Remove") + line("HEAD~2", "Second of two lines"));
    EXPECT_EQ(log({"--", "never"}).errors, "No matching commits.\n");
    EXPECT_EQ(log({"--", "never"}).exitStatus, 0);
}

TEST_F(LogCommand, TakesFileNamesLiterally) {
    repository.commitFile("[a].c", "1\n", "Brackets");
    expectDone(log({"[a].c"}), line("HEAD", "Brackets"));
}

TEST_F(LogCommand, RangesMeanTheSameAsInGit) {
    repository.git({"checkout", "--quiet", "-b", "topic", "HEAD~1"});
    repository.commitFile("t.c", "1\n", "On topic");
    const auto subjects = [this](const std::string& range) {
        const std::string shown = log({range}).output;
        return std::pair{shown.find("On topic") != std::string::npos,
                         shown.find("Third") != std::string::npos};
    };
    // The commits of topic, then those of main.
    const std::pair<bool, bool> onlyTopic(true, false);
    const std::pair<bool, bool> onlyMain(false, true);
    const std::pair<bool, bool> both(true, true);
    EXPECT_EQ(subjects("main..topic"), onlyTopic);
    EXPECT_EQ(subjects("main.."), onlyTopic);
    EXPECT_EQ(subjects("topic..main"), onlyMain);
    EXPECT_EQ(subjects("..main"), onlyMain);
    EXPECT_EQ(subjects("main...topic"), both);
    EXPECT_EQ(subjects("topic...main"), both);
    EXPECT_EQ(subjects("...main"), both);
    EXPECT_THAT(log({"main...topic"}).output, testing::Not(HasSubstr("First")));
    EXPECT_EQ(log({"topic..HEAD"}).errors, "No matching commits.\n");
    const auto arguments = [this](const std::string& range) {
        return log({"--json", range, "t.c"}).json()["command"]["arguments"].dump();
    };
    EXPECT_THAT(arguments("main..topic"), HasSubstr(R"("main..topic")"));
    EXPECT_THAT(arguments("main...topic"), HasSubstr(R"("main...topic")"));
    expectFailed(log({"main..topic", "main"}), HasSubstr("at most two revisions"), 2);
    expectFailed(log({"main", "topic"}), HasSubstr("write A..B or A...B"), 2);
    expectFailed(log({"main..nosuch"}), HasSubstr("'main..nosuch'"));
}

TEST_F(LogCommand, ARangeTakesPrecedenceOverAFile) {
    repository.git({"branch", "topic", "HEAD~1"});
    repository.commitFile("topic..main", "1\n", "Fourth");
    expectDone(log({"topic..main", "--"}), line("HEAD", "Fourth") + line("HEAD~1", "Third"));
    expectDone(log({"--", "topic..main"}), line("HEAD", "Fourth"));
}

TEST_F(LogCommand, ShowsABranch) {
    repository.git({"branch", "topic", "HEAD~2"});
    expectDone(log({"--branch", "topic"}), line("topic", "First"));
    expectFailed(log({"--branch", "topic", "HEAD"}), HasSubstr("cannot be combined"), 2);
    expectFailed(log({"--branch", "a.c"}), "nebsc: unknown revision 'a.c'\n");
    expectFailed(log({"--branch=--all"}), HasSubstr("'--all' begins with '-'"), 2);
    // A tag or a file of the same name makes no difference.
    repository.git({"tag", "topic", "HEAD"});
    expectDone(log({"--branch", "topic"}), line("refs/heads/topic", "First"));
    expectFailed(log({"--branch", "^topic"}), HasSubstr("unknown revision '^topic'"));
    repository.git({"tag", "--delete", "topic"});
    repository.write("topic", "");
    expectDone(log({"--branch", "topic"}), line("topic", "First"));
}

TEST_F(LogCommand, DashesSeparateRevisionsFromFiles) {
    repository.git({"branch", "both", "HEAD~1"});
    repository.commitFile("both", "1\n", "A file like a branch");
    expectFailed(log({"both"}), HasSubstr("'both' is both a revision and a file"));
    expectDone(log({"--", "both"}), line("HEAD", "A file like a branch"));
    expectDone(log({"-n1", "both", "--"}), line("both", "Second of two lines"));
    expectDone(log({"-n1", "both", "--", "a.c"}), line("HEAD~3", "First"));
    expectFailed(log({"nosuch", "--"}), "nebsc: unknown revision 'nosuch'\n");
    expectFailed(log({"a.c", "both", "src"}), HasSubstr("src"), 2);
    expectFailed(log({"a.c", "src"}), HasSubstr("at most one file"), 2);
}

TEST_F(LogCommand, AcceptsABranchNamedZero) {
    repository.git({"branch", "0", "HEAD~1"});
    expectDone(log({"0..main"}), line("main", "Third"));
    expectDone(log({"main...0"}), line("main", "Third"));
    EXPECT_EQ(log({"main..0"}).errors, "No matching commits.\n");
}

TEST_F(LogCommand, RefusesAnInvalidNumberOfCommits) {
    for (const char* count : {"x", "-1", "3x", "99999999999"}) {
        expectFailed(log({std::string("--limit=") + count}),
                     HasSubstr("invalid value '" + std::string(count) +
                               "' for option '--limit'; expected a number of commits"),
                     2);
    }
    EXPECT_EQ(log({"-n", "0"}).errors, "No matching commits.\n");
}

TEST_F(LogCommand, ReportsARepositoryWithoutCommits) {
    const TestRepository empty;
    expectFailed(runNebsc({"log"}, {.folder = empty.path()}),
                 "nebsc: the current branch 'main' does not have any commits yet\n");
    const NebscOutcome json = runNebsc({"log", "--json"}, {.folder = empty.path()});
    EXPECT_EQ(json.json()["error"]["class"], "no-commits-yet");
    EXPECT_EQ(json.exitStatus, 1);
    const TemporaryFolder folder;
    expectFailed(runNebsc({"log"}, {.folder = folder.path()}),
                 testing::StartsWith("nebsc: the folder is not in a git repository"));
}

TEST_F(LogCommand, WorksInABareRepository) {
    repository.git({"clone", "--quiet", "--bare", ".", "../bare.git"});
    const NebscOutcome outcome = runNebsc(
        {"log", "-n1"}, {.folder = repository.path("../bare.git"), .variables = {{"TZ", zone}}});
    expectDone(outcome, line("HEAD", "Third"));
    const auto inBare = [this](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "log");
        return runNebsc(arguments,
                        {.folder = repository.path("../bare.git"), .variables = {{"TZ", zone}}});
    };
    const std::string ofFile = line("HEAD", "Third") + line("HEAD~2", "First");
    expectDone(inBare({"HEAD", "--", "a.c"}), ofFile);
    expectDone(inBare({"HEAD", "a.c"}), ofFile);
    expectDone(inBare({"./a.c"}), ofFile);
    expectDone(inBare({"HEAD~1", "src"}), line("HEAD~1", "Second of two lines"));
    expectFailed(inBare({"nosuch"}), HasSubstr("'nosuch' is neither a revision nor a file"));
}

TEST_F(LogCommand, JSONPrintsOnlyTheOutcome) {
    const NebscOutcome outcome = log({"--json", "--files", "-n", "1", "HEAD", "../a.c"}, "src");
    const JSON json = outcome.json();
    EXPECT_EQ(json["type"], NEBSourceControlRequestLog);
    EXPECT_EQ(json["result"][0]["NEBSourceControlOperationRevisionKey"], revision("HEAD"));
    EXPECT_EQ(json["result"][0]["NEBSourceControlOperationFilesKey"], JSON({{"a.c", 4}}));
    EXPECT_EQ(json["command"]["currentDirectoryPath"], repository.path());
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_EQ(log({"--json", "--", "never"}).errors, "");
}

TEST_F(LogCommand, EscapesControlCharactersInMessages) {
    repository.git({"commit", "--quiet", "--allow-empty", "-m", "red \x1b[31m\n\nbody \x1b[2J\tx",
                    "--author", "Bad \x1b]0;x\x07z <a@b>"});
    for (const char* option : {"--files", "--full"}) {
        const std::string shown = log({option, "-n1"}).output;
        EXPECT_EQ(shown.find('\x1b'), std::string::npos);
        EXPECT_THAT(shown, HasSubstr("red \\x1b[31m"));
        EXPECT_THAT(shown, HasSubstr("Bad \\x1b]0;x\\x07z"));
    }
    EXPECT_THAT(log({"--full", "-n1"}).output, HasSubstr("body \\x1b[2J\tx\n"));
}

// ---- selection, decoration and graph ----------------------------------------------------------

TEST_F(LogCommand, FindsCommits) {
    repository.git({"commit", "--quiet", "--allow-empty", "-m", "Fourth [x]", "--author",
                    "Bo Berg <bo@example.org>", "--date", "2013-06-30T20:00:00Z"});
    const std::string fourth = revision("HEAD") + "  2013-07-01 01:30  Bo Berg  Fourth [x]\n";
    expectDone(log({"--author", "Bo"}), fourth);
    expectDone(log({"--author", "bo@example"}), fourth);
    expectDone(log({"--grep", "[x]"}), fourth);
    expectDone(log({"--grep", "fourth", "-i"}), fourth);
    EXPECT_EQ(log({"--grep", "fourth"}).errors, "No matching commits.\n");
    expectDone(log({"-S", "2"}), line("HEAD~1", "Third"));
    expectDone(log({"--content=2", "a.c"}), line("HEAD~1", "Third"));
    EXPECT_EQ(log({"--since", "2999-01-01"}).errors, "No matching commits.\n");
    EXPECT_EQ(log({"--until", "1980-01-01"}).errors, "No matching commits.\n");
    EXPECT_EQ(log({"--json", "--author", "Bo"}).json()["type"], NEBSourceControlRequestHistory);
    EXPECT_EQ(log({"--json"}).json()["type"], NEBSourceControlRequestLog);
}

TEST_F(LogCommand, StartsAtAllReferences) {
    repository.git({"branch", "old", "HEAD~2"});
    repository.git({"checkout", "--quiet", "old"});
    EXPECT_EQ(log({}).output, line("old", "First"));
    for (const std::string& other :
         {line("main", "Third"), line("main~1", "Second of two lines"), line("old", "First")}) {
        EXPECT_THAT(log({"--all"}).output, HasSubstr(other));
    }
    expectDone(log({"--all", "old..main"}),
               line("main", "Third") + line("main~1", "Second of two lines"));
}

TEST_F(LogCommand, FollowsAFileBeyondRenames) {
    repository.git({"mv", "a.c", "new.c"});
    repository.git({"commit", "--quiet", "-m", "Rename"});
    expectDone(log({"new.c"}), line("HEAD", "Rename"));
    const std::string all =
        line("HEAD", "Rename") + line("HEAD~1", "Third") + line("HEAD~3", "First");
    expectDone(log({"--follow", "new.c"}), all);
    expectDone(log({"--follow", "--files", "-n1", "new.c"}),
               line("HEAD", "Rename") + "    renamed    a.c\n");
    expectFailed(log({"--follow"}), HasSubstr("option '--follow' requires a file"), 2);
}

TEST_F(LogCommand, ARangeIsTheSameForEveryRequest) {
    expectDone(log({"--first-parent", "HEAD~2..HEAD"}), log({"HEAD~2..HEAD"}).output);
    expectDone(log({"--first-parent", "HEAD~1...HEAD"}), log({"HEAD~1...HEAD"}).output);
    expectDone(log({"--first-parent", "--branch", "main", "--full"}),
               "commit " + repository.git({"rev-parse", "HEAD"}) +
                   log({"--branch", "main", "--full"}).output.substr(20, 84) + "commit " +
                   repository.git({"rev-parse", "HEAD~1"}) +
                   "Author: Ann Example <ann@example.org>\n"
                   "Date:   2020-09-13 17:56:40 +0530\n\n"
                   "    Second of two lines\n\n    The body.\n\ncommit " +
                   repository.git({"rev-parse", "HEAD~2"}) +
                   "Author: Ann Example <ann@example.org>\n"
                   "Date:   2020-09-13 17:56:40 +0530\n\n    First\n");
}

TEST_F(LogCommand, DecoratesCommits) {
    repository.git({"tag", "v1", "HEAD~1"});
    repository.git({"tag", "-a", "-m", "x", "v2", "HEAD~1"});
    repository.git({"branch", "topic"});
    repository.git({"update-ref", "refs/remotes/origin/main", "HEAD~2"});
    const std::string front = "  " + std::string(minute) + "  Ann Example  ";
    expectDone(log({"--decorate"}), revision("HEAD") + front + "(HEAD -> main, topic) Third\n" +
                                        revision("HEAD~1") + front +
                                        "(tag: v2, tag: v1) Second of two lines\n" +
                                        revision("HEAD~2") + front + "(origin/main) First\n");
    expectDone(log({"-n1"}), line("HEAD", "Third"));
    repository.git({"checkout", "--quiet", "--detach"});
    expectDone(log({"--decorate", "-n1"}),
               revision("HEAD") + front + "(HEAD, topic, main) Third\n");
    EXPECT_THAT(
        log({"--decorate", "--full", "-n1"}).output,
        testing::StartsWith("commit " + repository.git({"rev-parse", "HEAD"}).substr(0, 40) +
                            " (HEAD, topic, main)\nAuthor: "));
}

TEST_F(LogCommand, DrawsAGraph) {
    repository.git({"checkout", "--quiet", "-b", "topic", "HEAD~1"});
    repository.commitFile("t.c", "1\n", "Topic");
    repository.git({"merge", "--quiet", "--no-ff", "-m", "Merge", "main"});
    const std::string front = "  " + std::string(minute) + "  Ann Example  ";
    expectDone(log({"--graph"}), "*  " + revision("HEAD") + front + "(HEAD -> topic) Merge\n|\\\n" +
                                     "| *  " + revision("main") + front + "(main) Third\n" +
                                     "* |  " + revision("HEAD^1") + front + "Topic\n|/\n" + "*  " +
                                     revision("main~1") + front + "Second of two lines\n" + "*  " +
                                     revision("main~2") + front + "First\n");
    EXPECT_THAT(log({"--graph", "--full"}).output,
                HasSubstr("\n| |  Author: Ann Example <ann@example.org>\n"));
    for (const char* other : {"--author=Ann", "--grep=x", "-Sx"}) {
        expectFailed(log({"--graph", other}),
                     AllOf(HasSubstr("option '--graph' cannot be combined with '--"),
                           HasSubstr("', which leaves out the commits that connect the others; "
                                     "without '--graph', it lists what it finds\n")),
                     2);
    }
}

TEST_F(LogCommand, UsesColoursOnATerminal) {
    const NebscOutcome outcome =
        runNebsc({"log", "-n1", "--files"},
                 {.folder = repository.path(),
                  .variables = {{"TZ", zone}, {"TERM", "xterm"}, {"NO_COLOR", std::nullopt}},
                  .output = NebscOutput::terminal});
    EXPECT_EQ(outcome.output,
              "\x1b[33m" + revision("HEAD") + "\x1b[0m  " + minute +
                  "  Ann Example  \x1b[33m(\x1b[0m\x1b[1;36mHEAD -> \x1b[0m\x1b[1;32mmain\x1b[0m"
                  "\x1b[33m)\x1b[0m Third\r\n    \x1b[33mmodified\x1b[0m   a.c\r\n");
}

TEST_F(LogCommand, KeepsACommitWithAFileNameThatIsNotUTF8) {
    repository.commitFile("lat\xE4.txt", "1\n", "Fourth");
    expectDone(log({"--files", "-n1"}), line("HEAD", "Fourth") + "    added      lat\\xe4.txt\n");
}

class LogOfOtherEncodings : public LogCommand {
protected:
    /// Creates a commit whose message is not UTF-8, and returns the first 12 characters of its id.
    [[nodiscard]] std::string commitOtherBytes() const {
        const std::string raw = "tree " + repository.git({"rev-parse", "HEAD^{tree}"}) + "parent " +
                                repository.git({"rev-parse", "HEAD"}) +
                                "author A <a@b> 1600000000 +0000\n"
                                "committer A <a@b> 1600000000 +0000\n\nraw \xE4\n";
        std::string commit = repository.gitWithInput(
            {"hash-object", "-t", "commit", "-w", "--stdin", "--literally"}, raw);
        commit.pop_back();
        repository.git({"update-ref", "HEAD", commit});
        return commit.substr(0, 12);
    }
    static constexpr const char* reason =
        " left out, because the author, the e-mail address or the message is not UTF-8:\n";
};

TEST_F(LogOfOtherEncodings, ListsOmittedCommits) {
    const std::string first = commitOtherBytes();
    const NebscOutcome one = log({"-n2"});
    EXPECT_EQ(one.output, line("HEAD~1", "Third"));
    EXPECT_EQ(one.errors, std::string("nebsc: one commit is") + reason + "    " + first + "\n");
    EXPECT_EQ(one.exitStatus, 0);
    const NebscOutcome none = log({"-n1"});
    EXPECT_EQ(none.output, "");
    EXPECT_EQ(none.errors, one.errors) << "not that no commits match";

    std::string names;
    for (int i = 0; i < 6; ++i) {
        names.insert(0, commitOtherBytes() + (i == 1 ? "\n    " : " "));
    }
    const NebscOutcome many = log({"-n7"});
    EXPECT_EQ(many.errors,
              std::string("nebsc: 7 commits are") + reason + "    " + names + first + "\n");
}

TEST_F(LogOfOtherEncodings, JSONListsOmittedCommits) {
    const std::string commit = commitOtherBytes();
    const NebscOutcome outcome = log({"--json", "-n2"});
    EXPECT_EQ(outcome.json()["omittedRevisions"], JSON({commit}));
    EXPECT_EQ(outcome.json()["result"].size(), 1U);
    EXPECT_FALSE(log({"--json", "HEAD~1"}).json().contains("omittedRevisions"));
}

}  // namespace
}  // namespace neb::test
