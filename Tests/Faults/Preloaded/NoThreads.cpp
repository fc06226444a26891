// A machine without a further thread: loaded before a program's own libraries, it refuses each.

#include <errno.h>
#include <pthread.h>

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED int pthread_create(pthread_t* /*thread*/, const pthread_attr_t* /*attributes*/,
                            void* (* /*start*/)(void*), void* /*argument*/) noexcept {
    return EAGAIN;
}
