// A library with the stamp of a plug-in that does not describe itself.

#include "NEBFoundation/NEBSourceControlPlugIn.h"

extern "C" NEB_EXPORT const void* somethingElse() {
    return &neb::NEBSourceControlABIStamp;
}
