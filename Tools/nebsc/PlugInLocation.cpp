#include "PlugInLocation.h"

#include <filesystem>

namespace neb::nebsc {

std::string defaultPlugInPath() {
    namespace fs = std::filesystem;
    constexpr const char* name = "NEBGit.so";
    std::error_code failure;
    const fs::path folder = fs::read_symlink("/proc/self/exe", failure).parent_path();
    const fs::path beside = folder.parent_path() / "lib" / name;
    const fs::path within = folder / name;
    return !fs::exists(beside, failure) && fs::exists(within, failure) ? within : beside;
}

}  // namespace neb::nebsc
