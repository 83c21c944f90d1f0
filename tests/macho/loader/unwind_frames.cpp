#include "unwind_frames.h"

#include <algorithm>
#include <array>
#include <cstring>

// The unwinder's own interface; no header declares it.
extern "C" void __register_frame(void* records);
extern "C" void __deregister_frame(void* records);

namespace loader {
namespace {

using macho::Processor;
using macho::UnwoundFunction;
using Bytes = std::vector<std::uint8_t>;

constexpr std::int64_t kWord = 8;

/// The numbers that DWARF gives to registers.
namespace x86_64 {
constexpr std::uint8_t kFramePointer = 6;
constexpr std::uint8_t kStackPointer = 7;
constexpr std::uint8_t kReturn = 16;
}  // namespace x86_64
namespace arm64 {
constexpr std::uint8_t kX19 = 19;
constexpr std::uint8_t kFramePointer = 29;
constexpr std::uint8_t kReturn = 30;
constexpr std::uint8_t kStackPointer = 31;
constexpr std::uint8_t kD8 = 72;
}  // namespace arm64

void put_u64(Bytes& to, std::uint64_t value) {
    for (int shift = 0; shift < 64; shift += 8) {
        to.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

void put_uleb(Bytes& to, std::uint64_t value) {
    for (; value > 0x7F; value >>= 7) {
        to.push_back(static_cast<std::uint8_t>(value | 0x80));
    }
    to.push_back(static_cast<std::uint8_t>(value));
}

void put_sleb(Bytes& to, std::int64_t value) {
    for (; value < -0x40 || value > 0x3F; value >>= 7) {
        to.push_back(static_cast<std::uint8_t>(value | 0x80));
    }
    to.push_back(static_cast<std::uint8_t>(value & 0x7F));
}

/// The caller's stack pointer is `words` words above a register.
void put_caller(Bytes& to, std::uint8_t register_number, std::uint64_t words) {
    constexpr std::uint8_t define = 0x0C;
    to.push_back(define);
    put_uleb(to, register_number);
    put_uleb(to, words * kWord);
}

/// The caller's value of a register lies `words` words below its stack pointer.
void put_saved(Bytes& to, std::uint8_t register_number, std::uint64_t words) {
    constexpr std::uint8_t saved = 0x05;
    to.push_back(saved);
    put_uleb(to, register_number);
    put_uleb(to, words);
}

[[noreturn]] void refuse(std::uint32_t encoding) {
    throw macho::FileError("no frame is known of encoding " + std::to_string(encoding));
}

/// rbx, r12 to r15 and rbp by the numbers 1 to 6 that the encoding has for them; 0 is none.
std::uint8_t saved_register(std::uint32_t encoding, std::uint32_t number) {
    constexpr std::array<std::uint8_t, 7> registers = {0, 3, 12, 13, 14, 15, 6};
    if (number == 0 || number >= registers.size()) {
        refuse(encoding);
    }
    return registers[number];
}

Bytes framed_x86_64(std::uint32_t encoding) {
    Bytes to;
    put_caller(to, x86_64::kFramePointer, 2);
    put_saved(to, x86_64::kReturn, 1);
    put_saved(to, x86_64::kFramePointer, 2);
    const std::uint32_t lowest = encoding >> 16 & 0xFF;  // words below the frame pointer
    for (std::uint32_t i = 0; i < 5; ++i) {
        const std::uint32_t number = encoding >> 3 * i & 7;
        if (number != 0) {
            if (i > lowest) {
                refuse(encoding);
            }
            put_saved(to, saved_register(encoding, number), 2 + lowest - i);
        }
    }
    return to;
}

/// The registers that a function without frame pointer pushed, in their order in memory. Which of
/// six they are, and in which order, is one number: each digit of it is a register's place among
/// those that are not taken yet.
std::vector<std::uint8_t> pushed(std::uint32_t encoding) {
    const std::uint32_t count = encoding >> 10 & 7;
    std::uint32_t order = encoding & 0x3FF;
    if (count > 6) {
        refuse(encoding);
    }
    std::vector<std::uint32_t> left = {1, 2, 3, 4, 5, 6};
    std::vector<std::uint8_t> registers;
    for (std::uint32_t i = 0; i < count; ++i) {
        // So many orders there are of the registers behind this one.
        std::uint32_t orders = 1;
        for (std::uint32_t j = i + 1; j < count; ++j) {
            orders *= 6 - j;
        }
        const std::uint32_t place = order / orders;
        order %= orders;
        if (place >= left.size()) {
            refuse(encoding);
        }
        registers.push_back(saved_register(encoding, left[place]));
        left.erase(left.begin() + place);
    }
    return registers;
}

Bytes frameless_x86_64(std::uint32_t encoding, std::uint64_t stack_words) {
    Bytes to;
    put_caller(to, x86_64::kStackPointer, stack_words);
    put_saved(to, x86_64::kReturn, 1);
    const std::vector<std::uint8_t> registers = pushed(encoding);
    for (std::size_t i = 0; i < registers.size(); ++i) {
        put_saved(to, registers[i], 1 + registers.size() - i);
    }
    return to;
}

void put_pointer_or_none(Bytes& to, std::uint64_t address, std::uint64_t slide) {
    put_u64(to, address == 0 ? 0 : address + slide);
}

/// Writes the length in front of what was put since `begin`.
void close_record(Bytes& to, std::size_t begin) {
    while ((to.size() - begin) % kWord != 4) {
        to.push_back(0);  // no instruction
    }
    const auto length = static_cast<std::uint32_t>(to.size() - begin - 4);
    std::memcpy(to.data() + begin, &length, sizeof length);
}

/// A record of what functions have in common, for this one alone, and the function's own.
void put_function(Bytes& to, const UnwoundFunction& function, const Bytes& instructions,
                  Processor processor, std::uint64_t slide) {
    const std::size_t common = to.size();
    to.resize(common + 8);  // the length, and zero, by which it is told from a function's record
    to.push_back(1);        // version
    const bool has_personality = function.personality_slot != 0;
    const std::string augmentation = has_personality ? "zPLR" : "zR";
    to.insert(to.end(), augmentation.begin(), augmentation.end());
    to.push_back(0);
    put_uleb(to, function.dwarf ? function.dwarf->code_alignment : 1);
    put_sleb(to, function.dwarf ? function.dwarf->data_alignment : -kWord);
    to.push_back(function.dwarf ? static_cast<std::uint8_t>(function.dwarf->return_register)
                 : processor == Processor::X86_64 ? x86_64::kReturn
                                                  : arm64::kReturn);
    constexpr std::uint8_t whole_pointers = 0;
    if (has_personality) {
        put_uleb(to, 1 + 8 + 1 + 1);
        to.push_back(whole_pointers);
        std::uint64_t personality = 0;
        std::memcpy(&personality, reinterpret_cast<const void*>(function.personality_slot + slide),
                    sizeof personality);
        put_u64(to, personality);
        to.push_back(whole_pointers);
    } else {
        put_uleb(to, 1);
    }
    to.push_back(whole_pointers);
    if (function.dwarf) {
        const macho::Bytes& rules = function.dwarf->common;
        to.insert(to.end(), rules.at(0, rules.size()), rules.at(0, rules.size()) + rules.size());
    }
    close_record(to, common);

    const std::size_t own = to.size();
    to.resize(own + 8);
    const auto back = static_cast<std::uint32_t>(own + 4 - common);
    std::memcpy(to.data() + own + 4, &back, sizeof back);
    put_u64(to, function.begin + slide);
    put_u64(to, function.end - function.begin);
    put_uleb(to, has_personality ? 8 : 0);
    if (has_personality) {
        put_pointer_or_none(to, function.language_data, slide);
    }
    to.insert(to.end(), instructions.begin(), instructions.end());
    close_record(to, own);
}

Bytes instructions_of(const UnwoundFunction& function, Processor processor, std::uint64_t slide) {
    if (function.dwarf) {
        const macho::Bytes& rules = function.dwarf->instructions;
        return {rules.at(0, rules.size()), rules.at(0, rules.size()) + rules.size()};
    }
    return processor == Processor::X86_64
               ? instructions_x86_64(function.encoding,
                                     reinterpret_cast<const std::uint8_t*>(function.begin + slide))
               : instructions_arm64(function.encoding);
}

}  // namespace

std::vector<std::uint8_t> instructions_x86_64(std::uint32_t encoding,
                                              const std::uint8_t* function) {
    switch (encoding & macho::kModeBits) {
        case 0x01000000:
            return framed_x86_64(encoding);
        case 0x02000000:
            return frameless_x86_64(encoding, encoding >> 16 & 0xFF);
        case 0x03000000: {
            // Too much for the encoding: it says where the function's code has the number of bytes.
            std::uint32_t bytes = 0;
            std::memcpy(&bytes, function + (encoding >> 16 & 0xFF), sizeof bytes);
            return frameless_x86_64(encoding, bytes / kWord + (encoding >> 13 & 7));
        }
        default:
            refuse(encoding);
    }
}

std::vector<std::uint8_t> instructions_arm64(std::uint32_t encoding) {
    Bytes to;
    constexpr std::uint32_t pair_bits = 0xFFF;
    if ((encoding & macho::kModeBits) == 0x02000000 && (encoding & pair_bits) == 0) {
        // Such a function calls none: the return address is still in its register.
        put_caller(to, arm64::kStackPointer, 2 * (encoding >> 12 & 0xFFF));
        return to;
    }
    if ((encoding & macho::kModeBits) != 0x04000000) {
        refuse(encoding);
    }
    put_caller(to, arm64::kFramePointer, 2);
    put_saved(to, arm64::kReturn, 1);
    put_saved(to, arm64::kFramePointer, 2);
    std::uint64_t words = 3;
    const auto put_pairs = [&](int first_bit, int pairs, std::uint8_t first_register) {
        for (int pair = 0; pair < pairs; ++pair) {
            if ((encoding >> (first_bit + pair) & 1) != 0) {
                const auto low = static_cast<std::uint8_t>(first_register + 2 * pair);
                put_saved(to, low, words++);
                put_saved(to, static_cast<std::uint8_t>(low + 1), words++);
            }
        }
    };
    put_pairs(0, 5, arm64::kX19);
    put_pairs(8, 4, arm64::kD8);
    return to;
}

UnwindFrames::UnwindFrames(const macho::Image& image, std::uint64_t slide) {
    for (const UnwoundFunction& function : macho::read_unwind_table(image)) {
        if ((function.encoding & macho::kModeBits) != macho::kNoMode) {
            put_function(records_, function, instructions_of(function, image.processor, slide),
                         image.processor, slide);
        }
    }
    if (records_.empty()) {
        return;
    }
    records_.resize(records_.size() + 4);  // a record without length ends them
    __register_frame(records_.data());
}

UnwindFrames::~UnwindFrames() {
    if (!records_.empty()) {
        __deregister_frame(records_.data());
    }
}

}  // namespace loader
