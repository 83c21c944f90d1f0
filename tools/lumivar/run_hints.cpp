#include "run_hints.h"

#include <host/printable.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "database/catalogue_star.h"
#include "database/database_reader.h"
#include "database/record_walk.h"
#include "failure.h"
#include "hints.h"

namespace lumivar {
namespace {

void tell_hint(const std::string& hint) {
    std::fprintf(stderr, "lumivar: hint: %s\n", host::printable(hint).c_str());
}

template <class Channel>
bool has_lit_pixel(const host::World& world) {
    std::vector<Channel> row(4 * static_cast<std::size_t>(world.width()));
    for (int y = 0; y < world.height(); ++y) {
        world.read_row<Channel>(y, row);
        for (std::size_t at = 0; at < row.size(); at += 4) {
            if (row[at + 1] != Channel{} || row[at + 2] != Channel{} || row[at + 3] != Channel{}) {
                return true;
            }
        }
    }
    return false;
}

/// Nothing for a database without stars, or one that cannot be read any more.
std::optional<double> brightest_luminance(const CatalogueUsed& catalogue) {
    std::optional<double> brightest;
    try {
        DatabaseReader database(catalogue.path);
        for_each_record(database, [&brightest](const star& record) {
            const double luminance = static_cast<double>(decode_star(record).luminance);
            if (!brightest || luminance > *brightest) {
                brightest = luminance;
            }
        });
    } catch (const Failure&) {
        return std::nullopt;
    }
    return brightest;
}

}  // namespace

RunHints::RunHints(bool quiet, const host::Session& session, const host::Scene& scene,
                   const std::vector<host::Time>& times)
    : quiet_(quiet), session_(session), scene_(scene), times_(times) {}

void RunHints::before() {
    if (quiet_) {
        return;
    }
    for (const std::string& hint : setting_hints(session_.controls(), scene_, times_)) {
        tell_hint(hint);
    }
}

void RunHints::note(bool lit) { has_light_ = has_light_ || lit; }

void RunHints::after(const std::optional<CatalogueUsed>& catalogue) const {
    if (quiet_ || has_light_ || !catalogue) {
        return;
    }
    const BlackFrames frames = {catalogue->stars, brightest_luminance(*catalogue)};
    if (const auto hint = black_frame_hint(session_.controls(), scene_, times_, frames)) {
        tell_hint(*hint);
    }
}

bool has_light(const host::World& world) {
    switch (world.depth()) {
        case host::Depth::Bits8:
            return has_lit_pixel<std::uint8_t>(world);
        case host::Depth::Bits16:
            return has_lit_pixel<std::uint16_t>(world);
        case host::Depth::Float:
            break;
    }
    return has_lit_pixel<float>(world);
}

}  // namespace lumivar
