// `nebsc blame`, run as a program.

#include <filesystem>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using JSON = nlohmann::ordered_json;

class BlameCommand : public CommandTest {
protected:
    void SetUp() override {
        repository.commitFile("src/grüße dir/b c.c", "one\n\ttwo\n", "First");
        repository.write("src/grüße dir/b c.c", "one\n\ttwo\nthree\n");
        repository.git({"commit", "--quiet", "-a", "-m", "Second", "--author", "Bo <b@b>", "--date",
                        "2013-06-30T20:00:00Z"});
    }
    [[nodiscard]] NebscOutcome blame(std::vector<std::string> arguments,
                                     std::string_view folder = "") const {
        arguments.insert(arguments.begin(), "blame");
        return runNebsc(arguments,
                        {.folder = repository.path(folder), .variables = {{"TZ", "IST-5:30"}}});
    }
    [[nodiscard]] std::string revision(const std::string& name) const {
        return repository.git({"rev-parse", name}).substr(0, 12);
    }
    [[nodiscard]] std::string first(const std::string& rest) const {
        return revision("HEAD~1") + "  Ann Example  2020-09-13 17:56  " + rest + "\n";
    }
};

TEST_F(BlameCommand, ColumnsLineUp) {
    const std::string all = first("1  one") + first("2  \ttwo") + revision("HEAD") +
                            "  Bo           2013-07-01 01:30  3  three\n";
    expectDone(blame({"src/grüße dir/b c.c"}), all);
    expectDone(blame({"b c.c"}, "src/grüße dir"), all);
    expectDone(blame({"--", "grüße dir/b c.c"}, "src"), all);
    std::string lines;
    for (int i = 0; i < 10; ++i) {
        lines += "x\n";
    }
    repository.commitFile("ten.c", lines);
    const std::string shown = blame({"ten.c"}).output;
    EXPECT_THAT(shown, HasSubstr("17:56   9  x\n"));
    EXPECT_THAT(shown, HasSubstr("17:56  10  x\n"));
}

TEST_F(BlameCommand, ShowsTheFileOfARevision) {
    std::filesystem::remove_all(repository.path("src"));
    expectDone(blame({"HEAD~1", "src/grüße dir/b c.c"}), first("1  one") + first("2  \ttwo"));
}

TEST_F(BlameCommand, MarksUncommittedLines) {
    repository.write("src/grüße dir/b c.c", "one\nnew");
    expectDone(blame({"src/grüße dir/b c.c"}),
               revision("HEAD~1") + "  Ann Example        2020-09-13 17:56  1  one\n" +
                   "------------  Not committed yet                    2  new\n");
}

/// What a filter stores differs from the file on disk.
TEST_F(BlameCommand, ShowsTheLinesThatGitHasCompared) {
    repository.git({"config", "filter.half.clean", "sed -n 1p"});
    repository.write(".gitattributes", "half.c filter=half\n");
    repository.commitFile("half.c", "kept\ndropped\n");
    expectDone(blame({"half.c"}), revision("HEAD") + "  Ann Example  2020-09-13 17:56  1  kept\n");
}

TEST_F(BlameCommand, AnAuthorMayHaveParenthesesAndControlCharacters) {
    repository.write("c.c", "1)\n");
    repository.git({"add", "c.c"});
    repository.git({"commit", "--quiet", "-m", "x", "--author", "Bo (B)\tx <b@b>"});
    EXPECT_THAT(blame({"c.c"}).output, HasSubstr("  Bo (B)\\tx  "));
}

TEST_F(BlameCommand, EscapesControlCharactersInContent) {
    repository.commitFile("bad.c", "a\x1b[31m\tb\r\n\n\xE4\n");
    const std::string shown = blame({"bad.c"}).output;
    EXPECT_THAT(shown, HasSubstr("  1  a\\x1b[31m\tb\r\n"));
    EXPECT_THAT(shown, HasSubstr("  2\n"));
    EXPECT_THAT(shown, HasSubstr("  3  \\xe4\n"));
}

TEST_F(BlameCommand, TheContentOfASymbolicLinkIsItsTarget) {
    std::filesystem::create_symlink("src", repository.path("link"));
    repository.git({"add", "link"});
    repository.git({"commit", "--quiet", "-m", "link"});
    EXPECT_THAT(blame({"link"}).output, testing::EndsWith("  1  src\n"));
}

TEST_F(BlameCommand, AnEmptyFileHasNoLines) {
    repository.commitFile("empty", "");
    expectDone(blame({"empty"}));
}

TEST_F(BlameCommand, ReportsWhatCannotBeBlamed) {
    expectFailed(blame({"nosuch", "src/grüße dir/b c.c"}), "nebsc: unknown revision 'nosuch'\n");
    expectFailed(blame({"nosuch.c"}), HasSubstr("nosuch.c"));
    expectFailed(blame({}), HasSubstr("missing argument 'FILE'"), 2);
    expectFailed(blame({""}), HasSubstr("argument 'REVISION' must not be empty"), 2);
    expectFailed(blame({"--", "--porcelain", "a.c"}), HasSubstr("'--porcelain' begins"), 2);
    expectFailed(blame({"a", "b", "c"}), HasSubstr("c"), 2);
    const TestRepository empty;
    expectFailed(runNebsc({"blame", "a"}, {.folder = empty.path()}),
                 HasSubstr("does not have any commits yet"));
    const TemporaryFolder folder;
    expectFailed(runNebsc({"blame", "a"}, {.folder = folder.path()}),
                 testing::StartsWith("nebsc: the folder is not in a git repository"));
}

TEST_F(BlameCommand, WorksInABareRepository) {
    repository.git({"clone", "--quiet", "--bare", ".", "../bare.git"});
    const auto inBare = [this](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "blame");
        return runNebsc(arguments,
                        {.folder = repository.path("../bare.git"), .variables = {{"TZ", "UTC"}}});
    };
    const std::string file = "src/grüße dir/b c.c";
    const NebscOutcome shown = inBare({"HEAD~1", file});
    expectDone(shown, runNebsc({"blame", "HEAD~1", file},
                               {.folder = repository.path(), .variables = {{"TZ", "UTC"}}})
                          .output);
    EXPECT_THAT(shown.output, HasSubstr("Ann Example"));
    EXPECT_EQ(inBare({"HEAD~1", "./src/../" + file}).output, shown.output);
    expectDone(inBare({file}), inBare({"HEAD", file}).output);
    expectFailed(inBare({"HEAD", "nosuch"}), HasSubstr("nosuch"));
    expectFailed(inBare({"HEAD", "../nosuch"}), HasSubstr("nosuch"));
}

TEST_F(BlameCommand, JSONPrintsOnlyTheOutcome) {
    const NebscOutcome outcome = blame({"--json", "HEAD~1", "grüße dir/b c.c"}, "src");
    const JSON json = outcome.json();
    EXPECT_EQ(json["type"], NEBSourceControlRequestBlame);
    EXPECT_EQ(json["command"]["arguments"],
              JSON({"blame", "-c", "-l", "HEAD~1", "--", repository.path("src/grüße dir/b c.c")}));
    EXPECT_EQ(json["result"].size(), 3U);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

TEST_F(BlameCommand, ColoursTheRevisionOnATerminal) {
    const NebscOutcome outcome =
        runNebsc({"blame", "HEAD~1", "src/grüße dir/b c.c"},
                 {.folder = repository.path(),
                  .variables = {{"TZ", "UTC"}, {"TERM", "xterm"}, {"NO_COLOR", std::nullopt}},
                  .output = NebscOutput::terminal});
    EXPECT_THAT(outcome.output,
                testing::StartsWith("\x1b[33m" + revision("HEAD~1") + "\x1b[0m  Ann Example  "));
}

TEST_F(BlameCommand, ShowsARangeOfLines) {
    const std::string file = "src/grüße dir/b c.c";
    for (const char* range : {"2,2", "2,+1", ",2", "1,+2"}) {
        const bool isFromFirst = range[0] != '2';
        expectDone(blame({"-L", range, file}),
                   (isFromFirst ? first("1  one") : "") + first("2  \ttwo"));
    }
    EXPECT_THAT(blame({"-L3", file}).output, HasSubstr("  3  three\n"));
    EXPECT_EQ(blame({"-L", "2,", "HEAD~1", file}).output, first("2  \ttwo"));
    for (const char* range : {",", "0,1", "3,2", "x", "1,y", "1,+", "1,2,3", "-1,2"}) {
        expectFailed(blame({"--lines=" + std::string(range), file}), HasSubstr("FIRST,LAST"), 2);
    }
    for (const char* range : {"9,10", "4,+1", "9"}) {
        expectFailed(blame({"-L", range, file}),
                     HasSubstr("nebsc: the range begins beyond the end of '" + file +
                               "', which has only 3 lines\n"));
    }
    EXPECT_EQ(blame({"--json", "-L9", file}).json()["error"]["class"], "line-unknown");
    const JSON json = blame({"--json", "-L2,3", file}).json();
    EXPECT_EQ(json["type"], NEBSourceControlRequestAnnotation);
    EXPECT_EQ(json["result"].size(), 2U);
}

TEST_F(BlameCommand, LeavesHalfOfANarrowTerminalToTheText) {
    repository.write("c.c", std::string(100, 'x') + "\n");
    repository.git({"add", "c.c"});
    repository.git({"commit", "--quiet", "-m", "x", "--author", "A rather long name <a@b>"});
    const NebscOutcome outcome =
        runNebsc({"blame", "c.c"}, {.folder = repository.path(),
                                    .variables = {{"TZ", "UTC"}, {"NO_COLOR", "1"}},
                                    .output = NebscOutput::terminal,
                                    .terminalColumns = 80});
    EXPECT_EQ(outcome.output, revision("HEAD").substr(0, 8) + "  A rather lo…  2020-09-13  1  " +
                                  std::string(80 - 8 - 2 - 12 - 2 - 10 - 2 - 1 - 2 - 1, 'x') +
                                  "…\r\n");
}

}  // namespace
}  // namespace neb::test
