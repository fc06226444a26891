#include "Collection.h"

#include <stdexcept>

#include "RawCommand.h"

namespace neb::benchmarks {

Collection measureCollection(int rounds) {
    constexpr std::size_t amount = 512'000'000;
    const ChildLaunch launch{.launchPath = "/usr/bin/head",
                             .arguments = {"-c", std::to_string(amount), "/dev/zero"},
                             .currentDirectoryPath = "/",
                             .environment = {}};
    const RawCommand raw(launch);
    const auto collect = [&launch] {
        ChildProcess process;
        if (process.run({launch})[0].output.size() != amount) {
            throw std::runtime_error("output was lost");
        }
    };
    const Rounds timed({
                           collect,
                           [&raw] { static_cast<void>(raw.run(RawCommand::Memory::wholeOutput)); },
                           [&raw] { static_cast<void>(raw.run(RawCommand::Memory::onePiece)); },
                       },
                       rounds);
    return {.toKeeping = timed.ratio(1, 0),
            .toDiscarding = timed.ratio(2, 0),
            .rate = static_cast<double>(amount) / timed.milliseconds(0).median};
}

}  // namespace neb::benchmarks
