#include "NEBFoundation/NEBSourceControlTemporaryFile.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "Platform/PathString.h"

namespace neb {

namespace {

/// 64 random bits: two exports at once, of this process or another, do not meet.
std::string randomHead() {
    std::random_device source;
    char text[17];
    static_cast<void>(std::snprintf(text, sizeof text, "%08X%08X", static_cast<unsigned>(source()),
                                    static_cast<unsigned>(source())));
    return text;
}

}  // namespace

LOMFilePath NEBSourceControl_filePathForTmpFileBasedOnFileName(std::string_view name) {
    const char* variable = std::getenv("TMPDIR");
    const std::string folder = variable != nullptr && *variable == '/' ? variable : "/tmp";
    while (true) {
        LOMFilePath path = LOMFilePath::filePathForPathString(
            pathByAppendingComponent(folder, randomHead() + "-" + lastPathComponent(name)));
        if (!path.existsInFileSystem()) {
            return path;
        }
    }
}

}  // namespace neb
