// A kernel without renameat2. Loaded with LD_PRELOAD. If NEB_TEST_LATE_FILE is set, a file is
// created at the destination just before the program writes its own file there.

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
