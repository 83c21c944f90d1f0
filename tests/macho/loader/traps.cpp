#include "traps.h"

#include <sys/mman.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace loader {
namespace {

[[noreturn]] void say(const char* name) {
    std::fprintf(stderr, "macho loader: the image called %s, which is not there\n", name);
    std::abort();
}

// The code loads two words that stand behind it, the name and the function, and jumps to the
// latter.
#if defined(__x86_64__)
constexpr std::array<std::uint8_t, 16> kCode = {0x48, 0x8B, 0x3D, 0x09, 0, 0,
                                                0,                             // mov 9(%rip), %rdi
                                                0xFF, 0x25, 0x0B, 0,    0, 0,  // jmp *11(%rip)
                                                0x0F, 0x0B, 0x0F};             // never reached
#else
constexpr std::array<std::uint8_t, 16> kCode = {0x80, 0x00, 0x00, 0x58,   // ldr x0, . + 16
                                                0xB0, 0x00, 0x00, 0x58,   // ldr x16, . + 20
                                                0x00, 0x02, 0x1F, 0xD6,   // br x16
                                                0x20, 0x00, 0x20, 0xD4};  // never reached
#endif
constexpr std::size_t kSize = kCode.size() + 16;

}  // namespace

Traps::Traps(std::size_t count) : code_((count + 1) * kSize) {}

void* Traps::add(const std::string& name) {
    std::uint8_t* const code = code_.begin() + used_;
    used_ += kSize;
    const char* const text = names_.emplace_back(name).c_str();
    void (*const function)(const char*) = &say;
    std::memcpy(code, kCode.data(), kCode.size());
    std::memcpy(code + kCode.size(), &text, sizeof text);
    std::memcpy(code + kCode.size() + 8, &function, sizeof function);
    return code;
}

void Traps::close() { code_.protect(0, code_.size(), PROT_READ | PROT_EXEC); }

}  // namespace loader
