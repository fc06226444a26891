// A plug-in whose description lacks required members.

#include "NEBFoundation/NEBSourceControlPlugIn.h"

extern "C" NEB_EXPORT const neb::NEBSourceControlPlugInDescription*
NEBSourceControlDescribePlugIn() {
    static constexpr neb::NEBSourceControlPlugInDescription description{
        .contractVersion = neb::NEBSourceControlContractVersion,
        .stamp = &neb::NEBSourceControlABIStamp,
        .name = "HalfADescription",
        .version = nullptr,
        .program = nullptr,
        .makePrincipalClass = nullptr,
    };
    return &description;
}
