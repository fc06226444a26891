#include "Support/PeakMemory.h"

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>

#include "Platform/FileDescriptor.h"

namespace neb::benchmarks {

namespace {

/// Returns the figure in KiB of /proc/self/status with that name.
std::int64_t memoryFigure(const std::string& name) {
    std::ifstream file("/proc/self/status");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(name + ":")) {
            return std::atoll(line.c_str() + name.size() + 1);
        }
    }
    return 0;
}

/// Runs in the copy of the process, and ends it: does the work and reports the growth.
[[noreturn]] void tellGrowth(int end, const std::function<void()>& work) {
    ::malloc_trim(0);                             // counts memory that earlier runs freed
    std::ofstream("/proc/self/clear_refs") << 5;  // resets the peak
    const std::int64_t before = memoryFigure("VmRSS");
    try {
        work();
    } catch (const std::exception&) {
        ::_exit(1);
    }
    const std::int64_t growth = (memoryFigure("VmHWM") - before) * 1024;
    ::_exit(::write(end, &growth, sizeof growth) == sizeof growth ? 0 : 1);
}

}  // namespace

std::int64_t peakGrowth(const std::function<void()>& work) {
    Pipe pipe;
    const bool isPipeThere = openPipe(pipe, PipeSize::ordinary) == 0;
    const pid_t child = isPipeThere ? ::fork() : -1;
    if (child == 0) {
        tellGrowth(pipe.writeEnd.get(), work);
    }
    pipe.writeEnd.close();
    std::int64_t growth = 0;
    const bool isTold =
        child > 0 && ::read(pipe.readEnd.get(), &growth, sizeof growth) == sizeof growth;
    if (child > 0) {
        ::waitpid(child, nullptr, 0);
    }
    if (!isTold) {
        throw std::runtime_error("the memory of the work could not be measured");
    }
    return growth;
}

}  // namespace neb::benchmarks
