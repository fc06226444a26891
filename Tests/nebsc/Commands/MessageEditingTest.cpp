// `nebsc commit` with an editor, run as a program at a terminal.

#include <csignal>
#include <fstream>
#include <iterator>

#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class MessageEditing : public CommandTest {
protected:
    /// Creates a commit, then a staged change.
    void SetUp() override {
        repository.commitFile("a.c", "first\n", "Old subject\n\nOld body\n");
        repository.write("a.c", "second\n");
        repository.git({"add", "a.c"});
    }
    [[nodiscard]] NebscSurroundings terminal(const std::string& editor) const {
        return {.folder = repository.path(),
                .variables = {{"GIT_EDITOR", editor}, {"TERM", "xterm"}},
                .output = NebscOutput::terminal,
                .hasTerminalForErrors = true,
                .hasTerminalForInput = true};
    }
    /// Runs nebsc with an editor that copies the file to "seen" and runs a shell script, in which
    /// $1 is the file.
    [[nodiscard]] NebscOutcome editing(const std::string& script,
                                       const std::vector<std::string>& arguments = {}) const {
        repository.write(".git/editor", "cp \"$1\" .git/seen\n" + script + "\n");
        std::vector<std::string> all{"commit"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return runNebsc(all, terminal("sh .git/editor"));
    }
    [[nodiscard]] std::string bytesOf(std::string_view name) const {
        std::ifstream file(repository.path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    [[nodiscard]] std::string seen() const { return bytesOf(".git/seen"); }
    [[nodiscard]] std::string message() const {
        return repository.git({"log", "-1", "--format=%B"});
    }
    void expectNotCommitted(const NebscOutcome& outcome, const std::string& reason) const {
        EXPECT_THAT(outcome.errors, StartsWith("nebsc: " + reason));
        EXPECT_EQ(outcome.exitStatus, 1);
        EXPECT_EQ(message(), "Old subject\n\nOld body\n\n");
        EXPECT_EQ(state(), "M  a.c\n");
    }
};

TEST_F(MessageEditing, CommitsWhatTheUserWrites) {
    const NebscOutcome outcome =
        editing("printf '\\nNew subject\\n\\n# a comment\\nBody\\n\\n' >\"$1\"");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_THAT(outcome.output, StartsWith("Committed "));
    EXPECT_EQ(message(), "New subject\n\nBody\n\n");
    EXPECT_EQ(state(), "");
    EXPECT_THAT(seen(), AllOf(StartsWith("\n# Write the message of the commit."),
                              HasSubstr("# Changes to be committed:\n"),
                              HasSubstr("#\tmodified:   a.c\n"), Not(HasSubstr("\x1b"))));
}

TEST_F(MessageEditing, ShowsWhatTheArgumentsCommit) {
    repository.commitFile("b.c", "first\n");
    repository.write("b.c", "second\n");
    EXPECT_EQ(editing("echo One >\"$1\"", {"b.c"}).errors, "");
    EXPECT_THAT(seen(), AllOf(HasSubstr("#\tmodified:   b.c\n"), Not(HasSubstr("a.c"))));
    repository.write("b.c", "third\n");
    repository.write("a.c", "third\n");
    EXPECT_EQ(editing("echo All >\"$1\"", {"--all", "--signoff"}).errors, "");
    EXPECT_THAT(seen(),
                AllOf(HasSubstr("a.c\n"), HasSubstr("b.c\n"), Not(HasSubstr("not staged"))));
    EXPECT_THAT(message(), StartsWith("All\n\nSigned-off-by: "));
    EXPECT_EQ(state(), "");
}

TEST_F(MessageEditing, AnEmptyMessageCommitsNothing) {
    for (const char* script :
         {"true", ">\"$1\"", "printf ' \\n#x\\n\\t\\n' >\"$1\"", "rm \"$1\""}) {
        expectNotCommitted(editing(script), "the message is empty; nothing was committed");
    }
}

TEST_F(MessageEditing, AmendStartsWithTheOldMessage) {
    const NebscOutcome outcome = editing("sed -i s/Old/New/ \"$1\"", {"--amend"});
    EXPECT_EQ(outcome.errors, "");
    EXPECT_THAT(seen(), StartsWith("Old subject\n\nOld body\n"));
    EXPECT_EQ(message(), "New subject\n\nNew body\n\n");
    EXPECT_EQ(repository.git({"rev-list", "--count", "HEAD"}), "1\n");
    EXPECT_EQ(editing("exit 3", {"--amend", "--no-edit"}).errors, "");
    EXPECT_EQ(message(), "New subject\n\nNew body\n\n");
}

TEST_F(MessageEditing, AFailingEditorCommitsNothing) {
    expectNotCommitted(editing("echo x >\"$1\"; exit 3"),
                       "the editor 'sh .git/editor' exited with status 3; nothing was committed");
    expectNotCommitted(editing("echo x >\"$1\"; kill -9 $$"),
                       "the editor 'sh .git/editor' was ended by signal 9");
    const NebscOutcome missing = runNebsc({"commit"}, terminal("/nosuch/editor"));
    EXPECT_THAT(missing.errors, HasSubstr("the editor '/nosuch/editor' was not found"));
    EXPECT_EQ(missing.exitStatus, 1);
    EXPECT_EQ(state(), "M  a.c\n");
}

TEST_F(MessageEditing, GitChoosesTheEditor) {
    repository.git({"config", "core.editor", "echo core >\"$1\"; :"});
    NebscSurroundings surroundings = terminal("");
    surroundings.variables = {{"GIT_EDITOR", std::nullopt},
                              {"VISUAL", "echo visual >\"$1\"; :"},
                              {"EDITOR", "echo editor >\"$1\"; :"},
                              {"TERM", "xterm"}};
    const auto committed = [&] {
        EXPECT_EQ(runNebsc({"commit", "--allow-empty"}, surroundings).exitStatus, 0);
        return message();
    };
    EXPECT_EQ(committed(), "core\n\n");
    repository.git({"config", "--unset", "core.editor"});
    EXPECT_EQ(committed(), "visual\n\n");
    surroundings.variables[3].second = "dumb";
    EXPECT_EQ(committed(), "editor\n\n");
    surroundings.variables[2].second = std::nullopt;
    const NebscOutcome outcome = runNebsc({"commit", "--allow-empty"}, surroundings);
    EXPECT_THAT(outcome.errors, HasSubstr("there is no editor: "));
}

TEST_F(MessageEditing, WithoutATerminalAMessageIsRequired) {
    expectFailed(runNebsc({"commit"},
                          {.folder = repository.path(), .variables = {{"GIT_EDITOR", "echo x >"}}}),
                 HasSubstr("--message"), 2);
    NebscSurroundings surroundings = terminal("echo x >");
    surroundings.hasTerminalForInput = false;
    EXPECT_EQ(runNebsc({"commit"}, surroundings).exitStatus, 2);
    EXPECT_EQ(runNebsc({"commit", "--json"}, terminal("echo x >")).exitStatus, 2);
}

TEST_F(MessageEditing, StartsNoEditorForNothing) {
    repository.git({"commit", "--quiet", "-m", "All"});
    const NebscOutcome outcome = editing("touch .git/started; echo x >\"$1\"");
    EXPECT_THAT(outcome.errors, HasSubstr("nothing to commit"));
    EXPECT_FALSE(isThere(".git/started"));
    EXPECT_EQ(editing("echo Empty >\"$1\"", {"--allow-empty"}).errors, "");
    EXPECT_EQ(message(), "Empty\n\n");
}

TEST_F(MessageEditing, StartsNoEditorForConflicts) {
    repository.git({"commit", "--quiet", "-m", "Ours"});
    repository.git({"checkout", "--quiet", "-b", "topic", "HEAD~1"});
    repository.commitFile("a.c", "theirs\n", "Theirs");
    EXPECT_NE(repository.gitStatus({"merge", "--quiet", "main"}), 0);
    const NebscOutcome outcome = editing("touch .git/started");
    EXPECT_THAT(outcome.errors, AllOf(HasSubstr("in conflict"), HasSubstr("    a.c\r\n")));
    EXPECT_FALSE(isThere(".git/started"));
    repository.git({"add", "a.c"});
    EXPECT_EQ(editing("echo '# more' >>\"$1\"").errors, "");
    EXPECT_THAT(seen(), StartsWith("Merge branch 'main' into topic\n"));
    EXPECT_EQ(message(), "Merge branch 'main' into topic\n\n");
}

TEST_F(MessageEditing, RespectsTheSettingsOfMessages) {
    repository.git({"config", "core.commentChar", ";"});
    EXPECT_EQ(editing("{ echo '#1'; cat .git/seen; } >\"$1\"").errors, "");
    EXPECT_THAT(seen(), HasSubstr(";\tmodified:   a.c\n"));
    EXPECT_EQ(message(), "#1\n\n");
    repository.git({"config", "core.commentChar", "auto"});
    EXPECT_EQ(editing("sed -i s/1/2/ \"$1\"", {"--amend"}).errors, "");
    EXPECT_THAT(seen(), StartsWith("#1\n"));
    EXPECT_EQ(message(), "#2\n\n");
    repository.git({"config", "commit.cleanup", "whitespace"});
    EXPECT_EQ(editing("echo '#3' >>\"$1\"", {"--amend"}).errors, "");
    EXPECT_EQ(message(), "#2\n\n#3\n\n");
    EXPECT_THAT(seen(), Not(HasSubstr("modified")));
}

TEST_F(MessageEditing, CutsTheMessageAtTheScissors) {
    repository.git({"config", "commit.cleanup", "scissors"});
    EXPECT_EQ(editing("sed -i '1s/^/Subject\\n\\n# kept\\n/' \"$1\"").errors, "");
    EXPECT_THAT(seen(), StartsWith("\n# ------------------------ >8 ------------------------\n"));
    EXPECT_THAT(seen(), HasSubstr("#\tmodified:   a.c\n"));
    EXPECT_EQ(message(), "Subject\n\n# kept\n\n");
    expectFailed(editing("true", {"--allow-empty"}), HasSubstr("the message is empty"));
    repository.git({"checkout", "--quiet", "-b", "topic", "HEAD~1"});
    repository.commitFile("a.c", "theirs\n", "Theirs");
    EXPECT_NE(repository.gitStatus({"merge", "--quiet", "main"}), 0);
    repository.git({"add", "a.c"});
    EXPECT_EQ(editing("true").errors, "");
    EXPECT_THAT(seen(), AllOf(HasSubstr("# Conflicts:\n"), HasSubstr(">8")));
    EXPECT_EQ(message(), "Merge branch 'main' into topic\n\n");
}

TEST_F(MessageEditing, StartsWithTheTemplate) {
    repository.write(".git/template", "Ticket: \n# which\n");
    repository.git({"config", "commit.template", ".git/template"});
    expectNotCommitted(editing("true"), "the message is still the template");
    EXPECT_THAT(seen(), StartsWith("Ticket: \n# which\n\n# Write the message"));
    EXPECT_EQ(editing("sed -i 's/Ticket: /&7/' \"$1\"").errors, "");
    EXPECT_EQ(message(), "Ticket: 7\n\n");
}

TEST_F(MessageEditing, KeepsTheMessageIfTheCommitFails) {
    repository.write(".git/hooks/pre-commit", "#!/bin/sh\necho no >&2; exit 1\n");
    std::filesystem::permissions(repository.path(".git/hooks/pre-commit"),
                                 std::filesystem::perms::owner_all);
    const NebscOutcome outcome = editing("echo Long work >\"$1\"");
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_THAT(outcome.errors,
                HasSubstr("The message is kept in '" + repository.path(".git/COMMIT_EDITMSG") +
                          "' until the next commit.\r\n"));
    EXPECT_EQ(bytesOf(".git/COMMIT_EDITMSG"), "Long work\n");
}

TEST_F(MessageEditing, CtrlCIsForTheEditor) {
    repository.write(".git/editor", "echo ready >&2\nexec sleep 1000\n");
    Nebsc nebsc({"commit"}, terminal("sh .git/editor"));
    nebsc.awaitErrors("ready");
    // To the group of the terminal, as the terminal does.
    nebsc.send(SIGINT);
    nebsc.send(SIGTERM);
    const NebscOutcome outcome = nebsc.outcome();
    EXPECT_EQ(outcome.exitStatus, 143) << "SIGINT had no effect";
    EXPECT_EQ(state(), "M  a.c\n");
}

/// The shell waits for the editor, so a signal to the shell alone would leave the editor running.
TEST_F(MessageEditing, ASignalEndsAllProcessesOfTheEditor) {
    repository.write(".git/editor",
                     "mkfifo .git/end\necho ready >&2\n(sleep 20; echo survived) >.git/end\n");
    Nebsc nebsc({"commit"}, terminal("sh .git/editor; true"));
    nebsc.awaitErrors("ready");
    std::ifstream end(repository.path(".git/end"));
    nebsc.send(SIGTERM);
    EXPECT_EQ(nebsc.outcome().exitStatus, 143);
    std::string line;
    std::getline(end, line);
    EXPECT_EQ(line, "");
}

TEST_F(MessageEditing, GivesTheTerminalBack) {
    repository.write(".git/editor", "stty raw -echo\nkill -9 $$\n");
    const NebscOutcome outcome =
        runProgram("/bin/sh",
                   {"-c", "stty -g >.git/before; \"$0\" commit; stty -g >.git/after",
                    NEB_BUILD_FOLDER "/bin/nebsc"},
                   terminal("sh .git/editor"));
    EXPECT_THAT(outcome.errors, HasSubstr("was ended by signal 9"));
    EXPECT_EQ(bytesOf(".git/after"), bytesOf(".git/before"));
    EXPECT_NE(bytesOf(".git/after"), "");
}

}  // namespace
}  // namespace neb::test
