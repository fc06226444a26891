// A plug-in that says less about itself than it must.

#include "NEBFoundation/NEBSourceControlPlugIn.h"

extern "C" NEB_EXPORT const neb::NEBSourceControlPlugInDescription*
NEBSourceControlDescribePlugIn() {
    static constexpr neb::NEBSourceControlPlugInDescription description{
        .contractVersion = neb::NEBSourceControlContractVersion,
        .name = "HalfADescription",
        .version = nullptr,
        .makePrincipalClass = nullptr,
    };
    return &description;
}
