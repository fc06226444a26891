// PlugInLocation.h - where the plug-in is when nobody says so.
#pragma once

#include <string>

namespace neb::nebsc {

/// NEBGit.so where an installation has it ("lib/nebgit" beside the program's own folder), or else
/// where a build has it ("lib" there), or else in the program's folder itself. When it is in none
/// of them, the path in an installation, so that the load that fails names where it was expected.
[[nodiscard]] std::string defaultPlugInPath();

}  // namespace neb::nebsc
