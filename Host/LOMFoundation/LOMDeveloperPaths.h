// LOMDeveloperPaths.h - where the developer tools are, `git` above all.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "LOMFoundation/LOMFilePath.h"
#include "Platform/Export.h"
#include "Platform/Mutex.h"

namespace neb {

/// Where to look for programs.
class NEB_EXPORT LOMSearchPath {
public:
    explicit LOMSearchPath(LOMFilePath preferredDirectory)
        : _preferredDirectory(std::move(preferredDirectory)) {}
    [[nodiscard]] const LOMFilePath& preferredDirectoryPath() const { return _preferredDirectory; }
    /// The path of the program of that name in the preferred directory, whether it is there or not.
    [[nodiscard]] std::string pathOfProgram(std::string_view name) const;

private:
    LOMFilePath _preferredDirectory;
};

/// One instance for the process; every member may be called from any thread.
class NEB_EXPORT LOMDeveloperPaths {
public:
    static LOMDeveloperPaths& defaultPaths();

    /// `platform` names none of ours and is ignored; absent means this machine. The preferred
    /// directory is the one that the host has set; else the first absolute directory of PATH that
    /// holds an executable file `git`; else "/usr/bin", so that a missing git is told by the launch
    /// that fails, with the path at which it was looked for last.
    [[nodiscard]] LOMSearchPath binSearchPathForPlatform(
        std::optional<std::string_view> platform) const;

    /// For hosts that bring a git of their own; nothing goes back to PATH. To be called before the
    /// first operation is made, which remembers where git is for the life of the process.
    void setPreferredBinaryDirectory(std::optional<LOMFilePath> directory);

private:
    LOMDeveloperPaths() = default;

    mutable Mutex _mutex;
    std::optional<LOMFilePath> _preferredBinaryDirectory NEB_GUARDED_BY(_mutex);
};

}  // namespace neb
