#include "Platform/ChildSession.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>

#include "Platform/FileDescriptor.h"

namespace neb {

namespace {

struct ProcessState {
    char state = '?';
    pid_t group = -1;
    pid_t session = -1;
};

/// Reads `/proc/PID/stat`: `pid (name) state parent group session …`. The name may contain spaces
/// and parentheses, so the fields are counted from the last ")".
bool readProcessState(const char* pid, ProcessState& process) {
    const std::string path = std::string("/proc/") + pid + "/stat";
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    char text[512] = {};
    if (!file.isOpen() || ::read(file.get(), text, sizeof text - 1) <= 0) {
        return false;
    }
    const char* end = std::strrchr(text, ')');
    int group = -1;
    int session = -1;
    // NOLINTNEXTLINE(cert-err34-c): the kernel writes these numbers
    if (end == nullptr ||
        std::sscanf(end + 1, " %c %*d %d %d", &process.state, &group, &session) != 3) {
        return false;
    }
    process.group = group;
    process.session = session;
    return true;
}

/// Calls `visit` for every live process of the session. Without /proc it finds none, and signals
/// reach only the process group of the leader.
void forEachLiveMember(pid_t session,
                       const std::function<void(pid_t, const ProcessState&)>& visit) {
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(::opendir("/proc"), &::closedir);
    if (!directory) {
        return;
    }
    while (const dirent* entry = ::readdir(directory.get())) {
        ProcessState process;
        const bool isNumber = entry->d_name[0] >= '1' && entry->d_name[0] <= '9';
        if (isNumber && readProcessState(entry->d_name, process) && process.session == session &&
            process.state != 'Z' && process.state != 'X') {
            visit(static_cast<pid_t>(std::strtol(entry->d_name, nullptr, 10)), process);
        }
    }
}

/// Whether the process runs another program than this process; false if that cannot be read.
bool runsAnotherProgram(pid_t process) {
    const std::string path = "/proc/" + std::to_string(process) + "/exe";
    struct stat theirs {};
    struct stat ours {};
    return ::stat(path.c_str(), &theirs) == 0 && ::stat("/proc/self/exe", &ours) == 0 &&
           (theirs.st_dev != ours.st_dev || theirs.st_ino != ours.st_ino);
}

}  // namespace

void signalSession(pid_t session, int signalNumber) {
    ::kill(-session, signalNumber);
    forEachLiveMember(session, [&](pid_t pid, const ProcessState& process) {
        if (process.group != session) {
            ::kill(pid, signalNumber);
        }
    });
}

void signalMembers(pid_t session, int signalNumber) {
    forEachLiveMember(session, [&](pid_t pid, const ProcessState&) { ::kill(pid, signalNumber); });
}

std::vector<pid_t> liveMembers(pid_t session) {
    std::vector<pid_t> members;
    forEachLiveMember(session, [&](pid_t pid, const ProcessState&) { members.push_back(pid); });
    return members;
}

StopProgress stopProgressOf(pid_t session) {
    StopProgress progress = StopProgress::complete;
    forEachLiveMember(session, [&](pid_t, const ProcessState& process) {
        const bool isStopped = process.state == 'T' || process.state == 't';
        const bool isBlocked = process.state == 'D';
        progress = std::max(progress, isStopped   ? StopProgress::complete
                                      : isBlocked ? StopProgress::blocked
                                                  : StopProgress::running);
    });
    return progress;
}

bool killIfFromChild(pid_t process, pid_t session) {
    const bool isFromChild = ::getsid(process) == session || runsAnotherProgram(process);
    return isFromChild && (::kill(process, SIGKILL) == 0 || errno != EPERM);
}

}  // namespace neb
