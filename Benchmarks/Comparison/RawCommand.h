// RawCommand.h - a child as it is started by hand: posix_spawn, a read loop, waitpid.
#pragma once

#include <cstddef>
#include <vector>

#include "Platform/ChildProcess.h"

namespace neb::benchmarks {

class RawCommand {
public:
    /// Where the output is read to.
    enum class Memory {
        wholeOutput,  ///< fresh memory for every byte, given back at the end
        onePiece,     ///< the same 1 MiB again and again
    };

    explicit RawCommand(ChildLaunch launch);
    RawCommand(const RawCommand&) = delete;
    RawCommand& operator=(const RawCommand&) = delete;
    ~RawCommand() = default;

    /// Starts the child with /dev/null as its standard input and error, reads its standard output
    /// through a pipe like those of the host library, to the end, and reaps it. Answers the number
    /// of bytes; a child that fails is a std::runtime_error.
    [[nodiscard]] std::size_t run(Memory memory) const;

private:
    ChildLaunch _launch;
    std::vector<char*> _arguments;    // into _launch, and a null pointer
    std::vector<char*> _environment;  // the same
};

}  // namespace neb::benchmarks
