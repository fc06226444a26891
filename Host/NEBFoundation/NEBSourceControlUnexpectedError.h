// NEBSourceControlUnexpectedError.h - errors for exceptions, so that none leaves an entry point of
// the contract.
//
//     } catch (...) {
//         NEBSourceControlStoreCurrentException(error);
//         return false;
//     }
//
// All functions must be called in a catch block. They rethrow the exception that ends
// a thread (pthread_cancel, pthread_exit), as a catch block must. Thread-safe.
#pragma once

#include <optional>

#include "NEBFoundation/NEBSourceControlError.h"
#include "Platform/Export.h"

namespace neb {

/// Returns the exception that is being handled as an error. Its description has the text of a
/// std::exception, or the type of any other exception. The class is "out-of-memory" for
/// std::bad_alloc. Throws std::bad_alloc.
[[nodiscard]] NEB_EXPORT NEBSourceControlError NEBSourceControlErrorOfCurrentException();

/// Stores that error in `error`, unless that is null. Stores nothing if memory runs out.
NEB_EXPORT void NEBSourceControlStoreCurrentException(std::optional<NEBSourceControlError>* error);

}  // namespace neb
