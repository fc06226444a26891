#include "Machine.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <fstream>
#include <thread>

#include "LibGit2.h"
#include "NumberText.h"
#include "Platform/Text.h"
#include "Support/GeneratedRepository.h"

namespace neb::benchmarks {

namespace {

std::string processorModel() {
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("model name")) {
            return line.substr(line.find(": ") + 2);
        }
    }
    return "unknown";
}

std::string memory() {
    const double bytes = static_cast<double>(::sysconf(_SC_PHYS_PAGES)) *
                         static_cast<double>(::sysconf(_SC_PAGESIZE));
    return numberText(bytes / (1 << 30), 0) + " GiB";
}

std::string kernel() {
    utsname names{};
    ::uname(&names);
    return std::string(names.sysname) + " " + names.release + " " + names.machine;
}

std::string compiler() {
#ifdef __clang__
    return "clang " __clang_version__ ", optimised";
#else
    return "g++ " __VERSION__ ", optimised";
#endif
}

}  // namespace

std::vector<std::pair<std::string, std::string>> describeMachine() {
    return {
        {"processor", processorModel()},
        {"cores", std::to_string(std::thread::hardware_concurrency())},
        {"memory", memory()},
        {"kernel", kernel()},
        {"git", std::string(textByTrimmingLineEnds(runGit("/", {"--version"})))},
        {"libgit2", libgit2Version()},
        {"compiler", compiler()},
    };
}

}  // namespace neb::benchmarks
