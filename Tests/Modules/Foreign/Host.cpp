// A host that is compiled with other options than the host library. Loads the plug-in of its
// argument and prints the failure.

#include <cstdio>

#include "NEBFoundation/NEBFoundation.h"

int main(int /*count*/, char** arguments) {
    const auto load = neb::NEBSourceControlPlugIn::load(arguments[1]);
    std::puts(load.failure.c_str());
    return load.plugIn ? 0 : 1;
}
