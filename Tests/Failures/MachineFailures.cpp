// Locks, permissions, a full disk and damage.

#include <algorithm>
#include <filesystem>
#include <random>

#include "Failure.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

namespace neb::test {

namespace {

namespace fs = std::filesystem;

constexpr const char* indexLock = "/tmp/repository/.git/index.lock";

void lockIndex(Scene& scene) {
    scene.work().write(".git/index.lock", "");
}

/// Makes every write to the file of the repository fail because the disk is full.
void fillDiskBehind(const TestRepository& repository, const std::string& file) {
    fs::remove(repository.path(file));
    fs::create_symlink("/dev/full", repository.path(file));
}

/// Returns the path of the file of the object, and makes the file writable.
std::string objectFile(const TestRepository& repository, const std::string& revision) {
    const std::string name = repository.git({"rev-parse", revision});
    std::string file = ".git/objects/" + name.substr(0, 2) + "/" + name.substr(2, name.size() - 3);
    Scene::setPermissions(repository.path(file), 0644);
    return file;
}

/// Returns incompressible content, larger than half of the small disk.
std::string noise() {
    constexpr std::size_t size = 600000;
    std::minstd_rand generator(1);
    std::string bytes(size, ' ');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(generator() >> 8U); });
    return bytes;
}

void configure(Scene& scene, const std::string& lines) {
    scene.work().write(".git/config", "[core]\n\trepositoryformatversion = 0\n" + lines);
}

const Failure failures[] = {
    // locks
    {.how = "an add while another process holds the index lock",
     .errorClass = NEBSourceControlIndexLockedErrorClass,
     .exitStatus = 128,
     .files = {indexLock},
     .provoke = [](Scene& scene) -> Request {
         lockIndex(scene);
         return scene.request(NEBSourceControlRequestAdd).on({"a"});
     }},
    {.how = "a commit while another process holds the index lock",
     .errorClass = NEBSourceControlIndexLockedErrorClass,
     .exitStatus = 128,
     .files = {indexLock},
     .provoke = [](Scene& scene) -> Request {
         lockIndex(scene);
         return scene.commit();
     }},
    {.how = "a checkout while another process holds the index lock",
     .errorClass = NEBSourceControlIndexLockedErrorClass,
     .exitStatus = 128,
     .files = {indexLock},
     .provoke = [](Scene& scene) -> Request {
         scene.withTopic("b", "2\n");
         lockIndex(scene);
         return scene.request(NEBSourceControlRequestCheckout).to("topic");
     }},
    {.how = "a move while another process holds the index lock",
     .errorClass = NEBSourceControlIndexLockedErrorClass,
     .exitStatus = 128,
     .files = {indexLock},
     .provoke = [](Scene& scene) -> Request {
         lockIndex(scene);
         return scene.request(NEBSourceControlRequestMove).on({"a"}).to("b");
     }},
    {.how = "a commit while another process holds the lock of the branch",
     .errorClass = NEBSourceControlRefLockedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().write("a", "2\n");
         scene.work().git({"add", "a"});
         scene.work().write(".git/refs/heads/main.lock", "");
         return scene.commit();
     }},
    {.how = "a commit while another process holds the lock of HEAD",
     .errorClass = NEBSourceControlRefLockedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().write("a", "2\n");
         scene.work().git({"add", "a"});
         scene.work().write(".git/HEAD.lock", "");
         return scene.commit();
     }},
    // permissions
    {.how = "an add of an unreadable file",
     .errorClass = NEBSourceControlPermissionDeniedErrorClass,
     .code = NEBSourceControlAuthenticationError,
     .exitStatus = 128,
     .files = {"secret"},
     .provoke = [](Scene& scene) -> Request {
         scene.work().write("secret", "2\n");
         scene.actAsOrdinaryUser();
         Scene::setPermissions(scene.work().path("secret"), 0);
         return scene.request(NEBSourceControlRequestAdd).on({"secret"});
     }},
    {.how = "an add to a read-only repository",
     .errorClass = NEBSourceControlPermissionDeniedErrorClass,
     .code = NEBSourceControlAuthenticationError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().write("b", "2\n");
         scene.actAsOrdinaryUser();
         Scene::setPermissions(scene.work().path(".git"), 0555);
         return scene.request(NEBSourceControlRequestAdd).on({"b"});
     }},
    {.how = "an add while the object store is read-only",
     .errorClass = NEBSourceControlPermissionDeniedErrorClass,
     .code = NEBSourceControlNoPermissionError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().write("b", "2\n");
         scene.actAsOrdinaryUser();
         Scene::setPermissions(scene.work().path(".git/objects"), 0555);
         return scene.request(NEBSourceControlRequestAdd).on({"b"});
     }},
    {.how = "a status of an unreadable folder",
     .errorClass = NEBSourceControlPermissionDeniedErrorClass,
     .code = NEBSourceControlAuthenticationError,
     .exitStatus = 0,
     .files = {"secret/"},
     .provoke = [](Scene& scene) -> Request {
         scene.work().write("secret/b", "2\n");
         scene.actAsOrdinaryUser();
         Scene::setPermissions(scene.work().path("secret"), 0);
         return scene.request(NEBSourceControlRequestStatus);
     }},
    {.how = "a status with an unreadable configuration",
     .errorClass = NEBSourceControlPermissionDeniedErrorClass,
     .code = NEBSourceControlAuthenticationError,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.actAsOrdinaryUser();
         Scene::setPermissions(scene.work().path(".git/config"), 0);
         return scene.request(NEBSourceControlRequestStatus);
     }},
    {.how = "a checkout into a read-only folder",
     .errorClass = NEBSourceControlPermissionDeniedErrorClass,
     .code = NEBSourceControlAuthenticationError,
     .exitStatus = 0,
     .files = {"d/b"},
     .provoke = [](Scene& scene) -> Request {
         scene.work().commitFile("d/a", "1\n");
         scene.withTopic("d/b", "2\n");
         scene.actAsOrdinaryUser();
         Scene::setPermissions(scene.work().path("d"), 0555);
         return scene.request(NEBSourceControlRequestCheckout).to("topic");
     }},
    {.how = "a new repository in a read-only folder",
     .errorClass = NEBSourceControlPermissionDeniedErrorClass,
     .code = NEBSourceControlAuthenticationError,
     .exitStatus = 1,
     .provoke = [](Scene& scene) -> Request {
         fs::create_directory(scene.folder().path("closed"));
         scene.actAsOrdinaryUser();
         Scene::setPermissions(scene.folder().path("closed"), 0555);
         return RequestBuilder(NEBSourceControlRequestCreateRepository,
                               scene.folder().path("closed"));
     }},
    // a full disk
    {.how = "an add on a full disk",
     .errorClass = NEBSourceControlDiskFullErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         const std::string disk = scene.smallDisk();
         scene.work().git({"init", "--quiet", disk});
         scene.folder().write("disk/big", noise());
         return RequestBuilder(NEBSourceControlRequestAdd, disk).on({"big"});
     }},
    {.how = "a clone to a full disk",
     .errorClass = NEBSourceControlDiskFullErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().commitFile("big", noise() + noise());
         const std::string disk = scene.smallDisk();
         return RequestBuilder(NEBSourceControlRequestClone, "file://" + scene.work().path())
             .to(disk);
     }},
    {.how = "a new branch on a full disk",
     .errorClass = NEBSourceControlDiskFullErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().write(".git/logs/refs/heads/topic", "");
         fillDiskBehind(scene.work(), ".git/logs/refs/heads/topic");
         return scene.request(NEBSourceControlRequestCreateBranch).to("topic");
     }},
    {.how = "a commit whose update of HEAD finds the disk full",
     .errorClass = NEBSourceControlDiskFullErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().write("a", "2\n");
         scene.work().git({"add", "a"});
         fillDiskBehind(scene.work(), ".git/logs/HEAD");
         return scene.commit();
     }},
    // damage
    {.how = "a status with an invalid line in the configuration",
     .errorClass = NEBSourceControlConfigurationBrokenErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         configure(scene, "[broken\n");
         return scene.request(NEBSourceControlRequestStatus);
     }},
    {.how = "a status with an invalid boolean in the configuration",
     .errorClass = NEBSourceControlConfigurationBrokenErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         configure(scene, "\tbare = perhaps\n");
         return scene.request(NEBSourceControlRequestStatus);
     }},
    {.how = "a log with an invalid number in the configuration",
     .errorClass = NEBSourceControlConfigurationBrokenErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         configure(scene, "\tcompression = many\n");
         return scene.request(NEBSourceControlRequestLog);
     }},
    {.how = "a log with a configuration that includes itself",
     .errorClass = NEBSourceControlConfigurationBrokenErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         configure(scene, "[include]\n\tpath = config\n");
         return scene.request(NEBSourceControlRequestLog);
     }},
    {.how = "a status of a repository of a newer format",
     .errorClass = NEBSourceControlRepositoryFormatUnknownErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"config", "core.repositoryFormatVersion", "99"});
         return scene.request(NEBSourceControlRequestStatus);
     }},
    {.how = "a status of a repository with an unknown extension",
     .errorClass = NEBSourceControlRepositoryFormatUnknownErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().git({"config", "core.repositoryFormatVersion", "1"});
         scene.work().git({"config", "extensions.nosuch", "true"});
         return scene.request(NEBSourceControlRequestStatus);
     }},
    {.how = "a status with an invalid index file",
     .errorClass = NEBSourceControlIndexDamagedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().write(".git/index", std::string(200, 'x'));
         return scene.request(NEBSourceControlRequestStatus);
     }},
    {.how = "an add with a truncated index",
     .errorClass = NEBSourceControlIndexDamagedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         fs::resize_file(scene.work().path(".git/index"), 50);
         return scene.request(NEBSourceControlRequestAdd).on({"a"});
     }},
    {.how = "a log with an empty commit object",
     .errorClass = NEBSourceControlObjectsDamagedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().write(objectFile(scene.work(), "HEAD"), "");
         return scene.request(NEBSourceControlRequestLog);
     }},
    {.how = "a blame of damaged content",
     .errorClass = NEBSourceControlObjectsDamagedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().write(objectFile(scene.work(), "HEAD:a"), "no object");
         return scene.request(NEBSourceControlRequestBlame).on({"a"}).between("HEAD");
     }},
    {.how = "a checkout of missing content",
     .errorClass = NEBSourceControlObjectsDamagedErrorClass,
     .exitStatus = 0,
     .files = {"b"},
     .provoke = [](Scene& scene) -> Request {
         scene.withTopic("b", "2\n");
         fs::remove(scene.work().path(objectFile(scene.work(), "topic:b")));
         return scene.request(NEBSourceControlRequestCheckout).to("topic");
     }},
    {.how = "a log with a commit whose parent is missing",
     .errorClass = NEBSourceControlObjectsDamagedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().commitFile("a", "2\n");
         fs::remove(scene.work().path(objectFile(scene.work(), "HEAD~1")));
         return scene.request(NEBSourceControlRequestLog);
     }},
    {.how = "a diff against a commit whose tree is missing",
     .errorClass = NEBSourceControlObjectsDamagedErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().commitFile("a", "2\n");
         fs::remove(scene.work().path(objectFile(scene.work(), "HEAD~1^{tree}")));
         return scene.request(NEBSourceControlRequestDiff).between("HEAD~1", "HEAD");
     }},
    {.how = "a log of a branch with a damaged reference file",
     .errorClass = NEBSourceControlReferenceBrokenErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().write(".git/refs/heads/main", "junk\n");
         return scene.request(NEBSourceControlRequestLog);
     }},
    {.how = "a commit on a branch with an empty reference file",
     .errorClass = NEBSourceControlReferenceBrokenErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().write("a", "2\n");
         scene.work().write(".git/refs/heads/main", "");
         return scene.commit({"a"});
     }},
    {.how = "a log with an invalid line in packed-refs",
     .errorClass = NEBSourceControlReferenceBrokenErrorClass,
     .exitStatus = 128,
     .provoke = [](Scene& scene) -> Request {
         scene.work().write(".git/packed-refs", "junk\n");
         return scene.request(NEBSourceControlRequestLog);
     }},
};

}  // namespace

Failures machineFailures() {
    return failures;
}

}  // namespace neb::test
