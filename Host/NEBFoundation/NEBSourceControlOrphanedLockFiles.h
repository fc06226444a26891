// NEBSourceControlOrphanedLockFiles.h - git's lock files that would stay when git is ended in the
// moment in which it makes them. Inside the host library only.
//
// git removes its lock files when it is asked to end (SIGTERM), but for one that it is making:
// between the system's having made the file and git's having noted its name it forgets it. On a
// busy machine one in some hundred gits that are ended is in that moment.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "Platform/FileDescriptor.h"

namespace neb {

class OrphanedLockFiles {
public:
    /// Notes the lock files that gits of the stopped session have made and not written to yet. Call
    /// it between SIGSTOP and SIGTERM, from the thread that reaps the session's leader.
    void noteOf(pid_t session);

    /// Removes those that are still there. They are the session's own: what another process has
    /// made meanwhile under the same name stays. Call it when nothing of the session lives.
    void remove();

private:
    struct Lock {
        std::string path;
        FileDescriptor file;  // as long as it is open its number is no other file's
    };
    void noteOfProcess(const std::string& process);

    std::vector<Lock> _locks;
};

}  // namespace neb
