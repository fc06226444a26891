#include "Platform/FileManager.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "Platform/FileDescriptor.h"
#include "Platform/Interceptor.h"
#include "Platform/NewFile.h"
#include "Platform/PathString.h"

namespace neb {

namespace fs = std::filesystem;

namespace {

constexpr mode_t onlyForTheOwner = 0700;
constexpr mode_t permissionsUntilDone = 0600;
/// The mode bits that a copied file keeps. Set-user-ID is not one of them, because the copy has
/// another owner.
constexpr mode_t permissionsOfFile = 0777;
constexpr mode_t permissionsOfFolder = 07777;
constexpr mode_t permissionsOfNewFolder = 0777;
constexpr mode_t permissionsOfNewText = 0666;

std::string quoted(const fs::path& path) {
    return '"' + path.string() + '"';
}

/// The system would use only the part of the path before the NUL character.
std::optional<FileFailure> failureOfNUL(std::string_view path) {
    if (path.find('\0') == std::string_view::npos) {
        return std::nullopt;
    }
    return FileFailure{EINVAL, "The path " + quoted(fs::path(path.substr(0, path.find('\0')))) +
                                   " holds a NUL character."};
}

/// A symbolic link would be followed if its path ended in "/".
fs::path withoutEndSlashes(std::string_view path) {
    while (path.size() > 1 && path.ends_with('/')) {
        path.remove_suffix(1);
    }
    return path;
}

/// Whether `path`, which need not exist, is in the folder once symbolic links are resolved.
bool resolvesInto(const fs::path& path, const fs::path& folder) {
    std::error_code ignored;
    const fs::path resolved = fs::weakly_canonical(path.parent_path(), ignored) / path.filename();
    return liesWithin(resolved.string(), fs::canonical(folder, ignored).string());
}

/// One copy of a file or folder. The descriptions of failures name `shownDestination` instead of
/// `destination`.
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
        return FileFailure::of(errorNumber,
                               quoted(source) + " could not be copied to " + quoted(shown));
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
        // A network file system may report a full disk only on close.
        const int lateFailure = to.close();
        return failure != 0 ? failure : lateFailure;
    }

    int copyBytes(const FileDescriptor& from, const FileDescriptor& to) {
        constexpr std::size_t bufferSize = 1U << 18U;
        _buffer.resize(bufferSize);
        while (!_isCancelled) {
            const ssize_t count = ::read(from.get(), _buffer.data(), _buffer.size());
            if (count == 0) {
                return 0;
            }
            if (count < 0 && errno != EINTR) {
                return errno;
            }
            const std::string_view bytes(_buffer.data(),
                                         static_cast<std::size_t>(count < 0 ? 0 : count));
            if (const int failure = writeAll(to.get(), bytes, WhenFull::fail); failure != 0) {
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
        // A read-only folder cannot be filled, so this comes last. It cannot be moved either, so
        // the outermost folder gets its permissions after it was published.
        if (!failure && source != _source &&
            ::chmod(destination.c_str(), mode & permissionsOfFolder) != 0) {
            return failed(errno, source);
        }
        return failed(failure.value(), source);
    }

    const fs::path _source, _destination, _shownDestination;
    const std::atomic<bool>& _isCancelled;
    std::vector<char> _buffer;
};

/// Gives the copy of a folder the permissions of the folder. Returns 0 or an error number.
int copyFolderPermissions(const fs::path& source, const fs::path& destination) {
    struct stat information {};
    if (::lstat(source.c_str(), &information) != 0) {
        return errno;
    }
    const bool isDone =
        !S_ISDIR(information.st_mode) ||
        ::chmod(destination.c_str(), information.st_mode & permissionsOfFolder) == 0;
    return isDone ? 0 : errno;
}

/// Creates the folder unless it exists. Returns 0 or an error number.
int makeFolder(const fs::path& folder) {
    if (::mkdir(folder.c_str(), permissionsOfNewFolder) == 0) {
        return 0;
    }
    const int failure = errno;
    std::error_code ignored;
    return failure == EEXIST && fs::is_directory(folder, ignored) ? 0 : failure;
}

/// Creates the folder and its parents unless they exist. Returns 0 or an error number.
int makeFolders(const fs::path& folder) {
    const int failure = makeFolder(folder);
    const fs::path parent = folder.parent_path();
    if (failure != ENOENT || parent.empty() || parent == folder) {
        return failure;
    }
    const int failureAbove = makeFolders(parent);
    return failureAbove != 0 ? failureAbove : makeFolder(folder);
}

std::optional<FileFailure> copyOf(std::string_view source, std::string_view destination,
                                  const std::atomic<bool>& isCancelled) {
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
        return FileFailure::of(EEXIST, what);
    }
    if (fs::is_directory(fs::symlink_status(from, ignored)) && resolvesInto(to, from)) {
        return FileFailure{EINVAL, what + ": a folder cannot be copied into itself."};
    }
    if (isCancelled) {
        return FileFailure::of(ECANCELED, what);
    }
    NewFile target(to, "copy");
    if (const auto failure = target.prepare()) {
        return FileFailure::of(failure->errorNumber, what);
    }
    if (auto failure = Copy(from, target.draft(), to, isCancelled).make()) {
        return failure;
    }
    if (const auto failure = target.publish()) {
        return FileFailure::of(failure->errorNumber, what);
    }
    const int failure = copyFolderPermissions(from, to);
    return failure != 0 ? std::optional(FileFailure::of(failure, what)) : std::nullopt;
}

std::optional<FileFailure> createFolder(std::string_view path) {
    if (auto failure = failureOfNUL(path)) {
        return failure;
    }
    const fs::path folder = withoutEndSlashes(path);
    const int failure = makeFolders(folder);
    if (failure == 0) {
        return std::nullopt;
    }
    return FileFailure::of(failure, "The folder " + quoted(folder) + " could not be made");
}

std::optional<FileFailure> writeFile(std::string_view path, std::string_view text) {
    if (auto failure = failureOfNUL(path)) {
        return failure;
    }
    const fs::path file(path);
    // Without O_NONBLOCK, opening a named pipe without a reader would block.
    FileDescriptor descriptor(::open(
        file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK, permissionsOfNewText));
    int failure = descriptor.isOpen() ? writeAll(descriptor.get(), text, WhenFull::fail) : errno;
    const int lateFailure = descriptor.close();
    failure = failure != 0 ? failure : lateFailure;
    if (failure == 0) {
        return std::nullopt;
    }
    return FileFailure::of(failure, "The file " + quoted(file) + " could not be written");
}

}  // namespace

std::optional<FileFailure> FileManager::copyItem(std::string_view source,
                                                 std::string_view destination) {
    return interceptedChange("copy to", destination,
                             [&] { return copyOf(source, destination, _isCancelled); });
}

std::optional<FileFailure> FileManager::createDirectory(std::string_view path) {
    return interceptedChange("create folder", path, [path] { return createFolder(path); });
}

std::optional<FileFailure> FileManager::writeText(std::string_view path, std::string_view text) {
    return interceptedChange("write", path, [&] { return writeFile(path, text); });
}

}  // namespace neb
