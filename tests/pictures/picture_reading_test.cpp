#include "picture_reading.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "failure_of.h"
#include "picture_file.h"
#include "support/scratch.h"

namespace {

using lumivar::read_picture_details;

class PictureReading : public testing::TestWithParam<const char*> {
protected:
    PictureReading() {
        // Light that packs badly, so that most of the file is pixels.
        std::vector<float> pixels(4 * kSide * kSide);
        unsigned int state = 1;
        for (float& sample : pixels) {
            state = state * 1664525U + 1013904223U;
            sample = static_cast<float>(state >> 8U) * 0x1p-24F;
        }
        lumivar::PictureInfo info;
        info.title = "Star field";
        info.details = {{"fingerprint", "0123"}, {"control:Star Brightness", "5"}};
        lumivar::write_picture(
            path, {pixels.data(), 16 * kSide, static_cast<int>(kSide), static_cast<int>(kSide)},
            info, {});
    }

    static constexpr std::size_t kSide = 32;
    ScratchFolder folder;
    std::string path = folder / GetParam();
};

TEST_P(PictureReading, FindsWhatWasWritten) {
    const lumivar::PictureDetails details = read_picture_details(path);
    EXPECT_EQ(details.at("fingerprint"), "0123");
    EXPECT_EQ(details.at("control:Star Brightness"), "5");
}

TEST_P(PictureReading, RefusesAFileThatWasCutAnywhere) {
    const std::string whole = read_file(path);
    for (std::size_t size = 0; size + 8 < whole.size(); size += 97) {
        write_file(path, whole.substr(0, size));
        const std::string failure = failure_of([&] { read_picture_details(path); });
        EXPECT_NE(failure.find(path), std::string::npos) << size << " bytes: " << failure;
    }
}

TEST_P(PictureReading, NeverTakesDamageForMoreThanAFailure) {
    const std::string whole = read_file(path);
    for (std::size_t at = 0; at < whole.size(); at += 31) {
        std::string damaged = whole;
        damaged[at] = static_cast<char>(~damaged[at]);
        write_file(path, damaged);
        const std::string failure = failure_of([&] { read_picture_details(path); });
        EXPECT_TRUE(failure == "no failure" || failure.find(path) != std::string::npos)
            << at << ": " << failure;
    }
}

TEST(PictureReadingOfClaims, TakesNoMemoryThatTheFileDoesNotHave) {
    const ScratchFolder folder;
    const std::vector<float> pixels(4);
    lumivar::PictureInfo info;
    info.details = {{"fingerprint", "0123"}};
    const std::string path = folder / "a.exr";
    lumivar::write_picture(path, {pixels.data(), 16, 1, 1}, info, {});
    // Behind the names of the attribute and of its type stands its size, lowest byte first.
    std::string bytes = read_file(path);
    const std::string names("lumivar:fingerprint\0string\0", 27);
    const std::size_t size = bytes.find(names) + names.size();
    ASSERT_EQ(bytes[size], 4);
    bytes[size + 3] = 0x70;  // 1.9 GB
    write_file(path, bytes);
    EXPECT_EQ(failure_of([&] { read_picture_details(path); }),
              "cannot read the picture " + path + ": it is damaged, or of another program");
}

TEST(PictureReadingOfNames, FindsLettersOfAllAlphabets) {
    const ScratchFolder folder;
    const std::vector<float> pixels(4);
    for (const char* const name : {"a.jpg", "a.png", "a.exr", "a.tif"}) {
        lumivar::PictureInfo info;
        info.details = {{"scene", "Sch\u00fctze \u5357\u6597.json"}, {"fingerprint", "0123"}};
        lumivar::write_picture(folder / name, {pixels.data(), 16, 1, 1}, info, {});
        EXPECT_EQ(read_picture_details(folder / name)["scene"], "Sch\u00fctze \u5357\u6597.json")
            << name;
    }
    EXPECT_NE(read_file(folder / "a.png").find("iTXtlumivar:scene"), std::string::npos)
        << "the kind of text that is UTF-8";
}

TEST(PictureReadingOfLongTexts, FindsWhatComesLast) {
    // Beyond what a marker of a .jpg holds, with and without a line's end to part it at.
    const ScratchFolder folder;
    const std::vector<float> pixels(4);
    for (const char* const name : {"a.jpg", "a.png", "a.exr", "a.tif"}) {
        for (const std::size_t length : {std::size_t{65000}, std::size_t{200000}}) {
            lumivar::PictureInfo info;
            info.title = "Star field";
            info.details = {{"long", std::string(length, 'x')},
                            {"other", std::string(length, 'y')},
                            {"fingerprint", "0123"}};
            lumivar::write_picture(folder / name, {pixels.data(), 16, 1, 1}, info, {});
            EXPECT_EQ(read_picture_details(folder / name)["fingerprint"], "0123")
                << name << " behind " << length;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, PictureReading,
                         testing::Values("a.exr", "a.png", "a.jpg", "a.tif"),
                         [](const auto& format) { return std::string(format.param).substr(2); });

TEST(PictureReadingOfNothing, IsAFailureThatNamesTheFile) {
    for (const std::string name :
         {"/nowhere/a.exr", "/nowhere/a.png", "/nowhere/a.jpg", "/nowhere/a.tif"}) {
        const std::string failure = failure_of([&] { read_picture_details(name); });
        EXPECT_EQ(failure.rfind("cannot read the picture " + name + ": ", 0), 0U) << failure;
    }
}

}  // namespace
