// A plug-in built against another version of the host contract. What follows its version may be
// anything, so nobody may look at it.

#include <cstdint>

#include "Platform/Export.h"

namespace {

struct OtherDescription {
    std::uint32_t contractVersion;
    std::uint32_t whateverThatVersionHasHere;
};

}  // namespace

extern "C" NEB_EXPORT const OtherDescription* NEBSourceControlDescribePlugIn() {
    static constexpr OtherDescription description{.contractVersion = 7,
                                                  .whateverThatVersionHasHere = 0xDEADBEEF};
    return &description;
}
