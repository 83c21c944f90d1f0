#include "thread_variables.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <system_error>

namespace loader {

namespace {

/// More than any variable asks for.
constexpr std::size_t kAlignment = 64;

}  // namespace

std::uint8_t* ThreadVariables::Block::variables() {
    return reinterpret_cast<std::uint8_t*>(this) + kAlignment;
}

ThreadVariables::ThreadVariables(const std::uint8_t* begin, std::size_t size)
    : begin_(begin), size_(size) {
    if (const int error = pthread_key_create(&key_, &thread_ends); error != 0) {
        throw std::system_error(error, std::generic_category(), "no thread variables");
    }
}

ThreadVariables::~ThreadVariables() {
    pthread_key_delete(key_);
    for (Block* const block : blocks_) {
        std::free(block);
    }
}

void ThreadVariables::thread_ends(void* block) {
    auto* const ended = static_cast<Block*>(block);
    const std::lock_guard lock(ended->of->mutex_);
    ended->of->blocks_.erase(ended);
    std::free(ended);
}

std::uint8_t* ThreadVariables::own() {
    if (void* const known = pthread_getspecific(key_); known != nullptr) {
        return static_cast<Block*>(known)->variables();
    }
    const std::size_t whole = (kAlignment + size_ + kAlignment - 1) / kAlignment * kAlignment;
    void* const memory = std::aligned_alloc(kAlignment, whole);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    auto* const block = new (memory) Block{this};
    std::memcpy(block->variables(), begin_, size_);
    pthread_setspecific(key_, block);
    const std::lock_guard lock(mutex_);
    blocks_.insert(block);
    return block->variables();
}

extern "C" __attribute__((used)) void* macho_thread_variable_address(
    const ThreadVariable* variable) {
    return variable->of->own() + variable->offset;
}

}  // namespace loader

// The caller expects every register unchanged but that of the result.
#if defined(__x86_64__)
asm(R"(
    .text
    .globl macho_thread_variable
    .hidden macho_thread_variable
    .type macho_thread_variable, @function
macho_thread_variable:
    push %rbp
    mov %rsp, %rbp
    push %rcx
    push %rdx
    push %rsi
    push %rdi
    push %r8
    push %r9
    push %r10
    push %r11
    call macho_thread_variable_address
    pop %r11
    pop %r10
    pop %r9
    pop %r8
    pop %rdi
    pop %rsi
    pop %rdx
    pop %rcx
    pop %rbp
    ret
    .size macho_thread_variable, . - macho_thread_variable
)");
#else
asm(R"(
    .text
    .globl macho_thread_variable
    .hidden macho_thread_variable
    .type macho_thread_variable, %function
macho_thread_variable:
    stp x29, x30, [sp, #-16]!
    mov x29, sp
    stp x1, x2, [sp, #-16]!
    stp x3, x4, [sp, #-16]!
    stp x5, x6, [sp, #-16]!
    stp x7, x8, [sp, #-16]!
    stp x9, x10, [sp, #-16]!
    stp x11, x12, [sp, #-16]!
    stp x13, x14, [sp, #-16]!
    stp x15, x16, [sp, #-16]!
    stp q0, q1, [sp, #-32]!
    stp q2, q3, [sp, #-32]!
    stp q4, q5, [sp, #-32]!
    stp q6, q7, [sp, #-32]!
    stp q8, q9, [sp, #-32]!
    stp q10, q11, [sp, #-32]!
    stp q12, q13, [sp, #-32]!
    stp q14, q15, [sp, #-32]!
    stp q16, q17, [sp, #-32]!
    stp q18, q19, [sp, #-32]!
    stp q20, q21, [sp, #-32]!
    stp q22, q23, [sp, #-32]!
    stp q24, q25, [sp, #-32]!
    stp q26, q27, [sp, #-32]!
    stp q28, q29, [sp, #-32]!
    stp q30, q31, [sp, #-32]!
    bl macho_thread_variable_address
    ldp q30, q31, [sp], #32
    ldp q28, q29, [sp], #32
    ldp q26, q27, [sp], #32
    ldp q24, q25, [sp], #32
    ldp q22, q23, [sp], #32
    ldp q20, q21, [sp], #32
    ldp q18, q19, [sp], #32
    ldp q16, q17, [sp], #32
    ldp q14, q15, [sp], #32
    ldp q12, q13, [sp], #32
    ldp q10, q11, [sp], #32
    ldp q8, q9, [sp], #32
    ldp q6, q7, [sp], #32
    ldp q4, q5, [sp], #32
    ldp q2, q3, [sp], #32
    ldp q0, q1, [sp], #32
    ldp x15, x16, [sp], #16
    ldp x13, x14, [sp], #16
    ldp x11, x12, [sp], #16
    ldp x9, x10, [sp], #16
    ldp x7, x8, [sp], #16
    ldp x5, x6, [sp], #16
    ldp x3, x4, [sp], #16
    ldp x1, x2, [sp], #16
    ldp x29, x30, [sp], #16
    ret
    .size macho_thread_variable, . - macho_thread_variable
)");
#endif
