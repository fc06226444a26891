// NEBObject.h - the base of the classes that a request consists of, and of operations.
//
//     class Bookmark : public NEBObject {
//         std::string descriptionForAssertionMessage() const override { return "<Bookmark>"; }
//     };
//     NEBValue value(std::make_shared<const Bookmark>());   // a value can hold any such object
#pragma once

#include <string>

#include "Platform/Export.h"

namespace neb {

/// The base class. Shared through std::shared_ptr; thread-safety is documented by each derived
/// class.
class NEB_EXPORT NEBObject {
public:
    /// Objects can be copied by their classes, and destroyed through a pointer to this one.
    NEBObject() = default;
    NEBObject(const NEBObject&) = default;
    NEBObject& operator=(const NEBObject&) = default;
    virtual ~NEBObject() = default;

    /// Returns a description for the message of an assertion report, such as
    /// `<NEBSourceControlRequest of type 18>`. It is for people; its form may change.
    [[nodiscard]] virtual std::string descriptionForAssertionMessage() const = 0;
};

}  // namespace neb
