// ServerContact.h - the requests whose git may have to authenticate itself.
#pragma once

#include "NEBFoundation/NEBSourceControlRequest.h"

namespace neb::nebsc {

/// Returns whether git may contact a server for the request. More types do than those for which a
/// host must find out whether the server is reachable
/// (NEBSourceControlRequestMayAuthenticate()). Thread-safe.
[[nodiscard]] bool mayContactServer(const NEBSourceControlRequest& request);

}  // namespace neb::nebsc
