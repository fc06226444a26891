#include "LargeHost.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>

#include "HostRun.h"

namespace neb::benchmarks {

namespace {

constexpr std::size_t amount = 4ULL << 30;

/// Memory in ordinary pages, all touched.
class Ballast {
public:
    Ballast()
        : _start(
              ::mmap(nullptr, amount, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {
        if (_start == MAP_FAILED) {
            throw std::runtime_error("no 4 GiB of memory");
        }
        ::madvise(_start, amount, MADV_NOHUGEPAGE);
        std::memset(_start, 1, amount);
    }
    Ballast(const Ballast&) = delete;
    Ballast& operator=(const Ballast&) = delete;
    ~Ballast() { ::munmap(_start, amount); }

private:
    void* _start;
};

double medianOfMany(const Request& request) {
    std::vector<double> times(50);
    for (double& time : times) {
        time = millisecondsOf([&request] { performOperation(request); });
    }
    return spreadOf(std::move(times)).median;
}

bool isMemoryThere() {
    const auto pages = static_cast<std::size_t>(::sysconf(_SC_AVPHYS_PAGES));
    return pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)) > amount + amount / 2;
}

}  // namespace

std::optional<Spread> measureLargeHost(const Case& what, const std::string& path, int rounds) {
    if (!isMemoryThere()) {
        return std::nullopt;
    }
    const Request request = what.request(path);
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
        const double without = medianOfMany(request);
        const Ballast ballast;
        ratios.push_back(medianOfMany(request) / without);
    }
    return spreadOf(ratios);
}

}  // namespace neb::benchmarks
