// LocalTime.h - dates in the local time zone: that of TZ, or of the system if TZ is not set.
// Thread-safe while TZ does not change.
#pragma once

#include <string>

#include "NEBFoundation/NEBValue.h"

namespace neb::nebsc {

/// Returns "2012-03-04 05:06".
[[nodiscard]] std::string localMinute(NEBDate date);

/// Returns "2012-03-04 05:06:07 +0530".
[[nodiscard]] std::string localSecondWithZone(NEBDate date);

}  // namespace neb::nebsc
