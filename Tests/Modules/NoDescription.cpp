// A plug-in that has nothing to say about itself.

#include "NEBFoundation/NEBSourceControlPlugIn.h"

extern "C" NEB_EXPORT const neb::NEBSourceControlPlugInDescription*
NEBSourceControlDescribePlugIn() {
    return nullptr;
}
