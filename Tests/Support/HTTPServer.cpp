#include "Support/HTTPServer.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>

#include <stdexcept>

#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "Platform/FileDescriptor.h"
#include "Support/ProgramStart.h"
#include "Support/TestRepository.h"

namespace neb::test {

SharedFolder::SharedFolder() {
    const TestRepository repository;
    repository.commitFile("a", "1\n");
    repository.git({"clone", "-q", "--bare", repository.path(), folder.path("shared.git")});
}

HTTPServer::HTTPServer(const std::string& passwordOfAnn) {
    folder.write("credentials", "ann:" + passwordOfAnn);
    Pipe pipe;
    if (openPipe(pipe, PipeSize::ordinary) != 0) {
        throw std::runtime_error("no pipe could be created");
    }
    _server =
        startProgram({"python3", NEB_SOURCE_FOLDER "/Tests/Support/http_server.py", folder.path()},
                     NEBSourceControlInheritedEnvironment(),
                     {.standardInput = ChildStream::file("/dev/null", O_RDONLY),
                      .standardOutput = ChildStream::copyOf(pipe.writeEnd.get())});
    pipe.writeEnd.close();
    _host = "http://127.0.0.1:" + readLine(pipe.readEnd.get());
}

HTTPServer::~HTTPServer() {
    ::kill(_server, SIGKILL);
    ::waitpid(_server, nullptr, 0);
}

std::string HTTPServer::url(const std::string& user) const {
    std::string url = _host + "/shared.git";
    return url.insert(url.find("127."), user);
}

std::string HTTPServer::placesOfPassword() const {
    return folder.read("seen");
}

std::string HTTPServer::requests() const {
    return folder.read("requests");
}

}  // namespace neb::test
