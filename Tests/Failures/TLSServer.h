// TLSServer.h - an HTTPS server with a self-signed certificate.
#pragma once

#include <sys/types.h>

#include <string>

#include "Support/TemporaryFolder.h"

namespace neb::test {

/// Listens on a port of the loopback address that the system chooses, until it is destroyed. The
/// certificate has the name of another host. The constructor throws if "openssl" fails.
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
