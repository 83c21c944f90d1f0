// The plug-in as it ships, with its registration, against everything that a host may ask and do.
#include <AE/registration.h>
#include <check/check.h>
#include <gtest/gtest.h>
#include <support/child.h>
#include <support/scratch.h>
#include <support/variable.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "modules/test_effect.h"
#include "report_support.h"
#include "starry.h"

namespace {

namespace fs = std::filesystem;
using check::Report;
using check::Verdict;
using namespace report_support;
using Texts = std::vector<std::string>;

/// The module's processor, one that it is not for, and their keys.
#if defined(__i386__)
const std::string kProcessor = "i386";
const std::string kKey = "mi32";
#elif defined(__aarch64__)
const std::string kProcessor = "arm64";
const std::string kKey = "ma64";
#else
const std::string kProcessor = "x86_64";
const std::string kKey = "mi64";
#endif
const std::string kOtherProcessor = kProcessor == "x86_64" ? "arm64" : "x86_64";
const std::string kOtherKey = kProcessor == "x86_64" ? "ma64" : "mi64";

/// The whole bundle as it is built, registration included.
class LumivarCheck : public testing::Test {
protected:
    LumivarCheck() {
        const fs::path built = fs::path(LUMIVAR_MODULE).parent_path().parent_path().parent_path();
        fs::copy(built, bundle(), fs::copy_options::recursive);
        support::write_catalogue(root / "sky.stars", support::kVersion2, starry::few_stars());
    }

    /// Rows that begin with `rows` alone.
    Report check(const std::string& rows = "") const { return check_rows(bundle(), rows); }
    fs::path bundle() const { return root / "Lumivar.plugin"; }
    fs::path resource() const { return bundle() / "Contents/Resources/Lumivar.rsrc"; }

    /// Changes bytes of the registration to others, as many.
    void change_resource(const std::string& from, const std::string& to) {
        ASSERT_EQ(from.size(), to.size());
        std::string bytes = read_file(resource());
        const std::size_t at = bytes.find(from);
        ASSERT_NE(at, std::string::npos);
        write_file(resource(), bytes.replace(at, from.size(), to));
    }

    /// A file of the bundle, as messages name it.
    std::string in_quotes(const std::string& file) const {
        return "\"" + (bundle() / file).string() + "\"";
    }
    std::string unreadable(const std::string& file, const std::string& reason) const {
        return "cannot read " + (bundle() / file).string() + ": " + reason;
    }

    ScratchFolder root;
};

Ids faults_of(const Ids& calls) {
    Ids rows;
    for (const std::string& call : calls) {
        rows.insert("faults." + call);
    }
    return rows;
}

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
     faults_of({"AEGP_ConvertEffectToCompTime", "AEGP_GetCompShutterFrameRange",
                "AEGP_GetEffectCamera", "AEGP_GetEffectLayer", "AEGP_GetItemDimensions",
                "AEGP_GetItemFromComp", "AEGP_GetLayerParentComp", "AEGP_GetLayerStreamValue",
                "AEGP_GetLayerToWorldXform", "AcquireSuite", "missing-PF-World-Suite",
                "PF_GetPixelFormat", "checkin_layer_pixels", "checkout_layer_pixels",
                "checkout_output", "checkout_param"})},
    // Whatever comes before the suite, and the suite itself.
    {"world suite released though not held",
     faults_of(
         {"AcquireSuite", "missing-PF-World-Suite", "checkout_layer_pixels", "checkout_output"})},
    {"layer checked in after a failed fetch", faults_of({"checkout_layer_pixels"})},
    // The flag query comes before each kind of frame, and alone.
    {"parameter checked in after a failed checkout",
     faults_of({"checkout_param", "set-up.checkout_param"})},
};

/// Whether a finding of this deviation tells these kinds of frame: "text (3 times in A, B and C,
/// ...".
bool names_kinds(const check::Row& row, const std::string& deviation, const std::string& kinds) {
    return std::any_of(row.findings.begin(), row.findings.end(), [&](const auto& finding) {
        const std::size_t at = finding.text.find(" times in " + kinds);
        return finding.deviation == deviation && at != std::string::npos &&
               std::string(",)").find(finding.text[at + 10 + kinds.size()]) != std::string::npos;
    });
}

TEST_F(LumivarCheck, HasNoFailureAndExactlyTheListedDeviations) {
    const Report report = check();
    EXPECT_EQ(report.match_name, registration::kMatchName);
    for (const std::string& id : failing(report)) {
        ADD_FAILURE() << id << ": " << row(report, id).answer;
    }
    EXPECT_EQ(unexamined(report), Texts{});
    Ids listed;
    Ids with_deviations;
    for (const check::Deviation& deviation : check::deviations_of(registration::kMatchName)) {
        const std::string name(deviation.name);
        listed.insert(name);
        ASSERT_EQ(kExpected.count(name), 1U) << name;
        EXPECT_EQ(showing(report, name), kExpected.at(name)) << name;
        with_deviations.insert("kept." + name);
        with_deviations.insert(kExpected.at(name).begin(), kExpected.at(name).end());
    }
    EXPECT_EQ(listed.size(), kExpected.size());
    Ids kept;
    for (const check::Row& one : report.rows) {
        if (one.verdict == Verdict::Kept) {
            kept.insert(one.id);
        }
    }
    EXPECT_EQ(kept, with_deviations);

    for (const auto& [deviation, ids] : kExpected) {
        const bool of_query = deviation == "parameter checked in after a failed checkout";
        for (const std::string& id : ids) {
            const std::string kinds =
                id == "faults.set-up.checkout_param" ? "After Effects and Premiere Pro"
                : of_query ? "8-bit, 16-bit, float, plain-8-bit, plain-16-bit, premiere, "
                             "premiere-16-bit and premiere-float"
                           : "8-bit, 16-bit and float";
            EXPECT_TRUE(id.rfind("faults.", 0) != 0 ||
                        names_kinds(row(report, id), deviation, kinds))
                << id << ", " << deviation << ": " << row(report, id).answer;
        }
    }
}

TEST_F(LumivarCheck, FailsForTheSameHabitsUnderAnotherName) {
    change_resource("Lumivar Star Field", "Lumivar Star Chart");
    const Report report = check();
    Ids habits;
    for (const auto& [name, ids] : kExpected) {
        habits.insert(ids.begin(), ids.end());
    }
    EXPECT_EQ(failing(report), habits);
    EXPECT_EQ(report.count(Verdict::Kept), 0U);
}

TEST_F(LumivarCheck, TakesTheFlagThatStandsInTheRegistrationAlone) {
    // That the resource's flags go before those of set-up.
    using namespace std::string_literals;
    change_resource("eGLO\0\0\0\0\0\0\0\4\3\x08"s, "eGLO\0\0\0\0\0\0\0\4\3\x88"s);
    const Report report = check("setup.registered");
    EXPECT_EQ(row(report, "setup.registered-flags").verdict, Verdict::Pass);
    EXPECT_EQ(row(report, "setup.registered-flags").answer,
              "declared 0x03080000, registered 0x03880000 with a bit that may differ");
}

TEST_F(LumivarCheck, NoticesARegistrationThatSaysOtherwise) {
    // Version, flags and second flags, as they stand in the resource behind their keys and lengths.
    using namespace std::string_literals;
    change_resource("eVER\0\0\0\0\0\0\0\4\0\x10\0\1"s, "eVER\0\0\0\0\0\0\0\4\0\x10\0\2"s);
    change_resource("eGLO\0\0\0\0\0\0\0\4\3\x08"s, "eGLO\0\0\0\0\0\0\0\4\1\x08"s);
    change_resource("eGL2\0\0\0\0\0\0\0\4\0\0\x14\7"s, "eGL2\0\0\0\0\0\0\0\4\0\0\x14\3"s);
    write_file(bundle() / "Contents/PkgInfo", "eFKTFXTC\n");
    const Report report = check();
    EXPECT_EQ(failing(report), (Ids{"setup.registered-version", "setup.registered-flags",
                                    "setup.registered-flags2", "bundle.package-info"}));
    EXPECT_EQ(row(report, "setup.registered-flags").answer,
              "declared 0x03080000, registered 0x01080000 as eGLO; write the same into both");
    EXPECT_EQ(
        row(report, "bundle.package-info").answer,
        in_quotes("Contents/PkgInfo") +
            ": holds 9 bytes, \"eFKTFXTC\\n\"; write the eight bytes eFKTFXTC, without a line "
            "feed");
}

TEST_F(LumivarCheck, NamesEachFileOfABrokenBundleThePlaceAndTheRemedy) {
    const std::string list = read_file(bundle() / "Contents/Info.plist");
    std::string wrong = list;
    wrong.replace(wrong.find("<string>eFKT<"), 12, "<string>APPL");
    wrong.replace(wrong.find("<key>CFBundleSignature"), 22, "<key>CFBundleNoSuch___");
    wrong.replace(wrong.find("<string>Lumivar</string>"), 24, "<true/>");
    write_file(bundle() / "Contents/Info.plist", wrong);
    write_file(resource(), read_file(resource()).substr(0, 300));
    const Report report = check("bundle.");
    const std::string name = in_quotes("Contents/Info.plist");
    // Four lines come before the first entry, the executable's, and each entry has two.
    EXPECT_EQ(texts(row(report, "bundle.info-list")),
              (Texts{name + ": line 13: CFBundlePackageType is \"APPL\"; write "
                            "<key>CFBundlePackageType</key><string>eFKT</string>",
                     name + ": has no CFBundleSignature; write "
                            "<key>CFBundleSignature</key><string>FXTC</string>",
                     name + ": line 5: CFBundleExecutable is no text; write "
                            "<key>CFBundleExecutable</key><string>Lumivar</string>"}));
    // The resources come first, behind the file's first 256 bytes; what is in the map is gone.
    const std::string answer = row(report, "bundle.resource").answer;
    EXPECT_EQ(answer.find(in_quotes("Contents/Resources/Lumivar.rsrc") +
                          ": the offset of the list of types, 2 bytes from byte "),
              0U)
        << answer;
    EXPECT_NE(answer.find(" on, reaches beyond the file, which ends at byte 300; build it from the "
                          "effect's property list (PiPL)"),
              std::string::npos)
        << answer;
}

TEST_F(LumivarCheck, ReadsNoEntriesInCommentsOfAPropertyListNorABinaryOne) {
    const std::string list = read_file(bundle() / "Contents/Info.plist");
    const std::string signature = "<key>CFBundleSignature</key>";
    ASSERT_NE(list.find(signature), std::string::npos);
    std::string wrong = list;
    wrong.replace(wrong.find(signature), signature.size(),
                  "<!-- none\nyet: " + signature + "\n<string>FXTC</string> --><key>Other</key>");
    wrong.replace(wrong.find("<string>eFKT<"), 12, "<!-- <string>eFKT</string> --><string>APPL");
    wrong.replace(wrong.find("<dict>"), 0, "<!-- of two\nlines -->");
    write_file(bundle() / "Contents/Info.plist", wrong);
    const std::string name = in_quotes("Contents/Info.plist");
    EXPECT_EQ(texts(row(check("bundle."), "bundle.info-list")),
              (Texts{name + ": line 14: CFBundlePackageType is \"APPL\"; write "
                            "<key>CFBundlePackageType</key><string>eFKT</string>",
                     name + ": has no CFBundleSignature; write "
                            "<key>CFBundleSignature</key><string>FXTC</string>"}));
    std::string commented = list;
    commented.replace(commented.find(signature), 0, "<!-- <key>CFBundleSignature</key> -->");
    write_file(bundle() / "Contents/Info.plist", commented + "<!-- without an end");
    EXPECT_EQ(failing(check("bundle.")), Ids{});
    write_file(bundle() / "Contents/Info.plist", "bplist00\xD1\1\2");
    EXPECT_EQ(row(check("bundle."), "bundle.info-list").answer,
              name +
                  ": is a binary property list, which cannot be read here; turn it into XML with "
                  "plutil -convert xml1");
}

TEST_F(LumivarCheck, NamesEachFileThatABundleLacks) {
    fs::remove(bundle() / "Contents/Info.plist");
    fs::remove(bundle() / "Contents/PkgInfo");
    fs::remove(resource());
    fs::create_directory(resource());
    const Report report = check("bundle.");
    EXPECT_EQ(row(report, "bundle.info-list").answer,
              unreadable("Contents/Info.plist", "No such file or directory") +
                  "; write one with CFBundlePackageType eFKT, CFBundleSignature FXTC and "
                  "CFBundleExecutable Lumivar");
    EXPECT_EQ(row(report, "bundle.package-info").answer,
              unreadable("Contents/PkgInfo", "No such file or directory") +
                  "; write the eight bytes eFKTFXTC, without a line feed");
    EXPECT_EQ(row(report, "bundle.resource").answer,
              unreadable("Contents/Resources/Lumivar.rsrc", "it is no regular file but a folder") +
                  "; build it from the effect's property list (PiPL)");
    for (const char* id : {"bundle.info-list", "bundle.package-info", "bundle.resource"}) {
        EXPECT_EQ(failing(report).count(id), 1U) << id << ": a bundle that lacks all is ignored";
    }
}

TEST_F(LumivarCheck, SaysWhyAFileOfABundleCannotBeRead) {
    const fs::path package = bundle() / "Contents/PkgInfo";
    const auto answer = [&] {
        return row(check("bundle.package-info"), "bundle.package-info").answer;
    };
    const auto is_told = [&](const std::string& reason) {
        return answer().rfind(unreadable("Contents/PkgInfo", reason) + "; write", 0) == 0;
    };
    write_file(package, "");
    EXPECT_EQ(answer().rfind(in_quotes("Contents/PkgInfo") + ": holds 0 bytes, \"\"; write", 0),
              0U);
    fs::resize_file(package, (std::size_t{16} << 20U) + 1);
    EXPECT_TRUE(is_told("it has 16777217 bytes; 16777216 are read at most"));
    fs::remove(package);
    ASSERT_EQ(mkfifo(package.c_str(), 0600), 0);
    EXPECT_TRUE(is_told("it is no regular file")) << "and is not waited for";
    fs::remove(package);
    fs::create_symlink("PkgInfo", package);
    EXPECT_TRUE(is_told("Too many levels of symbolic links"));
    fs::remove(package);
    write_file(package, "eFKTFXTC");
    fs::permissions(package, fs::perms::none);
    // Root reads everything.
    constexpr uid_t kNobody = 65534;
    ASSERT_EQ(chmod(root.path().c_str(), 0755), 0);
    EXPECT_EQ(result_in_child([&] {
                  const bool nobody = geteuid() != 0 || seteuid(kNobody) == 0;
                  return nobody && is_told("Permission denied") ? 0 : 1;
              }),
              0);
}

TEST_F(LumivarCheck, NamesWhatARegistrationHasWrong) {
    change_resource("kind", "kund");
    change_resource("EntryPointFunc", "EntryPointFunk");
    change_resource("catg", "CATG");
    const Report report = check("bundle.");
    const std::string name = in_quotes("Contents/Resources/Lumivar.rsrc");
    EXPECT_EQ(texts(row(report, "bundle.resource")),
              (Texts{name + ": there is no kind; register an effect, eFKT",
                     name + ": " + kKey +
                         " names \"EntryPointFunk\"; register EntryPointFunc, which the module "
                         "exports"}));
    EXPECT_EQ(texts(row(report, "bundle.names")),
              Texts{name + ": there is no catg; register one of 1 to 31 characters"});
}

TEST_F(LumivarCheck, WantsAKeyForEachProcessorOfTheModuleAndNoOther) {
    EXPECT_EQ(row(check("bundle."), "bundle.slices").answer, kProcessor);
    const std::string name = in_quotes("Contents/Resources/Lumivar.rsrc");
    const std::string missing = name + ": there is no " + kKey + ", but the module has code for " +
                                kProcessor + "; register EntryPointFunc as " + kKey;
    change_resource(kKey, "MI64");
    EXPECT_EQ(texts(row(check("bundle."), "bundle.slices")), Texts{missing});
    change_resource("MI64", kOtherKey);
    const Texts both = texts(row(check("bundle."), "bundle.slices"));
    EXPECT_EQ(std::set<std::string>(both.begin(), both.end()),
              (std::set<std::string>{
                  missing, name + ": there is " + kOtherKey + ", but the module has no code for " +
                               kOtherProcessor + "; remove the property, or build the module for " +
                               kOtherProcessor + " too"}));
}

TEST_F(LumivarCheck, SaysWhyWithoutADatabase) {
    fs::remove(root / "sky.stars");
    const Report report = check();
    EXPECT_NE(row(report, "setup.session").answer.find("Cannot locate any Lumivar star database"),
              std::string::npos);
    EXPECT_EQ(failing(report), Ids{"setup.session"}) << "the list of habits does not fail with it";
    EXPECT_EQ(unexamined(report).back(), "kept: the effect cannot be set up");
}

/// A list that promises more than the effect does is wrong as well.
TEST_F(LumivarCheck, FailsForListedDeviationsThatDoNotShow) {
    fs::copy_file(CONFORMING_EFFECT, bundle() / "Contents/MacOS/Lumivar",
                  fs::copy_options::overwrite_existing);
    Ids expected = {"setup.registered-version"};  // its flags are the same
    for (const auto& [name, ids] : kExpected) {
        expected.insert("kept." + name);
    }
    EXPECT_EQ(failing(check()), expected);
    // Nor do formats excuse it that this host never draws.
    const Variable formats("MISCHIEF", std::to_string(test_effect::kPremiereFormats));
    const Report report = check();
    EXPECT_EQ(report.unexamined.size(), 1U);
    EXPECT_EQ(failing(report), expected);
}

/// But what was not looked at may be where one shows.
TEST_F(LumivarCheck, LeavesOutListedDeviationsWhereItCouldNotLook) {
    fs::copy_file(CONFORMING_EFFECT, bundle() / "Contents/MacOS/Lumivar",
                  fs::copy_options::overwrite_existing);
    const Variable throws("MISCHIEF", std::to_string(test_effect::kThrowStandard));
    const Report report = check();
    EXPECT_EQ(row(report, "frames.float").verdict, Verdict::Fail);
    for (const auto& [name, ids] : kExpected) {
        EXPECT_EQ(failing(report).count("kept." + name), 0U) << name;
        EXPECT_TRUE(leaves_out(
            report, "kept." + name + ": it shows in none of the rows that could be looked at"));
    }
}

}  // namespace
