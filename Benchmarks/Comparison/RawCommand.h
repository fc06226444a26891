// RawCommand.h - a bare child process: posix_spawn, a read loop, waitpid.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <vector>

#include "Platform/ChildProcess.h"
#include "Platform/FileDescriptor.h"

namespace neb::benchmarks {

class RawCommand {
public:
    /// The destination of the output.
    enum class Memory {
        wholeOutput,  ///< fresh memory for every byte, given back at the end
        onePiece,     ///< the same 1 MiB again and again
    };

    explicit RawCommand(ChildLaunch launch);
    RawCommand(const RawCommand&) = delete;
    RawCommand& operator=(const RawCommand&) = delete;
    ~RawCommand() = default;

    /// Starts the child with /dev/null as standard input and error, reads its standard output to
    /// the end through a pipe like those of the host library, and reaps it. Returns the number of
    /// bytes. Throws std::runtime_error if the child fails.
    [[nodiscard]] std::size_t run(Memory memory) const;

    /// Starts the child in the same way, reads until the first byte has arrived, and ends the child
    /// with SIGTERM. Returns the milliseconds from the start to this byte.
    [[nodiscard]] double millisecondsToFirstByte() const;

private:
    /// Returns the id of the child, which writes to the pipe.
    [[nodiscard]] pid_t start(Pipe& pipe) const;

    ChildLaunch _launch;
    std::vector<char*> _arguments;    // pointers into _launch, and null at the end
    std::vector<char*> _environment;  // the same
};

}  // namespace neb::benchmarks
