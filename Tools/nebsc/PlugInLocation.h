// PlugInLocation.h - where the plug-in is when nobody says so.
#pragma once

#include <string>

namespace neb::nebsc {

/// NEBGit.so in "lib" beside the program's own folder, or else in that folder itself. When it is in
/// neither, the path in "lib", so that the load that fails names where it was expected.
[[nodiscard]] std::string defaultPlugInPath();

}  // namespace neb::nebsc
