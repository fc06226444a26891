// PlugInFile.h - the file of the plug-in and the result of loading it.
#pragma once

#include <string>

#include "NEBFoundation/NEBSourceControlPlugIn.h"

namespace neb::nebsc {

struct PlugInFile {
    std::string path;
    NEBSourceControlPlugInLoad load;
};

}  // namespace neb::nebsc
