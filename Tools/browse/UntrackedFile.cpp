#include "UntrackedFile.h"

#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <vector>

#include "Platform/ErrnoText.h"
#include "Platform/FileDescriptor.h"
#include "Platform/Text.h"
#include "Session/Paths.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

constexpr std::size_t mostBytes = std::size_t{4} << 20;

UntrackedFile refused(const std::string& path, const std::string& reason) {
    return {.refusal = "The file " + inQuotes(path) + " cannot be shown: " + reason + "."};
}

/// Returns the parts of the path; none if one of them leads elsewhere. A name like ".GIT" is the
/// folder of the repository where case does not matter.
std::vector<std::string> partsOf(const std::string& path) {
    std::vector<std::string> parts;
    bool isInside = true;
    forEachField(path, '/', [&](std::string_view part) {
        parts.emplace_back(part);
        isInside = isInside && !part.empty() && part != "." && part != ".." &&
                   part.find('\0') == std::string_view::npos &&
                   ::strcasecmp(parts.back().c_str(), ".git") != 0;
    });
    return isInside ? parts : std::vector<std::string>();
}

/// Opens the file part by part, so that no symbolic link is followed. Nothing is open after an
/// error, which errno names.
FileDescriptor openInside(const std::string& folder, const std::vector<std::string>& parts) {
    constexpr int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK;
    FileDescriptor current(::open(folder.c_str(), flags | O_DIRECTORY));
    for (std::size_t i = 0; i < parts.size() && current.isOpen(); ++i) {
        // With O_DIRECTORY, a symbolic link would be ENOTDIR, too.
        current = FileDescriptor(::openat(current.get(), parts[i].c_str(), flags | O_NOFOLLOW));
    }
    return current;
}

/// Returns whether the file was read to its end. A file that grows meanwhile has its first bytes.
bool readAll(const FileDescriptor& file, std::string& bytes) {
    std::array<char, std::size_t{1} << 16> buffer{};
    ssize_t count = 0;
    while (bytes.size() < mostBytes &&
           (count = ::read(file.get(), buffer.data(), buffer.size())) > 0) {
        bytes.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return count >= 0;
}

}  // namespace

UntrackedFile readUntrackedFile(const std::string& folder, const std::string& path) {
    const std::vector<std::string> parts = partsOf(path);
    if (parts.empty() || !isAnythingAt(folder + "/.git")) {
        return refused(path, "it is not in a working copy");
    }
    const FileDescriptor file = openInside(folder, parts);
    if (!file.isOpen()) {
        return refused(
            path, errno == ELOOP ? "it is a symbolic link, or behind one" : textOfErrno(errno));
    }
    struct stat status {};
    if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return refused(path, "it is not a regular file");
    }
    if (status.st_size > static_cast<off_t>(mostBytes)) {
        return refused(path, "it has " + std::to_string(status.st_size) + " bytes");
    }
    UntrackedFile result;
    return readAll(file, result.bytes) ? result : refused(path, textOfErrno(errno));
}

}  // namespace neb::nebsc
