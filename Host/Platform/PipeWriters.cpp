#include "Platform/PipeWriters.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <charconv>
#include <filesystem>
#include <fstream>
#include <string>

namespace neb {

namespace fs = std::filesystem;

namespace {

/// Calls `visit` for the entries of a folder until it returns false. Ignores what cannot be read,
/// because a process may end at any time.
template <typename Visit>
void forEachEntry(const fs::path& folder, const Visit& visit) {
    std::error_code failure;
    for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
        if (!visit(entry->path())) {
            return;
        }
    }
}

/// Reads `flags:\t0100001` (octal) in /proc/PID/fdinfo/FD.
bool isOpenForWriting(const fs::path& information) {
    std::ifstream stream(information);
    std::string field;
    while (stream >> field) {
        int flags = 0;
        if (field == "flags:" && stream >> std::oct >> flags) {
            return (flags & O_ACCMODE) != O_RDONLY;
        }
    }
    return false;
}

bool writesTo(const fs::path& process, const std::string& pipe) {
    bool found = false;
    forEachEntry(process / "fd", [&](const fs::path& descriptor) {
        std::error_code failure;
        found = fs::read_symlink(descriptor, failure).string() == pipe &&
                isOpenForWriting(process / "fdinfo" / descriptor.filename());
        return !found;
    });
    return found;
}

}  // namespace

ino_t pipeNumber(const FileDescriptor& descriptor) {
    struct stat information {};
    return ::fstat(descriptor.get(), &information) == 0 ? information.st_ino : 0;
}

std::vector<pid_t> processesWritingTo(ino_t pipe) {
    const std::string target = "pipe:[" + std::to_string(pipe) + "]";
    std::vector<pid_t> processes;
    forEachEntry("/proc", [&](const fs::path& entry) {
        const std::string name = entry.filename().string();
        pid_t pid = 0;
        const auto [end, failure] = std::from_chars(name.data(), name.data() + name.size(), pid);
        const bool isProcess = failure == std::errc() && end == name.data() + name.size();
        if (isProcess && writesTo(entry, target)) {
            processes.push_back(pid);
        }
        return true;
    });
    return processes;
}

}  // namespace neb
