// HTTPServer.h - a real HTTP server of a repository that asks for a password, for tests.
#pragma once

#include <sys/types.h>

#include <string>

#include "Support/TemporaryFolder.h"

namespace neb::test {

/// A folder with the bare repository "shared.git", whose branch main has one commit.
class SharedFolder {
public:
    SharedFolder();

    TemporaryFolder folder;
};

/// An HTTP server with basic authentication for the user "ann".
class HTTPServer : public SharedFolder {
public:
    static constexpr const char* password = "s3cret-word";

    explicit HTTPServer(const std::string& passwordOfAnn = password);
    HTTPServer(const HTTPServer&) = delete;
    HTTPServer& operator=(const HTTPServer&) = delete;
    ~HTTPServer();

    /// "http://127.0.0.1:1234"
    [[nodiscard]] const std::string& host() const { return _host; }
    /// Returns the URL of the repository, optionally for a user: "ann@".
    [[nodiscard]] std::string url(const std::string& user = "") const;
    /// Returns the requests so far: for each its line, then its header.
    [[nodiscard]] std::string requests() const;
    /// Returns where the password was found in other processes while the server answered a request
    /// with it: "cmdline" or "environ" for each; see proc(5). Empty if nowhere.
    [[nodiscard]] std::string placesOfPassword() const;

private:
    pid_t _server = -1;
    std::string _host;
};

}  // namespace neb::test
