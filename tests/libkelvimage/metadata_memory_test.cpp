// The record of an image when there is no memory: the n-th request is refused, for every n until
// the work succeeds. Leaks are for the sanitizer to find.
//
// Texts are shorter than the smallest request that is refused from the C allocator: copies of a
// `String` never report a want of memory, as that class has it; everything that grows does.
#include <base/exceptions.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <new>
#include <string>
#include <vector>

#include "metadata.h"
#include "support/failing_allocator.h"

namespace {

// The first allocation of anything that grows is of this size or more.
constexpr std::size_t kSmallestGrowth = 32;

/// The entries of a record in the order of their texts.
std::vector<std::string> entries_of(const MetaData& record) {
    std::vector<std::string> entries;
    class Collect final : public VoidPtrMap::ForEachFunc {
    public:
        explicit Collect(std::vector<std::string>& out) : out_(out) {}
        int void_call(VoidPtrMap::Entry* entry) override {
            const auto& tag = *static_cast<MetaData::Entry*>(entry);
            out_.push_back(std::string(tag.key()->text.c_str()) + "=" +
                           tag.value->stringify().c_str() + "@" +
                           std::to_string(tag.value->position));
            return 0;
        }

    private:
        std::vector<std::string>& out_;
    };
    Collect collect(entries);
    record.for_each_const(collect);
    std::sort(entries.begin(), entries.end());
    return entries;
}

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

class MetadataMemory : public testing::TestWithParam<Refuser> {
protected:
    static void with_values(ImageSpec& spec) {
        spec.metadata.reset(new MetaData);
        fill(*spec.metadata);
    }
    static void without(ImageSpec& /*spec*/) {}
    static void expect_values(const ImageSpec& spec) {
        MetaData expected;
        fill(expected);
        EXPECT_EQ(entries_of(*spec.metadata), entries_of(expected));
    }
    /// Of `new` and of growth: how often each work must at least have failed to have been tested.
    static void expect_failures(int failures, int of_new, int of_growth) {
        const int least = GetParam() == Refuser::New ? of_new : of_growth;
        EXPECT_GE(failures, least);
    }
};

TEST_P(MetadataMemory, TheFirstValue) {
    // The record and its buckets, then the name and the entry.
    const int failures = refuse_each(
        GetParam(), without, [](ImageSpec& spec) { spec.set_meta("float", "gain", 0.5F); },
        [](const ImageSpec& spec) {
            if (spec.has_metadata()) {
                EXPECT_TRUE(spec.metadata->empty());
            }
        });
    expect_failures(failures, 5, 0);
}

TEST_P(MetadataMemory, ANewValue) {
    int round = 0;
    const int failures = refuse_each(
        GetParam(), with_values,
        [&](ImageSpec& spec) {
            // A name that was never interned.
            const std::string name = "new " + std::to_string(round++);
            spec.set_meta("string", name.c_str(), String("value"));
        },
        expect_values);
    expect_failures(failures, 3, 0);
}

TEST_P(MetadataMemory, Replacing) {
    refuse_each(
        GetParam(), with_values,
        [](ImageSpec& spec) { spec.set_meta("string", "title", String("Orion")); }, expect_values);
    refuse_each(
        GetParam(), with_values,
        [](ImageSpec& spec) {
            EXPECT_EQ(spec.metadata->update_meta("m44f", "camera", Matrix(1)), 17);
        },
        expect_values);
}

TEST_P(MetadataMemory, AskingForANameThatIsNotThere) {
    const int failures = refuse_each(
        GetParam(), with_values,
        [](ImageSpec& spec) {
            float value = 0;
            EXPECT_EQ(spec.get_meta("float", "there is none", value), 1);
        },
        expect_values);
    expect_failures(failures, 1, 0);
}

TEST_P(MetadataMemory, CopyingASpec) {
    const int failures = refuse_each(
        GetParam(), with_values,
        [](ImageSpec& spec) {
            const ImageSpec copy(spec);
            EXPECT_NE(copy.metadata.get(), spec.metadata.get());
        },
        expect_values);
    // The record, its two blocks of buckets, an entry and a value for each of three.
    expect_failures(failures, 9, 0);
}

TEST_P(MetadataMemory, AssigningASpec) {
    ImageSpec other(8, 8, ImageSpec::G_FLOAT);
    other.set_meta("string", "title", String("Lyra"));
    const int failures = refuse_each(
        GetParam(), with_values, [&](ImageSpec& spec) { spec = other; },
        [](const ImageSpec& spec) {
            expect_values(spec);
            EXPECT_EQ(spec.width, 4);
            EXPECT_EQ(spec.format, ImageSpec::BGRA_U8);
        });
    expect_failures(failures, 5, 0);
}

TEST_P(MetadataMemory, Stringify) {
    const int failures = refuse_each(
        GetParam(), with_values, [](ImageSpec& spec) { spec.metadata->stringify(); },
        expect_values);
    // Each value is formatted, the whole grows and is formatted.
    expect_failures(failures, 0, 6);
}

TEST_P(MetadataMemory, FromString) {
    int of_work = 0;
    const int failures = refuse_each(
        GetParam(), [](ImageSpec& spec) { spec.metadata.reset(new MetaData); },
        [&](ImageSpec& spec) {
            ++of_work;
            spec.metadata->from_string(kText);
        },
        [](const ImageSpec& spec) {
            // The first entries, as far as it got.
            const std::vector<std::string> all = {
                "a=1@0", "b=\"x y\"@0",
                "c=\"1.000000000e+00 0.000000000e+00 0.000000000e+00 0.000000000e+00 "
                "0.000000000e+00 1.000000000e+00 0.000000000e+00 0.000000000e+00 "
                "0.000000000e+00 0.000000000e+00 1.000000000e+00 0.000000000e+00 "
                "0.000000000e+00 0.000000000e+00 0.000000000e+00 1.000000000e+00\"@0"};
            const std::vector<std::string> entries = entries_of(*spec.metadata);
            ASSERT_LE(entries.size(), all.size());
            EXPECT_TRUE(std::equal(entries.begin(), entries.end(), all.begin()));
        });
    expect_failures(failures, 9, 12);
    EXPECT_GT(of_work, failures);
}

TEST_P(MetadataMemory, Comparing) {
    MetaData other;
    fill(other);
    // Needs none.
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
