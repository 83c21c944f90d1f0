// The frames of a loaded image, told to the unwinder of this system in its own language.
#pragma once

#include <cstdint>
#include <vector>

#include "../unwind_table.h"

namespace loader {

/// Registered as long as the object lives.
class UnwindFrames {
public:
    /// `slide` is how far the image lies from where it was linked for; its pointers must be set.
    UnwindFrames(const macho::Image& image, std::uint64_t slide);
    ~UnwindFrames();
    UnwindFrames(const UnwindFrames&) = delete;
    UnwindFrames& operator=(const UnwindFrames&) = delete;

private:
    std::vector<std::uint8_t> records_;
};

/// The instructions of a frame with this compact encoding. `function` is where its code lies now.
/// Throws `FileError` for an encoding that is not known.
std::vector<std::uint8_t> instructions_x86_64(std::uint32_t encoding, const std::uint8_t* function);
std::vector<std::uint8_t> instructions_arm64(std::uint32_t encoding);

}  // namespace loader
