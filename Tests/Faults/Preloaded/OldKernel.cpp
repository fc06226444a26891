// A kernel that lacks renameat2: loaded before a program's own libraries. With NEB_TEST_LATE_FILE
// in the environment, another program has just made a file where the program wants to put its own.

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED int renameat2(int /*fromFolder*/, const char* /*from*/, int toFolder, const char* to,
                       unsigned int /*flags*/) noexcept {
    if (getenv("NEB_TEST_LATE_FILE") != nullptr) {
        close(openat(toFolder, to, O_WRONLY | O_CREAT | O_EXCL, 0600));
    }
    errno = ENOSYS;
    return -1;
}
