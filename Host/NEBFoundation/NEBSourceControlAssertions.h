// NEBSourceControlAssertions.h - the shapes in which a broken precondition is reported.
//
//     const NEBSourceControlAssertionSite site{
//         .function = "-[GitController operationForRequest:]", .file = "Classes/GitController",
//         .line = 194};
//     NEBSourceControlAssertNonEmptyString(site, request.destination, "request.destination");
//
// Each reports through _LOMAssertionFailureHandler when the condition does not hold, and returns;
// the caller goes on. From any thread.
#pragma once

#include <string_view>

#include "NEBFoundation/NEBValue.h"
#include "Platform/Export.h"

namespace neb {

/// Where a condition stands.
struct NEBSourceControlAssertionSite {
    std::string_view function;
    std::string_view file;
    int line;
};

/// The plain shape: "Assertion failed: %s" with the condition's text.
NEB_EXPORT void NEBSourceControlAssert(const NEBSourceControlAssertionSite& site, bool holds,
                                       std::string_view condition);

/// "%s should not be nil." with the expression's text, for a value of which only `isPresent`
/// counts. The condition reads "(expression) != nil".
NEB_EXPORT void NEBSourceControlAssertNotNil(const NEBSourceControlAssertionSite& site,
                                             bool isPresent, std::string_view expression);

/// "%s should be a non-empty string, …": absent, of another kind, or empty, each with a condition
/// of its own.
NEB_EXPORT void NEBSourceControlAssertNonEmptyString(const NEBSourceControlAssertionSite& site,
                                                     const NEBValue& value,
                                                     std::string_view expression);

/// "%s should be an instance inheriting from %@, …": the value is absent, or `isInstance` says that
/// it is of another class than `className`.
NEB_EXPORT void NEBSourceControlAssertInstance(const NEBSourceControlAssertionSite& site,
                                               const NEBValue& value, bool isInstance,
                                               std::string_view expression,
                                               std::string_view className);

}  // namespace neb
