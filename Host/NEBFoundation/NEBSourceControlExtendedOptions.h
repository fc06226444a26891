// NEBSourceControlExtendedOptions.h - keys of the options of the request types from 1000 on.
// Include NEBSourceControlKeys.h, which has all keys.
//
// The comment states the kind of the value. A text can have any bytes.
#pragma once

#include "NEBFoundation/NEBConstant.h"

namespace neb {

/// boolean: a request that reads may contact the server for objects that a partial clone lacks.
/// Without it, such a request fails with an error of the class "objects-missing"
inline constexpr NEBConstant NEBSourceControlRequestOptionFetchMissingObjects{
    "NEBSourceControlRequestOptionFetchMissingObjects"};

}  // namespace neb
