#include "ServerLoad.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>

#include "Cases.h"
#include "HostRun.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Platform/FileDescriptor.h"
#include "RawCommand.h"

namespace neb::benchmarks {

namespace {

constexpr int atOnce = 64;
constexpr int inAll = 10 * atOnce;

/// A running server and the pipes to it.
class Server {
public:
    explicit Server(const std::filesystem::path& nebsc) {
        Pipe input;
        Pipe output;
        if (openPipe(input, PipeSize::large) != 0 || openPipe(output, PipeSize::large) != 0) {
            throw std::runtime_error("no pipe for the server");
        }
        posix_spawn_file_actions_t actions{};
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, input.readEnd.get(), 0);
        ::posix_spawn_file_actions_adddup2(&actions, output.writeEnd.get(), 1);
        std::string program = nebsc.string();
        std::string command = "serve";
        const std::array<char*, 3> arguments{program.data(), command.data(), nullptr};
        const int failure =
            ::posix_spawn(&_pid, program.c_str(), &actions, nullptr, arguments.data(), environ);
        ::posix_spawn_file_actions_destroy(&actions);
        if (failure != 0) {
            throw std::runtime_error(program + " could not be started");
        }
        _input = std::move(input.writeEnd);
        _output = std::move(output.readEnd);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server() {
        _input.close();
        ::waitpid(_pid, nullptr, 0);
    }

    void send(const std::string& content) {
        const std::string message =
            "Content-Length: " + std::to_string(content.size()) + "\r\n\r\n" + content;
        if (::write(_input.get(), message.data(), message.size()) !=
            static_cast<ssize_t>(message.size())) {
            throw std::runtime_error("the server takes nothing");
        }
    }

    /// Waits for the next message, which is valid until the next call.
    std::string_view receive() {
        constexpr std::string_view header = "Content-Length: ";
        constexpr std::string_view headerEnd = "\r\n\r\n";
        while (true) {
            const std::string_view rest = std::string_view(_received).substr(_taken);
            const std::size_t end = rest.find(headerEnd);
            if (end != std::string_view::npos) {
                const std::size_t length = std::strtoul(rest.data() + header.size(), nullptr, 10);
                const std::size_t begin = end + headerEnd.size();
                if (rest.size() >= begin + length) {
                    _taken += begin + length;
                    return rest.substr(begin, length);
                }
            }
            readMore();
        }
    }

private:
    void readMore() {
        _received.erase(0, _taken);
        _taken = 0;
        std::array<char, 1U << 16> piece;
        const ssize_t count = ::read(_output.get(), piece.data(), piece.size());
        if (count <= 0) {
            throw std::runtime_error("the server has gone");
        }
        _received.append(piece.data(), static_cast<std::size_t>(count));
    }

    pid_t _pid = -1;
    FileDescriptor _input, _output;
    std::string _received;
    std::size_t _taken = 0;
};

std::string message(int id, const std::string& method, const std::string& params) {
    return R"({"jsonrpc":"2.0","id":)" + std::to_string(id) + R"(,"method":")" + method +
           R"(","params":)" + params + "}";
}

void askServer(Server& server, const std::string& params) {
    int sent = 0;
    const auto sendNext = [&] { server.send(message(++sent, "sourceControl/perform", params)); };
    while (sent < atOnce) {
        sendNext();
    }
    for (int answered = 0; answered < inAll; ++answered) {
        // The error is the last member of an outcome.
        if (server.receive().find(R"("error":null)") == std::string_view::npos) {
            throw std::runtime_error("the server answered with an error");
        }
        if (sent < inAll) {
            sendNext();
        }
    }
}

/// Runs the same git command as often with xargs.
ChildLaunch launchOfXargs(ChildLaunch git) {
    std::string script = "seq " + std::to_string(inAll) + " | xargs -P " + std::to_string(atOnce) +
                         " -I{} \"$0\" \"$@\"";
    std::vector<std::string> arguments{"-c", std::move(script), git.launchPath};
    arguments.insert(arguments.end(), git.arguments.begin(), git.arguments.end());
    git.launchPath = "/bin/sh";
    git.arguments = std::move(arguments);
    return git;
}

}  // namespace

ServerLoad measureServerLoad(const std::filesystem::path& nebsc, const std::string& path,
                             int rounds) {
    const auto tree = std::make_shared<NEBSourceControlWorkingTree>();
    tree->location = path;
    const RawCommand xargs(launchOfXargs(launchFor(NEBSourceControlRequest::initWithType(
        NEBSourceControlRequestCurrentBranch, tree, std::nullopt, std::nullopt))));
    const std::string params = nlohmann::json{
        {"type", NEBSourceControlRequestCurrentBranch},
        {"sourceTree",
         {{"location", path}}}}.dump();
    Server server(nebsc);
    server.send(message(0, "initialize", "{}"));
    static_cast<void>(server.receive());
    const Rounds timed({
                           [&] { askServer(server, params); },
                           [&] { static_cast<void>(xargs.run(RawCommand::Memory::onePiece)); },
                       },
                       rounds);
    return {.toXargs = timed.ratio(1, 0), .rate = 1000 * inAll / timed.milliseconds(0).median};
}

}  // namespace neb::benchmarks
