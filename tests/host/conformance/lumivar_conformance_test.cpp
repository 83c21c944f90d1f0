// The plug-in as it ships, with its registration, against everything that a host may ask and do.
#include <AE/registration.h>
#include <conformance/deviations.h>
#include <conformance/examine.h>
#include <gtest/gtest.h>
#include <support/scratch.h>

#include <filesystem>
#include <map>
#include <set>
#include <string>

#include "report_support.h"
#include "starry.h"

namespace {

namespace fs = std::filesystem;
using conformance::Report;
using conformance::Verdict;
using report_support::failing;
using report_support::row;
using report_support::showing;

using Ids = std::set<std::string>;

Report examine(const fs::path& bundle) {
    conformance::Options options;
    options.time_limit = report_support::kPatience;
    return conformance::examine(bundle, options);
}

/// The whole bundle as it is built, registration included.
class Conformance : public testing::Test {
protected:
    Conformance() {
        const fs::path built = fs::path(LUMIVAR_MODULE).parent_path().parent_path().parent_path();
        fs::copy(built, bundle(), fs::copy_options::recursive);
        support::write_catalogue(root / "sky.stars", support::VERSION_2, starry::few_stars());
    }

    fs::path bundle() const { return root / "Lumivar.plugin"; }
    fs::path resource() const { return bundle() / "Contents/Resources/Lumivar.rsrc"; }

    /// Changes bytes of the registration to others, as many.
    void change_resource(const std::string& from, const std::string& to) {
        std::string bytes = read_file(resource());
        const std::size_t at = bytes.find(from);
        ASSERT_NE(at, std::string::npos);
        write_file(resource(), bytes.replace(at, from.size(), to));
    }

    ScratchFolder root;
};

/// Where each habit shows. Worked out from what the effect does: a frame's host calls in order are
/// the flag query's parameter, sixteen parameters, the camera's nine, the layer, its pixels, the
/// output, the world suite, the pixel format, the release and the check-in.
const std::map<std::string, Ids> kExpected = {
    {"parameters not checked in again", {"frames.parameters"}},
    {"popup default 0", {"controls.popup-defaults"}},
    {"choice count", {"controls.choice-counts"}},
    {"handle left in the render record", {"frames.record"}},
    // All but those of the layer at pre-render and of the flag query, which are passed on, and of a
    // suite of the camera or of the handler that comes last, which end with 516.
    {"status 0 after a failed frame",
     {"faults.frame.AEGP_ConvertEffectToCompTime", "faults.frame.AEGP_GetCompShutterFrameRange",
      "faults.frame.AEGP_GetEffectCamera", "faults.frame.AEGP_GetEffectLayer",
      "faults.frame.AEGP_GetItemDimensions", "faults.frame.AEGP_GetItemFromComp",
      "faults.frame.AEGP_GetLayerParentComp", "faults.frame.AEGP_GetLayerStreamValue",
      "faults.frame.AEGP_GetLayerToWorldXform", "faults.frame.AcquireSuite",
      "faults.frame.missing-PF-World-Suite", "faults.frame.PF_GetPixelFormat",
      "faults.frame.checkin_layer_pixels", "faults.frame.checkout_layer_pixels",
      "faults.frame.checkout_output", "faults.frame.checkout_param"}},
    // Whatever comes before the suite, and the suite itself.
    {"world suite released though not held",
     {"faults.frame.AcquireSuite", "faults.frame.missing-PF-World-Suite",
      "faults.frame.checkout_layer_pixels", "faults.frame.checkout_output"}},
    {"layer checked in after a failed fetch", {"faults.frame.checkout_layer_pixels"}},
    // The flag query comes before each kind of frame.
    {"parameter checked in after a failed checkout",
     {"faults.frame.checkout_param", "faults.plain-8-bit.checkout_param",
      "faults.plain-16-bit.checkout_param", "faults.premiere.checkout_param"}},
};

TEST_F(Conformance, HasNoFailureAndExactlyTheListedDeviations) {
    const Report report = examine(bundle());
    EXPECT_EQ(report.match_name, registration::kMatchName);
    for (const std::string& id : failing(report)) {
        ADD_FAILURE() << id << ": " << row(report, id).answer;
    }
    EXPECT_EQ(report.unexamined, std::vector<std::string>{});
    Ids listed;
    Ids with_deviations;
    for (const conformance::Deviation& deviation :
         conformance::deviations_of(registration::kMatchName)) {
        const std::string name(deviation.name);
        listed.insert(name);
        ASSERT_EQ(kExpected.count(name), 1U) << name;
        EXPECT_EQ(showing(report, name), kExpected.at(name)) << name;
        with_deviations.insert("kept." + name);
        with_deviations.insert(kExpected.at(name).begin(), kExpected.at(name).end());
    }
    EXPECT_EQ(listed.size(), kExpected.size());
    Ids kept;
    for (const conformance::Row& one : report.rows) {
        if (one.verdict == Verdict::Deviation) {
            kept.insert(one.id);
        }
    }
    EXPECT_EQ(kept, with_deviations);
}

TEST_F(Conformance, FailsForTheSameHabitsUnderAnotherName) {
    change_resource("Lumivar Star Field", "Lumivar Star Chart");
    const Report report = examine(bundle());
    Ids habits;
    for (const auto& [name, ids] : kExpected) {
        habits.insert(ids.begin(), ids.end());
    }
    EXPECT_EQ(failing(report), habits);
    EXPECT_EQ(report.count(Verdict::Deviation), 0U);
}

TEST_F(Conformance, NoticesARegistrationThatSaysOtherwise) {
    // Version, flags and second flags, as they stand in the resource behind their keys and lengths.
    using namespace std::string_literals;
    change_resource("eVER\0\0\0\0\0\0\0\4\0\x10\0\1"s, "eVER\0\0\0\0\0\0\0\4\0\x10\0\2"s);
    change_resource("eGLO\0\0\0\0\0\0\0\4\3\x08"s, "eGLO\0\0\0\0\0\0\0\4\1\x08"s);
    change_resource("eGL2\0\0\0\0\0\0\0\4\0\0\x14\7"s, "eGL2\0\0\0\0\0\0\0\4\0\0\x14\3"s);
    write_file(bundle() / "Contents/PkgInfo", "eFKTFXTC\n");
    const Report report = examine(bundle());
    EXPECT_EQ(failing(report), (Ids{"setup.registered-version", "setup.registered-flags",
                                    "setup.registered-flags2", "bundle.package-info"}));
    EXPECT_EQ(row(report, "setup.registered-flags").answer,
              "declared 0x03080000, registered 0x01080000");
}

TEST_F(Conformance, NoticesABrokenBundle) {
    fs::remove(bundle() / "Contents/Info.plist");
    write_file(resource(), read_file(resource()).substr(0, 300));
    const Report report = examine(bundle());
    EXPECT_EQ(failing(report).count("bundle.info-list"), 1U);
    EXPECT_EQ(row(report, "bundle.info-list").answer, "there is none");
    EXPECT_EQ(failing(report).count("bundle.resource"), 1U);
    fs::remove(resource());
    EXPECT_EQ(row(examine(bundle()), "bundle.resource").answer,
              "there is no Resources/Lumivar.rsrc");
}

TEST_F(Conformance, SaysWhyWithoutADatabase) {
    fs::remove(root / "sky.stars");
    const Report report = examine(bundle());
    EXPECT_NE(row(report, "setup.session").answer.find("Cannot locate any Lumivar star database"),
              std::string::npos);
}

/// A list that promises more than the effect does is wrong as well.
TEST_F(Conformance, FailsForListedDeviationsThatDoNotShow) {
    fs::copy_file(CONFORMING_EFFECT, bundle() / "Contents/MacOS/Lumivar",
                  fs::copy_options::overwrite_existing);
    const Report report = examine(bundle());
    Ids expected = {"setup.registered-version"};  // its flags are the same
    for (const auto& [name, ids] : kExpected) {
        expected.insert("kept." + name);
    }
    EXPECT_EQ(failing(report), expected);
}

}  // namespace
