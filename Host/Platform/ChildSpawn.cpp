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

constexpr mode_t ownerOnly = 0600;

}  // namespace

/// The attributes and file actions of posix_spawn, and the first error of the functions that fill
/// them.
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

    void setDirectory(const std::string& path) {
        keep(::posix_spawn_file_actions_addchdir_np(&_actions, path.c_str()));
    }

    void setStream(int number, const ChildStream& stream) {
        switch (stream._kind) {
            case ChildStream::Kind::inherited:
                break;
            case ChildStream::Kind::closed:
                keep(::posix_spawn_file_actions_addclose(&_actions, number));
                break;
            case ChildStream::Kind::descriptor:
                keep(::posix_spawn_file_actions_adddup2(&_actions, stream._number, number));
                break;
            case ChildStream::Kind::file:
                keep(::posix_spawn_file_actions_addopen(&_actions, number, stream._path.c_str(),
                                                        stream._number, ownerOnly));
                break;
        }
    }

    /// Call this after the streams are set.
    void isolate() {
        sigset_t all;
        sigset_t none;
        ::sigfillset(&all);
        ::sigemptyset(&none);
        keep(::posix_spawnattr_setsigdefault(&_attributes, &all));
        keep(::posix_spawnattr_setsigmask(&_attributes, &none));
        keep(::posix_spawnattr_setflags(
            &_attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK));
// In one condition, the second macro is an error where the C library does not define it.
#ifdef __GLIBC__
#if __GLIBC_PREREQ(2, 34)
        keep(::posix_spawn_file_actions_addclosefrom_np(&_actions, 3));
#endif
#endif
    }

    /// For a child that is not isolated.
    void setSignalsAndGroup(const SpawnOptions& options) {
        sigset_t none;
        ::sigemptyset(&none);
        sigset_t signals = none;
        for (const int signalNumber : options.defaultSignals) {
            ::sigaddset(&signals, signalNumber);
        }
        keep(::posix_spawnattr_setsigdefault(&_attributes, &signals));
        keep(::posix_spawnattr_setsigmask(&_attributes, &none));
        keep(::posix_spawnattr_setpgroup(&_attributes, 0));
        const int mask = options.hasEmptySignalMask ? POSIX_SPAWN_SETSIGMASK : 0;
        const int group = options.leadsGroup ? POSIX_SPAWN_SETPGROUP : 0;
        keep(::posix_spawnattr_setflags(&_attributes,
                                        static_cast<short>(POSIX_SPAWN_SETSIGDEF | mask | group)));
    }

    /// Returns 0 or the first error.
    [[nodiscard]] int spawn(pid_t& pid, const char* path, char* const* arguments,
                            char* const* environment) const {
        return _failure != 0
                   ? _failure
                   : ::posix_spawn(&pid, path, &_actions, &_attributes, arguments, environment);
    }

private:
    void keep(int failure) {
        if (_failure == 0) {
            _failure = failure;
        }
    }

    posix_spawnattr_t _attributes{};
    posix_spawn_file_actions_t _actions{};
    int _failure = 0;
};

namespace {

/// Returns why `path` cannot be a working directory, or nothing if it can.
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

/// posix_spawn returns the same error numbers for the folder and for the program, so this checks
/// the folder first.
std::string spawnProblem(const ChildLaunch& launch, int failure) {
    if (launch.currentDirectoryPath) {
        if (auto problem = directoryProblem(*launch.currentDirectoryPath)) {
            return *problem;
        }
    }
    return "the program \"" + launch.launchPath +
           "\" could not be started: " + textOfErrno(failure);
}

/// The child would get only the part of a string before a NUL byte.
std::optional<std::string> nulProblem(const ChildLaunch& launch) {
    const auto holdsNUL = [](const std::string& text) {
        return text.find('\0') != std::string::npos;
    };
    const auto anyHoldsNUL = [&holdsNUL](const std::vector<std::string>& texts) {
        return std::any_of(texts.begin(), texts.end(), holdsNUL);
    };
    const std::pair<const char*, bool> parts[] = {
        {"its path", holdsNUL(launch.launchPath)},
        {"its working directory", holdsNUL(launch.currentDirectoryPath.value_or(""))},
        {"an argument", anyHoldsNUL(launch.arguments)},
        {"its environment", anyHoldsNUL(launch.environment)},
    };
    for (const auto& [part, isBad] : parts) {
        if (isBad) {
            const std::string path = launch.launchPath.substr(0, launch.launchPath.find('\0'));
            return "the program \"" + path + "\" could not be started: " + part +
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

SpawnedChild spawnChild(const ChildLaunch& launch, const SpawnOptions& options) {
    SpawnedChild child;
    if (auto problem = nulProblem(launch)) {
        child.failure = *problem;
        return child;
    }

    SpawnParameters parameters;
    if (launch.currentDirectoryPath) {
        parameters.setDirectory(*launch.currentDirectoryPath);
    }
    parameters.setStream(STDIN_FILENO, options.standardInput);
    parameters.setStream(STDOUT_FILENO, options.standardOutput);
    parameters.setStream(STDERR_FILENO, options.standardError);
    if (options.isIsolated) {
        parameters.isolate();
    } else {
        parameters.setSignalsAndGroup(options);
    }

    std::vector<std::string> arguments{launch.launchPath};
    arguments.insert(arguments.end(), launch.arguments.begin(), launch.arguments.end());
    const int failure =
        parameters.spawn(child.pid, launch.launchPath.c_str(), cStrings(arguments).data(),
                         cStrings(launch.environment).data());
    if (failure != 0) {
        child.pid = -1;
        child.failure = spawnProblem(launch, failure);
    }
    return child;
}

}  // namespace neb
