#include "system_locks.h"

#include <pthread.h>
#include <unistd.h>

#include <cstdint>
#include <memory>
#include <mutex>

#include "system_errors.h"

namespace loader {
namespace {

// An image's locks are initialised by the compiler, with bytes that mean nothing here: each has one
// of this system beside it.
struct NativeLocks {
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t condition = PTHREAD_COND_INITIALIZER;
};

std::mutex locks_mutex;
std::map<const void*, std::unique_ptr<NativeLocks>>& locks() {
    static std::map<const void*, std::unique_ptr<NativeLocks>> all;
    return all;
}

NativeLocks& lock_of(const void* apple) {
    const std::lock_guard guard(locks_mutex);
    std::unique_ptr<NativeLocks>& lock = locks()[apple];
    if (lock == nullptr) {
        lock = std::make_unique<NativeLocks>();
    }
    return *lock;
}

int lock_mutex(void* mutex) { return apple_error(pthread_mutex_lock(&lock_of(mutex).mutex)); }
int unlock_mutex(void* mutex) { return apple_error(pthread_mutex_unlock(&lock_of(mutex).mutex)); }
int wait_for(void* condition, void* mutex) {
    return apple_error(pthread_cond_wait(&lock_of(condition).condition, &lock_of(mutex).mutex));
}
int wake_all(void* condition) {
    return apple_error(pthread_cond_broadcast(&lock_of(condition).condition));
}

std::uint32_t number_of_thread(pthread_t thread) {
    if (pthread_equal(thread, pthread_self()) == 0) {
        refuse("pthread_mach_thread_np of another thread", 0);
    }
    return static_cast<std::uint32_t>(gettid());
}

}  // namespace

Symbols lock_calls() {
    return {
        {"_pthread_mutex_lock", address(&lock_mutex)},
        {"_pthread_mutex_unlock", address(&unlock_mutex)},
        {"_pthread_cond_wait", address(&wait_for)},
        {"_pthread_cond_broadcast", address(&wake_all)},
        {"_pthread_self", address(&pthread_self)},
        {"_pthread_mach_thread_np", address(&number_of_thread)},
    };
}

void forget_locks(const void* begin, const void* end) {
    const std::lock_guard guard(locks_mutex);
    locks().erase(locks().lower_bound(begin), locks().lower_bound(end));
}

}  // namespace loader
