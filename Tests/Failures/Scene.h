// Scene.h - the environment of a failure: repositories, servers, variables, another user.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequest.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/LoopbackServer.h"
#include "Support/SubversionServer.h"
#include "Support/TemporaryFolder.h"
#include "Support/TestRepository.h"
#include "TLSServer.h"

namespace neb::test {

/// Builds a request:
/// `RequestBuilder(type, path).on({"a"}).with(NEBSourceControlRequestOptionMessage, "m")`.
class RequestBuilder {
public:
    RequestBuilder(std::int32_t type, const std::string& location);
    RequestBuilder& to(std::string destination);
    RequestBuilder& on(const std::vector<std::string>& files);
    RequestBuilder& with(std::string_view option, NEBValue value);
    RequestBuilder& between(std::string start, std::optional<std::string> end = {});
    /// Through git svn.
    RequestBuilder& bySubversion();
    operator std::shared_ptr<NEBSourceControlRequest>() const { return _request; }

private:
    std::shared_ptr<NEBSourceControlRequest> _request;
};

/// The environment of one failure. The destructor restores what was changed.
class Scene {
public:
    Scene() = default;
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;
    ~Scene();

    [[nodiscard]] const TemporaryFolder& folder() const { return _folder; }
    /// Returns the main repository, with one commit of the file "a" ("1\n").
    const TestRepository& work();
    /// Returns the main repository without a commit; must precede work().
    const TestRepository& empty();
    /// Makes work() a clone of a bare repository; returns the path of that.
    std::string shared();
    /// Pushes a commit of the file to shared() from another clone.
    void pushFromOtherClone(std::string_view file, std::string_view bytes);
    /// Returns work() with a branch "topic", whose only commit changes, adds or (if `bytes` are
    /// absent) removes the file; main is checked out.
    const TestRepository& withTopic(std::string_view file, std::optional<std::string_view> bytes);
    /// Returns work() with an unresolved merge conflict in the file "a".
    const TestRepository& inConflict();

    /// Returns the URL of a server that sends this response to every request; see httpAnswer().
    std::string serve(std::string answer);
    /// Returns the URL of an HTTP server that accepts pushes from everyone, and sends this response
    /// to the received pack data.
    std::string serveEmptyRepository(std::string answerToPush);
    /// Returns the URL of a server that closes every connection.
    std::string serveDisconnects(const std::string& scheme = "http");
    /// Returns the URL of a server with a self-signed certificate.
    std::string serveOverTLS();
    /// Returns the path of that certificate.
    [[nodiscard]] std::string certificate() const { return _tls->certificate(); }
    SubversionServer& subversion();
    /// Makes the main repository a git svn clone of subversion(); returns its path.
    std::string cloneSubversion();
    /// Returns a port of the loopback address on which no process listens.
    static int closedPort();

    /// Sets an environment variable for git and its children.
    void setVariable(const std::string& name, const std::string& value);
    /// Replaces ssh by a script, whose arguments are the host and the command.
    void setSSH(const std::string& script);
    /// Adds an executable hook.
    void addHook(const TestRepository& repository, const std::string& name,
                 const std::string& script);
    /// Returns a folder on a file system of one mebibyte, "disk" in folder(). Calls skip() if this
    /// process cannot mount one.
    std::string smallDisk();
    /// Runs the rest as an ordinary user, who becomes the owner of everything made so far.
    void actAsOrdinaryUser();
    /// Sets the permissions of a file or folder.
    static void setPermissions(const std::string& path, unsigned mode);

    /// Builds a clone of the URL into a new folder.
    RequestBuilder clone(const std::string& url);
    /// Builds a request of the type for work(), as do the functions below.
    RequestBuilder request(std::int32_t type);
    RequestBuilder commit(const std::vector<std::string>& files = {},
                          const std::string& message = "m");
    RequestBuilder push(const std::string& local, const std::string& there,
                        const std::string& remote = "origin");
    RequestBuilder fetch(const std::string& remote = "origin");
    RequestBuilder pull(const std::string& branch = "main", const std::string& remote = "origin");

    /// Marks the failure as impossible on this machine.
    void skip(std::string reason) { _reasonToSkip = std::move(reason); }
    /// Calls skip() if the installed git is version 2.MINOR or newer. The reason says what it does.
    void skipSinceGit(int minor, std::string reason);
    [[nodiscard]] const std::string& reasonToSkip() const { return _reasonToSkip; }

private:
    TemporaryFolder _folder;
    std::optional<std::string> _shared;
    std::deque<TestRepository> _repositories;
    const TestRepository* _work = nullptr;
    std::deque<LoopbackServer> _servers;
    std::unique_ptr<TLSServer> _tls;
    std::unique_ptr<SubversionServer> _subversion;
    std::vector<std::pair<std::string, std::optional<std::string>>> _variablesBefore;
    std::optional<AsOrdinaryUser> _user;
    bool _hasSmallDisk = false;
    std::string _reasonToSkip;
};

/// Returns an HTTP response: a status such as "404 Not Found", complete header lines, a body.
std::string httpAnswer(const std::string& status, const std::string& headers = "",
                       const std::string& body = "");

}  // namespace neb::test
