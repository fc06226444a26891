// HTTPGateway.h - serves the page of `nebsc browse` over HTTP. docs/browse.md describes the paths.
#pragma once

#include "Browse/BrowseGateway.h"

namespace neb::nebsc {

class HTTPGateway : public BrowseGateway {
public:
    [[nodiscard]] CommandOutput serve(const Site& site) const override;
};

}  // namespace neb::nebsc
