// A plug-in that returns no principal class.

#include "NEBFoundation/NEBSourceControlPlugIn.h"

extern "C" NEB_EXPORT const neb::NEBSourceControlPlugInDescription*
NEBSourceControlDescribePlugIn() {
    static constexpr neb::NEBSourceControlPlugInDescription description{
        .contractVersion = neb::NEBSourceControlContractVersion,
        .stamp = &neb::NEBSourceControlABIStamp,
        .name = "NoPrincipalClass",
        .version = "1",
        .program = "git",
        .makePrincipalClass = []() -> neb::NEBSourceControlProtocol* { return nullptr; },
    };
    return &description;
}
