// Traps.h - programs at every place where a repository can name one.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Classes/Configuration/World.h"

namespace neb::test {

/// A setting of the repository that names a program.
struct Trap {
    /// The name of the setting. The program has the same name with "_" for each "/".
    std::string setting;
    /// The value; PROGRAM stands for the path of the program.
    std::string value;
    /// A shell script that makes git run the program in a trapped world. Empty if git does not, or
    /// only with another package.
    std::string trigger;
    /// Why no request that reads or contacts a server runs the program, even if the repository is
    /// trusted. Empty for a program that such a request runs.
    std::string unreachable = {};
};

/// A filter that runs the programs which settings for Git LFS name, as that filter does.
inline constexpr std::string_view filterOfUser =
    "cat; $(git config lfs.extension.evil.clean) </dev/null; "
    "$(git config lfs.customtransfer.evil.path) </dev/null; true";

/// Why a request runs a program only with a later git.
inline constexpr std::string_view unreachableBeforeGit240 =
    "git before 2.40 does not read it for $Format:%G?$ in an exported file";

/// Returns the settings of git-config(1) that name a program and that a request can be carried out
/// with when they are switched off.
const std::vector<Trap>& allTraps();

/// Adds a submodule "sub" to the repository, unchanged and without traps.
void addSubmodule(const World& world);

/// Names the programs of allTraps() in the repository of the world, in an included file and the
/// worktree configuration; names drivers in the attributes; changes the submodule, and names
/// programs there. The world must have the submodule.
void setTraps(const World& world);

/// Makes a program that adds its name to those of firedTraps(), and returns its path.
std::string makeTrap(const World& world, std::string_view name);

/// Returns the names of the programs that ran since setTraps() or the last call.
std::set<std::string> takeFiredTraps(const World& world);

}  // namespace neb::test
