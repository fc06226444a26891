// GitIgnoreOperation.h - request type 4 (ignore).
#pragma once

#include "NEBFoundation/NEBSourceControlOperation.h"

namespace neb {

/// Does nothing: no result, no error.
class GitIgnoreOperation final : public NEBSourceControlOperation {
public:
    using NEBSourceControlOperation::NEBSourceControlOperation;

    [[nodiscard]] std::string className() const override { return "GitIgnoreOperation"; }
};

}  // namespace neb
