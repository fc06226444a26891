#include "Session/PlugInLocation.h"

#include <algorithm>
#include <array>
#include <filesystem>

#include "Session/ProgramFile.h"

namespace neb::nebsc {

namespace fs = std::filesystem;

std::string defaultPlugInPath() {
    std::error_code failure;
    const fs::path folder = fs::path(programFile()).parent_path();
    const std::array candidates{
        (folder / NEBSC_INSTALLED_PLUGIN).lexically_normal(),
        folder.parent_path() / "lib" / "NEBGit.so",  // in a build folder
        folder / "NEBGit.so",
    };
    const auto* const found = std::ranges::find_if(
        candidates, [&failure](const fs::path& path) { return fs::exists(path, failure); });
    return found == candidates.end() ? candidates.front() : *found;
}

}  // namespace neb::nebsc
