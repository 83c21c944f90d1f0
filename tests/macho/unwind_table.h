// How the frames of an image's functions are left when an exception passes through them.
#pragma once

#include <optional>
#include <vector>

#include "macho_file.h"

namespace macho {

/// Rules written in the DWARF language, for frames that the compact encoding cannot describe.
struct DwarfRules {
    std::uint64_t code_alignment;
    std::int64_t data_alignment;
    std::uint64_t return_register;
    Bytes common;  ///< instructions that several functions share
    Bytes instructions;
};

/// What an encoding says in its lower 28 bits, and its upper ones.
constexpr std::uint32_t kModeBits = 0x0F000000;
/// Of all processors the mode without a rule: nothing passes through such a function.
constexpr std::uint32_t kNoMode = 0;
constexpr std::uint32_t kDwarfModeX86_64 = 0x04000000;
constexpr std::uint32_t kDwarfModeArm64 = 0x03000000;

struct UnwoundFunction {
    std::uint64_t begin;
    std::uint64_t end;
    std::uint32_t encoding;
    /// Address of the pointer to the routine that chooses where to go on; 0 for none.
    std::uint64_t personality_slot;
    std::uint64_t language_data;  ///< address; 0 for none
    std::optional<DwarfRules> dwarf;
};

/// Every entry of `__unwind_info`, with what `__eh_frame` adds where an entry refers to it.
std::vector<UnwoundFunction> read_unwind_table(const Image& image);

}  // namespace macho
