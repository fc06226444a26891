#include "Session/ProgramFile.h"

#include <filesystem>

namespace neb::nebsc {

std::string programFile() {
    std::error_code failure;
    return std::filesystem::read_symlink("/proc/self/exe", failure).string();
}

}  // namespace neb::nebsc
