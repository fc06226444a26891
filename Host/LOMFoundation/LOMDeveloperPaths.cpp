#include "LOMFoundation/LOMDeveloperPaths.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "Platform/PathString.h"

namespace neb {

namespace {

constexpr std::string_view fallbackDirectory = "/usr/bin";

bool isExecutableFile(const std::string& path) {
    struct stat information {};
    return ::stat(path.c_str(), &information) == 0 && S_ISREG(information.st_mode) &&
           ::access(path.c_str(), X_OK) == 0;
}

/// Ignores relative and empty elements of PATH. With them, the program could come from the working
/// directory, which may be in a cloned repository.
std::string firstDirectoryWith(std::string_view program) {
    const char* variable = std::getenv("PATH");
    std::string_view rest = variable == nullptr ? "" : variable;
    while (!rest.empty()) {
        const std::size_t colon = rest.find(':');
        const std::string_view directory = rest.substr(0, colon);
        rest = colon == std::string_view::npos ? std::string_view{} : rest.substr(colon + 1);
        if (!directory.empty() && directory.front() == '/' &&
            isExecutableFile(pathByAppendingComponent(directory, program))) {
            return std::string(directory);
        }
    }
    return std::string(fallbackDirectory);
}

}  // namespace

std::string LOMSearchPath::pathOfProgram(std::string_view name) const {
    return pathByAppendingComponent(_preferredDirectory.pathString(), name);
}

LOMDeveloperPaths& LOMDeveloperPaths::defaultPaths() {
    static LOMDeveloperPaths paths;
    return paths;
}

LOMSearchPath LOMDeveloperPaths::binSearchPathForPlatform(
    std::optional<std::string_view> /*platform*/) const {
    const MutexLock lock(_mutex);
    return LOMSearchPath(_preferredBinaryDirectory
                             ? *_preferredBinaryDirectory
                             : LOMFilePath::filePathForPathString(firstDirectoryWith("git")));
}

void LOMDeveloperPaths::setPreferredBinaryDirectory(std::optional<LOMFilePath> directory) {
    const MutexLock lock(_mutex);
    _preferredBinaryDirectory = std::move(directory);
}

std::string LOMPathOfProgram(std::string_view name) {
    return pathByAppendingComponent(firstDirectoryWith(name), name);
}

}  // namespace neb
