// Scene.h - what a failure needs to come about: repositories, servers, variables, another user.
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

/// A request in the making: `Ask(3, path).on({"a"}).with(NEBSourceControlRequestOptionMessage,
/// "m")`.
class Ask {
public:
    Ask(std::int32_t type, const std::string& location);
    Ask& to(std::string destination);
    Ask& on(const std::vector<std::string>& files);
    Ask& with(std::string_view option, NEBValue value);
    Ask& between(std::string start, std::optional<std::string> end = {});
    /// Over the Subversion bridge.
    Ask& bySubversion();
    operator std::shared_ptr<NEBSourceControlRequest>() const { return _request; }

private:
    std::shared_ptr<NEBSourceControlRequest> _request;
};

/// One scene, undone when it goes.
class Scene {
public:
    Scene() = default;
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;
    ~Scene();

    [[nodiscard]] const TemporaryFolder& folder() const { return _folder; }
    /// The repository that most failures are about, with one commit of the file "a" ("1\n").
    const TestRepository& work();
    /// The same without a commit.
    const TestRepository& empty();
    /// work() is a clone of a bare repository, whose path this is; asked for before work().
    std::string shared();
    /// Somebody else pushes a commit of the file to shared().
    void pushFromElsewhere(std::string_view file, std::string_view bytes);
    /// work() with a branch "topic" of one more commit, which changes, adds or (absent bytes)
    /// removes the file; main is checked out.
    const TestRepository& withTopic(std::string_view file, std::optional<std::string_view> bytes);
    /// work() with the file "a" in an unresolved conflict of a merge.
    const TestRepository& inConflict();

    /// The URL of a server that gives each request this answer; see httpAnswer().
    std::string serve(std::string answer);
    /// The URL of an HTTP server to which anybody may push, and which gives the received pack data
    /// this answer.
    std::string serveEmptyRepository(std::string answerToPush);
    /// The URL of a server that hangs up on each request.
    std::string serveNobody(const std::string& scheme = "http");
    /// The URL of a server with a certificate that nobody knows; the certificate's file.
    std::string serveOverTLS();
    [[nodiscard]] std::string certificate() const { return _tls->certificate(); }
    SubversionServer& subversion();
    /// A clone of subversion() by the bridge, in the folder work() would have.
    std::string bridged();
    /// A port of the loopback address at which nobody listens.
    static int refusedPort();

    /// For git and everything below it, until the scene goes.
    void setVariable(const std::string& name, const std::string& value);
    /// Stands in for ssh: a script, which finds the host and the command in its arguments.
    void setSSH(const std::string& script);
    /// Makes it an executable hook of the repository.
    void addHook(const TestRepository& repository, const std::string& name,
                 const std::string& script);
    /// The path of a folder on a file system of one mebibyte, "disk" in folder(). Skips where this
    /// process may not mount one.
    std::string smallDisk();
    /// From now on; what the scene has made belongs to that user, but for what is made later.
    void actAsOrdinaryUser();
    /// Gives the file or folder other rights.
    static void setRights(const std::string& path, unsigned mode);

    /// A clone of the URL into a new folder.
    Ask clone(const std::string& url);
    /// Of work().
    Ask ask(std::int32_t type);
    Ask commit(const std::vector<std::string>& files = {}, const std::string& message = "m");
    Ask push(const std::string& local, const std::string& there,
             const std::string& remote = "origin");
    Ask fetch(const std::string& remote = "origin");
    Ask pull(const std::string& branch = "main", const std::string& remote = "origin");

    void skip(std::string reason) { _reasonToSkip = std::move(reason); }
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

/// An HTTP answer: "404 Not Found", header lines with their ends, a body.
std::string httpAnswer(const std::string& status, const std::string& headers = "",
                       const std::string& body = "");

}  // namespace neb::test
