#include "Platform/FileFailure.h"

#include "Platform/ErrnoText.h"

namespace neb {

FileFailure FileFailure::of(int errorNumber, const std::string& what) {
    return {errorNumber, what + ": " + textOfErrno(errorNumber) + "."};
}

}  // namespace neb
