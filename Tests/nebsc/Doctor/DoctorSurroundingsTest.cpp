// The findings of `nebsc doctor` about the identity, hooks and environment variables.

#include <sys/stat.h>

#include <filesystem>

#include "nebsc/Doctor/DoctorTest.h"

namespace neb::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class DoctorSurroundings : public DoctorTest {
protected:
    void writeHook(const std::string& name, const std::string& content,
                   bool isExecutable = true) const {
        repository.write(".git/hooks/" + name, content);
        using std::filesystem::perms;
        std::filesystem::permissions(
            repository.path(".git/hooks/" + name),
            isExecutable ? perms::owner_all : perms::owner_read | perms::owner_write);
    }
};

// ---- the identity -----------------------------------------------------------------------------

TEST_F(DoctorSurroundings, TheIdentityIsShown) {
    EXPECT_THAT(findings("identity"), IsOneFinding("ok", "Ann Example <ann@example.org>", ""));
}

TEST_F(DoctorSurroundings, AnIdentityThatGitRefusesIsAProblem) {
    repository.git({"config", "user.email", ""});
    repository.git({"config", "user.useConfigOnly", "true"});
    repository.git({"config", "user.name", ""});
    EXPECT_THAT(findings("identity"),
                IsOneFinding("problem", HasSubstr("empty ident name"),
                             AllOf(HasSubstr("git config --local user.name "),
                                   HasSubstr("git config --local user.email "))));
    const NebscOutcome outcome = nebsc({"doctor"});
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST_F(DoctorSurroundings, AMissingIdentityIsAProblemIfGitMustNotGuess) {
    repository.write("config", "[user]\n\tuseConfigOnly = true\n");
    EXPECT_THAT(findings("identity", {{"GIT_CONFIG_GLOBAL", repository.path("config")}}),
                IsOneFinding("problem", HasSubstr("auto-detection is disabled"),
                             HasSubstr("git config --global user.email ")));
    const TemporaryFolder plain;
    EXPECT_THAT(
        findingsIn(plain.path(), "identity", {{"GIT_CONFIG_GLOBAL", repository.path("config")}}),
        IsOneFinding("problem", HasSubstr("auto-detection is disabled"),
                     HasSubstr("git config --global user.email ")));
}

TEST_F(DoctorSurroundings, AnAddressThatGitGuessedIsNoted) {
    const StandInGit git(repository.path(),
                         "case \"$1\" in var) echo 'Ann <ann@machine> 1600000000 +0000';; "
                         "config) exit 0;; *) exec /usr/bin/git \"$@\";; esac");
    EXPECT_THAT(findings("identity", {git.path()}),
                IsOneFinding("note", HasSubstr("Ann <ann@machine>"),
                             HasSubstr("git config --global user.email ")));
}

/// Without HOME, "git config --global" fails.
TEST_F(DoctorSurroundings, AdviceOnGlobalSettingsStartsWithAMissingHOME) {
    const StandInGit git(repository.path(),
                         "case \"$1\" in var) echo 'Ann <ann@machine> 1600000000 +0000';; "
                         "config) exit 0;; *) exec /usr/bin/git \"$@\";; esac");
    const std::string advice =
        "Set HOME, which 'git config --global' requires. Run: git config --global user.email "
        "YOU@EXAMPLE.ORG";
    EXPECT_THAT(findings("identity", {git.path(), {"HOME", ""}, {"GIT_CONFIG_GLOBAL", ""}}),
                IsOneFinding("note", HasSubstr("Ann <ann@machine>"), advice));
}

TEST_F(DoctorSurroundings, ACommitterThatGitRefusesIsAProblem) {
    EXPECT_THAT(
        findings("identity", {{"GIT_COMMITTER_NAME", "<>"}}),
        IsOneFinding("problem", AllOf(HasSubstr("committer"), HasSubstr("disallowed characters")),
                     HasSubstr("GIT_COMMITTER_NAME")));
}

// ---- hooks ------------------------------------------------------------------------------------

TEST_F(DoctorSurroundings, HooksThatCanRunAreNamed) {
    std::filesystem::remove_all(repository.path(".git/hooks"));
    EXPECT_THAT(findings("hooks"), IsOneFinding("ok", "none installed", ""));
    writeHook("pre-commit", "#!/bin/sh\nexit 0\n");
    writeHook("commit-msg", "#! /usr/bin/env sh\nexit 0\n");
    writeHook("post-commit", "exit 0\n");  // git runs it with sh
    writeHook("pre-commit.sample", "#!/no/such/program\n");
    writeHook("helper", "#!/no/such/program\n");
    EXPECT_THAT(findings("hooks"), IsOneFinding("ok", "pre-commit, commit-msg, post-commit", ""));
}

TEST_F(DoctorSurroundings, AHookWithAMissingInterpreterIsAProblem) {
    struct Row {
        const char* line;
        const char* program;
    };
    for (const auto& [line, program] : {Row{"#!/no/such/program -x", "/no/such/program"},
                                        Row{"#!/usr/bin/env nosuchprogram", "nosuchprogram"},
                                        Row{"#!/usr/bin/env -S nosuchprogram -u", "nosuchprogram"},
                                        Row{"#!/usr/bin/env -S A=1 nosuchprogram", "nosuchprogram"},
                                        Row{"#!/usr/bin/env sh -u", "sh -u"}}) {
        writeHook("pre-commit", std::string(line) + "\nexit 0\n");
        EXPECT_THAT(findings("hook"),
                    IsOneFinding("problem",
                                 repository.path(".git/hooks/pre-commit") +
                                     " cannot run: there is no program '" + program + "'",
                                 HasSubstr("Install")))
            << line;
    }
}

TEST_F(DoctorSurroundings, AHookWithCRLFLineEndsIsAProblem) {
    writeHook("pre-commit", "#!/bin/sh\r\nexit 0\r\n");
    EXPECT_THAT(findings("hook"), IsOneFinding("problem", HasSubstr("carriage return"),
                                               HasSubstr(".git/hooks/pre-commit")));
}

TEST_F(DoctorSurroundings, AHookThatIsNotExecutableIsNoted) {
    writeHook("pre-commit", "#!/bin/sh\nexit 0\n", false);
    EXPECT_THAT(findings("hook"),
                IsOneFinding("note", HasSubstr("is not executable, so git ignores it"),
                             "Run: chmod +x " + repository.path(".git/hooks/pre-commit")));
}

TEST_F(DoctorSurroundings, HooksAreSearchedInTheConfiguredFolder) {
    repository.write("my hooks/pre-push", "#!/no/such/program\n");
    std::filesystem::permissions(repository.path("my hooks/pre-push"),
                                 std::filesystem::perms::owner_all);
    repository.git({"config", "core.hooksPath", "my hooks"});
    repository.write("src/a.c", "");
    EXPECT_THAT(findingsIn(repository.path("src"), "hook"),
                IsOneFinding("problem", HasSubstr(repository.path("my hooks/pre-push")),
                             HasSubstr("Install")));
    repository.git({"config", "core.hooksPath", "/no/such/folder"});
    EXPECT_THAT(findings("hooks"),
                IsOneFinding("note", HasSubstr("/no/such/folder"), HasSubstr("core.hooksPath")));
}

TEST_F(DoctorSurroundings, HooksAreNotRunAndANamedPipeDoesNotBlock) {
    const std::string mark = repository.path("mark");
    for (const char* name : {"post-index-change", "reference-transaction", "fsmonitor-watchman"}) {
        writeHook(name, "#!/bin/sh\ntouch '" + mark + "'\n");
    }
    ASSERT_EQ(::mkfifo(repository.path(".git/hooks/pre-commit").c_str(), 0700), 0);
    EXPECT_THAT(findings("hook"), IsOneFinding("problem", HasSubstr("not a regular file"), ""));
    EXPECT_FALSE(std::filesystem::exists(mark));
}

// ---- the environment --------------------------------------------------------------------------

TEST_F(DoctorSurroundings, IgnoredVariablesAreNoted) {
    EXPECT_THAT(findings("variable"), IsEmpty());
    EXPECT_THAT(findings("variable", {{"GIT_DIR", "/x"}}),
                IsOneFinding("note",
                             AllOf(HasSubstr("GIT_DIR is '/x', but is ignored here"),
                                   HasSubstr("ties a process to one repository")),
                             HasSubstr("nebsc -C")));
    for (const char* name : {"GIT_WORK_TREE", "GIT_INDEX_FILE", "GIT_OBJECT_DIRECTORY",
                             "GIT_NAMESPACE", "GIT_LITERAL_PATHSPECS", "GIT_TRACE"}) {
        EXPECT_THAT(findings("variable", {{name, "1"}}),
                    IsOneFinding("note", testing::StartsWith(name), testing::_));
    }
    EXPECT_THAT(findings("variable", {{"COLUMNS", "80"}, {"GIT_DIR", ""}, {"GIT_PREFIX", "a/"}}),
                IsEmpty());
}

TEST_F(DoctorSurroundings, SecretsInIgnoredVariablesAreNotShown) {
    const auto found =
        findings("variable",
                 {{"GIT_CONFIG_PARAMETERS", "'http.extraheader'='Authorization: Basic s3cret'"}});
    EXPECT_THAT(found, IsOneFinding("note", Not(HasSubstr("s3cret")), testing::_));
}

}  // namespace
}  // namespace neb::test
