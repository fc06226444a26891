#include "TLSServer.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>
#include <vector>

#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "Platform/ChildProcess.h"
#include "Support/ProgramStart.h"

namespace neb::test {

namespace {

/// Reads until a line contains the mark, for ten seconds at most. Returns the rest of that line.
std::string readAfter(int descriptor, const std::string& mark) {
    std::string text;
    constexpr int timeoutMilliseconds = 10000;
    pollfd ready{.fd = descriptor, .events = POLLIN, .revents = 0};
    char bytes[512];
    while (::poll(&ready, 1, timeoutMilliseconds) == 1) {
        const ssize_t count = ::read(descriptor, bytes, sizeof bytes);
        if (count <= 0) {
            break;
        }
        text.append(bytes, static_cast<std::size_t>(count));
        const std::size_t start = text.find(mark);
        const std::size_t end = start == std::string::npos ? start : text.find('\n', start);
        if (end != std::string::npos) {
            return text.substr(start + mark.size(), end - start - mark.size());
        }
    }
    return {};
}

}  // namespace

TLSServer::TLSServer() {
    ChildProcess process;
    const ChildOutcome made = process.run(
        {{.launchPath = "/usr/bin/env",
          .arguments = {"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt",
                        "ec_paramgen_curve:prime256v1", "-nodes", "-subj", "/CN=other.invalid",
                        "-addext", "subjectAltName=DNS:other.invalid", "-days", "2", "-keyout",
                        _folder.path("key.pem"), "-out", certificate()},
          .currentDirectoryPath = std::nullopt,
          .environment = NEBSourceControlInheritedEnvironment()}})[0];
    if (!made.status.isSuccess()) {
        throw std::runtime_error("openssl failed to create a certificate: " +
                                 std::string(made.errorOutput));
    }
    Pipe pipe;
    if (openPipe(pipe, PipeSize::ordinary) != 0) {
        throw std::runtime_error("no pipe could be created");
    }
    _server = startProgram({"openssl", "s_server", "-accept", "127.0.0.1:0", "-cert", certificate(),
                            "-key", _folder.path("key.pem"), "-www"},
                           NEBSourceControlInheritedEnvironment(),
                           {.standardInput = ChildStream::file("/dev/null", O_RDONLY),
                            .standardOutput = ChildStream::copyOf(pipe.writeEnd.get()),
                            .standardError = ChildStream::file("/dev/null", O_WRONLY)});
    pipe.writeEnd.close();
    _url = "https://127.0.0.1:" + readAfter(pipe.readEnd.get(), "ACCEPT 127.0.0.1:") + "/x.git";
}

TLSServer::~TLSServer() {
    ::kill(_server, SIGKILL);
    ::waitpid(_server, nullptr, 0);
}

}  // namespace neb::test
