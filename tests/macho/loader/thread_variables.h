// What each thread has of an image's own: Apple's thread-local variables.
#pragma once

#include <pthread.h>

#include <cstdint>
#include <mutex>
#include <set>

namespace loader {

/// What the code of an image calls for the address of a variable, by a convention of its own.
extern "C" void macho_thread_variable();

/// The variables of one image, as long as the object lives.
class ThreadVariables {
public:
    /// A thread's variables begin as what lies at `begin`.
    ThreadVariables(const std::uint8_t* begin, std::size_t size);
    ~ThreadVariables();
    ThreadVariables(const ThreadVariables&) = delete;
    ThreadVariables& operator=(const ThreadVariables&) = delete;

    /// Those of the calling thread.
    std::uint8_t* own();

private:
    /// In front of a thread's variables.
    struct Block {
        ThreadVariables* of;
        std::uint8_t* variables();
    };
    static void thread_ends(void* block);

    const std::uint8_t* begin_;
    std::size_t size_;
    pthread_key_t key_ = 0;
    std::mutex mutex_;
    std::set<Block*> blocks_;  // of threads that are still there
};

/// How an image's code names a variable.
struct ThreadVariable {
    void (*address)();
    ThreadVariables* of;
    std::uint64_t offset;
};

}  // namespace loader
