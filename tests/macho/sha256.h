// SHA-256 (FIPS 180-4), by which a code signature knows the pages of its file.
#pragma once

#include <array>
#include <cstdint>

namespace macho {

using Digest = std::array<std::uint8_t, 32>;

Digest sha256(const std::uint8_t* data, std::uint64_t size);

}  // namespace macho
