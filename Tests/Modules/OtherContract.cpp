// A plug-in built against another version of the host contract. What follows its version may be
// anything, so nobody may look at it: here, it leads nowhere.

#include "NEBFoundation/NEBSourceControlPlugIn.h"

extern "C" NEB_EXPORT const neb::NEBSourceControlPlugInDescription*
NEBSourceControlDescribePlugIn() {
    static constexpr neb::NEBSourceControlPlugInDescription description{
        .contractVersion = 7, .name = nullptr, .version = nullptr, .makePrincipalClass = nullptr};
    return &description;
}
