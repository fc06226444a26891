#include "nebsc/Credentials/AuthenticatingServers.h"

#include <fcntl.h>
#include <pwd.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <utility>

#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "Platform/ChildProcess.h"
#include "Support/FreePort.h"
#include "Support/ProgramStart.h"

namespace neb::test {

namespace {

constexpr const char* sshd = "/usr/sbin/sshd";

void runTool(const std::vector<std::string>& arguments) {
    ChildProcess process;
    const ChildOutcome outcome =
        process.run({{.launchPath = "/usr/bin/env",
                      .arguments = arguments,
                      .currentDirectoryPath = std::nullopt,
                      .environment = NEBSourceControlInheritedEnvironment()}})[0];
    if (!outcome.status.isSuccess()) {
        throw std::runtime_error(arguments[0] + ": " + std::string(outcome.errorOutput));
    }
}

}  // namespace

bool SSHServer::isInstalled() {
    return std::filesystem::exists(sshd);
}

SSHServer::SSHServer() {
    createKeys();
    do {
        _port = freePort();
    } while (!start());
    writeClientConfiguration();
}

SSHServer::~SSHServer() {
    stop();
}

void SSHServer::createKeys() const {
    runTool({"ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", folder.path("host")});
    runTool({"ssh-keygen", "-q", "-t", "ed25519", "-N", passphrase, "-f", folder.path("key")});
}

bool SSHServer::start() {
    if (::geteuid() == 0) {  // sshd of root drops its privileges there
        std::filesystem::create_directories("/run/sshd");
    }
    folder.write("sshd_config", "ListenAddress 127.0.0.1:" + std::to_string(_port) + "\nHostKey " +
                                    folder.path("host") + "\nAuthorizedKeysFile " +
                                    folder.path("key.pub") +
                                    "\nPidFile none\nStrictModes no\nUsePAM no\n"
                                    "PermitRootLogin yes\nPasswordAuthentication no\n");
    Pipe pipe;
    if (openPipe(pipe, PipeSize::ordinary) != 0) {
        throw std::runtime_error("no pipe could be created");
    }
    _server = startProgram({sshd, "-D", "-e", "-f", folder.path("sshd_config")},
                           NEBSourceControlInheritedEnvironment(),
                           {.standardInput = ChildStream::file("/dev/null", O_RDONLY),
                            .standardError = ChildStream::copyOf(pipe.writeEnd.get())});
    pipe.writeEnd.close();
    _log = std::move(pipe.readEnd);
    std::string text;
    std::string line;
    while (!(line = readLine(_log.get())).empty()) {
        if (line.find("listening on") != std::string::npos) {
            return true;
        }
        text += line;
    }
    stop();
    if (text.find("Address already in use") == std::string::npos) {
        throw std::runtime_error("sshd: " + text);
    }
    return false;
}

void SSHServer::stop() {
    ::kill(_server, SIGTERM);
    ::waitpid(_server, nullptr, 0);
}

void SSHServer::writeClientConfiguration() const {
    folder.write("known", "[127.0.0.1]:" + std::to_string(_port) + " " + folder.read("host.pub"));
    for (const bool isKnown : {true, false}) {
        folder.write(
            isKnown ? "ssh_known" : "ssh_unknown",
            "IdentityFile " + folder.path("key") +
                "\nIdentitiesOnly yes\nIdentityAgent none\nGlobalKnownHostsFile /dev/null\n"
                "UserKnownHostsFile " +
                folder.path(isKnown ? "known" : "new_known") + "\n");
    }
}

std::string SSHServer::url() const {
    return "ssh://" + std::string(::getpwuid(::geteuid())->pw_name) +
           "@127.0.0.1:" + std::to_string(_port) + folder.path("shared.git");
}

std::pair<std::string, std::optional<std::string>> SSHServer::variable(bool isKnown) const {
    return {"GIT_SSH_COMMAND", "ssh -F " + folder.path(isKnown ? "ssh_known" : "ssh_unknown")};
}

}  // namespace neb::test
