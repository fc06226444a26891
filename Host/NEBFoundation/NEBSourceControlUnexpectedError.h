// NEBSourceControlUnexpectedError.h - what an entry point of the contract makes of an exception, so
// that none leaves it.
//
//     } catch (...) {
//         NEBSourceControlStoreCurrentException(error);
//         return false;
//     }
//
// All are called from within a catch block but the first, and rethrow what ends a thread
// (pthread_cancel, pthread_exit), which no catch block may keep. Thread-safe.
#pragma once

#include <memory>
#include <optional>

#include "NEBFoundation/NEBSourceControlError.h"
#include "NEBFoundation/NEBSourceControlOperation.h"
#include "NEBFoundation/NEBSourceControlRequest.h"
#include "Platform/Export.h"

namespace neb {

/// An operation that does nothing and has the error. Null without a request.
[[nodiscard]] NEB_EXPORT std::shared_ptr<NEBSourceControlOperation>
NEBSourceControlFailingOperation(const std::shared_ptr<NEBSourceControlRequest>& request,
                                 NEBSourceControlError error);

/// The exception that is being handled, as an error. The description of a std::exception holds its
/// text, and the class is "out-of-memory" where memory ran out; that of any other, which can only
/// come from a plug-in or a host, the name of its type. Throws std::bad_alloc.
[[nodiscard]] NEB_EXPORT NEBSourceControlError NEBSourceControlErrorOfCurrentException();

/// Stores that error at `error`, unless that is null. Stores nothing where memory is missing.
NEB_EXPORT void NEBSourceControlStoreCurrentException(std::optional<NEBSourceControlError>* error);

/// An operation that fails with that error. Null without a request, and where memory is missing.
[[nodiscard]] NEB_EXPORT std::shared_ptr<NEBSourceControlOperation>
NEBSourceControlOperationOfCurrentException(
    const std::shared_ptr<NEBSourceControlRequest>& request);

}  // namespace neb
