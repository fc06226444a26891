// NEBObject.h - the base of all classes of the host contract.
#pragma once

#include <string>

#include "Platform/Export.h"

namespace neb {

/// The base class. Shared through std::shared_ptr; thread-safety is documented by each derived
/// class.
class NEB_EXPORT NEBObject {
public:
    NEBObject() = default;
    NEBObject(const NEBObject&) = default;
    NEBObject& operator=(const NEBObject&) = default;
    virtual ~NEBObject() = default;

    /// Returns a description for the message of an assertion report.
    [[nodiscard]] virtual std::string descriptionForAssertionMessage() const = 0;
};

}  // namespace neb
