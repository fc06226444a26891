// PlugInFile.h - the path of the plug-in and the result of loading it.
#pragma once

#include <string>

#include "NEBFoundation/NEBSourceControlPlugIn.h"

namespace neb::nebsc {

/// A plug-in that nebsc has loaded or failed to load.
struct PlugInFile {
    std::string path;
    NEBSourceControlPlugInLoad load;
};

}  // namespace neb::nebsc
