// LOMDeveloperPaths.h - the location of the developer tools, such as `git`.
//
//     const LOMSearchPath path =
//         LOMDeveloperPaths::defaultPaths().binSearchPathForPlatform(std::nullopt);
//     path.pathOfProgram("git");                    // "/usr/bin/git"
//     path.preferredDirectoryPath().pathString();   // "/usr/bin"
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "LOMFoundation/LOMFilePath.h"
#include "Platform/Export.h"
#include "Platform/Mutex.h"

namespace neb {

/// A folder in which programs are looked up. A value; copies are independent.
class NEB_EXPORT LOMSearchPath {
public:
    /// Creates a search path of one folder, which need not exist.
    explicit LOMSearchPath(LOMFilePath preferredDirectory)
        : _preferredDirectory(std::move(preferredDirectory)) {}
    /// Returns the folder.
    [[nodiscard]] const LOMFilePath& preferredDirectoryPath() const { return _preferredDirectory; }
    /// Returns the path of the program with that name in the folder, whether it exists or not.
    [[nodiscard]] std::string pathOfProgram(std::string_view name) const;

private:
    LOMFilePath _preferredDirectory;
};

/// Finds the developer tools. There is one instance in the process. Thread-safe.
class NEB_EXPORT LOMDeveloperPaths {
public:
    /// Returns the instance, which lives until the process ends.
    static LOMDeveloperPaths& defaultPaths();

    /// Returns the folder of the developer tools, in this order:
    ///
    /// 1. the folder that the host has set with setPreferredBinaryDirectory();
    /// 2. the first absolute folder in PATH with an executable file `git`;
    /// 3. "/usr/bin", so that launching a missing git fails with an error that names a path.
    ///
    /// PATH is read at each call. `platform` is ignored.
    [[nodiscard]] LOMSearchPath binSearchPathForPlatform(
        std::optional<std::string_view> platform) const;

    /// Sets the folder for hosts that come with their own git; an absent value returns to PATH.
    /// Call this before the first operation is created, because that operation looks up git once
    /// for the life of the process.
    void setPreferredBinaryDirectory(std::optional<LOMFilePath> directory);

private:
    LOMDeveloperPaths() = default;

    mutable Mutex _mutex;
    std::optional<LOMFilePath> _preferredBinaryDirectory NEB_GUARDED_BY(_mutex);
};

/// Returns the path of a program: in the first absolute folder of PATH that has an executable file
/// of that name, otherwise in "/usr/bin". PATH is read at each call. Thread-safe.
[[nodiscard]] NEB_EXPORT std::string LOMPathOfProgram(std::string_view name);

}  // namespace neb
