#include "Support/SubversionServer.h"

#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>
#include <thread>

#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "Platform/ChildProcess.h"
#include "Support/FreePort.h"
#include "Support/ProgramStart.h"

namespace neb::test {

namespace {

ChildOutcome runCommand(std::vector<std::string> command) {
    ChildProcess process;
    return process.run({{.launchPath = "/usr/bin/env",
                         .arguments = std::move(command),
                         .currentDirectoryPath = std::nullopt,
                         .environment = NEBSourceControlInheritedEnvironment()}})[0];
}

pid_t startServer(const std::string& root, int port) {
    return startProgram({"svnserve", "--daemon", "--foreground", "--listen-host", "127.0.0.1",
                         "--listen-port", std::to_string(port), "--root", root},
                        NEBSourceControlInheritedEnvironment(), {});
}

}  // namespace

SubversionServer::SubversionServer() {
    run({"svnadmin", "create", _folder.path("repository")});
    _folder.write("repository/conf/svnserve.conf", "[general]\nanon-access = write\n");
    run({"svn", "mkdir", "-q", "-m", "folders", fileURL() + "/trunk", fileURL() + "/branches",
         fileURL() + "/tags"});
    commitFile("trunk/a", "first\n");
    while (_url.empty()) {
        const int port = freePort();
        const std::string url = "svn://127.0.0.1:" + std::to_string(port);
        _server = startServer(_folder.path("repository"), port);
        while (::waitpid(_server, nullptr, WNOHANG) == 0) {
            if (runCommand({"svn", "info", url}).status.isSuccess()) {
                _url = url;
                break;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    }
}

SubversionServer::~SubversionServer() {
    ::kill(_server, SIGKILL);
    ::waitpid(_server, nullptr, 0);
}

std::string SubversionServer::run(std::vector<std::string> command) const {
    std::string line;
    for (const std::string& argument : command) {
        line += argument + " ";
    }
    const ChildOutcome outcome = runCommand(std::move(command));
    if (!outcome.status.isSuccess()) {
        throw std::runtime_error(line + ": " + std::string(outcome.errorOutput));
    }
    return std::string(outcome.output);
}

void SubversionServer::commitFile(const std::string& path, const std::string& bytes) const {
    const TemporaryFolder checkout;
    const std::string copy = checkout.path("copy");
    run({"svn", "checkout", "-q", fileURL(), copy});
    checkout.write("copy/" + path, bytes);
    run({"svn", "add", "-q", "--force", "--parents", copy + "/" + path});
    run({"svn", "commit", "-q", "-m", "a change", copy});
}

std::string SubversionServer::content(const std::string& path) const {
    return run({"svn", "cat", fileURL() + "/" + path});
}

void SubversionServer::refuseCommits(const std::string& message) const {
    _folder.writeProgram("repository/hooks/pre-commit",
                         "#!/bin/sh\necho '" + message + "' >&2\nexit 1\n");
}

}  // namespace neb::test
