// NEBObject.h - what every object of the host contract answers.
#pragma once

#include <string>

#include "Platform/Export.h"

namespace neb {

class NEB_EXPORT NEBObject {
public:
    NEBObject() = default;
    NEBObject(const NEBObject&) = default;
    NEBObject& operator=(const NEBObject&) = default;
    virtual ~NEBObject() = default;

    /// Describes the object in the message of an assertion report.
    [[nodiscard]] virtual std::string descriptionForAssertionMessage() const = 0;
};

}  // namespace neb
