// SubversionServer.h - a Subversion repository for a test, and its server.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "Support/TemporaryFolder.h"

namespace neb::test {

/// A repository with the folders trunk, branches and tags and the file trunk/a ("first\n"), served
/// on a free port of the loopback address for the lifetime of the object.
class SubversionServer {
public:
    SubversionServer();
    SubversionServer(const SubversionServer&) = delete;
    SubversionServer& operator=(const SubversionServer&) = delete;
    ~SubversionServer();

    /// "svn://127.0.0.1:PORT".
    [[nodiscard]] std::string url() const { return _url; }
    /// The file URL of the repository, which needs no server.
    [[nodiscard]] std::string fileURL() const { return "file://" + _folder.path("repository"); }
    /// Runs a program and returns its output. Throws if it fails.
    std::string run(std::vector<std::string> command) const;
    /// Adds or changes a file, with a path from the root of the repository, and commits it.
    void commitFile(const std::string& path, const std::string& bytes) const;
    /// Returns the content of a file in the latest revision.
    [[nodiscard]] std::string content(const std::string& path) const;
    /// Makes every commit fail with this message of the hook.
    void refuseCommits(const std::string& message) const;

private:
    TemporaryFolder _folder;
    std::string _url;
    pid_t _server = -1;
};

}  // namespace neb::test
