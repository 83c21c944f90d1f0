// lumivar catalog import: what it writes, what it refuses, and what it leaves behind.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <libimgops/star_database_name.h>
#include <osapi/pipes.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "catalogue/import_support.h"
#include "database/info.h"
#include "failure_of.h"
#include "star_table.h"
#include "support/scratch.h"
#include "tool_run.h"

namespace {

using Names = std::vector<std::string>;

constexpr const char* kShippedTable = LUMIVAR_DATA "/hip.csv";
constexpr const char* kHeader = "ra_deg,dec_deg,vmag,bv,distance_pc\n";

class Import : public testing::Test {
protected:
    lumivar::ImportSummary import_table(const std::string& input, const std::string& output) {
        KeepingWatcher watcher;
        return lumivar::import_catalogues({input}, output, {}, watcher);
    }
    std::string import_failure(const std::string& output) {
        return failure_of([&] { import_table(folder / "t.csv", output); });
    }

    ScratchFolder folder;
};

TEST_F(Import, WritesHeaderAndOneRecordAStarInTheOrderOfTheTable) {
    // Columns in another order, one of them unknown to the program.
    write_file(folder / "t.csv",
               "name,vmag,distance_pc,bv,dec_deg,ra_deg\n"
               "Far,2.5,100,0.65,-10.5,20.25\n"
               "Bright,-2.5,,,90,360\n");
    const lumivar::ImportSummary summary = import_table(folder / "t.csv", folder / "t.stars");
    EXPECT_EQ(summary.stars, 2U);
    EXPECT_EQ(summary.unknown.colours, 1U);
    EXPECT_EQ(summary.unknown.distances, 1U);

    lumivar::CatalogueStar far;
    far.lon = 20.25;
    far.lat = -10.5;
    far.luminance = 0.1F;       // 10^-1
    far.rgb = {255, 241, 234};  // tabulated for B-V 0.65
    far.distance = 100.0;
    lumivar::CatalogueStar bright;
    bright.lon = 360.0;
    bright.lat = 90.0;
    bright.luminance = 10.0F;
    // B-V 0.6 by the published formulas, worked out with a separate script.
    bright.rgb = {255, 243, 240};
    bright.distance = -1.0;
    EXPECT_EQ(read_file(folder / "t.stars"), bytes_of(lumivar::encode_header()) +
                                                 bytes_of(lumivar::encode_star(far)) +
                                                 bytes_of(lumivar::encode_star(bright)));
}

TEST_F(Import, RefusesOutputsThatAreNoFiles) {
    write_file(folder / "t.csv", kHeader);
    EXPECT_EQ(import_failure(folder.path()),
              "cannot write " + folder.path() + ": it is a folder, give the name of a file");
    EXPECT_EQ(
        import_failure(folder / "none/t.stars"),
        "cannot write " + (folder / "none/t.stars") + ": there is no folder " + (folder / "none"));
    EXPECT_EQ(import_failure("/dev/full"), "cannot write /dev/full: it is not a regular file");
    EXPECT_EQ(import_failure(folder / "t.csv"),
              "the output would replace its own input " + (folder / "t.csv"));
    EXPECT_EQ(names_in(folder.path()), Names{"t.csv"});
}

TEST_F(Import, FollowsALinkToTheFileItPointsAt) {
    write_file(folder / "t.csv", kHeader);
    std::filesystem::create_directory(folder / "real");
    write_file(folder / "real/old.stars", "old");
    std::filesystem::create_symlink("real/old.stars", folder / "link.stars");
    import_table(folder / "t.csv", folder / "link.stars");
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.stars"));
    EXPECT_EQ(read_file(folder / "real/old.stars"), bytes_of(lumivar::encode_header()));
}

TEST_F(Import, ShippedCatalogueHasItsPublishedCounts) {
    const std::string output = folder / "hip.stars";
    const lumivar::ImportSummary summary = import_table(kShippedTable, output);
    EXPECT_EQ(summary.stars, 117955U);
    EXPECT_EQ(summary.unknown.colours, 1143U);
    EXPECT_EQ(summary.unknown.distances, 6413U);

    // Stars brighter than V, counted in the table with awk.
    const lumivar::CatalogueInfo info = lumivar::examine_catalogue(output);
    EXPECT_TRUE(info.warnings.empty());
    const struct {
        int below;
        std::uint32_t stars;
    } counts[] = {{0, 4},    {1, 15},    {2, 49},    {3, 172},   {4, 515},    {5, 1606},
                  {6, 4992}, {7, 15397}, {8, 41058}, {9, 83073}, {10, 107803}};
    for (const auto& count : counts) {
        std::uint32_t stars = 0;
        for (const auto& [magnitude, number] : info.histogram) {
            stars += magnitude < count.below ? number : 0;
        }
        EXPECT_EQ(stars, count.stars) << "V < " << count.below;
    }
    EXPECT_NEAR(info.magnitude.low, -1.44, 1e-6);
    EXPECT_EQ(info.distance.low, 1.296);
    EXPECT_EQ(info.distance.high, 2000.0);

    // The first row is Sirius: B-V 0.01 lies between the tabulated 0.00 (204, 217) and 0.20 (224,
    // 230).
    const std::string bytes = read_file(output);
    EXPECT_EQ(bytes.size(), (117955U + 1U) * 32U);
    const auto red = static_cast<unsigned char>(bytes[32 + 20]);
    const auto blue = static_cast<unsigned char>(bytes[32 + 22]);
    EXPECT_TRUE(red >= 204 && red <= 206) << int{red};
    EXPECT_EQ(blue, 255);
}

TEST_F(Import, ReadsStandardInput) {
    write_file(folder / "t.csv", std::string(kHeader) + "1,2,3,,\n");
    const ToolResult result = run_tool({"catalog", "import", "-", "-o", folder / "t.stars"},
                                       {.program = LUMIVAR_PROGRAM, .input = folder / "t.csv"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(
        result.out.rfind("standard input: comma-separated table: right ascension from ra_deg "
                         "(deg), declination from dec_deg (deg), distance from distance_pc "
                         "(pc), magnitude V from vmag (mag), colour B-V from bv (mag); places "
                         "of J2000\n" +
                             (folder / "t.stars") + ": 1 star in ",
                         0),
        0U)
        << result.out;
    EXPECT_EQ(std::filesystem::file_size(folder / "t.stars"), 64U);
}

TEST_F(Import, AccountsForEveryRow) {
    const std::string sample = LUMIVAR_SAMPLES "/hip_main.dat";
    write_file(folder / "bad.dat", read_file(sample) + "H|not a row\n");
    const ToolResult result = run_tool(
        {"catalog", "import", folder / "bad.dat", "--epoch", "2050", "-o", folder / "t.stars"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "lumivar: skipped: " + (folder / "bad.dat") +
                              ":11: has 2 fields where the table has 78 columns; leave an unknown "
                              "field empty, but keep its separator\n");
    EXPECT_NE(result.out.find("; places of J1991.25, moved to J2050\n"), std::string::npos)
        << result.out;
    const std::size_t accounts = result.out.find("  read ");
    ASSERT_NE(accounts, std::string::npos) << result.out;
    EXPECT_EQ(
        result.out.substr(accounts),
        "  read       11 rows\n"
        "  kept       9: 1 without colour (drawn as B-V 0.6), 0 without distance\n"
        "  skipped    1: more or fewer fields than the table has columns (first: " +
            (folder / "bad.dat") +
            ":11)\n"
            "  skipped    1: no star by the catalogue itself, an entry without a place (first: " +
            (folder / "bad.dat") + ":8)\n");
}

TEST_F(Import, WarnsOfANameThatThePluginWouldNotSee) {
    write_file(folder / "t.csv", std::string(kHeader) + "1,2,3,,\n");
    const ToolResult result =
        run_tool({"catalog", "import", folder / "t.csv", "-o", folder / "t.db"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err,
              "lumivar: warning: the plug-in finds only files with \".stars\" in their name, and " +
                  (folder / "t.db") + " has not\n");
}

TEST_F(Import, FullDiskIsOneLineAndLeavesNothing) {
    write_file(folder / "old.stars", "precious");
    // The database takes 3.8 MB.
    const ToolResult result =
        run_tool({"catalog", "import", kShippedTable, "-o", folder / "old.stars"},
                 {.file_size_limit = 100000});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.signal, 0);
    EXPECT_EQ(result.err, "lumivar: cannot write " + (folder / "old.stars") + ": File too large\n");
    EXPECT_EQ(read_file(folder / "old.stars"), "precious");
    EXPECT_EQ(names_in(folder.path()), Names{"old.stars"});
}

/// An import that has begun and waits for more of its table: for a signal at a certain moment.
class HalfwayImport {
public:
    explicit HalfwayImport(const ScratchFolder& folder, const ToolOptions& options = {})
        : folder_(folder), pipe_(folder / "pipe.csv") {
        OSAPI::make_named_pipe(pipe_.c_str());
        // Read and write: does not wait for the other side, and the reader never sees the end.
        end_ = open(pipe_.c_str(), O_RDWR | O_CLOEXEC);
        const std::string rows = std::string(kHeader) + "1,2,3,,\n1,2,3,,\n1,2,3,,\n1,2,3,,\n";
        if (write(end_, rows.data(), rows.size()) != static_cast<ssize_t>(rows.size())) {
            throw std::runtime_error("the pipe is full");
        }
        process_.emplace(Names{"catalog", "import", pipe_, "-o", folder / "out.stars"}, options);
        // The hidden folder is there and its file within: the rest is waiting for rows.
        wait_until(
            [this] { return std::filesystem::exists(folder_ / (working_folder() + "/content")); });
    }
    ~HalfwayImport() { close_pipe(); }

    /// Runs it to its end, which must be a good one.
    void finish() {
        close_pipe();
        EXPECT_EQ(process_->wait().code, 0);
    }

    ToolProcess& process() { return *process_; }
    /// The table ends here: the import goes on to its end.
    void close_pipe() {
        if (end_ >= 0) {
            close(end_);
            end_ = -1;
            unlink(pipe_.c_str());
        }
    }
    std::string working_folder() const {
        for (const std::string& name : names_in(folder_.path())) {
            if (name.rfind(".lumivar-work-" + std::to_string(process_->id()) + "-", 0) == 0) {
                return name;
            }
        }
        return "";
    }

private:
    const ScratchFolder& folder_;
    std::string pipe_;
    int end_ = -1;
    std::optional<ToolProcess> process_;
};

TEST_F(Import, ShowsNoStarsNameWhileItWritesAndKeepsIgnoringASignalThatWasIgnored) {
    HalfwayImport import(folder, {.ignored_signal = SIGHUP});
    import.process().send(SIGHUP);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path())) {
        EXPECT_FALSE(is_star_database_name(entry.path().filename().c_str())) << entry.path();
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "out.stars"));
    import.finish();
    EXPECT_EQ(names_in(folder.path()), Names{"out.stars"});
}

TEST_F(Import, SignalLeavesNothingBehindAndIsWhatItDiesBy) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(number);
        write_file(folder / "out.stars", "precious");
        HalfwayImport import(folder);
        import.process().send(number);
        EXPECT_EQ(import.process().wait().signal, number);
        import.close_pipe();
        EXPECT_EQ(names_in(folder.path()), Names{"out.stars"});
        EXPECT_EQ(read_file(folder / "out.stars"), "precious");
    }
}

TEST_F(Import, NextRunRemovesWhatAHardKillLeft) {
    write_file(folder / "t.csv", kHeader);
    {
        HalfwayImport import(folder);
        import.process().send(SIGKILL);
        EXPECT_EQ(import.process().wait().signal, SIGKILL);
    }
    ASSERT_EQ(names_in(folder.path()).size(), 2U) << "the orphan and the table";
    EXPECT_EQ(names_in(folder.path())[0].rfind(".lumivar-work-", 0), 0U);
    import_table(folder / "t.csv", folder / "t.stars");
    EXPECT_EQ(names_in(folder.path()), (Names{"t.csv", "t.stars"}));
}

TEST_F(Import, LeavesTheWorkOfARunThatStillLives) {
    write_file(folder / "t.csv", kHeader);
    HalfwayImport import(folder);
    const std::string working = import.working_folder();
    import_table(folder / "t.csv", folder / "t.stars");
    EXPECT_TRUE(std::filesystem::exists(folder / (working + "/content")));
    import.finish();
    EXPECT_EQ(names_in(folder.path()), (Names{"out.stars", "t.csv", "t.stars"}));
}

TEST_F(Import, TouchesNoFolderThatOnlyLooksLikeAnOrphan) {
    write_file(folder / "t.csv", kHeader);
    for (const char* name :
         {".lumivar-work-", ".lumivar-work-12", ".lumivar-work-12-x", ".lumivar-work-a-0"}) {
        std::filesystem::create_directory(folder / name);
    }
    write_file(folder / ".lumivar-work-7-7", "a file");
    std::filesystem::create_directory(folder / "elsewhere");
    std::filesystem::create_directory_symlink("elsewhere", folder / ".lumivar-work-8-8");
    const std::size_t before = names_in(folder.path()).size();
    import_table(folder / "t.csv", folder / "t.stars");
    EXPECT_EQ(names_in(folder.path()).size(), before + 1);
}

}  // namespace
