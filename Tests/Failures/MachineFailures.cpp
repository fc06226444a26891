// The machine and the repository itself: locks, rights, a full disk, damage.

#include <algorithm>
#include <filesystem>
#include <random>

#include "Failure.h"

namespace neb::test {

namespace {

namespace fs = std::filesystem;

constexpr const char* indexLock = "/tmp/repository/.git/index.lock";

void lockIndex(Scene& scene) {
    scene.work().write(".git/index.lock", "");
}

/// Whatever is written to the file of the repository meets a full disk.
void fillDiskBehind(const TestRepository& repository, const std::string& file) {
    fs::remove(repository.path(file));
    fs::create_symlink("/dev/full", repository.path(file));
}

/// The path of the object's file in the repository; the file may be written then.
std::string objectFile(const TestRepository& repository, const std::string& revision) {
    const std::string name = repository.git({"rev-parse", revision});
    std::string file = ".git/objects/" + name.substr(0, 2) + "/" + name.substr(2, name.size() - 3);
    Scene::setRights(repository.path(file), 0644);
    return file;
}

/// More than half of the small disk; it cannot be made smaller.
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

}  // namespace

Failures machineFailures() {
    return {
        // locks
        {"an add while another git holds the index",
         "index-locked",
         -1,
         128,
         {indexLock},
         [](Scene& scene) -> Request {
             lockIndex(scene);
             return scene.ask(NEBSourceControlRequestAdd).on({"a"});
         }},
        {"a commit while another git holds the index",
         "index-locked",
         -1,
         128,
         {indexLock},
         [](Scene& scene) -> Request {
             lockIndex(scene);
             return scene.commit();
         }},
        {"a checkout while another git holds the index",
         "index-locked",
         -1,
         128,
         {indexLock},
         [](Scene& scene) -> Request {
             scene.withTopic("b", "2\n");
             lockIndex(scene);
             return scene.ask(NEBSourceControlRequestCheckout).to("topic");
         }},
        {"a move while another git holds the index",
         "index-locked",
         -1,
         128,
         {indexLock},
         [](Scene& scene) -> Request {
             lockIndex(scene);
             return scene.ask(NEBSourceControlRequestMove).on({"a"}).to("b");
         }},
        {"a commit while another git holds the branch",
         "ref-locked",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().write("a", "2\n");
             scene.work().git({"add", "a"});
             scene.work().write(".git/refs/heads/main.lock", "");
             return scene.commit();
         }},
        {"a commit while another git holds HEAD",
         "ref-locked",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().write("a", "2\n");
             scene.work().git({"add", "a"});
             scene.work().write(".git/HEAD.lock", "");
             return scene.commit();
         }},
        // rights
        {"an add of a file that may not be read",
         "permission-denied",
         -21,
         128,
         {"secret"},
         [](Scene& scene) -> Request {
             scene.work().write("secret", "2\n");
             scene.actAsOrdinaryUser();
             Scene::setRights(scene.work().path("secret"), 0);
             return scene.ask(NEBSourceControlRequestAdd).on({"secret"});
         }},
        {"an add to a repository that may not be written",
         "permission-denied",
         -21,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().write("b", "2\n");
             scene.actAsOrdinaryUser();
             Scene::setRights(scene.work().path(".git"), 0555);
             return scene.ask(NEBSourceControlRequestAdd).on({"b"});
         }},
        {"an add of content that may not be stored",
         "permission-denied",
         513,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().write("b", "2\n");
             scene.actAsOrdinaryUser();
             Scene::setRights(scene.work().path(".git/objects"), 0555);
             return scene.ask(NEBSourceControlRequestAdd).on({"b"});
         }},
        {"a status of a folder that may not be read",
         "permission-denied",
         -21,
         0,
         {"secret/"},
         [](Scene& scene) -> Request {
             scene.work().write("secret/b", "2\n");
             scene.actAsOrdinaryUser();
             Scene::setRights(scene.work().path("secret"), 0);
             return scene.ask(NEBSourceControlRequestStatus);
         }},
        {"a status with a configuration that may not be read",
         "permission-denied",
         -21,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.actAsOrdinaryUser();
             Scene::setRights(scene.work().path(".git/config"), 0);
             return scene.ask(NEBSourceControlRequestStatus);
         }},
        {"a checkout into a folder that may not be written",
         "permission-denied",
         -21,
         0,
         {"d/b"},
         [](Scene& scene) -> Request {
             scene.work().commitFile("d/a", "1\n");
             scene.withTopic("d/b", "2\n");
             scene.actAsOrdinaryUser();
             Scene::setRights(scene.work().path("d"), 0555);
             return scene.ask(NEBSourceControlRequestCheckout).to("topic");
         }},
        {"a new repository in a folder that may not be written",
         "permission-denied",
         -21,
         1,
         {},
         [](Scene& scene) -> Request {
             fs::create_directory(scene.folder().path("closed"));
             scene.actAsOrdinaryUser();
             Scene::setRights(scene.folder().path("closed"), 0555);
             return Ask(NEBSourceControlRequestCreateRepository, scene.folder().path("closed"));
         }},
        // a full disk
        {"an add of content for which there is no room",
         "disk-full",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             const std::string disk = scene.smallDisk();
             scene.work().git({"init", "--quiet", disk});
             scene.folder().write("disk/big", noise());
             return Ask(NEBSourceControlRequestAdd, disk).on({"big"});
         }},
        {"a clone for which there is no room",
         "disk-full",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().commitFile("big", noise() + noise());
             const std::string disk = scene.smallDisk();
             return Ask(NEBSourceControlRequestClone, "file://" + scene.work().path()).to(disk);
         }},
        {"a new branch whose record meets a full disk",
         "disk-full",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().write(".git/logs/refs/heads/topic", "");
             fillDiskBehind(scene.work(), ".git/logs/refs/heads/topic");
             return scene.ask(NEBSourceControlRequestCreateBranch).to("topic");
         }},
        {"a commit whose record of HEAD meets a full disk",
         "disk-full",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().write("a", "2\n");
             scene.work().git({"add", "a"});
             fillDiskBehind(scene.work(), ".git/logs/HEAD");
             return scene.commit();
         }},
        // damage
        {"a status with a broken line in the configuration",
         "configuration-broken",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             configure(scene, "[broken\n");
             return scene.ask(NEBSourceControlRequestStatus);
         }},
        {"a status with a value in the configuration that is no boolean",
         "configuration-broken",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             configure(scene, "\tbare = perhaps\n");
             return scene.ask(NEBSourceControlRequestStatus);
         }},
        {"a log with a value in the configuration that is no number",
         "configuration-broken",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             configure(scene, "\tbigFileThreshold = many\n");
             return scene.ask(NEBSourceControlRequestLog);
         }},
        {"a log with a configuration that includes itself",
         "configuration-broken",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             configure(scene, "[include]\n\tpath = config\n");
             return scene.ask(NEBSourceControlRequestLog);
         }},
        {"a status of a repository of a later format",
         "repository-format-unknown",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().git({"config", "core.repositoryFormatVersion", "99"});
             return scene.ask(NEBSourceControlRequestStatus);
         }},
        {"a status of a repository with an unknown extension",
         "repository-format-unknown",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().git({"config", "core.repositoryFormatVersion", "1"});
             scene.work().git({"config", "extensions.nosuch", "true"});
             return scene.ask(NEBSourceControlRequestStatus);
         }},
        {"a status with an index that is none",
         "index-damaged",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().write(".git/index", std::string(200, 'x'));
             return scene.ask(NEBSourceControlRequestStatus);
         }},
        {"an add with an index that is cut off",
         "index-damaged",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             fs::resize_file(scene.work().path(".git/index"), 50);
             return scene.ask(NEBSourceControlRequestAdd).on({"a"});
         }},
        {"a log with a commit that is empty",
         "objects-damaged",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().write(objectFile(scene.work(), "HEAD"), "");
             return scene.ask(NEBSourceControlRequestLog);
         }},
        {"a blame of content that is damaged",
         "objects-damaged",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().write(objectFile(scene.work(), "HEAD:a"), "no object");
             return scene.ask(NEBSourceControlRequestBlame).on({"a"}).between("HEAD");
         }},
        {"a checkout of content that is lost",
         "objects-damaged",
         -1,
         0,
         {"b"},
         [](Scene& scene) -> Request {
             scene.withTopic("b", "2\n");
             fs::remove(scene.work().path(objectFile(scene.work(), "topic:b")));
             return scene.ask(NEBSourceControlRequestCheckout).to("topic");
         }},
        {"a log with a commit whose parent is lost",
         "objects-damaged",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().commitFile("a", "2\n");
             fs::remove(scene.work().path(objectFile(scene.work(), "HEAD~1")));
             return scene.ask(NEBSourceControlRequestLog);
         }},
        {"a difference from a commit whose folder is lost",
         "objects-damaged",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().commitFile("a", "2\n");
             fs::remove(scene.work().path(objectFile(scene.work(), "HEAD~1^{tree}")));
             return scene.ask(NEBSourceControlRequestDiff).between("HEAD~1", "HEAD");
         }},
        {"a log of a branch whose file is damaged",
         "reference-broken",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().write(".git/refs/heads/main", "junk\n");
             return scene.ask(NEBSourceControlRequestLog);
         }},
        {"a commit on a branch whose file is empty",
         "reference-broken",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().write("a", "2\n");
             scene.work().write(".git/refs/heads/main", "");
             return scene.commit({"a"});
         }},
        {"a log with a line in packed-refs that is no reference",
         "reference-broken",
         -1,
         128,
         {},
         [](Scene& scene) -> Request {
             scene.work().write(".git/packed-refs", "junk\n");
             return scene.ask(NEBSourceControlRequestLog);
         }},
    };
}

}  // namespace neb::test
