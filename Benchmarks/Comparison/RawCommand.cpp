#include "RawCommand.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

#include "Rounds.h"

namespace neb::benchmarks {

namespace {

constexpr std::size_t pieceSize = 1U << 20;
/// Address space for any output; only written pages use memory.
constexpr std::size_t room = 1ULL << 33;

void check(int failure) {
    if (failure != 0) {
        throw std::runtime_error("a child could not be started by hand");
    }
}

class FreshMemory {
public:
    FreshMemory()
        : _start(::mmap(nullptr, room, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {
        check(_start == MAP_FAILED ? 1 : 0);
    }
    FreshMemory(const FreshMemory&) = delete;
    FreshMemory& operator=(const FreshMemory&) = delete;
    ~FreshMemory() { ::munmap(_start, room); }

    [[nodiscard]] char* start() const { return static_cast<char*>(_start); }

private:
    void* _start;
};

/// Reads to the end. With `step` 1 the chunks are appended, with 0 each one overwrites the previous
/// one.
std::size_t readAll(int descriptor, char* memory, std::size_t step) {
    std::size_t total = 0;
    while (true) {
        const ssize_t count = ::read(descriptor, memory + total * step, pieceSize);
        if (count <= 0) {
            return total;
        }
        total += static_cast<std::size_t>(count);
    }
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 2);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

RawCommand::RawCommand(ChildLaunch launch) : _launch(std::move(launch)) {
    _arguments = pointersTo(_launch.arguments);
    _arguments.insert(_arguments.begin(), _launch.launchPath.data());
    _environment = pointersTo(_launch.environment);
}

pid_t RawCommand::start(Pipe& pipe) const {
    check(openPipe(pipe, PipeSize::large));
    posix_spawn_file_actions_t actions{};
    check(::posix_spawn_file_actions_init(&actions));
    check(::posix_spawn_file_actions_addchdir_np(&actions, _launch.currentDirectoryPath->c_str()));
    check(::posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0));
    check(::posix_spawn_file_actions_adddup2(&actions, pipe.writeEnd.get(), 1));
    check(::posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0));
    pid_t pid = -1;
    check(::posix_spawn(&pid, _launch.launchPath.c_str(), &actions, nullptr, _arguments.data(),
                        _environment.data()));
    ::posix_spawn_file_actions_destroy(&actions);
    pipe.writeEnd.close();
    return pid;
}

std::size_t RawCommand::run(Memory memory) const {
    Pipe pipe;
    const pid_t pid = start(pipe);
    const FreshMemory fresh;
    const std::size_t bytes =
        readAll(pipe.readEnd.get(), fresh.start(), memory == Memory::wholeOutput ? 1 : 0);
    int status = -1;
    ::waitpid(pid, &status, 0);
    if (status != 0) {
        throw std::runtime_error(_launch.launchPath + " failed when it was started by hand");
    }
    return bytes;
}

double RawCommand::millisecondsToFirstByte() const {
    Pipe pipe;
    pid_t pid = -1;
    char byte = 0;
    ssize_t count = 0;
    const double milliseconds = millisecondsOf([&] {
        pid = start(pipe);
        count = ::read(pipe.readEnd.get(), &byte, 1);
    });
    pipe.readEnd.close();
    ::kill(pid, SIGTERM);
    ::waitpid(pid, nullptr, 0);
    if (count != 1) {
        throw std::runtime_error(_launch.launchPath +
                                 " printed nothing when it was started by hand");
    }
    return milliseconds;
}

}  // namespace neb::benchmarks
