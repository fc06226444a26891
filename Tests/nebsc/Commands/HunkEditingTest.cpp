// The editor of `nebsc stage --patch` and `nebsc unstage --patch`, at a terminal.

#include <fstream>
#include <iterator>

#include "nebsc/Commands/HunkTest.h"

namespace neb::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class HunkEditing : public HunkTest {
protected:
    /// Runs nebsc with these answers, and an editor that runs a shell script, in which $1 is the
    /// file and $n counts the runs. "seen1", "seen2" and so on are what the editor gets.
    [[nodiscard]] std::string editing(const std::string& script, const std::string& answers,
                                      const std::string& command = "stage") const {
        repository.write(".git/editor",
                         "n=1; while [ -e .git/seen$n ]; do n=$((n+1)); done\n"
                         "cp \"$1\" .git/seen$n\n" +
                             script + "\n");
        Nebsc nebsc({command, "-p"}, {.folder = repository.path(),
                                      .variables = {{"GIT_EDITOR", "sh .git/editor"}},
                                      .output = NebscOutput::terminal,
                                      .hasTerminalForErrors = true,
                                      .hasTerminalForInput = true});
        nebsc.type(answers);
        const NebscOutcome outcome = nebsc.outcome();
        EXPECT_EQ(outcome.exitStatus, 0) << outcome.output << outcome.errors;
        return outcome.output + outcome.errors;
    }
    [[nodiscard]] std::string seen(int run) const {
        std::ifstream file(repository.path(".git/seen" + std::to_string(run)), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
};

TEST_F(HunkEditing, StagesTheEditedHunk) {
    change("a", {3, 20});
    const std::string shown = editing(
        "sed -i -e 's/^+changed/+edited\\n+more/' -e 's/^-line 3/ line 3/' \"$1\"", "e\ny\n");
    EXPECT_THAT(shown, HasSubstr("(1/2) Stage this hunk [y,n,q,a,d,j,J,g,/,e,?]?"));
    EXPECT_EQ(seen(1),
              "@@ -1,6 +1,6 @@\n line 1\n line 2\n-line 3\n+changed\n line 4\n line 5\n line 6\n"
              "# ---\n"
              "# To leave out a line that begins with '-', put a blank in place of the '-'.\n"
              "# To leave out a line that begins with '+', delete it.\n"
              "# Lines that begin with '#' are removed. If all lines of the hunk are deleted,\n"
              "# it stays as it was.\n");
    std::string expected = numberedLines({20});
    expected.insert(expected.find("line 4\n"), "edited\nmore\n");
    EXPECT_EQ(content("a"), expected);
    EXPECT_FALSE(isThere(".git/addp-hunk-edit.diff"));
}

TEST_F(HunkEditing, UnstagesTheEditedHunk) {
    change("a", {3, 20});
    repository.git({"add", "a"});
    EXPECT_THAT(editing("sed -i -e 's/^-line 3/-old/' -e 's/^+changed/ changed/' \"$1\"", "e\nn\n",
                        "unstage"),
                HasSubstr("Unstage this hunk"));
    EXPECT_THAT(seen(1), AllOf(HasSubstr("begins with '+', put a blank in place of the '+'."),
                               HasSubstr("begins with '-', delete it.")));
    std::string expected = numberedLines({3, 20});
    expected.insert(expected.find("changed\n"), "old\n");
    EXPECT_EQ(content("a"), expected);
}

TEST_F(HunkEditing, AHunkThatDoesNotApplyCanBeEditedAgain) {
    change("a", {20});
    const std::string shown = editing(
        "case $n in\n"
        "1) sed -i -e '/^ line 18$/d' -e 's/^+changed/+mine/' \"$1\";;\n"
        "2) sed -i 's/^ line 17$/&\\n line 18/' \"$1\";;\n"
        "esac",
        "e\ne\n");
    const std::string reason =
        "The edited hunk does not apply: where it has the line 'line 19', the index has 'line "
        "18'.";
    EXPECT_THAT(shown, HasSubstr(reason + " The key 'e' lets you edit it again."));
    EXPECT_THAT(seen(2), AllOf(testing::StartsWith("# " + reason +
                                                   "\n@@ -17,7 +17,7 @@ line 16\n line 17\n"
                                                   " line 19\n-line 20\n+mine\n"),
                               testing::EndsWith(" line 23\n# ---\n" +
                                                 seen(1).substr(seen(1).find("# To leave")))));
    std::string expected = numberedLines({20}, "mine\n");
    EXPECT_EQ(content("a"), expected);
}

TEST_F(HunkEditing, NamesWhatDoesNotApply) {
    change("a", {20});
    const std::pair<const char*, const char*> rows[] = {
        {"sed -i 's/^-line 20$//' \"$1\"", "has the line '', the index has 'line 20'"},
        {"sed -i '/^ line 23$/d' \"$1\"", "it lacks the line 'line 23' of the index"},
        {"sed -i 's/^ line 23$/&\\n-more/' \"$1\"",
         "the line 'more' comes after those of the hunk"},
        {"sed -i 's/^ line 23$/line 23/' \"$1\"",
         "the line 'line 23' does not begin with ' ', '-' or '+'"},
        {"sed -i 's/^+changed$/\\\\x/' \"$1\"", "does not begin with ' ', '-' or '+'"},
        {"sed -i 's/^+changed$/&\\n\\\\ No newline at end of file/' \"$1\"",
         "a line without a line end is not the last one of the file"},
    };
    for (const auto& [script, reason] : rows) {
        EXPECT_THAT(editing(script, "e\nq\n"), HasSubstr(reason)) << script;
        EXPECT_EQ(content("a"), numberedLines({}));
    }
}

TEST_F(HunkEditing, AnEmptyTextLeavesTheHunkAsItIs) {
    change("a", {20});
    for (const char* script : {">\"$1\"", "sed -i '/^[^#]/d' \"$1\"", "rm \"$1\""}) {
        EXPECT_THAT(editing(script, "e\nn\n"), HasSubstr("The hunk is as it was.")) << script;
        EXPECT_EQ(content("a"), numberedLines({}));
    }
    EXPECT_THAT(editing(">\"$1\"", "e\ny\n"), HasSubstr("The hunk is as it was."));
    EXPECT_EQ(content("a"), numberedLines({20}));
}

TEST_F(HunkEditing, AFailureOfTheEditorLeavesTheHunkAsItIs) {
    change("a", {20});
    EXPECT_THAT(editing("echo lost >\"$1\"; exit 3", "e\ny\n"),
                HasSubstr("The editor 'sh .git/editor' exited with status 3; the hunk is as it "
                          "was."));
    EXPECT_EQ(content("a"), numberedLines({20}));
}

TEST_F(HunkEditing, TheEditorIgnoresNoSignal) {
    change("a", {20});
    EXPECT_THAT(editing("sh -c 'kill -PIPE $$; echo ignored >.git/pipe'; true", "e\n"),
                Not(HasSubstr("as it was")));
    EXPECT_FALSE(isThere(".git/pipe"));
}

TEST_F(HunkEditing, TheEditedHunkCanBeLeftOutOrEditedAgain) {
    change("a", {3, 20});
    const std::string edit = "sed -i \"s/^+.*/+edited $n/\" \"$1\"";
    EXPECT_THAT(editing(edit, "e\nK\nn\nq\n"),
                AllOf(HasSubstr("+edited 1"), HasSubstr("(1/2) Stage this hunk (was: y)")));
    EXPECT_EQ(content("a"), numberedLines({}));
    EXPECT_THAT(editing(edit, "e\nK\ne\nq\n"), Not(HasSubstr("does not apply")));
    EXPECT_EQ(content("a"), numberedLines({3}, "edited 3\n"));
}

/// The unchanged lines between two parts belong to both.
TEST_F(HunkEditing, EditsThePartsOfAHunk) {
    change("a", {10, 12});
    const std::string shown =
        editing("sed -i \"s/^ line 11\\$/&\\n+after $n/\" \"$1\"", "s\ne\ne\n");
    EXPECT_THAT(shown, Not(HasSubstr("does not apply")));
    std::string expected = numberedLines({10, 12});
    expected.insert(expected.find("changed\nline 13"), "after 1\nafter 2\n");
    EXPECT_EQ(content("a"), expected);
}

TEST_F(HunkEditing, KeepsAMissingLineEnd) {
    repository.commitFile("a", "1\n2");
    repository.write("a", "1\n2\n3");
    EXPECT_THAT(editing("sed -i 's/^+3/+4/' \"$1\"", "e\n"), Not(HasSubstr("does not apply")));
    EXPECT_EQ(content("a"), "1\n2\n4");
}

TEST_F(HunkEditing, OnlyHunksAreEdited) {
    repository.commitFile("a", "1\n");
    std::filesystem::remove(repository.path("a"));
    EXPECT_THAT(editing("exit 1", "e\nn\n"),
                AllOf(HasSubstr("Stage this deletion [y,n,q,a,d,?]?"), Not(HasSubstr("editor"))));
}

}  // namespace
}  // namespace neb::test
