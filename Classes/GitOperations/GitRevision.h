// GitRevision.h - functions for revisions.
#pragma once

#include <string>
#include <string_view>

#include "NEBFoundation/NEBValue.h"

namespace neb {

/// Returns the first 12 characters, as records have them.
[[nodiscard]] std::string_view gitAbbreviatedRevision(std::string_view revision);

/// Whether the value is a symbolic revision name of the host: local, in memory, HEAD or BASE.
[[nodiscard]] bool gitIsSymbolicRevision(const NEBValue& revision);

/// Returns "HEAD" for the symbolic names HEAD and BASE, and any other value unchanged.
[[nodiscard]] NEBValue gitRevisionOfCommit(const NEBValue& revision);

}  // namespace neb
