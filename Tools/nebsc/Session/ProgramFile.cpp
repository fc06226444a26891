#include "Session/ProgramFile.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace neb::nebsc {

namespace fs = std::filesystem;

namespace {

/// Returns the file that the name stands for in a shell: the one at that path, or the first one of
/// that name in the folders of PATH. Empty if no such file exists.
std::string fileOfCommand(const std::string& name) {
    std::error_code failure;
    if (name.find('/') != std::string::npos) {
        return fs::canonical(name, failure).string();
    }
    const char* const path = std::getenv("PATH");
    std::istringstream folders(path == nullptr ? "" : path);
    for (std::string folder; std::getline(folders, folder, ':');) {
        const fs::path file = fs::canonical(fs::path(folder) / name, failure);
        if (!failure) {
            return file.string();
        }
    }
    return {};
}

}  // namespace

std::string programFile() {
    std::error_code failure;
    const fs::path file = fs::read_symlink("/proc/self/exe", failure);
    if (!failure) {
        return file.string();
    }
    // Without /proc: the name that the program was started with.
    Dl_info program{};
    const bool isKnown = ::dladdr(reinterpret_cast<const void*>(&programFile), &program) != 0;
    return isKnown ? fileOfCommand(program.dli_fname) : "";
}

}  // namespace neb::nebsc
