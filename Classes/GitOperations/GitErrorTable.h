// GitErrorTable.h - messages of git that have an error of their own.
#pragma once

#include <optional>
#include <string_view>

#include "NEBFoundation/NEBSourceControlError.h"
#include "NEBFoundation/NEBSourceControlRequest.h"

namespace neb {

struct GitErrorTranslation {
    /// Whether a row of the table matches.
    bool isKnown = false;
    /// The error of the row. Absent when the text is known to be harmless.
    std::optional<NEBSourceControlError> error;
};

/// Finds the first row that matches the message. The request provides the names for the
/// descriptions. Thread-safe.
[[nodiscard]] GitErrorTranslation gitErrorTableLookUp(std::string_view message,
                                                      const NEBSourceControlRequest& request);

}  // namespace neb
