// The reader of macOS's files, by files that the tests make, whole and damaged.
#include "macho_file.h"

#include <gtest/gtest.h>

#include "made_image.h"

namespace {

using namespace macho;

const MadeImage kMade = {.imports = {"strlen", "abort"}};

std::string refusal(const std::string& file) {
    try {
        for (const Slice& slice : read_slices(view(file))) {
            read_image(bytes_of(view(file), slice));
        }
        return "";
    } catch (const FileError& error) {
        return error.what();
    }
}

std::string replaced(std::string file, std::size_t at, const std::string& by) {
    return file.replace(at, by.size(), by);
}

}  // namespace

TEST(MachOFile, SaysWhatItWasMadeOf) {
    const std::string file = kMade.bytes();
    const Image image = read_image(view(file));
    EXPECT_EQ(image.kind, kBundle);
    EXPECT_EQ(image.processor, own_processor());
    EXPECT_EQ(image.minimum_system, 0x000B0000U);
    EXPECT_EQ(image.platform, 1U);
    EXPECT_EQ(image.libraries, std::vector<std::string>{"/usr/lib/libSystem.B.dylib"});
    ASSERT_EQ(image.segments.size(), 3U);
    EXPECT_EQ(image.segments[1].name, "__DATA");
    EXPECT_EQ(image.segments[1].address, 0x4000U);
    EXPECT_EQ(image.segments[1].protection, 3U);
    EXPECT_EQ(image.end(), 0xC000U);
    ASSERT_NE(image.section("__DATA", "__mod_init_func"), nullptr);
    EXPECT_EQ(image.section("__DATA", "__mod_init_func")->address, 0x4010U);
    EXPECT_EQ(image.section("__TEXT", "__mod_init_func"), nullptr);
    EXPECT_EQ(image.rebases, (std::vector<std::uint64_t>{0x4008, 0x4010}));
    ASSERT_EQ(image.binds.size(), 2U);
    EXPECT_EQ(image.binds[0].symbol, "_strlen");
    EXPECT_EQ(image.binds[0].address, 0x4018U);
    EXPECT_EQ(image.binds[0].library, 1);
    EXPECT_EQ(image.binds[1].symbol, "_abort");
    EXPECT_EQ(image.binds[1].address, 0x4020U);
    ASSERT_EQ(image.exports.size(), 3U);
    EXPECT_EQ(image.exports[0].name, "_counter");
    EXPECT_EQ(image.exports[0].address, 0x400U);
    EXPECT_EQ(image.exports[2].name, "_call_abort");
}

TEST(MachOFile, UniversalFileHasASliceForEachProcessor) {
    const std::string file =
        universal({{Processor::X86_64, {"strlen"}}, {Processor::Arm64, {"abort"}}});
    const std::vector<Slice> slices = read_slices(view(file));
    ASSERT_EQ(slices.size(), 2U);
    EXPECT_EQ(slices[0].processor, Processor::X86_64);
    EXPECT_EQ(slices[0].offset, 4096U);
    EXPECT_EQ(slices[1].processor, Processor::Arm64);
    EXPECT_EQ(slices[1].offset, 8192U);
    const Image second = read_image(bytes_of(view(file), slices[1]));
    EXPECT_EQ(second.processor, Processor::Arm64);
    EXPECT_EQ(second.binds.at(0).symbol, "_abort");
}

TEST(MachOFile, CutAnywhereItIsRefused) {
    const std::string file = kMade.bytes();
    for (std::size_t length = 0; length < file.size(); ++length) {
        EXPECT_NE(refusal(file.substr(0, length)), "") << "cut to " << length;
    }
    EXPECT_EQ(refusal(file), "");
}

// Of what is damaged some is still read; nothing is read beyond the end, and everything ends.
TEST(MachOFile, DamagedAnywhereItIsReadOrRefused) {
    const std::string file = kMade.bytes();
    int refused = 0;
    for (std::size_t at = 0; at < file.size(); ++at) {
        for (const char* byte : {"\xFF", "\x80", "\x7F", "\x01"}) {
            refused += refusal(replaced(file, at, byte)).empty() ? 0 : 1;
        }
    }
    EXPECT_GT(refused, 100);
}

TEST(MachOFile, RefusalNamesThePlace) {
    const std::string file = kMade.bytes();
    EXPECT_EQ(refusal("#!/bin/sh\n"), "made: it is no Mach-O file of 64 bits");
    EXPECT_EQ(refusal(replaced(file, 4, "\x12")),
              "made: it is for processor 16777234, known are x86_64 and arm64");
    // The first command's size, behind the header of 32 bytes and the kind.
    EXPECT_EQ(refusal(replaced(file, 36, std::string("\x04\0", 2))),
              std::string("made: slice for ") + name_of(own_processor()) +
                  ": load commands: command 0 has a size of 4");
    // Its kind.
    EXPECT_EQ(refusal(replaced(file, 32, std::string("\x34\0\0\x80", 4))),
              std::string("made: slice for ") + name_of(own_processor()) +
                  ": load commands: command 0: chained fixups are not read here: link without "
                  "them");
}

TEST(MachOFile, SliceBeyondTheEndIsRefused) {
    std::string file = universal({kMade});
    file.resize(4096 + 100);
    EXPECT_NE(refusal(file).find("beyond the end"), std::string::npos) << refusal(file);
}
