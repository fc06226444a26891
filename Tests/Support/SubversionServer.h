// SubversionServer.h - a Subversion repository that a test makes, and a server for it.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "Support/TemporaryFolder.h"

namespace neb::test {

/// A repository with the usual folders trunk, branches and tags, its trunk holding the file "a"
/// ("first\n"), served at a free port of the loopback address for as long as the object lives.
class SubversionServer {
public:
    SubversionServer();
    SubversionServer(const SubversionServer&) = delete;
    SubversionServer& operator=(const SubversionServer&) = delete;
    ~SubversionServer();

    /// "svn://127.0.0.1:PORT".
    [[nodiscard]] std::string url() const { return _url; }
    /// The same repository as a file URL, without the server.
    [[nodiscard]] std::string fileURL() const { return "file://" + _folder.path("repository"); }
    /// Runs a program and answers what it printed; throws when it fails.
    std::string run(std::vector<std::string> words) const;
    /// Commits a file, new or not, below the repository's root, with Subversion itself.
    void commitFile(const std::string& path, const std::string& bytes) const;
    /// A file's content as Subversion has it.
    [[nodiscard]] std::string content(const std::string& path) const;
    /// Makes every commit fail with the hook's words.
    void refuseCommits(const std::string& words) const;

private:
    TemporaryFolder _folder;
    std::string _url;
    pid_t _server = -1;
};

}  // namespace neb::test
