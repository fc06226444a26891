// NEBSourceControlArgumentInjection.h - the check for values that git would take for an option.
//
//     if (const auto injection = NEBSourceControlFirstArgumentInjection(*request)) {
//         refuse(injection->field, injection->value);
//     }
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "NEBFoundation/NEBSourceControlRequest.h"
#include "Platform/Export.h"

namespace neb {

/// A value that must not reach a command line, and why.
struct NEBSourceControlArgumentInjection {
    /// The field of the request, as its JSON form names it: "startingRevision", "files[0]",
    /// "options.NEBSourceControlRequestOptionBranch".
    std::string field;
    /// The value, or the part of it that git would misread.
    std::string value;
    /// Completes the sentence "git would …".
    std::string_view danger = "take it for an option";
};

/// Returns the first dangerous value of the request; absent when all values are safe. A host that
/// takes values from outside calls this before it makes an operation, and refuses the request.
///
/// A value is dangerous when its text, whatever its kind,
/// - begins with "-" and is an argument that git could read as an option;
/// - is the limit of a log, and not a number;
/// - is a side of a push, and would delete (empty), overwrite ("+") or send several branches ("*").
///
/// NEBSourceControlDescriptionOfRequestType() lists the values to check; all values are checked for
/// a type that it does not list. Thread-safe.
[[nodiscard]] NEB_EXPORT std::optional<NEBSourceControlArgumentInjection>
NEBSourceControlFirstArgumentInjection(const NEBSourceControlRequest& request);

}  // namespace neb
