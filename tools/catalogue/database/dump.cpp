#include "database/dump.h"

#include <charconv>
#include <cstddef>
#include <vector>

#include "database/catalogue_star.h"
#include "database/database_reader.h"
#include "database/record_walk.h"

namespace lumivar {
namespace {

constexpr std::size_t kTextBytes = std::size_t{1} << 18U;
/// Three doubles of 24 characters, a float of 15, three codes of 3, and what stands between.
constexpr std::size_t kLongestLine = 120;

char* put_line(const CatalogueStar& star, char* at, char* end) {
    at = std::to_chars(at, end, star.lon).ptr;
    *at++ = ',';
    at = std::to_chars(at, end, star.lat).ptr;
    *at++ = ',';
    at = std::to_chars(at, end, star.luminance).ptr;
    for (const std::uint8_t code : star.rgb) {
        *at++ = ',';
        at = std::to_chars(at, end, code).ptr;
    }
    *at++ = ',';
    at = std::to_chars(at, end, star.distance).ptr;
    *at++ = '\n';
    return at;
}

}  // namespace

std::uint64_t dump_database(const std::filesystem::path& database,
                            const std::function<void(std::string_view text)>& write) {
    DatabaseReader reader(database);
    write(reader.version() == 1 ? "lon_deg,lat_deg,luminance,r,g,b,distance_unused\n"
                                : "lon_deg,lat_deg,luminance,r,g,b,distance_pc\n");
    std::vector<char> text(kTextBytes);
    char* const end = text.data() + text.size();
    char* at = text.data();
    const auto flush = [&] {
        write({text.data(), static_cast<std::size_t>(at - text.data())});
        at = text.data();
    };
    for_each_record(reader, [&](const star& record) {
        if (static_cast<std::size_t>(end - at) < kLongestLine) {
            flush();
        }
        at = put_line(decode_star(record), at, end);
    });
    flush();
    return reader.stars();
}

}  // namespace lumivar
