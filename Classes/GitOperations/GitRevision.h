// GitRevision.h - what the operations do alike with revisions.
#pragma once

#include <string>
#include <string_view>

#include "NEBFoundation/NEBValue.h"

namespace neb {

/// The revision as records hold it: its first 12 characters.
[[nodiscard]] std::string_view gitAbbreviatedRevision(std::string_view revision);

/// Whether the value is one of the host's names for a revision instead of one of git's: local, in
/// memory, HEAD or BASE.
[[nodiscard]] bool gitIsSymbolicRevision(const NEBValue& revision);

/// "HEAD" for the host's names HEAD and BASE, any other value as it is.
[[nodiscard]] NEBValue gitRevisionOfCommit(const NEBValue& revision);

}  // namespace neb
