// The signature of a slice: a digest of each page, by which the system sees that nothing changed.
#pragma once

#include <string>
#include <vector>

#include "macho_file.h"
#include "sha256.h"

namespace macho {

constexpr std::uint32_t kAdHoc = 2;  ///< flag: no identity signed it

struct CodeSignature {
    std::uint32_t flags;
    std::string identifier;
    std::uint64_t covered;  ///< bytes from the slice's begin
    std::uint64_t page_size;
    std::vector<Digest> pages;
};

/// Throws `FileError`, also for an image without a signature.
CodeSignature read_signature(const Image& image);

/// The numbers of the pages that are not what was signed.
std::vector<std::size_t> changed_pages(const Image& image, const CodeSignature& signature);

}  // namespace macho
