// ChildSession.h - the session that a child process leads. Inside the host library only.
//
// A session's number is its leader's process number. It stays the session's own until the leader
// has been reaped and the last member is gone, so these functions are called by the thread that
// reaps the leader, and before it does.
#pragma once

#include <sys/types.h>

#include <vector>

namespace neb {

/// Sends `signalNumber` to every process of the session, whatever its process group.
void signalSession(pid_t session, int signalNumber);

/// Sends `signalNumber` to each live process of the session by its own number.
void signalMembers(pid_t session, int signalNumber);

/// The live processes of the session.
[[nodiscard]] std::vector<pid_t> liveMembers(pid_t session);

/// Whether all live processes of the session are stopped, as they are soon after SIGSTOP.
[[nodiscard]] bool isSessionStopped(pid_t session);

/// Kills the process, which holds a pipe of the child that led the session, if it certainly got the
/// pipe from that child: it is in the session; or it has left it and runs another program than the
/// calling process, which a fork of the calling process does not. Returns false if /proc does not
/// say so, or the process is another user's.
[[nodiscard]] bool killIfFromChild(pid_t process, pid_t session);

/// Whether a process of the session other than a dead one waiting to be reaped is left.
[[nodiscard]] bool sessionHasLiveMembers(pid_t session);

}  // namespace neb
