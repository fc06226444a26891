// GitErrorTable.h - the texts of git that have an error of their own.
#pragma once

#include <optional>
#include <string_view>

#include "NEBFoundation/NEBSourceControlError.h"
#include "NEBFoundation/NEBSourceControlRequest.h"

namespace neb {

struct GitErrorTranslation {
    /// Whether a row of the table matched.
    bool isKnown = false;
    /// The row's error; absent where the text is known to be harmless.
    std::optional<NEBSourceControlError> error;
};

/// Finds the first row whose test the message passes. The request gives the names that fill the
/// descriptions. From any thread.
[[nodiscard]] GitErrorTranslation gitErrorTableLookUp(std::string_view message,
                                                      const NEBSourceControlRequest& request);

}  // namespace neb
