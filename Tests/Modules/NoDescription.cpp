// A plug-in that returns no description.

#include "NEBFoundation/NEBSourceControlPlugIn.h"

extern "C" NEB_EXPORT const neb::NEBSourceControlPlugInDescription*
NEBSourceControlDescribePlugIn() {
    return nullptr;
}

/// Keeps the stamp in the file.
extern "C" NEB_EXPORT const void* stamp() {
    return &neb::NEBSourceControlABIStamp;
}
