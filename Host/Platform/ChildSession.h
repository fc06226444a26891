// ChildSession.h - the session that a child process leads. Inside the host library only.
//
// The number of a session is the process number of its leader. It is not reused before the leader
// has been reaped and the last member has ended. So these functions must be called by the thread
// that reaps the leader, before it does; only signalMembers() and liveMembers() may follow.
#pragma once

#include <sys/types.h>

#include <vector>

namespace neb {

/// Sends a signal to every process of the session, in all its process groups.
void signalSession(pid_t session, int signalNumber);

/// Sends a signal to each live process of the session by its own number.
void signalMembers(pid_t session, int signalNumber);

/// Returns the live processes of the session. A zombie is not live.
[[nodiscard]] std::vector<pid_t> liveMembers(pid_t session);

/// How far the processes of a session have come after SIGSTOP, from the last stage to the first.
enum class StopProgress {
    /// All live processes are stopped.
    complete,
    /// The others wait in the kernel, and stop only when that wait ends. It may be for a process
    /// that is stopped itself, after vfork(2).
    blocked,
    /// A process can still run, and stops as soon as it does.
    running,
};

[[nodiscard]] StopProgress stopProgressOf(pid_t session);

/// Kills a process that holds a pipe of the child that led the session, if it certainly got the
/// pipe from that child: it is in the session, or it runs another program than this process (a fork
/// of this process runs the same one). Returns false if that is unknown or the process belongs to
/// another user.
[[nodiscard]] bool killIfFromChild(pid_t process, pid_t session);

}  // namespace neb
