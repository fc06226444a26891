#include "NEBFoundation/NEBSourceControlSourceTree.h"

#include "LOMFoundation/LOMFormat.h"

namespace neb {

std::string NEBSourceControlSourceTree::descriptionForAssertionMessage() const {
    const std::string place = location ? *location : std::string(absentValueText);
    return "<" + className() + " \"" + name + "\": " + place + ">";
}

std::string NEBSourceControlRepository::className() const {
    return "NEBSourceControlRepository";
}

std::string NEBSourceControlWorkingTree::className() const {
    return "NEBSourceControlWorkingTree";
}

}  // namespace neb
