// A plug-in whose stamp fits, but whose description is for a contract version with other members.

#include "NEBFoundation/NEBSourceControlPlugIn.h"

extern "C" NEB_EXPORT const neb::NEBSourceControlPlugInDescription*
NEBSourceControlDescribePlugIn() {
    static const neb::NEBSourceControlPlugInDescription description{
        .contractVersion = 1000,
        .stamp = &neb::NEBSourceControlABIStamp,
        .name = reinterpret_cast<const char*>(1),  // reading it is an error
        .version = reinterpret_cast<const char*>(1),
        .program = reinterpret_cast<const char*>(1),
        .makePrincipalClass = nullptr,
    };
    return &description;
}
