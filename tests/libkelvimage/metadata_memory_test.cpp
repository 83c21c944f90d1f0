// The record of an image when there is no memory: the n-th request is refused, for every n until
// the work succeeds. Leaks are for the sanitizer to find.
//
// Texts are shorter than the smallest request that is refused from the C allocator: copies of a
// `String` never report a want of memory, as that class has it; everything that grows does.
#include <base/exceptions.h>
#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <string>

#include "metadata.h"
#include "support/failing_allocator.h"

namespace {

// The first allocation of anything that grows is of this size or more.
constexpr std::size_t kSmallestGrowth = 32;

void fill(MetaData& record) {
    set_float(record, "gain", 0.5F);
    set_string(record, "title", "Winter sky");
    set_matrix(record, "camera", counting_matrix());
    mark_written(record, "camera", 17);
}

const char kText[] =
    "KELVMETA1 float:a=1 string:b=\"x y\" m44f:c=\"1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1\" float:a=2";

enum class Refuser { New, Growth };

/// Does the work on a fresh record with the n-th request refused, for every n until it succeeds.
/// After each failure `check` sees the record. The number of failures.
int refuse_each(Refuser refuser, const std::function<void(ImageSpec&)>& prepare,
                const std::function<void(ImageSpec&)>& work,
                const std::function<void(const ImageSpec&)>& check) {
    for (unsigned int n = 0; n < 1000; ++n) {
        ImageSpec spec(4, 4, ImageSpec::BGRA_U8);
        prepare(spec);
        bool failed = false;
        {
            FailingAllocator allocator;
            if (refuser == Refuser::New) {
                allocator.refuse_new_after(n);
            } else {
                allocator.refuse_above(kSmallestGrowth - 1, n);
            }
            try {
                work(spec);
            } catch (const std::bad_alloc&) {
                failed = true;
                EXPECT_EQ(refuser, Refuser::New);
            } catch (const StrXception& failure) {
                failed = true;
                EXPECT_EQ(refuser, Refuser::Growth);
                // The text itself may want for memory.
                EXPECT_TRUE(failure.message().len() == 0 ||
                            failure.message().find("out of memory") == 0)
                    << failure.message().c_str();
            }
        }
        if (!failed) {
            return static_cast<int>(n);
        }
        check(spec);
        // And it works when there is memory again.
        work(spec);
    }
    ADD_FAILURE() << "never succeeded";
    return -1;
}

void without_record(ImageSpec& /*spec*/) {}
void with_empty_record(ImageSpec& spec) { spec.metadata.reset(new MetaData); }
void with_values(ImageSpec& spec) {
    with_empty_record(spec);
    fill(*spec.metadata);
}

void expect_values(const ImageSpec& spec) {
    MetaData expected;
    fill(expected);
    EXPECT_TRUE(*spec.metadata == expected);
    EXPECT_EQ(spec.metadata->lookup_entry(InString::intern("camera"))->value->position, 17);
    EXPECT_EQ(spec.width, 4);
    EXPECT_EQ(spec.format, ImageSpec::BGRA_U8);
}
void expect_no_value(const ImageSpec& spec) {
    EXPECT_TRUE(!spec.has_metadata() || spec.metadata->empty());
}
/// The first entries of the text, as far as it got.
void expect_beginning_of_text(const ImageSpec& spec) {
    MetaData expected;
    bool same = *spec.metadata == expected;
    set_float(expected, "a", 1);
    same = same || *spec.metadata == expected;
    set_string(expected, "b", "x y");
    same = same || *spec.metadata == expected;
    set_matrix(expected, "c", Matrix(1));
    same = same || *spec.metadata == expected;
    EXPECT_TRUE(same) << spec.metadata->stringify().c_str();
}

void set_new_name(ImageSpec& spec) {
    static int round = 0;
    // A name that was never interned.
    spec.set_meta("string", ("new " + std::to_string(round++)).c_str(), String("value"));
}
void ask_for_nothing(ImageSpec& spec) {
    float value = 0;
    EXPECT_EQ(spec.get_meta("float", "there is none", value), 1);
}
// Made before any allocator fails.
const ImageSpec kOther = [] {
    ImageSpec made(8, 8, ImageSpec::G_FLOAT);
    made.set_meta("string", "title", String("Lyra"));
    return made;
}();
void assign_another(ImageSpec& spec) { spec = kOther; }

const struct Work {
    const char* name;
    void (*prepare)(ImageSpec&);
    void (*work)(ImageSpec&);
    void (*check)(const ImageSpec&);
    // How often the work must at least have failed to have been tested.
    int of_new;
    int of_growth;
} kWorks[] = {
    // The record and its buckets, then the name and the entry.
    {"TheFirstValue", without_record, [](ImageSpec& spec) { spec.set_meta("float", "gain", 0.5F); },
     expect_no_value, 5, 0},
    {"ANewValue", with_values, set_new_name, expect_values, 3, 0},
    {"Replacing", with_values,
     [](ImageSpec& spec) { spec.set_meta("string", "title", String("Orion")); }, expect_values, 0,
     0},
    {"Updating", with_values,
     [](ImageSpec& spec) { spec.metadata->update_meta("m44f", "camera", Matrix(1)); },
     expect_values, 0, 0},
    {"AskingForNothing", with_values, ask_for_nothing, expect_values, 1, 0},
    // The record, its two blocks of buckets, an entry and a value for each of three.
    {"CopyingASpec", with_values, [](ImageSpec& spec) { const ImageSpec copy(spec); },
     expect_values, 9, 0},
    {"AssigningASpec", with_values, assign_another, expect_values, 5, 0},
    // Each value is formatted, the whole grows and is formatted.
    {"Stringify", with_values, [](ImageSpec& spec) { spec.metadata->stringify(); }, expect_values,
     0, 6},
    {"FromString", with_empty_record, [](ImageSpec& spec) { spec.metadata->from_string(kText); },
     expect_beginning_of_text, 9, 12},
};

class MetadataMemory : public testing::TestWithParam<Refuser> {};

TEST_P(MetadataMemory, IsRefusedToEveryWork) {
    for (const Work& work : kWorks) {
        SCOPED_TRACE(work.name);
        EXPECT_GE(refuse_each(GetParam(), work.prepare, work.work, work.check),
                  GetParam() == Refuser::New ? work.of_new : work.of_growth);
    }
}

TEST_P(MetadataMemory, IsNotNeededToCompare) {
    MetaData other;
    fill(other);
    EXPECT_EQ(refuse_each(
                  GetParam(), with_values,
                  [&](ImageSpec& spec) { EXPECT_TRUE(*spec.metadata == other); }, expect_values),
              0);
}

INSTANTIATE_TEST_SUITE_P(Of, MetadataMemory, testing::Values(Refuser::New, Refuser::Growth),
                         [](const auto& of) {
                             return of.param == Refuser::New ? "New" : "Growth";
                         });

}  // namespace
