// Questions of git and ssh to the person at the terminal.

#include <gmock/gmock.h>

#include "Support/InstalledGit.h"
#include "Support/TestRepository.h"
#include "nebsc/Credentials/AuthenticatingServers.h"
#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using testing::Not;

/// Runs nebsc at a terminal; see at_terminal.py for the dialogue.
NebscOutcome runAtTerminal(std::vector<std::string> dialogue,
                           const std::vector<std::string>& arguments, const TemporaryFolder& folder,
                           VariableChanges variables = {}) {
    dialogue.insert(dialogue.begin(), NEB_SOURCE_FOLDER "/Tests/nebsc/Credentials/at_terminal.py");
    dialogue.insert(dialogue.end(), {"--", NEB_BUILD_FOLDER "/bin/nebsc"});
    dialogue.insert(dialogue.end(), arguments.begin(), arguments.end());
    return runProgram("/usr/bin/python3", dialogue,
                      {.folder = folder.path(), .variables = std::move(variables)});
}

NebscOutcome cloneAtTerminal(std::vector<std::string> dialogue, const std::string& url,
                             const TemporaryFolder& folder, VariableChanges variables = {}) {
    return runAtTerminal(std::move(dialogue), {"clone", url, folder.path("copy")}, folder,
                         std::move(variables));
}

/// Returns the dialogue in which the user, whom the URL names, gives the answer as the password.
std::vector<std::string> dialogueWithPassword(const std::string& answer) {
    if (isGitSince(55)) {  // asks for the name again
        return {"Username for", "ann", "Password for", answer};
    }
    return {"Password for", answer};
}

TEST(TerminalCredentials, AreAskedWithoutEchoForSecrets) {
    const HTTPServer http;
    const TemporaryFolder folder;
    const NebscOutcome outcome = cloneAtTerminal(
        {"Username for", "ann", "Password for", HTTPServer::password}, http.url(), folder);
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.output << outcome.errors;
    EXPECT_THAT(outcome.output, HasSubstr("Username for '" + http.host() + "': ann\n"));
    EXPECT_THAT(outcome.output, HasSubstr("Password for '"));
    EXPECT_THAT(outcome.output, Not(HasSubstr(HTTPServer::password)));
    EXPECT_EQ(folder.read("copy/a"), "1\n");
}

TEST(TerminalCredentials, MayBeDeclinedOrInterrupted) {
    const HTTPServer http;
    const TemporaryFolder folder;
    const NebscOutcome declined = cloneAtTerminal({"Username for", "^D"}, http.url(), folder);
    EXPECT_EQ(declined.exitStatus, 1);
    EXPECT_THAT(declined.output, HasSubstr("nebsc: "));
    EXPECT_THAT(declined.output, Not(HasSubstr("askpass")));
    const NebscOutcome interrupted =
        cloneAtTerminal(dialogueWithPassword("^C"), http.url("ann@"), folder);
    EXPECT_EQ(interrupted.exitStatus, 130) << interrupted.output;
    EXPECT_FALSE(std::filesystem::exists(folder.path("copy")));
}

/// Otherwise, the terminal would be left without echo.
TEST(TerminalCredentials, CannotBeQuitOrSuspendedWhileTheyAreHidden) {
    const HTTPServer http;
    const TemporaryFolder folder;
    for (const char* key : {"^\\", "^Z"}) {
        const NebscOutcome outcome = cloneAtTerminal(
            {"Password for", key + std::string(HTTPServer::password)}, http.url("ann@"), folder);
        EXPECT_EQ(outcome.exitStatus, 1) << key << outcome.output;
        EXPECT_THAT(outcome.output, HasSubstr("nebsc: ")) << "the key is part of the password";
    }
}

TEST(TerminalCredentials, AreNotAskedIfTheUserWantsNoPrompt) {
    const HTTPServer http;
    const TemporaryFolder folder;
    const NebscOutcome outcome =
        cloneAtTerminal({}, http.url(), folder, {{"GIT_TERMINAL_PROMPT", "0"}});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_THAT(outcome.output, Not(testing::StartsWith("Username for")));
    const std::string program =
        folder.writeProgram("askpass", "#!/bin/sh\ncase $1 in U*) echo ann;; *) echo '" +
                                           std::string(HTTPServer::password) + "';; esac\n");
    EXPECT_EQ(cloneAtTerminal({}, http.url(), folder, {{"GIT_ASKPASS", program}}).exitStatus, 0);
}

TEST(TerminalCredentials, AreNotAskedInTheBackground) {
    const HTTPServer http;
    const TemporaryFolder folder;
    const auto fetch = [&](const std::string& background, std::vector<std::string> dialogue) {
        const std::string request = R"({"type": 31, "files": [")" + http.url("ann@") +
                                    R"("], "background": )" + background + "}";
        return runAtTerminal(std::move(dialogue),
                             {"request", folder.write(background + ".json", request)}, folder);
    };
    const NebscOutcome inBackground = fetch("true", {});
    EXPECT_EQ(inBackground.exitStatus, 1);
    EXPECT_THAT(inBackground.output, HasSubstr("\"credentials-needed\""));
    EXPECT_EQ(fetch("false", dialogueWithPassword(HTTPServer::password)).exitStatus, 0);
}

TEST(TerminalCredentials, UnlockTheKeyOfSSH) {
    if (!SSHServer::isInstalled()) {
        GTEST_SKIP() << "sshd is not installed";
    }
    const SSHServer ssh;
    const TemporaryFolder folder;
    const NebscOutcome outcome =
        cloneAtTerminal({"continue connecting", "yes", "Enter passphrase", SSHServer::passphrase},
                        ssh.url(), folder, {ssh.variable(false)});
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.output;
    EXPECT_THAT(outcome.output, Not(HasSubstr(SSHServer::passphrase)));
}

}  // namespace
}  // namespace neb::test
