// LocalTime.h - instants as the person's clock shows them, by TZ or the machine's own zone. From
// any thread that leaves TZ alone.
#pragma once

#include <string>

#include "NEBFoundation/NEBValue.h"

namespace neb::nebsc {

/// "2012-03-04 05:06".
[[nodiscard]] std::string localMinute(NEBDate date);

/// "2012-03-04 05:06:07 +0530".
[[nodiscard]] std::string localSecondWithZone(NEBDate date);

}  // namespace neb::nebsc
