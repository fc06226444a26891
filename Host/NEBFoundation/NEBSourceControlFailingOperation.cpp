#include "NEBFoundation/NEBSourceControlFailingOperation.h"

#include <new>
#include <utility>

#include "NEBFoundation/NEBSourceControlUnexpectedError.h"

namespace neb {

std::shared_ptr<NEBSourceControlOperation> NEBSourceControlFailingOperation(
    const std::shared_ptr<NEBSourceControlRequest>& request, NEBSourceControlError error) {
    auto operation = initWithRequest<NEBSourceControlOperation>(request);
    if (operation) {
        operation->setError(std::move(error));
    }
    return operation;
}

std::shared_ptr<NEBSourceControlOperation> NEBSourceControlOperationOfCurrentException(
    const std::shared_ptr<NEBSourceControlRequest>& request) {
    try {
        return NEBSourceControlFailingOperation(request, NEBSourceControlErrorOfCurrentException());
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace neb
