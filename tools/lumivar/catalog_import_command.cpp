// lumivar catalog import
#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "catalog_commands.h"
#include "database/duplicates.h"
#include "failure.h"
#include "import/import.h"

namespace lumivar {
namespace {

struct ImportArguments {
    std::vector<std::string> inputs;
    std::string output;
    std::string format = "auto";
    std::string columns;
    std::string units;
    std::string frame = "equatorial";
    std::string white_point = "d65";
    std::optional<double> catalogue_epoch;
    std::optional<double> epoch;
    std::optional<double> zero_point;
    std::optional<double> parallax_floor;
    std::optional<double> dedupe;
    bool strict = false;
};

class ImportTalk : public ImportWatcher {
public:
    void recognised(const std::string& text) override {
        std::printf("%s\n", text.c_str());
        std::fflush(stdout);  // before the work that it announces
    }
    void skipped(const std::string& text) override {
        std::fprintf(stderr, "lumivar: skipped: %s\n", text.c_str());
    }
    void remark(const std::string& text) override {
        std::fprintf(stderr, "lumivar: hint: %s\n", text.c_str());
    }
};

ImportOptions options_of(const ImportArguments& arguments) {
    ImportOptions options;
    options.format = *format_of(arguments.format);
    if (!arguments.columns.empty()) {
        options.columns = parse_columns(arguments.columns);
    }
    if (!arguments.units.empty()) {
        options.angle_unit = arguments.units == "deg"     ? Unit::Degrees
                             : arguments.units == "hours" ? Unit::Hours
                                                          : Unit::Radians;
    }
    options.frame = arguments.frame == "galactic"   ? Frame::Galactic
                    : arguments.frame == "ecliptic" ? Frame::Ecliptic
                                                    : Frame::Equatorial;
    options.white_point = arguments.white_point == "sun" ? WhitePoint::Sun : WhitePoint::D65;
    options.catalogue_epoch = arguments.catalogue_epoch;
    options.epoch = arguments.epoch.value_or(options.epoch);
    options.zero_point = arguments.zero_point.value_or(options.zero_point);
    options.parallax_floor = arguments.parallax_floor.value_or(options.parallax_floor);
    options.dedupe = arguments.dedupe;
    options.strict = arguments.strict;
    return options;
}

unsigned long long number(std::uint64_t value) { return value; }

void print_summary(const std::string& output, const ImportSummary& summary, double seconds) {
    std::printf("%s: %s in %.2f s\n", output.c_str(), star_count(summary.stars).c_str(), seconds);
    std::printf("  read       %llu rows\n", number(summary.rows.read()));
    std::printf("  kept       %llu: %llu without colour (drawn as B-V %.1f), %llu without distance",
                number(summary.rows.kept()), number(summary.unknown.colours), kNeutralColourIndex,
                number(summary.unknown.distances));
    if (summary.unknown.motions > 0) {
        std::printf(", %llu left at the catalogue's epoch for want of a proper motion",
                    number(summary.unknown.motions));
    }
    std::printf("\n");
    if (summary.merged > 0) {
        std::printf("  merged     %llu: the star of an earlier input\n", number(summary.merged));
    }
    if (summary.rows.skipped() > 0) {
        std::printf("%s\n", summary.rows.reasons("  skipped    ", "\n").c_str());
    }
}

void import_command(const ImportArguments& arguments) {
    const auto start = std::chrono::steady_clock::now();
    ImportTalk talk;
    const ImportSummary summary =
        import_catalogues(arguments.inputs, arguments.output, options_of(arguments), talk);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    print_summary(arguments.output, summary, seconds.count());
    if (summary.stars == 0) {
        std::fprintf(stderr, "lumivar: warning: %s holds no stars\n", arguments.output.c_str());
    }
    warn_of_unlisted_name(arguments.output);
}

}  // namespace

void add_catalog_import_command(Command& catalog) {
    auto arguments = std::make_shared<ImportArguments>();
    Command command =
        catalog.add_command("import", "Make a star database from catalogues and tables of stars");
    command
        .add_all("IN", arguments->inputs,
                 "Catalogues, plain or as .gz or .zst; - is standard input")
        .required();
    command.add("-o,--output", arguments->output, "The database to write, NAME.stars").required();
    command.add("--format", arguments->format, "What the files are").one_of(format_words());
    command.add("--columns", arguments->columns,
                "WORD=COLUMN,...: which columns to use, by name or by number from 1");
    command.add("--units", arguments->units, "Of right ascension and declination")
        .one_of(std::vector<std::string>{"deg", "hours", "rad"});
    command
        .add("--catalogue-epoch", arguments->catalogue_epoch,
             "Year of the places in the files, where they do not say")
        .between(1800.0, 2200.0);
    command.add("--epoch", arguments->epoch, "Year to which proper motion takes the stars [2000]")
        .between(2000.0, 2100.0);
    command.add("--frame", arguments->frame, "Which angles to store")
        .one_of(std::vector<std::string>{"equatorial", "galactic", "ecliptic"});
    command.add("--white-point", arguments->white_point, "Which light is white")
        .one_of(std::vector<std::string>{"d65", "sun"});
    command.add("--zero-point", arguments->zero_point, "The magnitude that gets luminance 1 [0]")
        .between(-30.0, 30.0);
    command
        .add("--parallax-floor", arguments->parallax_floor,
             "Parallaxes up to this many mas give no distance [0]")
        .between(0.0, 1000.0);
    command
        .add("--dedupe", arguments->dedupe,
             "Stars of several catalogues within so many arcseconds are one; files of one "
             "catalogue are\nits parts")
        .between(0.001, kLargestDuplicateRadius);
    command.add_flag("--strict", arguments->strict, "Stop at the first row that is at fault");
    command.footer(
        "Recognised by their content: HYG, AT-HYG, Hipparcos (hip_main.dat), Tycho-2 with its\n"
        "supplements, the Bright Star Catalogue, Gaia, answers of VizieR (tab, semicolon or bar),\n"
        "ECSV, FITS, tables of lumivar catalog dump, and any table whose columns have usual names\n"
        "(ra_deg, dec_deg, vmag, bv, distance_pc). The first line says what a file was taken for.\n"
        "For other tables name the columns. The words are\n"
        "  ra, dec                  degrees, or sexagesimal (right ascension then in hours)\n"
        "  rah, ram, ras, design, ded, dem, des    the same in six columns and a sign\n"
        "  mag; g; bt, vt           magnitude V; Gaia's G; Tycho's BT and VT\n"
        "  bv | bprp | teff         colour B-V, colour BP-RP, or temperature in kelvins\n"
        "  distance | parallax      parsecs, milliarcseconds\n"
        "  pmra, pmdec, rv, epoch   mas a year, km/s, year of the place\n\n"
        "A row that is no star is counted with its reason, and the first few are shown.\n"
        "Luminance is 10^(-0.4 (V - zero point)), colour that of a black body. The stars keep\n"
        "their order. The database appears whole or not at all: it is made in a hidden folder\n"
        "beside its place, as the plug-in would take a half-written file for a database.\n\n"
        "Examples:\n"
        "  lumivar catalog import data/hip.csv -o hipparcos.stars\n"
        "  lumivar catalog import hip_main.dat tyc2.dat.* --dedupe 2 -o tycho.stars\n"
        "  lumivar catalog import GaiaSource_*.csv.gz --epoch 2016 -o gaia.stars\n"
        "  lumivar catalog import mine.csv --columns ra=alpha,dec=delta,mag=3 --units rad -o "
        "my.stars\n"
        "  curl -s ADDRESS | lumivar catalog import - --strict -o measured.stars\n");
    command.run([arguments] { import_command(*arguments); });
}

}  // namespace lumivar
