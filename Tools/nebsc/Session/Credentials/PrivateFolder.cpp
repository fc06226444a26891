#include "Session/Credentials/PrivateFolder.h"

#include <stdlib.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string_view>
#include <vector>

#include "Platform/FileDescriptor.h"
#include "Session/Credentials/AskpassProgram.h"

namespace neb::nebsc {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view namePrefix = "nebsc-";
constexpr std::string_view randomPart = "XXXXXX";
constexpr std::time_t secondsToBeMade = 60;

/// Returns the absolute paths in which a private folder may be, the best first.
std::vector<std::string> parentFolders() {
    std::vector<std::string> parents;
    const std::array<const char*, 3> candidates{::getenv("XDG_RUNTIME_DIR"), ::getenv("TMPDIR"),
                                                "/tmp"};
    for (const char* parent : candidates) {
        if (parent != nullptr && *parent == '/') {
            parents.emplace_back(parent);
        }
    }
    return parents;
}

std::string pathOfSocket(const std::string& folder) {
    return folder + "/" + std::string(askpassSocketName);
}

/// Whether the folder belongs to this user alone, and has been there for a while.
bool isOldAndPrivate(const std::string& folder) {
    struct stat status {};
    return ::lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == ::geteuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0 &&
           status.st_mtime < std::time(nullptr) - secondsToBeMade;
}

/// Whether a process listens at the socket, or that is unknown.
bool mayHaveListener(const std::string& folder) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = pathOfSocket(folder);
    if (path.size() >= sizeof address.sun_path) {
        return true;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    return !socket.isOpen() ||
           ::connect(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 ||
           (errno != ECONNREFUSED && errno != ENOENT);
}

}  // namespace

std::string newPrivateFolder() {
    for (const std::string& parent : parentFolders()) {
        std::string path = parent + "/" + std::string(namePrefix) + std::string(randomPart);
        const bool fits = pathOfSocket(path).size() < sizeof(sockaddr_un::sun_path);
        if (fits && ::mkdtemp(path.data()) != nullptr) {
            return path;
        }
    }
    return {};
}

void removePrivateFolder(const std::string& folder) {
    ::unlink(pathOfSocket(folder).c_str());
    ::unlink((folder + "/" + std::string(askpassProgramName)).c_str());
    ::rmdir(folder.c_str());
}

void removeAbandonedPrivateFolders() {
    for (const std::string& parent : parentFolders()) {
        std::error_code failure;
        for (fs::directory_iterator entry(parent, failure), end; !failure && entry != end;
             entry.increment(failure)) {
            const std::string name = entry->path().filename();
            const std::string& path = entry->path().native();
            if (name.starts_with(namePrefix) &&
                name.size() == namePrefix.size() + randomPart.size() && isOldAndPrivate(path) &&
                !mayHaveListener(path)) {
                removePrivateFolder(path);
            }
        }
    }
}

}  // namespace neb::nebsc
