// LOMFilePath.h - a path as a type of its own.
#pragma once

#include <optional>
#include <string>

#include "Platform/Export.h"

namespace neb {

/// The kinds of files that callers distinguish. `other` is a device, socket or named pipe.
enum class LOMFileType { regular, directory, symbolicLink, other };

/// The attributes of a file in the file system.
struct LOMFileAttributes {
    /// The type of the file itself: a symbolic link is not followed.
    LOMFileType fileType;
};

/// A path. The file need not exist.
///
/// A value: copies are independent, and different threads may use different copies. Two paths are
/// equal if their texts are.
class NEB_EXPORT LOMFilePath {
public:
    /// Creates a path from its text, which is not changed.
    static LOMFilePath filePathForPathString(std::string pathString);

    /// Returns the text of the path.
    [[nodiscard]] const std::string& pathString() const { return _pathString; }
    /// Returns the text after the last "/", ignoring a "/" at the end.
    [[nodiscard]] std::string lastPathComponent() const;
    /// Whether something exists at the path, including a symbolic link whose target does not exist.
    /// False also if that cannot be determined, for example for lack of permission.
    [[nodiscard]] bool existsInFileSystem() const;
    /// Returns the attributes, or nothing if they cannot be read.
    [[nodiscard]] std::optional<LOMFileAttributes> fileAttributes() const;

    bool operator==(const LOMFilePath&) const = default;

private:
    explicit LOMFilePath(std::string pathString) : _pathString(std::move(pathString)) {}

    std::string _pathString;
};

}  // namespace neb
