#include "Session/Credentials/ServerContact.h"

#include <algorithm>
#include <iterator>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"

namespace neb::nebsc {

namespace {

constexpr std::int32_t otherTypesWithServer[] = {
    NEBSourceControlRequestListRemoteBranches,
    NEBSourceControlRequestListRemoteBranchesSecondForm,
    NEBSourceControlRequestTrackRemoteBranch,
};

}  // namespace

bool mayContactServer(const NEBSourceControlRequest& request) {
    return NEBSourceControlRequestMayAuthenticate(request) ||
           std::find(std::begin(otherTypesWithServer), std::end(otherTypesWithServer),
                     request.type) != std::end(otherTypesWithServer) ||
           request.option(NEBSourceControlRequestOptionFetchMissingObjects).isPresent();
}

}  // namespace neb::nebsc
