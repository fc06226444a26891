// NEBSourceControlAssertions.h - reports of broken preconditions.
//
//     const NEBSourceControlAssertionSite site{
//         .function = "-[GitController operationForRequest:]", .file = "Classes/GitController",
//         .line = 194};
//     NEBSourceControlAssertNonEmptyString(site, request.destination, "request.destination");
//
// Each function reports through _LOMAssertionFailureHandler when the condition does not hold, and
// returns in any case: execution continues. Thread-safe.
#pragma once

#include <string_view>

#include "NEBFoundation/NEBValue.h"
#include "Platform/Export.h"

namespace neb {

/// The source location that a report names.
struct NEBSourceControlAssertionSite {
    std::string_view function;
    std::string_view file;
    int line;
};

/// Checks a condition. The message is "Assertion failed: %s" with the text of the condition.
NEB_EXPORT void NEBSourceControlAssert(const NEBSourceControlAssertionSite& site, bool holds,
                                       std::string_view condition);

/// Checks that a value is present. The message is "%s should not be nil." with the text of the
/// expression; the reported condition is "(expression) != nil".
NEB_EXPORT void NEBSourceControlAssertNotNil(const NEBSourceControlAssertionSite& site,
                                             bool isPresent, std::string_view expression);

/// Checks that a value is a non-empty string. The message is "%s should be a non-empty string, …",
/// and the reported condition says whether it is absent, of another kind, or empty.
NEB_EXPORT void NEBSourceControlAssertNonEmptyString(const NEBSourceControlAssertionSite& site,
                                                     const NEBValue& value,
                                                     std::string_view expression);

/// Checks that a value is present and that `isInstance`, which states that it is an instance of
/// `className`, holds. The message is "%s should be an instance inheriting from %@, …".
NEB_EXPORT void NEBSourceControlAssertInstance(const NEBSourceControlAssertionSite& site,
                                               const NEBValue& value, bool isInstance,
                                               std::string_view expression,
                                               std::string_view className);

}  // namespace neb
