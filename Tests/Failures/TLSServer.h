// TLSServer.h - an HTTPS server with a certificate of its own, which nobody trusts.
#pragma once

#include <sys/types.h>

#include <string>

#include "Support/TemporaryFolder.h"

namespace neb::test {

/// Serves at a port of the loopback address that the system chose, for as long as it lives. The
/// certificate is made for another host's name. Throws when the program "openssl" cannot do it.
class TLSServer {
public:
    TLSServer();
    TLSServer(const TLSServer&) = delete;
    TLSServer& operator=(const TLSServer&) = delete;
    ~TLSServer();

    [[nodiscard]] std::string url() const { return _url; }
    [[nodiscard]] std::string certificate() const { return _folder.path("certificate.pem"); }

private:
    TemporaryFolder _folder;
    std::string _url;
    pid_t _server = -1;
};

}  // namespace neb::test
