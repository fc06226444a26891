// A plug-in built against another version of the host contract. A host must not read the members
// after the version: here, they are null.

#include "NEBFoundation/NEBSourceControlPlugIn.h"

extern "C" NEB_EXPORT const neb::NEBSourceControlPlugInDescription*
NEBSourceControlDescribePlugIn() {
    static constexpr neb::NEBSourceControlPlugInDescription description{
        .contractVersion = 7,
        .name = nullptr,
        .version = nullptr,
        .program = nullptr,
        .makePrincipalClass = nullptr};
    return &description;
}
