// A plug-in that is compiled with other options than the host library. None of its code must run.

#include <cstdlib>

#include "NEBFoundation/NEBSourceControlPlugIn.h"

namespace {

struct EndsTheProgram {
    EndsTheProgram() { std::abort(); }
};
const EndsTheProgram endsTheProgram;

}  // namespace

extern "C" NEB_EXPORT const neb::NEBSourceControlPlugInDescription*
NEBSourceControlDescribePlugIn() {
    static constexpr neb::NEBSourceControlPlugInDescription description{
        .contractVersion = neb::NEBSourceControlContractVersion,
        .stamp = &neb::NEBSourceControlABIStamp,
        .name = nullptr,
        .version = nullptr,
        .program = nullptr,
        .makePrincipalClass = nullptr,
    };
    return &description;
}
