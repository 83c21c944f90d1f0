// Loaded before a program, this takes its threads away, as a limit of the system does.
#include <pthread.h>

#include <cerrno>

extern "C" {
__attribute__((visibility("default"))) int pthread_create(pthread_t*, const pthread_attr_t*,
                                                          void* (*)(void*), void*) {
    return EAGAIN;
}
}
