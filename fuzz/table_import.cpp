// Any file as a table of stars: refused, or made a database whose stars are all such as can be
// drawn and whose accounts are right; the same from a compressed file and from one that comes in
// pieces.
#include <zlib.h>

#include "database/info.h"
#include "failure.h"
#include "harness.h"
#include "import/import.h"
#include "input_file.h"

namespace {

class Silent : public lumivar::ImportWatcher {
public:
    void recognised(const std::string& text) override {
        require(text.find('\n') == std::string::npos, "what a file is takes several lines");
    }
    void remark(const std::string& text) override {
        require(text.find('\n') == std::string::npos, "a remark takes several lines");
    }
    void skipped(const std::string& text) override {
        ++shown;
        require(text.find('\n') == std::string::npos, "a fault takes several lines");
    }
    int shown = 0;
};

struct Outcome {
    bool is_refused = false;
    std::string database;
    std::uint64_t read = 0;
    std::uint64_t faulty = 0;

    bool operator==(const Outcome& other) const = default;
};

void expect_drawable(const lumivar::CatalogueInfo& info) {
    require(info.lon.values == info.stars && info.lat.values == info.stars &&
                info.luminance.values == info.stars,
            "a star with what is no number");
    require(info.stars == 0 || (info.lon.low >= 0.0 && info.lon.high <= 360.0 &&
                                info.lat.low >= -90.0 && info.lat.high <= 90.0),
            "a star beside the sky");
}

Outcome outcome_of(const std::string& table, bool strict) {
    const std::string path = fuzz_folder() / "out.stars";
    std::filesystem::remove(path);
    lumivar::ImportOptions options;
    options.strict = strict;
    Silent watcher;
    Outcome outcome;
    try {
        const lumivar::ImportSummary summary =
            lumivar::import_catalogues({table}, path, options, watcher);
        std::uint64_t skipped = 0;
        for (int kind = 0; kind < lumivar::kFaultKinds; ++kind) {
            skipped += summary.rows.skipped(static_cast<lumivar::FaultKind>(kind));
        }
        require(summary.rows.read() == summary.rows.kept() + skipped, "a row is lost");
        require(summary.stars == summary.rows.kept() && summary.merged == 0, "a star is lost");
        require(watcher.shown > 0 || summary.rows.faulty() == 0, "a fault is not shown");
        const lumivar::CatalogueInfo info = lumivar::examine_catalogue(path);
        require(info.stars == summary.stars, "the summary counts other stars");
        expect_drawable(info);
        outcome.read = summary.rows.read();
        outcome.faulty = summary.rows.faulty();
        outcome.database = read_file(path);
    } catch (const lumivar::Failure& failure) {
        require(failure.what()[0] != '\0', "a failure without a word");
        require(!std::filesystem::exists(path), "a failed import leaves a database");
        outcome.is_refused = true;
    }
    return outcome;
}

std::string compressed_file(const std::string& bytes) {
    std::string path = fuzz_folder() / "table.gz";
    gzFile file = gzopen(path.c_str(), "wb1");
    require(gzwrite(file, bytes.data(), static_cast<unsigned>(bytes.size())) ==
                static_cast<int>(bytes.size()),
            "not compressed");
    gzclose(file);
    return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kBlock = std::size_t{1} << 17;
    const std::string bytes = text_of(data, size);
    const std::string table = input_file("table.csv", bytes);
    read_in_pieces_of(kBlock);
    const Outcome whole = outcome_of(table, /*strict=*/false);
    if (!whole.is_refused) {
        require(outcome_of(table, /*strict=*/true).is_refused == (whole.faulty > 0),
                "strictness sees other faults");
    }
    read_in_pieces_of(size / 100 + 1);
    require(outcome_of(table, /*strict=*/false) == whole, "the database depends on the pieces");
    const bool is_compressed =
        bytes.starts_with("\x1F\x8B") || bytes.starts_with("\x28\xB5\x2F\xFD");
    if (size > 0 && !is_compressed) {
        read_in_pieces_of(kBlock);
        require(outcome_of(compressed_file(bytes), /*strict=*/false) == whole,
                "a compressed table is another one");
    }
    return 0;
}
