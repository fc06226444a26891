// The only function that the plug-in exports.

#include <new>

#include "HgController.h"

extern "C" NEB_EXPORT const neb::NEBSourceControlPlugInDescription*
NEBSourceControlDescribePlugIn() {
    static constexpr neb::NEBSourceControlPlugInDescription description{
        .contractVersion = neb::NEBSourceControlContractVersion,
        .stamp = &neb::NEBSourceControlABIStamp,
        .name = "Mercurial",
        .version = "1.0",
        .program = "hg",
        .makePrincipalClass = []() -> neb::NEBSourceControlProtocol* {
            return new (std::nothrow) HgController;  // owned by the host
        },
    };
    return &description;
}
