#include "fingerprint.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "failure.h"
#include "support/scratch.h"

namespace {

using lumivar::Fingerprint;

std::string of_parts(const std::vector<std::pair<std::string, std::string>>& parts) {
    Fingerprint fingerprint;
    for (const auto& [name, value] : parts) {
        fingerprint.add(name, value);
    }
    return fingerprint.text();
}

TEST(Fingerprint, IsTheSameForTheSamePartsAlone) {
    EXPECT_EQ(of_parts({{"scene", "{}"}, {"frame", "7"}}),
              of_parts({{"scene", "{}"}, {"frame", "7"}}));
    EXPECT_EQ(of_parts({}).size(), 32U);
    EXPECT_NE(of_parts({{"scene", "{}"}}), of_parts({{"scene", "[]"}}));
    EXPECT_NE(of_parts({{"a", "x"}}), of_parts({{"b", "x"}}));
    EXPECT_NE(of_parts({{"a", "x"}, {"b", "y"}}), of_parts({{"b", "y"}, {"a", "x"}}));
    EXPECT_NE(of_parts({{"ab", "c"}}), of_parts({{"a", "bc"}}));
    EXPECT_NE(of_parts({{"a", ""}}), of_parts({}));
}

TEST(Fingerprint, OfAFileGoesByItsBytes) {
    const ScratchFolder folder;
    const std::string path = folder / "a";
    std::ofstream(path) << "";
    // XXH3_128bits of nothing, from the algorithm's published test values.
    EXPECT_EQ(lumivar::file_fingerprint(path), "99aa06d3014798d86001c324468d497f");
    std::ofstream(path) << std::string(1'000'000, 'a');
    const std::string before = lumivar::file_fingerprint(path);
    std::ofstream(path, std::ios::in).seekp(999'999).put('b');
    EXPECT_NE(lumivar::file_fingerprint(path), before);
}

TEST(Fingerprint, OfAFileThatCannotBeReadIsAFailureThatNamesIt) {
    try {
        lumivar::file_fingerprint("/nowhere/a.stars");
        FAIL();
    } catch (const lumivar::Failure& failure) {
        EXPECT_EQ(std::string(failure.what()),
                  "cannot read /nowhere/a.stars: No such file or directory");
    }
}

}  // namespace
