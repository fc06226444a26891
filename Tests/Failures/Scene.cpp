#include "Scene.h"

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "Support/InstalledGit.h"
#include "Support/Matchers.h"

namespace neb::test {

namespace fs = std::filesystem;

// ---- requests ---------------------------------------------------------------------------------

RequestBuilder::RequestBuilder(std::int32_t type, const std::string& location)
    : _request(requestFor(type, location)) {
    _request->remote = std::make_shared<NEBSourceControlRemote>();
    _request->repositoryToAuthenticate = _request->sourceTree;
    _request->options.emplace();
}

RequestBuilder& RequestBuilder::to(std::string destination) {
    _request->destination = std::move(destination);
    return *this;
}

RequestBuilder& RequestBuilder::on(const std::vector<std::string>& files) {
    _request->files.emplace(files.begin(), files.end());
    return *this;
}

RequestBuilder& RequestBuilder::with(std::string_view option, NEBValue value) {
    _request->options->set(std::string(option), std::move(value));
    return *this;
}

RequestBuilder& RequestBuilder::between(std::string start, std::optional<std::string> end) {
    _request->startingRevision = std::move(start);
    if (end) {
        _request->endingRevision = std::move(*end);
    }
    return *this;
}

RequestBuilder& RequestBuilder::bySubversion() {
    _request->remote->representsGitSVNBridge = true;
    return *this;
}

RequestBuilder Scene::clone(const std::string& url) {
    fs::create_directories(_folder.path("clone"));
    return RequestBuilder(NEBSourceControlRequestClone, url).to(_folder.path("clone"));
}

RequestBuilder Scene::request(std::int32_t type) {
    return {type, work().path()};
}

RequestBuilder Scene::commit(const std::vector<std::string>& files, const std::string& message) {
    return request(NEBSourceControlRequestCommit)
        .on(files)
        .with(NEBSourceControlRequestOptionMessage, message);
}

RequestBuilder Scene::push(const std::string& local, const std::string& there,
                           const std::string& remote) {
    return request(NEBSourceControlRequestPush)
        .to(there)
        .with(NEBSourceControlRequestOptionRemoteName, remote)
        .with(NEBSourceControlRequestOptionBranch, local);
}

RequestBuilder Scene::fetch(const std::string& remote) {
    return request(NEBSourceControlRequestFetch)
        .with(NEBSourceControlRequestOptionRemoteName, remote);
}

RequestBuilder Scene::pull(const std::string& branch, const std::string& remote) {
    return request(NEBSourceControlRequestUpdate)
        .to(remote)
        .with(NEBSourceControlRequestOptionPullByFastForwarding, true)
        .with(NEBSourceControlRequestOptionRemoteName, remote)
        .with(NEBSourceControlRequestOptionBranch, branch);
}

// ---- repositories -----------------------------------------------------------------------------

const TestRepository& Scene::empty() {
    if (_work == nullptr) {
        _work = &_repositories.emplace_back();
    }
    return *_work;
}

const TestRepository& Scene::work() {
    if (_work == nullptr) {
        _work = &_repositories.emplace_back();
        _work->commitFile("a", "1\n");
    }
    return *_work;
}

std::string Scene::shared() {
    if (!_shared) {
        _shared = _folder.path("shared.git");
        work().git({"init", "--quiet", "--bare", *_shared});
        work().git({"remote", "add", "origin", *_shared});
        work().git({"push", "--quiet", "-u", "origin", "main"});
    }
    return *_shared;
}

void Scene::pushFromOtherClone(std::string_view file, std::string_view bytes) {
    const TestRepository& other = _repositories.emplace_back(shared());
    other.commitFile(file, bytes, "from the other clone");
    other.git({"push", "--quiet", "origin", "HEAD:main"});
}

const TestRepository& Scene::withTopic(std::string_view file,
                                       std::optional<std::string_view> bytes) {
    const TestRepository& repository = work();
    repository.git({"checkout", "--quiet", "-b", "topic"});
    if (bytes) {
        repository.commitFile(file, *bytes, "topic");
    } else {
        repository.git({"rm", "--quiet", std::string(file)});
        repository.git({"commit", "--quiet", "-m", "topic"});
    }
    repository.git({"checkout", "--quiet", "main"});
    return repository;
}

const TestRepository& Scene::inConflict() {
    const TestRepository& repository = withTopic("a", "topic\n");
    repository.commitFile("a", "main\n");
    repository.gitStatus({"merge", "topic"});
    return repository;
}

// ---- servers ----------------------------------------------------------------------------------

std::string Scene::serve(std::string answer) {
    return _servers.emplace_back(std::move(answer)).url();
}

std::string Scene::serveEmptyRepository(std::string answerToPush) {
    using namespace std::string_literals;
    // "Smart Server Response" of gitprotocol-http(5), without references
    const std::string references =
        "001f# service=git-receive-pack\n0000"
        "0061" +
        std::string(40, '0') +
        " capabilities^{}\0report-status delete-refs ofs-delta\n"s
        "0000";
    return _servers
        .emplace_back(
            httpAnswer("200 OK", "Content-Type: application/x-git-receive-pack-advertisement\r\n",
                       references),
            std::move(answerToPush))
        .url();
}

std::string Scene::serveDisconnects(const std::string& scheme) {
    return _servers.emplace_back("", LoopbackServer::Silence::hangsUp).url(scheme);
}

std::string Scene::serveOverTLS() {
    _tls = std::make_unique<TLSServer>();
    return _tls->url();
}

SubversionServer& Scene::subversion() {
    if (!_subversion) {
        _subversion = std::make_unique<SubversionServer>();
    }
    return *_subversion;
}

std::string Scene::cloneSubversion() {
    empty().git({"svn", "init", subversion().url() + "/trunk"});
    empty().git({"svn", "fetch", "--quiet"});
    empty().git({"reset", "--quiet", "--hard", "refs/remotes/git-svn"});
    return empty().path();
}

int Scene::closedPort() {
    return 1;  // the port of an obsolete service
}

std::string httpAnswer(const std::string& status, const std::string& headers,
                       const std::string& body) {
    return "HTTP/1.1 " + status + "\r\n" + headers +
           "Connection: close\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
           body;
}

// ---- environment ------------------------------------------------------------------------------

void Scene::setVariable(const std::string& name, const std::string& value) {
    const char* before = std::getenv(name.c_str());
    _variablesBefore.emplace_back(name, before ? std::optional<std::string>(before) : std::nullopt);
    ::setenv(name.c_str(), value.c_str(), 1);
}

void Scene::setSSH(const std::string& script) {
    setVariable("GIT_SSH_COMMAND", _folder.writeProgram("ssh", "#!/bin/sh\n" + script + "\n"));
}

void Scene::addHook(const TestRepository& repository, const std::string& name,
                    const std::string& script) {
    repository.write(".git/hooks/" + name, "#!/bin/sh\n" + script + "\n");
    setPermissions(repository.path(".git/hooks/" + name), 0755);
}

std::string Scene::smallDisk() {
    std::string path = _folder.path("disk");
    fs::create_directory(path);
    _hasSmallDisk = ::mount("none", path.c_str(), "tmpfs", 0, "size=1m") == 0;
    if (!_hasSmallDisk) {
        skip("this process cannot mount a file system");
    }
    return path;
}

void Scene::skipSinceGit(int minor, std::string reason) {
    if (isGitSince(minor)) {
        skip(std::move(reason));
    }
}

void Scene::actAsOrdinaryUser() {
    if (::geteuid() == 0) {
        constexpr uid_t ordinaryUser = 65534;
        std::vector<std::string> folders{_folder.path()};
        for (const TestRepository& repository : _repositories) {
            folders.push_back(repository.path());
        }
        for (const std::string& folder : folders) {
            static_cast<void>(::lchown(folder.c_str(), ordinaryUser, static_cast<gid_t>(-1)));
            for (const auto& entry : fs::recursive_directory_iterator(folder)) {
                static_cast<void>(
                    ::lchown(entry.path().c_str(), ordinaryUser, static_cast<gid_t>(-1)));
            }
        }
    }
    _user.emplace();
}

void Scene::setPermissions(const std::string& path, unsigned mode) {
    fs::permissions(path, static_cast<fs::perms>(mode));
}

Scene::~Scene() {
    _user.reset();
    if (_hasSmallDisk) {
        ::umount2(_folder.path("disk").c_str(), MNT_DETACH);
    }
    for (const auto& [name, value] : _variablesBefore) {
        if (value) {
            ::setenv(name.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(name.c_str());
        }
    }
}

}  // namespace neb::test
