// A small image for the processor of the test, made byte by byte, for readers and loaders to read.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "macho_file.h"

namespace macho {

/// The processor that the test was compiled for.
Processor own_processor();

/// A loadable image of three segments. Its code exports
///  - `counter`, which returns a number that is 7 in the file and that the initialiser, run once,
///    makes 8; it is found by way of a pointer that was linked for address 0;
///  - for each import, a function of the same name with "call_" in front, which jumps to it.
struct MadeImage {
    Processor processor = own_processor();
    std::vector<std::string> imports;  ///< without underscores

    /// The thin file.
    std::string bytes() const;
};

/// A universal file of these thin ones, at offsets of whole pages.
std::string universal(const std::vector<MadeImage>& images);

inline Bytes view(const std::string& bytes, const std::string& place = "made") {
    return {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(), place};
}

}  // namespace macho
