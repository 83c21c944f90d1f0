#include "agreement.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "support/compare.h"

namespace processors {

namespace {

using support::Comparison;
using support::Picture;

/// The largest colour value; alpha does not count.
double peak(const Picture& picture) {
    double most = 0;
    for (std::size_t i = 0; i < picture.values.size(); ++i) {
        if (i % 4 != 0) {
            most = std::max(most, std::fabs(picture.values[i]));
        }
    }
    return most;
}

Comparison compare_light(const FrameFile& actual, const FrameFile& expected) {
    const double shortest = std::min(actual.shortest, expected.shortest);
    support::Limits limits;
    limits.per_value = std::max(kLightShare, kShortSegmentShare / shortest) * peak(expected.light);
    return support::compare(actual.light, expected.light, limits);
}

constexpr struct Depth {
    const char* name;
    Picture FrameFile::*codes;
    double full;
} DEPTHS[] = {{"8-bit", &FrameFile::codes_of_8, 255}, {"16-bit", &FrameFile::codes_of_16, 32768}};

/// The colour codes of all frames as one column of pixels of one value, so that shares count
/// values.
Picture codes(const std::vector<NamedFrame>& frames, const Depth& depth) {
    Picture all(1, 0, 1);
    for (const NamedFrame& one : frames) {
        const Picture& picture = one.frame.*depth.codes;
        for (std::size_t i = 0; i < picture.values.size(); ++i) {
            if (i % 4 != 0) {
                all.values.push_back(picture.values[i]);
            }
        }
    }
    all.height = static_cast<int>(all.values.size());
    return all;
}

/// One column above the other.
Picture joined(Picture above, const Picture& below) {
    above.values.insert(above.values.end(), below.values.begin(), below.values.end());
    above.height += below.height;
    return above;
}

/// How many codes of `depth` could have differed: those between black and full.
Comparison count_telling(const Picture& reference, const Depth& depth) {
    const auto telling = std::count_if(reference.values.begin(), reference.values.end(),
                                       [&](double code) { return code > 0 && code < depth.full; });
    return {telling >= kTellingCodes, std::to_string(telling) + " lie between black and full"};
}

}  // namespace

Agreement compare_frames(const std::vector<NamedFrame>& actual,
                         const std::vector<NamedFrame>& expected) {
    Agreement result;
    const auto same_name = [](const NamedFrame& a, const NamedFrame& b) {
        return a.name == b.name;
    };
    if (expected.empty() ||
        !std::equal(actual.begin(), actual.end(), expected.begin(), expected.end(), same_name)) {
        result.report.emplace_back("not the same frames, or none");
        return result;
    }
    result.passed = true;
    const auto note = [&](const std::string& what, const Comparison& comparison) {
        result.passed = result.passed && comparison.passed;
        result.report.push_back(what + (comparison.passed ? ": agrees, " : ": DIFFERS, ") +
                                comparison.report);
    };
    for (std::size_t i = 0; i < expected.size(); ++i) {
        note("light of " + expected[i].name, compare_light(actual[i].frame, expected[i].frame));
    }
    Picture all_actual(1, 0, 1);
    Picture all_expected(1, 0, 1);
    for (const Depth& depth : DEPTHS) {
        const Picture reference = codes(expected, depth);
        note(std::string(depth.name) + " codes", count_telling(reference, depth));
        all_expected = joined(std::move(all_expected), reference);
        all_actual = joined(std::move(all_actual), codes(actual, depth));
    }
    note("codes of both depths",
         support::compare(all_actual, all_expected,
                          {.per_value = 0, .share = kOtherCodes, .hard = 1}));
    return result;
}

}  // namespace processors
