#include "HgController.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "HgOperations.h"

namespace {

using namespace neb;
using Request = std::shared_ptr<NEBSourceControlRequest>;

template <typename Op>
std::shared_ptr<NEBSourceControlOperation> make(const Request& request) {
    return initWithRequest<Op>(request);
}

struct Row {
    std::int32_t type;
    std::shared_ptr<NEBSourceControlOperation> (*maker)(const Request&);
};

/// The operation of each type. The other types have none.
constexpr Row rows[] = {
    {NEBSourceControlRequestAdd, &make<HgAddOperation>},
    {NEBSourceControlRequestCommit, &make<HgCommitOperation>},
    {NEBSourceControlRequestRemove, &make<HgRemoveOperation>},
    {NEBSourceControlRequestAddFiles, &make<HgAddOperation>},
    {NEBSourceControlRequestStatus, &make<HgStatusOperation>},
    {NEBSourceControlRequestLog, &make<HgLogOperation>},
    {NEBSourceControlRequestInfo, &make<HgInfoOperation>},
    {NEBSourceControlRequestListBranches, &make<HgListBranchesOperation>},
    {NEBSourceControlRequestCurrentBranch, &make<HgCurrentBranchOperation>},
    {NEBSourceControlRequestBlame, &make<HgBlameOperation>},
    {NEBSourceControlRequestDiff, &make<HgDiffOperation>},
    {NEBSourceControlRequestContent, &make<HgContentOperation>},
};

/// Whether the request lacks files that its type requires.
bool lacksFiles(const NEBSourceControlRequest& request) {
    const auto& type = NEBSourceControlDescriptionOfRequestType(request.type);
    return std::ranges::any_of(type.requirements, [&request](NEBSourceControlRequirement need) {
        return (need == NEBSourceControlRequirement::atLeastOneFile && request.fileCount() == 0) ||
               (need == NEBSourceControlRequirement::exactlyOneFile && request.fileCount() != 1);
    });
}

}  // namespace

/// No operation contacts a server.
bool HgController::authenticationRequiredForRequest(
    const NEBSourceControlRequest& /*request*/) const {
    return false;
}

bool HgController::validateRequest(const NEBSourceControlRequest& request,
                                   std::optional<NEBSourceControlError>* error) const {
    if (!lacksFiles(request)) {
        return true;
    }
    if (error != nullptr) {
        *error = NEBSourceControlError::withDescription(
            NEBSourceControlGenericError, "The request does not name the file that it is about.",
            "Add the file to the request.");
        (*error)->errorClass = NEBSourceControlRequestInvalidErrorClass;
    }
    return false;
}

std::shared_ptr<NEBSourceControlOperation> HgController::operationForRequest(
    const Request& request) const {
    if (!request) {
        return nullptr;
    }
    const auto* row = std::ranges::find(rows, request->type, &Row::type);
    return row != std::end(rows) ? row->maker(request) : nullptr;
}
