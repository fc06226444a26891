#include "Platform/ChildSpawn.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "Platform/ErrnoText.h"

namespace neb {

namespace {

/// posix_spawn's two parameter objects with their clean-up, and the first failure of any call.
class SpawnParameters {
public:
    SpawnParameters() {
        keep(::posix_spawnattr_init(&_attributes));
        keep(::posix_spawn_file_actions_init(&_actions));
    }
    SpawnParameters(const SpawnParameters&) = delete;
    SpawnParameters& operator=(const SpawnParameters&) = delete;
    ~SpawnParameters() {
        ::posix_spawnattr_destroy(&_attributes);
        ::posix_spawn_file_actions_destroy(&_actions);
    }

    void keep(int failure) {
        if (_failure == 0) {
            _failure = failure;
        }
    }

    /// Own session, default dispositions, empty mask: an ignored SIGPIPE of the host would else be
    /// inherited, and a prompt would find the host's terminal.
    void setSignalsAndSession() {
        sigset_t all;
        sigset_t none;
        ::sigfillset(&all);
        ::sigemptyset(&none);
        keep(::posix_spawnattr_setsigdefault(&_attributes, &all));
        keep(::posix_spawnattr_setsigmask(&_attributes, &none));
        keep(::posix_spawnattr_setflags(
            &_attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK));
    }

    void setDirectory(const std::string& path) {
        keep(::posix_spawn_file_actions_addchdir_np(&_actions, path.c_str()));
    }

    void setStreams(const ChildStreams& streams) {
        if (streams.standardInput) {
            keep(::posix_spawn_file_actions_adddup2(&_actions, *streams.standardInput, 0));
        } else {
            keep(::posix_spawn_file_actions_addopen(&_actions, 0, "/dev/null", O_RDONLY, 0));
        }
        keep(::posix_spawn_file_actions_adddup2(&_actions, streams.standardOutput, 1));
        keep(::posix_spawn_file_actions_adddup2(&_actions, streams.standardError, 2));
#if defined(__GLIBC__) && __GLIBC_PREREQ(2, 34)
        // Descriptors that the host opened without close-on-exec are no business of the child.
        keep(::posix_spawn_file_actions_addclosefrom_np(&_actions, 3));
#endif
    }

    [[nodiscard]] int failure() const {
        return _failure;
    }
    posix_spawnattr_t _attributes{};
    posix_spawn_file_actions_t _actions{};

private:
    int _failure = 0;
};

/// Why `path` cannot be a working directory, or nothing when it can.
std::optional<std::string> directoryProblem(const std::string& path) {
    struct stat information {};
    const bool isThere = ::stat(path.c_str(), &information) == 0;
    const bool mayEnter = isThere && ::faccessat(AT_FDCWD, path.c_str(), X_OK, AT_EACCESS) == 0;
    int failure = mayEnter ? 0 : errno;
    if (isThere && !S_ISDIR(information.st_mode)) {
        failure = ENOTDIR;
    }
    if (failure == 0) {
        return std::nullopt;
    }
    return "the folder \"" + path + "\" could not be entered: " + textOfErrno(failure);
}

/// posix_spawn answers one errno for the whole preparation, and ENOENT for a missing folder as
/// well as for a missing program: the folder is looked at first.
std::string spawnProblem(const ChildLaunch& launch, int failure) {
    if (launch.currentDirectoryPath) {
        if (auto problem = directoryProblem(*launch.currentDirectoryPath)) {
            return *problem;
        }
    }
    return "the program \"" + launch.launchPath +
           "\" could not be started: " + textOfErrno(failure);
}

/// A NUL byte would silently cut a text short on its way to the child.
std::optional<std::string> nulProblem(const ChildLaunch& launch) {
    const auto holdsNUL = [](const std::string& text) {
        return text.find('\0') != std::string::npos;
    };
    const auto anyHoldsNUL = [&holdsNUL](const std::vector<std::string>& texts) {
        return std::any_of(texts.begin(), texts.end(), holdsNUL);
    };
    const std::pair<const char*, bool> places[] = {
        {"its path", holdsNUL(launch.launchPath)},
        {"its working directory", holdsNUL(launch.currentDirectoryPath.value_or(""))},
        {"an argument", anyHoldsNUL(launch.arguments)},
        {"its environment", anyHoldsNUL(launch.environment)},
    };
    for (const auto& [place, isBad] : places) {
        if (isBad) {
            const std::string path = launch.launchPath.substr(0, launch.launchPath.find('\0'));
            return "the program \"" + path + "\" could not be started: " + place +
                   " holds a NUL character";
        }
    }
    return std::nullopt;
}

std::vector<char*> cStrings(const std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (const std::string& text : texts) {
        pointers.push_back(const_cast<char*>(text.c_str()));  // posix_spawn does not write to them
    }
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

SpawnedChild spawnChild(const ChildLaunch& launch, const ChildStreams& streams) {
    SpawnedChild child;
    if (auto problem = nulProblem(launch)) {
        child.failure = *problem;
        return child;
    }

    SpawnParameters parameters;
    parameters.setSignalsAndSession();
    if (launch.currentDirectoryPath) {
        parameters.setDirectory(*launch.currentDirectoryPath);
    }
    parameters.setStreams(streams);

    std::vector<std::string> words{launch.launchPath};
    words.insert(words.end(), launch.arguments.begin(), launch.arguments.end());
    const std::vector<char*> argv = cStrings(words);
    const std::vector<char*> environment = cStrings(launch.environment);

    int failure = parameters.failure();
    if (failure == 0) {
        failure = ::posix_spawn(&child.pid, launch.launchPath.c_str(), &parameters._actions,
                                &parameters._attributes, argv.data(), environment.data());
    }
    if (failure != 0) {
        child.pid = -1;
        child.failure = spawnProblem(launch, failure);
    }
    return child;
}

}  // namespace neb
