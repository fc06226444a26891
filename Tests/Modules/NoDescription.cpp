// A plug-in that returns no description.

#include "NEBFoundation/NEBSourceControlPlugIn.h"

extern "C" NEB_EXPORT const neb::NEBSourceControlPlugInDescription*
NEBSourceControlDescribePlugIn() {
    return nullptr;
}
