// A system that refuses every new thread. Loaded with LD_PRELOAD.

#include <errno.h>
#include <pthread.h>

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED int pthread_create(pthread_t* /*thread*/, const pthread_attr_t* /*attributes*/,
                            void* (* /*start*/)(void*), void* /*argument*/) noexcept {
    return EAGAIN;
}
