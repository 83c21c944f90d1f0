// The processors of a module, read from the beginning of its file. Codes are those of the formats'
// own descriptions.
#include "read_slices.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace std::string_literals;

/// The keys of the slices, one behind the other; "none of these" for other files.
std::string keys(const std::string& head) {
    const auto slices = bundle::slices_of(head);
    if (!slices) {
        return "none of these";
    }
    std::string keys;
    for (const bundle::Processor* processor : *slices) {
        keys += (keys.empty() ? "" : " ") + std::string(processor->key);
    }
    return keys;
}

const std::string kX86_64 = "\1\0\0\7"s;
const std::string kArm64 = "\1\0\0\xC"s;
const std::string kPowerPc = "\0\0\0\x12"s;

/// A slice's record: processor, its kind, offset, size, alignment.
std::string record(const std::string& processor) { return processor + std::string(16, '\0'); }

std::string elf(char order, const std::string& machine) {
    return "\x7F"
           "ELF\2"s +
           order + std::string(12, '\0') + machine;
}

}  // namespace

TEST(Slices, OfAFileForSeveralProcessorsComeInTheOrderOfTheKeys) {
    const std::string several = "\xCA\xFE\xBA\xBE\0\0\0\2"s;
    EXPECT_EQ(keys(several + record(kArm64) + record(kX86_64)), "mi64 ma64");
    EXPECT_EQ(keys(several + record("\0\0\0\7"s) + record(kPowerPc)), "mi32");
    EXPECT_EQ(keys(several + record(kX86_64)), "mi64") << "cut short";
    EXPECT_EQ(keys("\xCA\xFE\xBA\xBE\0\0\0\0"s), "");
    EXPECT_EQ(keys("\xCA\xFE\xBA\xBE\xFF\xFF\xFF\xFF"s + record(kArm64)), "ma64")
        << "no such count";
    const std::string wide = std::string(28, '\0');
    EXPECT_EQ(keys("\xCA\xFE\xBA\xBF\0\0\0\2"s + kX86_64 + wide + kArm64 + wide), "mi64 ma64");
}

TEST(Slices, OfAPlainFileAreOne) {
    EXPECT_EQ(keys("\xCF\xFA\xED\xFE\7\0\0\1"s), "mi64");
    EXPECT_EQ(keys("\xCF\xFA\xED\xFE\xC\0\0\1"s), "ma64");
    EXPECT_EQ(keys("\xCE\xFA\xED\xFE\7\0\0\0"s), "mi32");
    EXPECT_EQ(keys(elf('\1', "\x3E\0"s)), "mi64");
    EXPECT_EQ(keys(elf('\1', "\3\0"s)), "mi32");
    EXPECT_EQ(keys(elf('\1', "\xB7\0"s)), "ma64");
    EXPECT_EQ(keys(elf('\2', "\0\x16"s)), "") << "another processor, big-endian";
}

TEST(Slices, AreNotLookedForInOtherFiles) {
    EXPECT_EQ(keys(""), "none of these");
    EXPECT_EQ(keys("MZ\x90"s + std::string(61, '\0')), "none of these");
    EXPECT_EQ(keys("#!/bin/sh\n"), "none of these");
    EXPECT_EQ(keys("\xCF\xFA\xED"s), "none of these");
}
