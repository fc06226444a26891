#include "NEBFoundation/NEBSourceControlTemporaryFile.h"

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "Platform/Interceptor.h"
#include "Platform/PathString.h"

namespace neb {

namespace {

/// 64 random bits, so that concurrent exports of all processes use different names.
std::string randomHead() {
    std::random_device source;
    char text[17];
    static_cast<void>(std::snprintf(text, sizeof text, "%08X%08X", static_cast<unsigned>(source()),
                                    static_cast<unsigned>(source())));
    return text;
}

/// Returns the folder in TMPDIR, if it exists; it is never created.
std::string temporaryFolder() {
    const char* variable = std::getenv("TMPDIR");
    const bool isUsable = variable != nullptr && *variable == '/' &&
                          LOMFilePath::filePathForPathString(variable).existsInFileSystem();
    return isUsable ? variable : "/tmp";
}

constexpr char separator = '-';
constexpr std::size_t headLength = 16;

/// Whether the first occurrence of the name is after any prefix. This holds if the name has a
/// character that no prefix has.
bool canHaveHead(std::string_view name) {
    return name.find_first_not_of("0123456789ABCDEF-") != std::string_view::npos &&
           headLength + 1 + name.size() <= NAME_MAX;
}

}  // namespace

namespace {

std::string newTemporaryPath(std::string_view name) {
    const std::string folder = temporaryFolder();
    const std::string plainName = lastPathComponent(name);
    const bool hasHead = canHaveHead(plainName);
    while (true) {
        std::string path = pathByAppendingComponent(folder, randomHead());
        if (hasHead) {
            path.append(1, separator).append(plainName);
        }
        if (!LOMFilePath::filePathForPathString(path).existsInFileSystem()) {
            return hasHead ? path : pathByAppendingComponent(path, plainName);
        }
    }
}

}  // namespace

LOMFilePath NEBSourceControl_filePathForTmpFileBasedOnFileName(std::string_view name) {
    return LOMFilePath::filePathForPathString(
        interceptedText("temporary path", name, [name] { return newTemporaryPath(name); }));
}

}  // namespace neb
