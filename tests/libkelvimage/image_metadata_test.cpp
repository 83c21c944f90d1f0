// The record of values on a spec: made when it is wanted, copied, compared and printed with it.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

#include "metadata.h"
#include "support/captured_output.h"
#include "support/expect_throw.h"

namespace {

const ImageSpec kSpec(30, 2, ImageSpec::BGRA_U8);

TEST(ImageSpecMetadata, IsNoneUntilAValueIsSet) {
    ImageSpec spec(kSpec);
    EXPECT_FALSE(spec.has_metadata());
    float gain = 0.25F;
    EXPECT_EQ(spec.get_meta("float", "gain", gain), 1);
    EXPECT_EQ(gain, 0.25F);
    Visits visits;
    spec.for_each_meta(visits);
    EXPECT_TRUE(visits.seen.empty());
    spec.set_meta("float", "gain", 0.5F);
    EXPECT_TRUE(spec.has_metadata());
    EXPECT_EQ(spec.get_meta("float", "gain", gain), 0);
    EXPECT_EQ(gain, 0.5F);
    spec.for_each_meta(visits);
    EXPECT_EQ(visits.seen, std::vector<std::string>{"float gain 0.5 @0"});
}

TEST(ImageSpecMetadata, ForwardsEveryTypeAndEveryFault) {
    ImageSpec spec(kSpec);
    spec.set_meta("string", "title", String("Orion"));
    spec.set_meta("m44f", "camera", counting_matrix());
    String title;
    Matrix camera(0.0F);
    EXPECT_EQ(spec.get_meta("string", "title", title), 0);
    EXPECT_EQ(spec.get_meta("m44f", "camera", camera), 0);
    EXPECT_STREQ(title.c_str(), "Orion");
    EXPECT_EQ(camera(3, 2), 15.0F);
    expect_failure(thrown_message([&] { spec.set_meta("float", "title", 1.0F); }),
                   "metadata tag 'title' already present but with type 'string' not 'float'",
                   "set_meta");
    EXPECT_EQ(failed_assertion([&] { spec.set_meta("float", "new", String("a")); }),
              "!strcmp(type, ret->type_str())");
}

TEST(ImageSpecMetadata, LiesBehindTheNumbers) {
    const auto place = [](const void* member) { return static_cast<const char*>(member); };
    EXPECT_EQ(place(&kSpec.metadata) - place(&kSpec.format),
              static_cast<std::ptrdiff_t>(sizeof kSpec.format));
    EXPECT_EQ(sizeof kSpec, 16 + sizeof(void*));
}

TEST(ImageSpecMetadata, IsCopiedWithTheSpec) {
    ImageSpec source(kSpec);
    source.set_meta("string", "title", String("Orion"));
    ImageSpec copy(source);
    ImageSpec assigned;
    assigned = source;
    EXPECT_TRUE(copy == source);
    EXPECT_TRUE(assigned == source);
    source.set_meta("string", "title", String("Lyra"));
    for (const ImageSpec* spec : {&copy, &assigned}) {
        EXPECT_FALSE(*spec == source);
        EXPECT_EQ(string_of(*spec->metadata, "title"), "Orion");
    }
    copy = *&copy;
    EXPECT_EQ(string_of(*copy.metadata, "title"), "Orion");
    EXPECT_EQ(copy.width, 30);
    // Nothing replaces something.
    copy = kSpec;
    EXPECT_FALSE(copy.has_metadata());
    EXPECT_TRUE(copy == kSpec);
}

TEST(ImageSpecMetadata, CountsInTheComparisonOfSpecs) {
    ImageSpec none(kSpec);
    ImageSpec empty(kSpec);
    empty.metadata.reset(new MetaData);
    EXPECT_FALSE(none == empty);
    EXPECT_FALSE(empty == none);
    EXPECT_TRUE(none != empty);
    ImageSpec other_empty(kSpec);
    other_empty.metadata.reset(new MetaData);
    EXPECT_TRUE(empty == other_empty);
    empty.set_meta("float", "gain", 0.5F);
    EXPECT_FALSE(empty == other_empty);
    other_empty.set_meta("float", "gain", 0.5F);
    EXPECT_TRUE(empty == other_empty);
    other_empty.width = 31;
    EXPECT_FALSE(empty == other_empty);
}

TEST(ImageSpecMetadata, TravelsIntoAnImage) {
    ImageSpec spec(kSpec);
    spec.set_meta("float", "gain", 0.5F);
    const Kelv::Image image(spec);
    spec.set_meta("float", "gain", 0.25F);
    EXPECT_EQ(float_of(*image.metadata, "gain"), 0.5F);
}

std::string printed(const ImageSpec& spec) {
    return output_of(stdout, [&] { spec.print(); });
}

TEST(ImageSpecMetadata, IsPrintedBehindTheSize) {
    const std::string size = "BGRA_U8        \t30 x 2";
    ImageSpec with_float(kSpec);
    with_float.set_meta("float", "gain", 0.5F);
    EXPECT_EQ(printed(with_float), size + " \"float gain\" [0.500000]");
    ImageSpec with_string(kSpec);
    // As it is, quotes and backslashes too.
    with_string.set_meta("string", "the title", String("a \"b\" \\c"));
    EXPECT_EQ(printed(with_string), size + " \"string the title\" [\"a \"b\" \\c\"]");
    ImageSpec with_matrix(kSpec);
    with_matrix.set_meta("m44f", "camera", counting_matrix());
    EXPECT_EQ(printed(with_matrix),
              size +
                  " \"m44f camera\" [1.000000000e+00 2.000000000e+00 3.000000000e+00 "
                  "4.000000000e+00 5.000000000e+00 6.000000000e+00 7.000000000e+00 "
                  "8.000000000e+00 9.000000000e+00 1.000000000e+01 1.100000000e+01 "
                  "1.200000000e+01 1.300000000e+01 1.400000000e+01 1.500000000e+01 "
                  "1.600000000e+01]");
    ImageSpec empty(kSpec);
    empty.metadata.reset(new MetaData);
    EXPECT_EQ(printed(empty), size);
}

TEST(ImageSpecMetadata, IsPrintedEntryByEntry) {
    ImageSpec spec(kSpec);
    spec.set_meta("float", "a", 1.0F);
    spec.set_meta("float", "b", -2.25F);
    const std::string size = "BGRA_U8        \t30 x 2";
    const std::string a = " \"float a\" [1.000000]";
    const std::string b = " \"float b\" [-2.250000]";
    const std::string text = printed(spec);
    EXPECT_TRUE(text == size + a + b || text == size + b + a) << text;
}

}  // namespace
