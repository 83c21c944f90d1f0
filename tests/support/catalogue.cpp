#include "support/catalogue.h"

#include <bit>
#include <cstdint>
#include <stdexcept>

#include "support/scratch.h"

namespace support {

namespace {

template <class Bits, class Number>
void append_little_endian(std::string& bytes, Number x) {
    const auto bits = std::bit_cast<Bits>(x);
    for (unsigned i = 0; i < sizeof bits; ++i) {
        bytes.push_back(static_cast<char>(static_cast<unsigned char>(bits >> (8U * i) & 0xffU)));
    }
}

}  // namespace

std::string catalogue_header(const std::string& magic) {
    if (magic.size() != 8) {
        throw std::invalid_argument("a magic has 8 characters, not \"" + magic + "\"");
    }
    std::string bytes = magic;
    bytes.resize(32, '\0');
    return bytes;
}

std::string catalogue_record(const CatalogueStar& star) {
    std::string bytes;
    append_little_endian<std::uint64_t>(bytes, star.lon);
    append_little_endian<std::uint64_t>(bytes, star.lat);
    append_little_endian<std::uint32_t>(bytes, star.luminance);
    for (const unsigned char code : {star.r, star.g, star.b}) {
        bytes.push_back(static_cast<char>(code));
    }
    bytes.push_back('\0');
    append_little_endian<std::uint64_t>(bytes, star.distance);
    return bytes;
}

std::string catalogue_bytes(const std::string& magic, const std::vector<CatalogueStar>& stars) {
    std::string bytes = catalogue_header(magic);
    for (const CatalogueStar& star : stars) {
        bytes += catalogue_record(star);
    }
    return bytes;
}

void write_catalogue(const std::string& path, const std::string& magic,
                     const std::vector<CatalogueStar>& stars) {
    write_file(path, catalogue_bytes(magic, stars));
}

}  // namespace support
