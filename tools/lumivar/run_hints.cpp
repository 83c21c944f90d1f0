#include "run_hints.h"

#include <host/printable.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <optional>
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
Channel largest_channel(const host::World& world) {
    Channel largest{};
    std::vector<Channel> row(4 * static_cast<std::size_t>(world.width()));
    for (int y = 0; y < world.height(); ++y) {
        world.read_row<Channel>(y, row);
        for (std::size_t at = 0; at < row.size(); at += 4) {
            for (std::size_t colour = at + 1; colour < at + 4; ++colour) {
                largest = row[colour] > largest ? row[colour] : largest;
            }
        }
    }
    return largest;
}

/// Nothing for a database without stars, or one that cannot be read any more.
std::optional<double> brightest_luminance(const std::filesystem::path& catalogue) {
    std::optional<double> brightest;
    try {
        DatabaseReader database(catalogue);
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

void RunHints::note(float brightest) { brightest_ = std::max(brightest_, brightest); }

void RunHints::after(const std::vector<CatalogueUsed>& catalogues, double least_visible) const {
    if (quiet_ || catalogues.empty()) {
        return;
    }
    if (brightest_ > 0.0F) {
        if (const auto hint = black_picture_hint(static_cast<double>(brightest_), least_visible)) {
            tell_hint(*hint);
        }
        return;
    }
    BlackFrames frames;
    for (const CatalogueUsed& catalogue : catalogues) {
        frames.stars += catalogue.stars;
        if (const auto brightest = brightest_luminance(catalogue.path)) {
            frames.brightest = std::max(frames.brightest.value_or(0.0), *brightest);
        }
    }
    if (const auto hint = black_frame_hint(session_.controls(), scene_, times_, frames)) {
        tell_hint(*hint);
    }
}

float brightest_channel(const host::World& world) {
    constexpr float kWhite8 = 255.0F;
    constexpr float kWhite16 = 32768.0F;
    switch (world.depth()) {
        case host::Depth::Bits8:
            return static_cast<float>(largest_channel<std::uint8_t>(world)) / kWhite8;
        case host::Depth::Bits16:
            return static_cast<float>(largest_channel<std::uint16_t>(world)) / kWhite16;
        case host::Depth::Float:
            break;
    }
    return largest_channel<float>(world);
}

}  // namespace lumivar
