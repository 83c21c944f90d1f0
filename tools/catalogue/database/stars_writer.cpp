#include "database/stars_writer.h"

#include <bit>
#include <string_view>

namespace lumivar {
namespace {

template <class Word>
void put_little_endian(StarRecord& record, std::size_t offset, Word word) {
    for (std::size_t i = 0; i < sizeof(Word); ++i) {
        record[offset + i] = static_cast<std::byte>(word >> (8 * i) & 0xFFU);
    }
}

}  // namespace

StarRecord encode_header() {
    StarRecord record{};
    std::size_t at = 0;
    for (const char character : std::string_view("LUMIVAR2")) {
        record[at++] = static_cast<std::byte>(character);
    }
    return record;
}

StarRecord encode_star(const CatalogueStar& star) {
    StarRecord record{};
    put_little_endian(record, 0, std::bit_cast<std::uint64_t>(star.lon));
    put_little_endian(record, 8, std::bit_cast<std::uint64_t>(star.lat));
    put_little_endian(record, 16, std::bit_cast<std::uint32_t>(star.luminance));
    for (std::size_t i = 0; i < star.rgb.size(); ++i) {
        record[20 + i] = static_cast<std::byte>(star.rgb[i]);
    }
    put_little_endian(record, 24, std::bit_cast<std::uint64_t>(star.distance));
    return record;
}

}  // namespace lumivar
