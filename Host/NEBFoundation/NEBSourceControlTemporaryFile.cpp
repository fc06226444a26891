#include "NEBFoundation/NEBSourceControlTemporaryFile.h"

#include <climits>
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

/// What TMPDIR names, if it is there: whoever asks for a file does not want a folder made.
std::string temporaryFolder() {
    const char* variable = std::getenv("TMPDIR");
    const bool isUsable = variable != nullptr && *variable == '/' &&
                          LOMFilePath::filePathForPathString(variable).existsInFileSystem();
    return isUsable ? variable : "/tmp";
}

constexpr char separator = '-';
constexpr std::size_t headLength = 16;

/// Whether the name first occurs behind the head, whatever that is. It cannot begin earlier if it
/// holds a character that no head does.
bool canHaveHead(std::string_view name) {
    return name.find_first_not_of("0123456789ABCDEF-") != std::string_view::npos &&
           headLength + 1 + name.size() <= NAME_MAX;
}

}  // namespace

LOMFilePath NEBSourceControl_filePathForTmpFileBasedOnFileName(std::string_view name) {
    const std::string folder = temporaryFolder();
    const std::string plainName = lastPathComponent(name);
    const bool hasHead = canHaveHead(plainName);
    while (true) {
        std::string path = pathByAppendingComponent(folder, randomHead());
        if (hasHead) {
            path.append(1, separator).append(plainName);
        }
        if (!LOMFilePath::filePathForPathString(path).existsInFileSystem()) {
            return LOMFilePath::filePathForPathString(
                hasHead ? path : pathByAppendingComponent(path, plainName));
        }
    }
}

}  // namespace neb
