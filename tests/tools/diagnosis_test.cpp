// Why a frame was not drawn, found from the request and the catalogue.
#include "diagnosis.h"

#include <gtest/gtest.h>
#include <host/session.h>
#include <support/scratch.h>

#include <filesystem>
#include <string>
#include <utility>

#include "database/star_file.h"
#include "failure_of.h"
#include "host/modules/test_effect.h"
#include "host/session_scene.h"
#include "host/starry.h"

namespace {

namespace fs = std::filesystem;
using host::Frame;
using host::RenderOptions;
using host::Scene;
using host::Session;
using host::Track;
using session_scene::set;
using session_scene::small_scene;

constexpr char kRemedy[] =
    "; put a star database (.stars) in its place or choose another in \"Star Database\"";

TEST(StarFile, TellsItsVersionOrWhatIsWrongWithIt) {
    const ScratchFolder folder;
    const std::string file = folder / "a.stars";
    const std::string words = "\"LUMIVAR1\" or \"LUMIVAR2\"";
    const auto foreign = [&](const std::string& shown) {
        return file + " is not a star database: it begins with " + shown + " instead of " + words;
    };
    const struct {
        std::string bytes;
        int version;
        std::string problem;
    } cases[] = {
        {"LUMIVAR1" + std::string(24, '\0'), 1, ""},
        // A trailing part of a record is allowed, and the effect draws a header cut short as black.
        {"LUMIVAR2" + std::string(24 + 33, '\0'), 2, ""},
        {"LUMIVAR2" + std::string(23, '\0'), 2, ""},
        {"", 0, file + " is empty: a star database begins with " + words},
        // As many bytes as there are, up to eight.
        {"abc", 0, foreign("\"abc\" (61 62 63)")},
        {"LUMIVAR", 0, foreign("\"LUMIVAR\" (4c 55 4d 49 56 41 52)")},
        {"\x89PNG\r\n\x1A\n and more", 0, foreign("\".PNG....\" (89 50 4e 47 0d 0a 1a 0a)")},
        {"lumivar2", 0, foreign("\"lumivar2\" (6c 75 6d 69 76 61 72 32)")},
        {"LUMIVAR3" + std::string(56, '\0'), 0, foreign("\"LUMIVAR3\" (4c 55 4d 49 56 41 52 33)")},
    };
    for (const auto& one : cases) {
        write_file(file, one.bytes);
        const lumivar::StarFile found = lumivar::look_at_star_file(file);
        EXPECT_EQ(found.version, one.version) << one.problem;
        EXPECT_EQ(found.problem, one.problem);
        EXPECT_EQ(lumivar::catalogue_fault(file).value_or(kRemedy), one.problem + kRemedy);
    }
    fs::create_symlink("nowhere", folder / "dangling.stars");
    for (const auto& [name, reason] : {std::pair{"gone.stars", "No such file or directory"},
                                       {"dangling.stars", "No such file or directory"},
                                       {"", "it is no regular file but a folder"}}) {
        EXPECT_EQ(
            failure_of([&, file_name = name] { lumivar::star_file_version(folder / file_name); }),
            "cannot read " + (folder / name) + ": " + reason);
    }
}

TEST(RefuseSize, NamesWhatAFloatImageCannotCountIn32Bits) {
    EXPECT_FALSE(lumivar::refuse_size(1, 1));
    EXPECT_FALSE(lumivar::refuse_size(16384, 16383));
    // 2^28 - 1 pixels of 16 bytes: 2^32 - 16.
    EXPECT_FALSE(lumivar::refuse_size(268435455, 1));
    EXPECT_EQ(
        lumivar::refuse_size(16384, 16384),
        "a frame of 16384 x 16384 pixels is too large: its float image of 4294967296 bytes is "
        "beyond the effect's 32-bit limit of 4294967295; render it smaller");
    EXPECT_TRUE(lumivar::refuse_size(2147483647, 2147483647)) << "no overflow on the way";
    EXPECT_FALSE(lumivar::refuse_size(-2147483647, 2147483647)) << "that is the host's to refuse";
}

Scene mischievous(int mischief) {
    Scene scene = small_scene();
    scene.controls.push_back(set("Mischief", Track(static_cast<double>(mischief))));
    return scene;
}

/// A format that effects for After Effects know nothing of, and what is said of it.
const RenderOptions kStrange = {.pixel_format = 0x61726762};
constexpr char kNoReason[] =
    "the plug-in drew nothing: the request of 64 x 36 pixels does not show why; it may have run "
    "out of memory";
constexpr char kStrangeFormat[] =
    "the plug-in drew nothing: it has no use for pixels of the format \"bgra\" (62 67 72 61); "
    "render 8-bit, 16-bit or float ARGB";

/// A session with the test effect, which has no catalogue.
class ExplainFrame : public testing::Test {
protected:
    std::string explain(int mischief, const RenderOptions& options = {}) {
        const Scene scene = mischievous(mischief);
        const Frame frame = session_.render(scene, {0, 24}, options);
        return lumivar::explain_frame(session_, scene, frame);
    }

private:
    Session session_{TEST_EFFECT};
};

TEST_F(ExplainFrame, GivesTheReasonThatTheFrameShows) {
    EXPECT_EQ(explain(test_effect::kNone), "");
    EXPECT_EQ(explain(test_effect::kFailWithMessage),
              "the plug-in could not draw the frame (status 516): no can do");
    EXPECT_EQ(explain(test_effect::kDrawNothing, kStrange), kStrangeFormat);
    EXPECT_EQ(explain(test_effect::kDrawNothing), kNoReason);
    EXPECT_EQ(explain(test_effect::kEmptyResult),
              "nothing was drawn: the plug-in was not asked to render");
}

TEST(ExplainPremiereFrame, BlamesNoFormatThatWasDeclared) {
    const Session session(TEST_EFFECT, {.application = host::Application::Premiere});
    Frame frame;
    frame.rendered = true;
    frame.request = {0, 0, 64, 36};
    frame.pixel_format = 0x61726762;
    EXPECT_EQ(lumivar::explain_frame(session, mischievous(test_effect::kNone), frame), kNoReason);
}

/// The built plug-in, which answers a failed frame with status 0: the cause is found by looking.
class OfLumivar : public starry::Lumivar {
protected:
    std::string catalogue() const { return (fs::canonical(root.path()) / "sky.stars").string(); }
    /// The explanation of a frame after `change` was made behind the session's back.
    template <class Change>
    std::string explanation(Change&& change, const RenderOptions& options = {}) {
        add_stars();
        Session session(bundle());
        change();
        const Scene scene = starry::starry_scene();
        return lumivar::explain_frame(session, scene, session.render(scene, {0, 24}, options));
    }
};

TEST_F(OfLumivar, ExplainFrameNamesTheCatalogueAndItsFault) {
    EXPECT_EQ(explanation([] {}), "");
    EXPECT_EQ(explanation([&] { write_file(root / "sky.stars", ""); }),
              "the plug-in drew nothing: " + catalogue() +
                  " is empty: a star database begins with \"LUMIVAR1\" or \"LUMIVAR2\"" + kRemedy);
    EXPECT_EQ(explanation([&] { fs::remove(root / "sky.stars"); }),
              "the plug-in drew nothing: cannot read " + catalogue() +
                  ": No such file or directory" + kRemedy);
    EXPECT_EQ(explanation([] {}, kStrange), kStrangeFormat);
}

TEST_F(OfLumivar, ChosenCatalogueIsTheOneNamedOrTheFirstOfTheList) {
    add_stars("red.stars");
    add_stars("blue.stars");
    const Session session(bundle());
    Scene scene = starry::starry_scene();
    EXPECT_EQ(lumivar::chosen_catalogue(session, scene, {0, 24}),
              fs::canonical(root / session.controls().back().choices.front()));
    for (const std::string name : {"red.stars", "blue.stars"}) {
        starry::set(scene, lumivar::kCatalogueControl, name);
        EXPECT_EQ(lumivar::chosen_catalogue(session, scene, {0, 24}), fs::canonical(root / name));
    }
    const Session without_the_control(TEST_EFFECT);
    EXPECT_FALSE(lumivar::chosen_catalogue(without_the_control, small_scene(), {0, 24}));
}

TEST(ExplainSetUp, AddsWhatIsWrongWithTheCatalogues) {
    const ScratchFolder folder;
    const fs::path bundle = fs::path(folder.path()) / "Test.plugin";
    fs::create_directories(bundle / "Contents" / "MacOS");
    fs::copy_file(TEST_EFFECT, bundle / "Contents" / "MacOS" / "Test");
    write_file(folder / "good.stars", "LUMIVAR1" + std::string(24, '\0'));
    write_file(folder / "bad.stars.old", "");
    write_file(folder / "unrelated", "");
    const host::EffectError error("Error reading it.", 1, 512, "Error reading it.");
    EXPECT_EQ(lumivar::explain_set_up(bundle, error),
              "Error reading it. (" + (fs::canonical(folder.path()) / "bad.stars.old").string() +
                  " is empty: a star database begins with \"LUMIVAR1\" or \"LUMIVAR2\"" + kRemedy +
                  ")");
    EXPECT_EQ(lumivar::explain_set_up(folder / "Missing.plugin", error), "Error reading it.");
}

}  // namespace
