#include "Measurement.h"

#include <time.h>

#include <stdexcept>

#include "HostRun.h"
#include "RawCommand.h"
#include "Support/PeakMemory.h"

namespace neb::benchmarks {

namespace {

double processorMilliseconds() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

/// Parses bytes in memory and measures the processor time of this thread, which does not depend on
/// the load of the machine.
double parsingSpeed(const Case& what, const Request& request, const Data& printed, int rounds) {
    std::shared_ptr<NEBSourceControlTaskOperation> reader;
    std::vector<double> times;
    for (int round = 0; round < rounds * 3; ++round) {
        reader = what.reader(request);
        reader->setData(printed);
        const double start = processorMilliseconds();
        reader->parseData();
        times.push_back(processorMilliseconds() - start);
    }
    return static_cast<double>(printed.size()) / spreadOf(times).median;
}

void compareAnswers(const Case& what, std::size_t ours, std::size_t libgit2) {
    if (ours != libgit2) {
        throw std::runtime_error(std::string(what.name) + ": " + std::to_string(ours) +
                                 " records, but of libgit2 " + std::to_string(libgit2));
    }
}

}  // namespace

Measurement measure(const Case& what, int size, const std::string& path, int rounds) {
    const Request request = what.request(path);
    const ChildLaunch launch = launchFor(request);
    const RawCommand raw(launch);
    Measurement figures{.what = &what, .size = size};
    std::size_t libgit2Records = 0;
    const Rounds timed({
                           [&] { figures.bytes = raw.run(RawCommand::Memory::wholeOutput); },
                           [&] { figures.records = performOperation(request); },
                           [&] { libgit2Records = what.withLibGit2(path); },
                       },
                       rounds);
    compareAnswers(what, figures.records, libgit2Records);
    figures.git = timed.milliseconds(0);
    figures.operation = timed.milliseconds(1);
    figures.libgit2 = timed.milliseconds(2);
    figures.toGit = timed.ratio(1, 0);
    figures.toLibGit2 = timed.ratio(1, 2);
    figures.added = timed.difference(1, 0);
    figures.peak = peakGrowth([&request] { performOperation(request); });

    ChildProcess process;
    const Data printed = process.run({launch})[0].output;
    figures.parsing = parsingSpeed(what, request, printed, rounds);
    return figures;
}

}  // namespace neb::benchmarks
