#include <dlfcn.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

#include "effect.h"

namespace test_effect {
namespace {

/// Volatile, or the compiler leaves out an allocation that nobody uses.
void* volatile lost_block = nullptr;
volatile int lost_descriptor = -1;

}  // namespace

Mischief asked_mischief() {
    if (kConforming) {
        if (const char* const text = std::getenv("MISCHIEF")) {
            return static_cast<Mischief>(std::atoi(text));
        }
    }
    return kNone;
}

void pass_on(PF_Err& err, PF_Err next) {
    if (kConforming && err == PF_Err_NONE) {
        err = next;
    }
}

void lose_memory() { lost_block = std::malloc(1); }
void lose_descriptor() { lost_descriptor = dup(STDERR_FILENO); }
void lose_mapping() {
    lost_block = mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
}

bool gets_handle(const PF_InData* in) {
    const PF_Handle handle = in->utils->host_new_handle(1);
    if (handle != nullptr) {
        in->utils->host_dispose_handle(handle);
    }
    return handle != nullptr;
}

void lose_memory_for(Mischief mischief) {
    if (asked_mischief() == mischief) {
        lose_memory();
    }
}

void crash_for(Mischief mischief) {
    if (asked_mischief() == mischief) {
        __builtin_trap();
    }
}

PF_Err refuse_for(Mischief mischief) {
    return asked_mischief() == mischief ? PF_Err_BAD_CALLBACK_PARAM : PF_Err_NONE;
}

void stay_loaded() {
    Dl_info self{};
    if (dladdr(reinterpret_cast<void*>(&stay_loaded), &self) != 0) {
        dlopen(self.dli_fname, RTLD_NOW);
    }
}

void leave_process(bool own_session) {
    if (fork() == 0) {
        if (own_session) {
            setsid();
        }
        // For a run that should not end it.
        sleep(60);
        _exit(0);
    }
}

}  // namespace test_effect
