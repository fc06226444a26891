#include "Platform/FileManager.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "Platform/ErrnoText.h"
#include "Platform/FileDescriptor.h"

namespace neb {

namespace fs = std::filesystem;

namespace {

constexpr mode_t onlyForTheOwner = 0700;
constexpr mode_t permissionsUntilDone = 0600;
/// What a copied file keeps of its mode. Run as another user, as the copy then belongs to us, is no
/// permission.
constexpr mode_t permissionsOfFile = 0777;
constexpr mode_t permissionsOfFolder = 07777;
constexpr mode_t permissionsOfNewFolder = 0777;
constexpr mode_t permissionsOfNewText = 0666;

std::string quoted(const fs::path& path) {
    return '"' + path.string() + '"';
}

FileFailure failureOf(int errorNumber, const std::string& what) {
    return {errorNumber, what + ": " + textOfErrno(errorNumber) + "."};
}

/// The system would take such a path for the one that ends before the NUL character.
std::optional<FileFailure> failureOfNUL(std::string_view path) {
    if (path.find('\0') == std::string_view::npos) {
        return std::nullopt;
    }
    return FileFailure{EINVAL, "The path " + quoted(fs::path(path.substr(0, path.find('\0')))) +
                                   " holds a NUL character."};
}

/// With an end "/", a link would be followed.
fs::path withoutEndSlashes(std::string_view path) {
    while (path.size() > 1 && path.ends_with('/')) {
        path.remove_suffix(1);
    }
    return path;
}

/// Answers 0 or the errno of the failure.
int writeAll(const FileDescriptor& file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(file.get(), bytes.data(), bytes.size());
        if (count >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

/// Whether the path lies in the folder, or would if it were there.
bool liesWithin(const fs::path& path, const fs::path& folder) {
    std::error_code ignored;
    const fs::path whole = fs::weakly_canonical(path.parent_path(), ignored) / path.filename();
    const fs::path whatHolds = fs::canonical(folder, ignored);
    const auto [end, unused] =
        std::mismatch(whatHolds.begin(), whatHolds.end(), whole.begin(), whole.end());
    return end == whatHolds.end();
}

/// One copy, of a file or a whole tree, from `source` to `destination`; its failures speak of
/// `shownDestination` in place of the latter.
class Copy {
public:
    Copy(fs::path source, fs::path destination, fs::path shownDestination,
         const std::atomic<bool>& isCancelled)
        : _source(std::move(source)),
          _destination(std::move(destination)),
          _shownDestination(std::move(shownDestination)),
          _isCancelled(isCancelled) {}

    std::optional<FileFailure> make() { return copyItem(_source, _destination); }

private:
    std::optional<FileFailure> copyItem(const fs::path& source, const fs::path& destination) {
        struct stat information {};
        if (::lstat(source.c_str(), &information) != 0) {
            return failed(errno, source);
        }
        switch (information.st_mode & S_IFMT) {
            case S_IFREG:
                return failed(copyFile(source, destination), source);
            case S_IFLNK:
                return failed(copyLink(source, destination), source);
            case S_IFDIR:
                return copyFolder(source, destination, information.st_mode);
            default:
                return FileFailure{ENOTSUP, quoted(source) +
                                                " could not be copied: it is neither a file nor a "
                                                "folder nor a symbolic link."};
        }
    }

    [[nodiscard]] std::optional<FileFailure> failed(int errorNumber, const fs::path& source) const {
        if (errorNumber == 0) {
            return std::nullopt;
        }
        const fs::path shown = source == _source
                                   ? _shownDestination
                                   : _shownDestination / source.lexically_relative(_source);
        return failureOf(errorNumber, quoted(source) + " could not be copied to " + quoted(shown));
    }

    int copyFile(const fs::path& source, const fs::path& destination) {
        const FileDescriptor from(
            ::open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
        struct stat information {};
        if (!from.isOpen() || ::fstat(from.get(), &information) != 0) {
            return errno;
        }
        FileDescriptor to(::open(destination.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                                 permissionsUntilDone));
        if (!to.isOpen()) {
            return errno;
        }
        int failure = copyBytes(from, to);
        if (failure == 0 && ::fchmod(to.get(), information.st_mode & permissionsOfFile) != 0) {
            failure = errno;
        }
        // A network file system may tell only now that there was no room.
        const int lateFailure = to.close();
        return failure != 0 ? failure : lateFailure;
    }

    int copyBytes(const FileDescriptor& from, const FileDescriptor& to) {
        constexpr std::size_t pieceSize = 1U << 18U;
        _piece.resize(pieceSize);
        while (!_isCancelled) {
            const ssize_t count = ::read(from.get(), _piece.data(), _piece.size());
            if (count == 0) {
                return 0;
            }
            if (count < 0 && errno != EINTR) {
                return errno;
            }
            const std::string_view bytes(_piece.data(),
                                         static_cast<std::size_t>(count < 0 ? 0 : count));
            if (const int failure = writeAll(to, bytes); failure != 0) {
                return failure;
            }
        }
        return ECANCELED;
    }

    static int copyLink(const fs::path& source, const fs::path& destination) {
        std::error_code failure;
        fs::copy_symlink(source, destination, failure);
        return failure.value();
    }

    std::optional<FileFailure> copyFolder(const fs::path& source, const fs::path& destination,
                                          mode_t mode) {
        if (::mkdir(destination.c_str(), onlyForTheOwner) != 0) {
            return failed(errno, source);
        }
        std::error_code failure;
        for (fs::directory_iterator entry(source, failure), end; !failure && entry != end;
             entry.increment(failure)) {
            const fs::path& path = entry->path();
            if (_isCancelled) {
                return failed(ECANCELED, path);
            }
            if (auto inside = copyItem(path, destination / path.filename())) {
                return inside;
            }
        }
        // At the end: a folder that may not be written to could not have been filled. Nor could it
        // be moved, so the outermost one comes later still.
        if (!failure && source != _source &&
            ::chmod(destination.c_str(), mode & permissionsOfFolder) != 0) {
            return failed(errno, source);
        }
        return failed(failure.value(), source);
    }

    const fs::path _source, _destination, _shownDestination;
    const std::atomic<bool>& _isCancelled;
    std::vector<char> _piece;
};

/// Removes what a copy has left, folders that may not be written to included.
void removeTree(const fs::path& path) {
    std::error_code ignored;
    if (fs::is_directory(fs::symlink_status(path, ignored))) {
        ::chmod(path.c_str(), onlyForTheOwner);
        std::vector<fs::path> inside;
        for (fs::directory_iterator entry(path, ignored), end; !ignored && entry != end;
             entry.increment(ignored)) {
            inside.push_back(entry->path());
        }
        for (const fs::path& item : inside) {
            removeTree(item);
        }
    }
    fs::remove(path, ignored);
}

/// Moves a finished copy to where it belongs, in one step, so that nobody meets half of it. Answers
/// 0 or the errno of the failure, EEXIST when something has come to be there meanwhile.
int moveIntoPlace(const fs::path& made, const fs::path& destination) {
    std::error_code ignored;
    if (!fs::is_directory(fs::symlink_status(made, ignored))) {
        if (::linkat(AT_FDCWD, made.c_str(), AT_FDCWD, destination.c_str(), 0) == 0) {
            return 0;
        }
        // Some file systems have no links.
        if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS && errno != EMLINK) {
            return errno;
        }
        if (fs::exists(fs::symlink_status(destination, ignored))) {
            return EEXIST;
        }
    }
    // A folder replaces at most an empty one.
    return ::rename(made.c_str(), destination.c_str()) == 0 ? 0 : errno;
}

/// Gives the copy of a folder the folder's permissions. Answers 0 or the errno of the failure.
int takeOverPermissions(const fs::path& source, const fs::path& destination) {
    struct stat information {};
    if (::lstat(source.c_str(), &information) != 0) {
        return errno;
    }
    const bool isDone =
        !S_ISDIR(information.st_mode) ||
        ::chmod(destination.c_str(), information.st_mode & permissionsOfFolder) == 0;
    return isDone ? 0 : errno;
}

/// Makes the folder; one that is there is no failure. Answers 0 or the errno of the failure.
int makeFolder(const fs::path& folder) {
    if (::mkdir(folder.c_str(), permissionsOfNewFolder) == 0) {
        return 0;
    }
    const int failure = errno;
    std::error_code ignored;
    return failure == EEXIST && fs::is_directory(folder, ignored) ? 0 : failure;
}

/// The same with those on the way to it.
int makeFolders(const fs::path& folder) {
    const int failure = makeFolder(folder);
    const fs::path parent = folder.parent_path();
    if (failure != ENOENT || parent.empty() || parent == folder) {
        return failure;
    }
    const int failureAbove = makeFolders(parent);
    return failureAbove != 0 ? failureAbove : makeFolder(folder);
}

}  // namespace

std::optional<FileFailure> FileManager::copyItem(std::string_view source,
                                                 std::string_view destination) {
    const fs::path from = withoutEndSlashes(source);
    const fs::path to = withoutEndSlashes(destination);
    for (const std::string_view path : {source, destination}) {
        if (auto failure = failureOfNUL(path)) {
            return failure;
        }
    }
    const std::string what = quoted(from) + " could not be copied to " + quoted(to);
    std::error_code ignored;
    if (fs::exists(fs::symlink_status(to, ignored))) {
        return failureOf(EEXIST, what);
    }
    if (fs::is_directory(fs::symlink_status(from, ignored)) && liesWithin(to, from)) {
        return FileFailure{EINVAL, what + ": a folder cannot be copied into itself."};
    }
    if (_isCancelled) {
        return failureOf(ECANCELED, what);
    }
    // In a folder of its own beside the destination, so on the same file system.
    std::string workshop = (to.parent_path() / ".copy-XXXXXX").string();
    if (::mkdtemp(workshop.data()) == nullptr) {
        return failureOf(errno, what);
    }
    const fs::path made = fs::path(workshop) / "copy";
    auto failure = Copy(from, made, to, _isCancelled).make();
    if (!failure) {
        const int moveFailure = moveIntoPlace(made, to);
        const int lastFailure = moveFailure != 0 ? moveFailure : takeOverPermissions(from, to);
        failure = lastFailure != 0 ? std::optional(failureOf(lastFailure, what)) : std::nullopt;
    }
    removeTree(workshop);
    return failure;
}

std::optional<FileFailure> FileManager::createDirectory(std::string_view path) {
    if (auto failure = failureOfNUL(path)) {
        return failure;
    }
    const fs::path folder = withoutEndSlashes(path);
    const int failure = makeFolders(folder);
    if (failure == 0) {
        return std::nullopt;
    }
    return failureOf(failure, "The folder " + quoted(folder) + " could not be made");
}

std::optional<FileFailure> FileManager::writeText(std::string_view path, std::string_view text) {
    if (auto failure = failureOfNUL(path)) {
        return failure;
    }
    const fs::path file(path);
    // A pipe that nobody reads would hold us up for ever.
    FileDescriptor descriptor(::open(
        file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK, permissionsOfNewText));
    int failure = descriptor.isOpen() ? writeAll(descriptor, text) : errno;
    const int lateFailure = descriptor.close();
    failure = failure != 0 ? failure : lateFailure;
    if (failure == 0) {
        return std::nullopt;
    }
    return failureOf(failure, "The file " + quoted(file) + " could not be written");
}

}  // namespace neb
