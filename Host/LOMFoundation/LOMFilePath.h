// LOMFilePath.h - a path as an object of its own, apart from ordinary strings.
#pragma once

#include <optional>
#include <string>

#include "Platform/Export.h"

namespace neb {

enum class LOMFileType { regular, directory, symbolicLink, other };

/// What the file system says of a file; of its attributes only the type is asked for.
struct LOMFileAttributes {
    LOMFileType fileType;
};

/// A value: copies are independent, any thread may use its own. The path need not exist.
class NEB_EXPORT LOMFilePath {
public:
    static LOMFilePath filePathForPathString(std::string pathString);

    [[nodiscard]] const std::string& pathString() const { return _pathString; }
    /// The part behind the last "/".
    [[nodiscard]] std::string lastPathComponent() const;
    /// Whether anything is there, a dangling symbolic link included.
    [[nodiscard]] bool existsInFileSystem() const;
    /// Of the thing itself, not of what a symbolic link points to. Nothing when it cannot be read.
    [[nodiscard]] std::optional<LOMFileAttributes> fileAttributes() const;

    bool operator==(const LOMFilePath&) const = default;

private:
    explicit LOMFilePath(std::string pathString) : _pathString(std::move(pathString)) {}

    std::string _pathString;
};

}  // namespace neb
