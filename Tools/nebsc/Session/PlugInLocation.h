// PlugInLocation.h - the default path of the plug-in.
#pragma once

#include <string>

namespace neb::nebsc {

/// Returns the first path at which NEBGit.so exists: in an installation ("lib/nebgit" next to the
/// program's folder), in a build folder ("lib" next to it), or in the program's folder. If it
/// exists at none of them, returns the path in an installation, so that the error names the
/// expected location. Thread-safe.
[[nodiscard]] std::string defaultPlugInPath();

}  // namespace neb::nebsc
