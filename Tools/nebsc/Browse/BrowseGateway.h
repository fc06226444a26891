// BrowseGateway.h - what the program nebsc-browse adds to nebsc: HTTP.
//
// nebsc itself has no HTTP, so that its other commands load no library for it. `nebsc browse`
// executes nebsc-browse, which is nebsc with a gateway.
#pragma once

#include <string>

#include "Session/HostSession.h"
#include "Session/Interruption.h"
#include "Terminal/CommandOutput.h"

namespace neb::nebsc {

/// Serves the page that shows a repository. Stateless.
class BrowseGateway {
public:
    /// What to serve. The objects outlive the call of serve().
    struct Site {
        const HostSession& session;
        /// A signal ends serve().
        Interruption& interruption;
        /// The top of the working copy, or a bare repository; absolute.
        std::string location;
        /// Whether that is a git directory without a working copy.
        bool isBare = false;
        /// Whether to go on when no page is open.
        bool stays = false;
        /// Whether to open the page in the default browser.
        bool opensBrowser = false;
    };

    BrowseGateway() = default;
    BrowseGateway(const BrowseGateway&) = delete;
    BrowseGateway& operator=(const BrowseGateway&) = delete;
    virtual ~BrowseGateway() = default;

    /// Prints the URL, and serves pages until a signal arrives or no page has been open for a
    /// minute. Returns what is left to print.
    [[nodiscard]] virtual CommandOutput serve(const Site& site) const = 0;
};

}  // namespace neb::nebsc
