// Records that are printed while git runs, by the commands that list and `nebsc request --stream`.

#include <gmock/gmock.h>
#include <signal.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/TestRepository.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using JSON = nlohmann::ordered_json;
using Variables = std::vector<std::pair<std::string, std::optional<std::string>>>;

/// A git whose log is written by a script. `record NAME` prints a commit whose subject is NAME.
class Streaming : public HygienicTest {
protected:
    [[nodiscard]] StandInGit gitWithLog(const std::string& script) const {
        return {folder.path(), logScript(script)};
    }
    [[nodiscard]] std::string logScript(const std::string& script) const {
        return scriptOf(
            "log",
            "if [ $history ]; then printf 'commit 0123456789ab\\n\\n\\nAnn\\na@b\\n1600000000 "
            "+0000\\nAnn\\na@b\\n1600000000 +0000\\n%s\\n\\000' \"$1\"; "
            "else printf '0123456789ab\\nAnn\\na@b\\n1600000000\\n%s\\n\\001\\n\\000' \"$1\"; fi",
            "case \"$*\" in *tformat:commit*) history=1;; *) history=; printf '\\000';; esac\n" +
                script);
    }
    /// A git whose command, such as "ls-tree", is a script. The body of `record` prints a record.
    [[nodiscard]] std::string scriptOf(const std::string& command, const std::string& record,
                                       const std::string& script) const {
        return "case \"$*\" in *config*) exit 1;; " + command +
               "*) ;; *) exit 0;; esac\n"
               "echo $$ > '" +
               folder.path("git") + "'\nrecord() { " + record +
               "; }\n"
               "seen() { while ! [ -e '" +
               folder.path("seen") + "' ]; do sleep 0.01; done; }\n" + script;
    }
    [[nodiscard]] NebscSurroundings surroundings(const StandInGit& git, NebscOutput output,
                                                 Variables variables = {}) const {
        variables.insert(variables.end(), {git.path(),
                                           {"TZ", "UTC"},
                                           {"TERM", "xterm"},
                                           {"NO_COLOR", "1"},
                                           {"GIT_PAGER", std::nullopt}});
        return {.folder = folder.path(),
                .input = logRequest(),
                .variables = std::move(variables),
                .output = output};
    }
    [[nodiscard]] std::string logRequest() const {
        return JSON{{"type", NEBSourceControlRequestLog},
                    {"sourceTree", {{"location", folder.path()}}}}
            .dump();
    }
    static std::string line(const std::string& subject) {
        return "0123456789ab  2020-09-13 12:26  Ann  " + subject;
    }
    void expectThatGitHasEnded() const {
        EXPECT_FALSE(isLiveProcess(std::stoi(folder.read("git"))));
    }

    TemporaryFolder folder;
};

/// A command that lists, the command of git that it runs, and a record named NAME of both.
struct ListedRecord {
    std::vector<std::string> arguments;
    std::string gitCommand;
    std::string body;
    std::string linePrefix;
};

const std::vector<ListedRecord> listedRecords{
    {{"status", "--short"}, "status", "printf 'M  %s\\000' $1", "modified   "},
    {{"ls"}, "ls-tree", "printf '100644 blob 01234567\\t%s\\000' $1", ""},
    {{"diff", "--name-status"}, "diff", "printf 'M\\000%s\\000' $1", "modified   "},
    {{"diff"}, "diff", "printf '+%s\\n' $1", "+"},
};

const std::string withoutEnd = "exec sleep 3600";
const std::string endless = "while :; do record more; done";

TEST_F(Streaming, LogPrintsACommitBeforeTheNextOne) {
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"log"}, {"log", "--files"}}) {
        const StandInGit git = gitWithLog("record One; seen; record Two");
        Nebsc program(arguments, surroundings(git, NebscOutput::pipe));
        EXPECT_EQ(program.awaitLine(), line("One"));
        folder.write("seen", "");
        const NebscOutcome outcome = program.outcome();
        EXPECT_THAT(outcome.output, StartsWith(line("Two") + "\n"));
        EXPECT_EQ(outcome.errors, "");
        EXPECT_EQ(outcome.exitStatus, 0);
    }
}

TEST_F(Streaming, OtherCommandsPrintARecordBeforeTheNextOne) {
    for (const ListedRecord& listed : listedRecords) {
        const StandInGit git(folder.path(), scriptOf(listed.gitCommand, listed.body,
                                                     "record One; seen; record Two"));
        Nebsc program(listed.arguments, surroundings(git, NebscOutput::pipe));
        EXPECT_EQ(program.awaitLine(), listed.linePrefix + "One");
        folder.write("seen", "");
        expectDone(program.outcome(), listed.linePrefix + "Two\n");
        std::filesystem::remove(folder.path("seen"));
    }
}

/// The end of the first line is understood when the second one is there.
TEST_F(Streaming, BranchPrintsBranchesBeforeTheNextOne) {
    const StandInGit git(folder.path(), scriptOf("branch", "printf '  %s\\n' $1",
                                                 "record One; record Two; seen; record Three"));
    Nebsc program({"branch"}, surroundings(git, NebscOutput::pipe));
    EXPECT_EQ(program.awaitLine(), "  One");
    folder.write("seen", "");
    EXPECT_THAT(program.outcome().output, StartsWith("  Two\n  Three\n"));
}

TEST_F(Streaming, OtherCommandsEndGitWhenTheReaderEnds) {
    for (const ListedRecord& listed : listedRecords) {
        for (const std::string& rest : {withoutEnd, endless}) {
            const StandInGit git(folder.path(),
                                 scriptOf(listed.gitCommand, listed.body, "record One; " + rest));
            Nebsc program(listed.arguments, surroundings(git, NebscOutput::pipe));
            EXPECT_EQ(program.awaitLine(), listed.linePrefix + "One");
            program.stopReading();
            expectDone(program.outcome());
            expectThatGitHasEnded();
        }
    }
}

TEST_F(Streaming, AFailureOfOtherCommandsFollowsTheRecords) {
    for (const ListedRecord& listed : listedRecords) {
        const StandInGit git(
            folder.path(), scriptOf(listed.gitCommand, listed.body,
                                    "record One; echo 'fatal: index file corrupt' >&2; exit 128"));
        const NebscOutcome outcome =
            runNebsc(listed.arguments, surroundings(git, NebscOutput::pipe));
        EXPECT_EQ(outcome.output, listed.linePrefix + "One\n");
        EXPECT_THAT(outcome.errors, StartsWith("nebsc: "));
        EXPECT_EQ(outcome.exitStatus, 1);
    }
}

TEST_F(Streaming, FullCommitsAreSeparatedByEmptyLines) {
    const StandInGit git = gitWithLog("record One; seen; record Two");
    Nebsc program({"log", "--full"}, surroundings(git, NebscOutput::pipe));
    EXPECT_EQ(program.awaitLine(), "commit 0123456789ab");
    folder.write("seen", "");
    EXPECT_THAT(program.outcome().output, HasSubstr("    One\n\ncommit 0123456789ab\n"));
}

TEST_F(Streaming, ARequestPrintsARecordBeforeTheNextOne) {
    const StandInGit git = gitWithLog("record One; seen; record Two");
    Nebsc program({"request", "--stream"}, surroundings(git, NebscOutput::pipe));
    const JSON first = JSON::parse(program.awaitLine());
    EXPECT_EQ(first["record"]["NEBSourceControlOperationMessageKey"], "One");
    EXPECT_EQ(first.size(), 1U);
    folder.write("seen", "");
    const NebscOutcome outcome = program.outcome();
    std::istringstream lines(outcome.output);
    std::string text;
    std::getline(lines, text);
    EXPECT_EQ(JSON::parse(text)["record"]["NEBSourceControlOperationMessageKey"], "Two");
}

TEST_F(Streaming, GitEndsWhenTheReaderDoes) {
    for (const std::string& rest : {withoutEnd, endless}) {
        for (const std::vector<std::string>& arguments :
             std::vector<std::vector<std::string>>{{"log"}, {"request", "--stream"}}) {
            const StandInGit git = gitWithLog("record One; " + rest);
            Nebsc program(arguments, surroundings(git, NebscOutput::pipe));
            EXPECT_THAT(program.awaitLine(), HasSubstr("One"));
            program.stopReading();
            expectDone(program.outcome());
            expectThatGitHasEnded();
        }
    }
}

TEST_F(Streaming, GitEndsWhenThePagerIsQuit) {
    const std::string screen =
        "for i in 1 2 3 4 5 6 7 8 9 10 11 12 13 14; do record One; record "
        "Two; done; ";
    for (const std::string& rest : {withoutEnd, endless}) {
        const StandInGit git = gitWithLog(screen + rest);
        expectDone(runNebsc({"log"}, surroundings(git, NebscOutput::terminal,
                                                  {{"PAGER", "exec head -n 1"}})),
                   line("One") + "\r\n");
        expectThatGitHasEnded();
    }
}

TEST_F(Streaming, APagerThatCannotBeStartedLosesNothing) {
    const StandInGit git = gitWithLog("i=0; while [ $i -lt 60 ]; do record One; i=$((i+1)); done");
    const NebscOutcome outcome =
        runNebsc({"log"}, surroundings(git, NebscOutput::terminal, {{"PAGER", "/no/such/pager"}}));
    EXPECT_EQ(outcome.output.size(), 60 * (line("One").size() + 2));
    EXPECT_THAT(outcome.errors, HasSubstr("the pager '/no/such/pager' could not be started"));
    EXPECT_EQ(outcome.exitStatus, 0);
}

/// git waits for the pager to show the first commit, for at most ten seconds.
TEST_F(Streaming, AShortLogThatTakesLongIsShownAsItComes) {
    const std::string seen = folder.path("seen");
    const StandInGit git = gitWithLog("record One; i=0; while ! [ -e '" + seen +
                                      "' ] && [ $i -lt 1000 ]; do sleep 0.01; i=$((i+1)); done; "
                                      "[ -e '" +
                                      seen + "' ] && record Two");
    expectDone(
        runNebsc({"log"}, surroundings(git, NebscOutput::terminal,
                                       {{"PAGER", "while read -r line; do echo \"$line\"; : >'" +
                                                      seen + "'; done"}})),
        line("One") + "\r\n" + line("Two") + "\r\n");
}

TEST_F(Streaming, AFullDiskEndsGit) {
    for (const std::string& rest : {withoutEnd, endless}) {
        for (const std::vector<std::string>& arguments :
             std::vector<std::vector<std::string>>{{"log"}, {"request", "--stream"}}) {
            const StandInGit git = gitWithLog("record One; " + rest);
            expectFailed(runNebsc(arguments, surroundings(git, NebscOutput::full)),
                         "nebsc: standard output could not be written: No space left on device\n");
            expectThatGitHasEnded();
        }
    }
}

TEST_F(Streaming, AFailureFollowsTheRecords) {
    const StandInGit git =
        gitWithLog("record One; echo 'fatal: unable to read tree' >&2; exit 128");
    NebscOutcome outcome = runNebsc({"log"}, surroundings(git, NebscOutput::pipe));
    EXPECT_EQ(outcome.output, line("One") + "\n");
    EXPECT_THAT(outcome.errors, StartsWith("nebsc: "));
    EXPECT_EQ(outcome.exitStatus, 1);
    outcome = runNebsc({"request", "--stream"}, surroundings(git, NebscOutput::pipe));
    const JSON last = JSON::parse(outcome.output.substr(outcome.output.find('\n') + 1));
    EXPECT_EQ(last["outcome"]["recordCount"], 1);
    EXPECT_THAT(last["outcome"]["error"]["text"], HasSubstr("unable to read tree"));
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST_F(Streaming, ASignalEndsGit) {
    for (const std::string& rest : {withoutEnd, endless}) {
        const StandInGit git = gitWithLog("record One; " + rest);
        Nebsc program({"log"}, surroundings(git, NebscOutput::pipe));
        EXPECT_EQ(program.awaitLine(), line("One"));
        program.send(SIGINT);  // while it waits for git, or for the test to read
        const NebscOutcome outcome = program.outcome();
        EXPECT_EQ(outcome.errors, "nebsc: stopped by SIGINT\n");
        EXPECT_EQ(outcome.exitStatus, 130);
        expectThatGitHasEnded();
    }
}

TEST_F(Streaming, ASignalEndsAWriteThatNobodyReads) {
    const StandInGit git = gitWithLog("record One; " + endless);
    Nebsc program({"log"}, surroundings(git, NebscOutput::pipe));
    EXPECT_EQ(program.awaitLine(), line("One"));
    program.send(SIGTERM);
    EXPECT_EQ(program.exitStatusWithoutReading(), 143);
    expectThatGitHasEnded();
}

/// nebsc would wait for the reader again, and the outcome would continue half a line.
TEST_F(Streaming, ATimeLimitThatEndsAWriteLeavesOutTheOutcome) {
    const StandInGit git = gitWithLog("record One; " + endless);
    Nebsc program({"request", "--stream", "--timeout", "0.5"},
                  surroundings(git, NebscOutput::pipe));
    EXPECT_EQ(program.exitStatusWithoutReading(), 1);
}

TEST_F(Streaming, CtrlCInAPagerEndsGit) {
    const std::string screen = "i=0; while [ $i -lt 40 ]; do record One; i=$((i+1)); done; ";
    const StandInGit git = gitWithLog(screen + withoutEnd);
    const NebscOutcome outcome =
        runNebsc({"log"}, surroundings(git, NebscOutput::terminal,
                                       {{"PAGER", "head -n 1; kill -INT $PPID; cat > /dev/null"}}));
    EXPECT_EQ(outcome.output, line("One") + "\r\n");
    EXPECT_EQ(outcome.errors, "nebsc: stopped by SIGINT\n");
    EXPECT_EQ(outcome.exitStatus, 130);
    expectThatGitHasEnded();
}

TEST_F(Streaming, NeedsNoMoreMemoryForALongerLog) {
    const auto peakOf = [this](const std::string& size) {
        const StandInGit git = gitWithLog(
            "yes \"$(printf 'Z0123456789ab\\nAnn\\na@b\\n1600000000\\nMessage\\001')\" | "
            "head -c " +
            size + " | tr Z '\\000'");
        const NebscOutcome outcome = runNebsc(
            {"log"},
            surroundings(git, NebscOutput::collected, {{"ASAN_OPTIONS", "quarantine_size_mb=1"}}));
        EXPECT_EQ(outcome.exitStatus, 0);
        EXPECT_GT(outcome.output.size(), std::stoul(size) / 2);
        return outcome.peakKiB;
    };
    EXPECT_LT(peakOf("4000000"), peakOf("400000") + 8192);
}

TEST_F(Streaming, NeedsNoMoreMemoryForALongerPatch) {
    const auto peakOf = [this](const std::string& size) {
        const StandInGit git(folder.path(),
                             scriptOf("diff", ":", "yes '+a line of a patch' | head -c " + size));
        const NebscOutcome outcome = runNebsc(
            {"diff"},
            surroundings(git, NebscOutput::collected, {{"ASAN_OPTIONS", "quarantine_size_mb=1"}}));
        EXPECT_EQ(outcome.exitStatus, 0);
        EXPECT_EQ(outcome.output.size(), std::stoul(size));
        return outcome.peakKiB;
    };
    EXPECT_LT(peakOf("20000000"), peakOf("400000") + 8192);
}

/// git runs in the nearest folder with a ".git" while another process looks for the top folder.
TEST_F(Streaming, PrintsNothingOfARepositoryThatTurnsOutToBeAnother) {
    const TemporaryFolder other;
    folder.write(".git", "");
    const StandInGit git(other.path(), logScript("record \"$(basename \"$PWD\")\""));
    expectDone(runNebsc({"log"}, surroundings(git, NebscOutput::pipe)),
               line(other.path().substr(other.path().rfind('/') + 1)) + "\n");
}

/// The search for the repository waits for the log, for at most five seconds.
TEST_F(Streaming, ALogOfABareRepositoryStartsBesideTheSearchForIt) {
    std::filesystem::create_directories(folder.path("objects"));
    std::filesystem::create_directories(folder.path("refs"));
    folder.write("HEAD", "ref: refs/heads/main\n");
    const std::string top = folder.path();
    const TemporaryFolder programs;
    programs.writeProgram(
        "git",
        "#!/bin/sh\ncase \"$*\" in rev-parse*show-toplevel*) i=0\n"
        "while ! [ -e '" +
            top +
            "/git' ] && [ $i -lt 500 ]; do sleep 0.01; i=$((i+1)); done\n"
            "[ -e '" +
            top + "/git' ] || touch '" + top +
            "/late'\n"
            "echo false; echo 'fatal: this operation must be run in a work tree' >&2; exit 128;;\n"
            "esac\n" +
            logScript("record One"));
    Variables variables{{"PATH", programs.path() + ":/usr/bin:/bin"}, {"TZ", "UTC"}};
    expectDone(runNebsc({"log"}, {.folder = top, .variables = variables}), line("One") + "\n");
    EXPECT_FALSE(std::filesystem::exists(folder.path("late")));
}

}  // namespace
}  // namespace neb::test
