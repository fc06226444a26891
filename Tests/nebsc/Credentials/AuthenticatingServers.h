// AuthenticatingServers.h - real servers that ask for credentials, for tests.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <utility>

#include "Platform/FileDescriptor.h"
#include "Support/HTTPServer.h"
#include "nebsc/Server/ServerClient.h"

namespace neb::test {

/// sshd(8), which listens on a port of the loopback interface and lets the current user log in with
/// a key that has the passphrase "open sesame".
class SSHServer : public SharedFolder {
public:
    static constexpr const char* passphrase = "open sesame";

    /// Returns whether the machine has sshd(8).
    [[nodiscard]] static bool isInstalled();

    SSHServer();
    SSHServer(const SSHServer&) = delete;
    SSHServer& operator=(const SSHServer&) = delete;
    ~SSHServer();

    [[nodiscard]] std::string url() const;
    /// The variable with which git uses the key. With `isKnown`, ssh knows the key of the host.
    [[nodiscard]] std::pair<std::string, std::optional<std::string>> variable(bool isKnown) const;

private:
    void createKeys() const;
    void writeClientConfiguration() const;
    /// Starts sshd; returns whether it listens on `_port`.
    bool start();
    void stop();

    pid_t _server = -1;
    int _port = 0;
    FileDescriptor _log;  // sshd writes there while it runs
};

}  // namespace neb::test
