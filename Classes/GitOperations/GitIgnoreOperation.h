// GitIgnoreOperation.h - request type 4.
#pragma once

#include "NEBFoundation/NEBSourceControlOperation.h"

namespace neb {

/// Does nothing: the request completes with neither result nor error.
class GitIgnoreOperation final : public NEBSourceControlOperation {
public:
    using NEBSourceControlOperation::NEBSourceControlOperation;

    [[nodiscard]] std::string className() const override { return "GitIgnoreOperation"; }
};

}  // namespace neb
