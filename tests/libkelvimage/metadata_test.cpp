// The record of values: setting, reading, visiting, comparing and copying it, also with its spec.
#include "metadata.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "support/captured_output.h"
#include "support/expect_throw.h"

namespace {

using Kelv::MetaInfo;
using Kelv::MetaInfoRef;
using Kelv::new_MetaInfo;
using Kelv::TypedInfo;

/// A value of a type that the record knows nothing of.
class OddInfo : public MetaInfo {
public:
    explicit OddInfo(int v) : value(v) {}
    const char* type_str() const override { return "odd"; }
    int type() const override { return 3; }
    MetaInfo* copy() const override { return new OddInfo(*this); }
    String stringify() const override { return String::fmt("%d", value); }
    int value;
};

// Where the virtual table has a function, counted in entries from that of another: pointers to
// virtual members begin with the offset in bytes in the common C++ ABI.
template <class First, class Second>
std::ptrdiff_t slots_between(First first, Second second) {
    std::ptrdiff_t a = 0;
    std::ptrdiff_t b = 0;
    std::memcpy(&a, &first, sizeof a);
    std::memcpy(&b, &second, sizeof b);
    return (b - a) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

TEST(MetaInfo, HasItsVirtualFunctionsInTheOrderOfTheContract) {
    EXPECT_EQ(slots_between(&MetaInfo::type_str, &MetaInfo::type), 1);
    EXPECT_EQ(slots_between(&MetaInfo::type_str, &MetaInfo::copy), 2);
    EXPECT_EQ(slots_between(&MetaInfo::type_str, &MetaInfo::stringify), 3);
    // The first of all is the first of the table: its offset is 0, marked as virtual by one more.
    std::ptrdiff_t first = 0;
    const auto type_str = &MetaInfo::type_str;
    std::memcpy(&first, &type_str, sizeof first);
    EXPECT_EQ(first, 1);
    static_assert(std::has_virtual_destructor_v<MetaInfo>);
    static_assert(std::is_abstract_v<MetaInfo>);
    using Visitor = ImageSpec::MetaVisitor;
    EXPECT_EQ(slots_between(&Visitor::float_meta, &Visitor::string_meta), 1);
    EXPECT_EQ(slots_between(&Visitor::float_meta, &Visitor::matrix_meta), 2);
}

TEST(TypedInfo, TellsItsType) {
    EXPECT_EQ(TypedInfo<float>(1.0F).type(), 0);
    EXPECT_STREQ(TypedInfo<float>(1.0F).type_str(), "float");
    EXPECT_EQ(TypedInfo<String>("a").type(), 1);
    EXPECT_STREQ(TypedInfo<String>("a").type_str(), "string");
    EXPECT_EQ(TypedInfo<Matrix>(Matrix(1)).type(), 2);
    EXPECT_STREQ(TypedInfo<Matrix>(Matrix(1)).type_str(), "m44f");
}

TEST(TypedInfo, IsMadeWithItsOwnTypeWordOnly) {
    const scoped_ptr<TypedInfo<float>> info(new_MetaInfo("float", 2.5F));
    EXPECT_EQ(info->value, 2.5F);
    EXPECT_EQ(info->position, 0);
    const std::string condition = "!strcmp(type, ret->type_str())";
    EXPECT_EQ(failed_assertion([] { new_MetaInfo("string", 2.5F); }), condition);
    EXPECT_EQ(failed_assertion([] { new_MetaInfo("m44f", String("a")); }), condition);
    EXPECT_EQ(failed_assertion([] { new_MetaInfo("", Matrix(1)); }), condition);
}

TEST(TypedInfo, CopiesValueAndPosition) {
    TypedInfo<String> info("Orion");
    info.position = 0x123456789ALL;
    const scoped_ptr<MetaInfo> copy(info.copy());
    info.value = "Lyra";
    EXPECT_STREQ(dynamic_cast<TypedInfo<String>&>(*copy).value.c_str(), "Orion");
    EXPECT_EQ(copy->position, 0x123456789ALL);
}

TEST(MetaInfoRef, OwnsAValueAndCopiesIt) {
    MetaInfoRef ref(new_MetaInfo("float", 1.0F));
    const MetaInfoRef copy(ref);
    EXPECT_NE(copy.get(), ref.get());
    MetaInfoRef other(new_MetaInfo("string", String("a")));
    other = ref;
    EXPECT_NE(other.get(), ref.get());
    EXPECT_STREQ(other->type_str(), "float");
    ref->position = 7;
    ref = *&ref;
    EXPECT_EQ(ref->position, 7);
    EXPECT_EQ(copy->position, 0);
}

TEST(MetaData, SetsAndGetsEveryType) {
    MetaData record;
    set_float(record, "gain", 0.5F);
    set_string(record, "title", "Winter sky");
    set_matrix(record, "camera", counting_matrix());
    EXPECT_EQ(float_of(record, "gain"), 0.5F);
    EXPECT_EQ(string_of(record, "title"), "Winter sky");
    Matrix camera(0.0F);
    EXPECT_EQ(record.get_meta("m44f", "camera", camera), 0);
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(camera(i / 4, i % 4), static_cast<float>(i + 1));
    }
}

TEST(MetaData, ReplacesAValueOfTheSameType) {
    MetaData record;
    set_string(record, "title", "Orion");
    set_string(record, "title", "");
    EXPECT_EQ(string_of(record, "title"), "");
    set_string(record, "title", "Lyra");
    EXPECT_EQ(string_of(record, "title"), "Lyra");
    Visits visits;
    record.for_each_meta(visits);
    EXPECT_EQ(visits.seen, std::vector<std::string>{"string title Lyra @0"});
}

TEST(MetaData, TakesAnyName) {
    MetaData record;
    const char* const names[] = {"", " ", "a b", "a=b", "a:b", "\"", "\\", "\n", "\xC3\xA9"};
    float number = 0;
    for (const char* name : names) {
        set_float(record, name, ++number);
    }
    number = 0;
    for (const char* name : names) {
        EXPECT_EQ(float_of(record, name), ++number) << name;
    }
}

TEST(MetaData, KeepsTheTypeOfAName) {
    MetaData record;
    set_float(record, "gain", 0.5F);
    mark_written(record, "gain", 4);
    // The type is looked at before the position.
    expect_failure(thrown_message([&] { set_string(record, "gain", "a"); }),
                   "metadata tag 'gain' already present but with type 'float' not 'string'",
                   "set_meta");
    expect_failure(thrown_message([&] { set_matrix(record, "gain", Matrix(1)); }),
                   "metadata tag 'gain' already present but with type 'float' not 'm44f'",
                   "set_meta");
    EXPECT_EQ(float_of(record, "gain"), 0.5F);
}

TEST(MetaData, DoesNotSetWhatWasWritten) {
    for (const s64 position : {s64{1}, s64{1} << 40, s64{-1}}) {
        MetaData written;
        set_float(written, "gain", 0.5F);
        mark_written(written, "gain", position);
        expect_failure(thrown_message([&] { set_float(written, "gain", 0.25F); }),
                       "no updates allowed after writing to file, use update_meta", "set_meta");
        EXPECT_EQ(float_of(written, "gain"), 0.5F);
    }
}

TEST(MetaData, UpdatesWhatWasWrittenAndTellsWhere) {
    MetaData record;
    set_float(record, "gain", 0.5F);
    set_string(record, "title", "Orion");
    set_matrix(record, "camera", Matrix(1));
    mark_written(record, "gain", 17);
    mark_written(record, "title", s64{1} << 40);
    mark_written(record, "camera", 99);
    EXPECT_EQ(record.update_meta("float", "gain", 0.25F), 17);
    EXPECT_EQ(record.update_meta("string", "title", String("Lyra")), s64{1} << 40);
    EXPECT_EQ(record.update_meta("m44f", "camera", Matrix(2)), 99);
    EXPECT_EQ(float_of(record, "gain"), 0.25F);
    EXPECT_EQ(string_of(record, "title"), "Lyra");
    EXPECT_EQ(matrix_of(record, "camera")(3, 3), 2.0F);
    // Still written there.
    EXPECT_EQ(record.update_meta("float", "gain", 0.125F), 17);
}

TEST(MetaData, UpdatesNothingElse) {
    MetaData record;
    set_float(record, "gain", 0.5F);
    expect_failure(thrown_message([&] { record.update_meta("float", "grain", 1.0F); }),
                   "metadata tag 'grain' does not exist", "update_meta");
    // Before the type is looked at.
    expect_failure(thrown_message([&] { record.update_meta("string", "gain", String("a")); }),
                   "metadata tag 'gain' was never written to file", "update_meta");
    mark_written(record, "gain", 17);
    expect_failure(thrown_message([&] { record.update_meta("string", "gain", String("a")); }),
                   "metadata tag 'gain' already present but with type 'float' not 'string'",
                   "update_meta");
    EXPECT_EQ(float_of(record, "gain"), 0.5F);
}

TEST(MetaData, GetsOneForANameThatIsNotThereAndDoesNotInternIt) {
    const MetaData record;
    String value("untouched");
    EXPECT_EQ(
        output_of(stderr, [&] { EXPECT_EQ(record.get_meta("string", "asked-only", value), 1); }),
        "");
    EXPECT_STREQ(value.c_str(), "untouched");
    EXPECT_TRUE(TempInString("asked-only").temporary());
}

TEST(MetaData, WarnsAndGetsTwoForAnotherType) {
    MetaData record;
    set_float(record, "gain", 0.5F);
    String value("untouched");
    const std::string warning =
        output_of(stderr, [&] { EXPECT_EQ(record.get_meta("string", "gain", value), 2); });
    const std::string start =
        "warning: metadata type mismatch; wanted string got float in <int "
        "Kelv::ImageSpec::MetaData::get_meta(";
    EXPECT_EQ(warning.substr(0, start.size()), start);
    EXPECT_EQ(warning.substr(warning.size() - 2), ">\n");
    EXPECT_STREQ(value.c_str(), "untouched");
}

TEST(MetaData, RefusesATypeWordThatIsNotTheValues) {
    MetaData record;
    EXPECT_EQ(failed_assertion([&] { record.set_meta("string", "gain", 0.5F); }),
              "!strcmp(type, ret->type_str())");
    float value = 0.25F;
    EXPECT_EQ(record.get_meta("float", "gain", value), 1);
    // Also where the word is that of the stored value.
    set_string(record, "title", "Orion");
    EXPECT_EQ(failed_assertion([&] { record.set_meta("string", "title", 0.5F); }),
              "found != nullptr");
    EXPECT_EQ(failed_assertion([&] { record.get_meta("string", "title", value); }),
              "found != nullptr");
    mark_written(record, "title", 5);
    EXPECT_EQ(failed_assertion([&] { record.update_meta("string", "title", 0.5F); }),
              "found != nullptr");
    EXPECT_EQ(string_of(record, "title"), "Orion");
    EXPECT_EQ(value, 0.25F);
}

TEST(MetaData, ShowsEachValueToAVisitor) {
    MetaData record;
    set_float(record, "gain", 0.5F);
    set_string(record, "title", "Winter sky");
    set_matrix(record, "camera", counting_matrix());
    mark_written(record, "title", 41);
    Visits visits;
    record.for_each_meta(visits);
    std::sort(visits.seen.begin(), visits.seen.end());
    EXPECT_EQ(visits.seen, (std::vector<std::string>{"float gain 0.5 @0", "m44f camera ..16 @0",
                                                     "string title Winter sky @41"}));
    // What the visitor did to the positions stays.
    EXPECT_EQ(record.update_meta("string", "title", String("Orion")), 42);
    EXPECT_EQ(record.update_meta("float", "gain", 0.25F), 1);
}

TEST(MetaData, ShowsNoValueOfUnknownTypeAndComparesItByItsText) {
    MetaData a;
    MetaData b;
    MetaData c;
    a.insert(InString::intern("strange"), MetaInfoRef(new OddInfo(1)));
    b.insert(InString::intern("strange"), MetaInfoRef(new OddInfo(1)));
    c.insert(InString::intern("strange"), MetaInfoRef(new OddInfo(2)));
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a == c);
    Visits visits;
    expect_failure(thrown_message([&] { a.for_each_meta(visits); }), "unhandled type 'odd'",
                   "for_each_meta");
    EXPECT_TRUE(visits.seen.empty());
}

TEST(MetaData, IsEqualByNamesTypesAndValues) {
    MetaData a;
    MetaData b;
    const auto expect_equal = [&](bool equal) {
        EXPECT_EQ(a == b, equal);
        EXPECT_EQ(b == a, equal);
        EXPECT_EQ(a != b, !equal);
    };
    expect_equal(true);
    set_float(a, "gain", 0.5F);
    expect_equal(false);
    set_float(b, "gain", 0.5F);
    expect_equal(true);
    set_float(b, "gain", 0.25F);
    expect_equal(false);
    set_float(b, "gain", 0.5F);
    set_string(b, "title", "Orion");
    expect_equal(false);
    set_string(a, "title", "orion");
    expect_equal(false);
    set_string(a, "title", "Orion");
    expect_equal(true);
    // Where a value is written in a file does not count.
    mark_written(a, "gain", 17);
    expect_equal(true);
    set_matrix(a, "camera", counting_matrix());
    Matrix other = counting_matrix();
    other(2, 1) = 0;
    set_matrix(b, "camera", other);
    expect_equal(false);
    set_matrix(b, "camera", counting_matrix());
    expect_equal(true);
    set_float(a, "value", 1.0F);
    set_string(b, "value", "1");
    expect_equal(false);
}

TEST(MetaData, IsEqualWhateverTheOrder) {
    MetaData a;
    MetaData b;
    // More names than chains: some share one, in the order in which they came.
    for (int i = 0; i < 100; ++i) {
        set_float(a, ("name" + std::to_string(i)).c_str(), static_cast<float>(i));
        set_float(b, ("name" + std::to_string(99 - i)).c_str(), static_cast<float>(99 - i));
    }
    EXPECT_TRUE(a == b);
}

TEST(MetaData, ComparesNumbersAsSuchAndNotANumberAsEqualToItsKind) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const struct {
        float a;
        float b;
        bool equal;
    } table[] = {{0.0F, -0.0F, true}, {nan, -nan, true}, {nan, 1.0F, false}, {1.0F, nan, false}};
    for (const auto& row : table) {
        MetaData a;
        MetaData b;
        set_float(a, "value", row.a);
        set_float(b, "value", row.b);
        EXPECT_EQ(a == b, row.equal) << row.a << " " << row.b;
        MetaData c;
        MetaData d;
        set_matrix(c, "value", Matrix(row.a));
        set_matrix(d, "value", Matrix(row.b));
        EXPECT_EQ(c == d, row.equal) << row.a << " " << row.b;
    }
}

TEST(MetaData, CopiesAreIndependent) {
    MetaData source;
    set_float(source, "gain", 0.5F);
    set_string(source, "title", "Orion");
    set_matrix(source, "camera", counting_matrix());
    mark_written(source, "camera", 17);
    MetaData copy(source);
    EXPECT_TRUE(copy == source);
    set_float(copy, "gain", 0.25F);
    set_string(source, "title", "Lyra");
    set_float(copy, "more", 1.0F);
    EXPECT_EQ(copy.update_meta("m44f", "camera", Matrix(2)), 17);
    EXPECT_EQ(float_of(source, "gain"), 0.5F);
    EXPECT_EQ(string_of(copy, "title"), "Orion");
    EXPECT_EQ(float_of(source, "more"), -12345.0F);
    EXPECT_EQ(matrix_of(source, "camera")(0, 1), 2.0F);
    // A copy has the order of its source.
    Visits of_source;
    Visits of_copy;
    const MetaData another(source);
    source.for_each_meta(of_source);
    another.for_each_meta(of_copy);
    EXPECT_EQ(of_source.seen, of_copy.seen);
}

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

TEST(ImageSpecMetadata, ForwardsEveryType) {
    ImageSpec spec(kSpec);
    spec.set_meta("string", "title", String("Orion"));
    spec.set_meta("m44f", "camera", counting_matrix());
    String title;
    Matrix camera(0.0F);
    EXPECT_EQ(spec.get_meta("string", "title", title), 0);
    EXPECT_EQ(spec.get_meta("m44f", "camera", camera), 0);
    EXPECT_STREQ(title.c_str(), "Orion");
    EXPECT_EQ(camera(3, 2), 15.0F);
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
    const Kelv::Image image(source);
    const ImageSpec* const copies[] = {&copy, &assigned, &image};
    for (const ImageSpec* spec : copies) {
        EXPECT_TRUE(*spec == source);
    }
    source.set_meta("string", "title", String("Lyra"));
    for (const ImageSpec* spec : copies) {
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

std::string printed(const ImageSpec& spec) {
    return output_of(stdout, [&] { spec.print(); });
}

TEST(ImageSpecMetadata, IsPrintedBehindTheSize) {
    const std::string size = "BGRA_U8        \t30 x 2";
    ImageSpec spec(kSpec);
    spec.metadata.reset(new MetaData);
    EXPECT_EQ(printed(spec), size);
    spec.set_meta("float", "gain", 0.5F);
    const std::string gain = " \"float gain\" [0.500000]";
    EXPECT_EQ(printed(spec), size + gain);
    // As it is, quotes and backslashes too.
    spec.set_meta("string", "the title", String("a \"b\" \\c"));
    const std::string title = " \"string the title\" [\"a \"b\" \\c\"]";
    const std::string both = printed(spec);
    EXPECT_TRUE(both == size + gain + title || both == size + title + gain) << both;
    ImageSpec with_matrix(kSpec);
    with_matrix.set_meta("m44f", "camera", counting_matrix());
    EXPECT_EQ(printed(with_matrix), size + " \"m44f camera\" [" + kCountingText + "]");
}

}  // namespace
