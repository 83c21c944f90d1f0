// Any file as a star database: its records and what is said of it, against the bytes taken apart by
// hand; copied, it is the same but for the bytes that no reader looks at.
#include <libimgops/star_input.h>
#include <libimgops/starfile.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <memory>

#include "database/database_reader.h"
#include "database/database_writer.h"
#include "database/info.h"
#include "database/star_file.h"
#include "failure.h"
#include "harness.h"
#include "input_file.h"

namespace {

constexpr std::size_t kRecord = 32;

std::uint64_t little_endian(const std::string& bytes, std::size_t at, std::size_t count) {
    std::uint64_t value = 0;
    for (std::size_t i = count; i-- > 0;) {
        value = value << 8U | static_cast<unsigned char>(bytes[at + i]);
    }
    return value;
}

double number(const std::string& bytes, std::size_t at) {
    return std::bit_cast<double>(little_endian(bytes, at, 8));
}

/// Compares what is said of a field with its values.
class ExpectedRange {
public:
    void add(double value) {
        if (std::isfinite(value)) {
            low_ = count_ == 0 ? value : std::min(low_, value);
            high_ = count_ == 0 ? value : std::max(high_, value);
            ++count_;
        }
    }
    void expect(const lumivar::FieldRange& range) const {
        require(range.values == count_, "a field has another number of values");
        require(count_ == 0 || (range.low == low_ && range.high == high_),
                "a field has another range");
    }

private:
    double low_ = 0.0;
    double high_ = 0.0;
    std::uint64_t count_ = 0;
};

void expect_info(const std::string& bytes, std::size_t stars, const std::string& path) {
    ExpectedRange lon;
    ExpectedRange lat;
    ExpectedRange luminance;
    ExpectedRange distance;
    std::uint64_t bright = 0;
    for (std::size_t at = kRecord; at < kRecord * (stars + 1); at += kRecord) {
        lon.add(number(bytes, at));
        lat.add(number(bytes, at + 8));
        const double light = static_cast<double>(
            std::bit_cast<float>(static_cast<std::uint32_t>(little_endian(bytes, at + 16, 4))));
        luminance.add(light);
        bright += std::isfinite(light) && light > 0.0 ? 1U : 0U;
        if (number(bytes, at + 24) > 0.0) {
            distance.add(number(bytes, at + 24));
        }
    }
    const lumivar::CatalogueInfo info = lumivar::examine_catalogue(path);
    require(info.bytes == bytes.size() && info.stars == stars, "another number of stars");
    lon.expect(info.lon);
    lat.expect(info.lat);
    luminance.expect(info.luminance);
    distance.expect(info.distance);
    std::uint64_t counted = 0;
    for (const auto& [magnitude, count] : info.histogram) {
        counted += count;
    }
    require(counted == bright && info.magnitude.values == bright, "another number of magnitudes");
    require(lumivar::info_as_text(info).ends_with('\n'), "no text");
    require(lumivar::info_as_json(info).ends_with("}\n"), "no JSON");
}

void expect_copy(const std::string& bytes, std::size_t stars, const std::string& path) {
    std::string expected = bytes.substr(0, 8) + std::string(kRecord - 8, '\0');
    for (std::size_t at = kRecord; at < kRecord * (stars + 1); at += kRecord) {
        std::string record = bytes.substr(at, kRecord);
        record[23] = '\0';
        expected += record;
    }
    lumivar::DatabaseReader reader(path);
    require(reader.stars() == stars, "the reader has another number of stars");
    lumivar::DatabaseWriter writer(fuzz_folder() / "copy.stars", reader.version());
    for (auto block = reader.next_block(); !block.empty(); block = reader.next_block()) {
        for (const star& record : block) {
            writer.add_record(record);
        }
    }
    writer.publish();
    require(read_file(fuzz_folder() / "copy.stars") == expected, "the copy is another database");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = text_of(data, size);
    const std::string path = input_file("any.stars", bytes);
    const std::string word = bytes.substr(0, 8);
    const int version = word == "LUMIVAR1" ? 1 : word == "LUMIVAR2" ? 2 : 0;
    const lumivar::StarFile found = lumivar::look_at_star_file(path);
    require(found.version == version, "a file is taken for another kind");
    require(found.problem.empty() == (version != 0), "a problem without a cause");
    if (version == 0) {
        try {
            lumivar::examine_catalogue(path);
            require(false, "a file is taken for a database");
        } catch (const lumivar::Failure&) {
        }
        return 0;
    }
    const std::size_t records = bytes.size() / kRecord;
    const std::size_t stars = records == 0 ? 0 : records - 1;
    expect_info(bytes, stars, path);
    expect_copy(bytes, stars, path);
    const std::unique_ptr<StarInput> drawn(op_stars_file_input(path.c_str()));
    require(drawn->nstars() == records, "the renderer has another number of records");
    return 0;
}
