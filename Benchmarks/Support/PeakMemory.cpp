#include "Support/PeakMemory.h"

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

namespace neb::benchmarks {

namespace {

/// The figure in KiB that the kernel gives of this process under the name.
std::int64_t memoryFigure(const std::string& name) {
    std::ifstream file("/proc/self/status");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(name + ":")) {
            return std::atoll(line.c_str() + name.size() + 1);
        }
    }
    return 0;
}

}  // namespace

std::int64_t peakGrowth(const std::function<void()>& work) {
    int ends[2];
    if (::pipe(ends) != 0) {
        return 0;
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::malloc_trim(0);                             // what earlier runs left free counts anew
        std::ofstream("/proc/self/clear_refs") << 5;  // and so does the peak
        const std::int64_t before = memoryFigure("VmRSS");
        work();
        const std::int64_t growth = (memoryFigure("VmHWM") - before) * 1024;
        ::_exit(::write(ends[1], &growth, sizeof growth) == sizeof growth ? 0 : 1);
    }
    std::int64_t growth = 0;
    ::close(ends[1]);
    if (::read(ends[0], &growth, sizeof growth) != sizeof growth) {
        growth = 0;
    }
    ::close(ends[0]);
    if (child > 0) {
        ::waitpid(child, nullptr, 0);
    }
    return growth;
}

}  // namespace neb::benchmarks
