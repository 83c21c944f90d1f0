// Why a frame was not drawn, found from the request and the catalogue.
#include "diagnosis.h"

#include <gtest/gtest.h>
#include <host/session.h>
#include <support/scratch.h>

#include <filesystem>
#include <string>
#include <vector>

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

std::string fault_of(const std::string& file) {
    return lumivar::catalogue_fault(file).value_or("nothing");
}

TEST(CatalogueFault, FindsNothingWrongWithEitherVersion) {
    const ScratchFolder folder;
    write_file(folder / "one.stars", "LUMIVAR1" + std::string(24, '\0'));
    write_file(folder / "two.stars", "LUMIVAR2" + std::string(24 + 33, '\0'));
    EXPECT_EQ(fault_of(folder / "one.stars"), "nothing");
    EXPECT_EQ(fault_of(folder / "two.stars"), "nothing")
        << "a trailing part of a record is allowed";
}

TEST(CatalogueFault, NamesWhatIsNotThere) {
    const ScratchFolder folder;
    EXPECT_EQ(fault_of(folder / "gone.stars"),
              "cannot read " + (folder / "gone.stars") + ": No such file or directory" + kRemedy);
}

TEST(CatalogueFault, NamesAFolder) {
    const ScratchFolder folder;
    EXPECT_EQ(fault_of(folder.path()),
              "cannot read " + folder.path() + ": it is no regular file but a folder" + kRemedy);
}

TEST(CatalogueFault, NamesAnEmptyFile) {
    const ScratchFolder folder;
    write_file(folder / "empty.stars", "");
    EXPECT_EQ(fault_of(folder / "empty.stars"),
              (folder / "empty.stars") +
                  " is empty: a star database begins with \"LUMIVAR1\" or \"LUMIVAR2\"" + kRemedy);
}

// The effect draws it as a black frame, so it is no reason for one that was not drawn.
TEST(CatalogueFault, AllowsAHeaderCutShort) {
    const ScratchFolder folder;
    write_file(folder / "short.stars", "LUMIVAR2" + std::string(23, '\0'));
    EXPECT_EQ(fault_of(folder / "short.stars"), "nothing");
}

TEST(CatalogueFault, ShowsTheFirstBytesOfAForeignFile) {
    const ScratchFolder folder;
    write_file(folder / "picture.stars", "\x89PNG\r\n\x1A\n and more");
    EXPECT_EQ(fault_of(folder / "picture.stars"),
              (folder / "picture.stars") +
                  " is not a star database: it begins with \".PNG....\" (89 50 4e 47 0d 0a 1a 0a) "
                  "instead of \"LUMIVAR1\" or \"LUMIVAR2\"" +
                  kRemedy);
    // As many as there are.
    write_file(folder / "tiny.stars", "abc");
    EXPECT_NE(fault_of(folder / "tiny.stars").find("begins with \"abc\" (61 62 63) instead"),
              std::string::npos);
    write_file(folder / "lower.stars", "lumivar1" + std::string(24, '\0'));
    EXPECT_NE(fault_of(folder / "lower.stars").find("begins with \"lumivar1\""), std::string::npos);
}

TEST(RefuseSize, AllowsWhatAFloatImageCanCountIn32Bits) {
    EXPECT_FALSE(lumivar::refuse_size(1, 1));
    EXPECT_FALSE(lumivar::refuse_size(16384, 16383));
    // 2^28 - 1 pixels of 16 bytes: 2^32 - 16.
    EXPECT_FALSE(lumivar::refuse_size(268435455, 1));
}

TEST(RefuseSize, NamesWhatIsBeyond) {
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
RenderOptions strange_format() {
    RenderOptions options;
    options.pixel_format = 0x61726762;
    return options;
}
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

TEST_F(ExplainFrame, HasNothingToSayOfADrawnFrame) { EXPECT_EQ(explain(test_effect::kNone), ""); }

TEST_F(ExplainFrame, PassesOnAFailedStatusWithItsMessage) {
    EXPECT_EQ(explain(test_effect::kFailWithMessage),
              "the plug-in could not draw the frame (status 516): no can do");
}

TEST_F(ExplainFrame, NamesAnUnsupportedPixelFormat) {
    EXPECT_EQ(explain(test_effect::kDrawNothing, strange_format()), kStrangeFormat);
}

TEST(ExplainPremiereFrame, BlamesNoFormatThatWasDeclared) {
    host::SessionOptions options;
    options.application = host::Application::Premiere;
    const Session session(TEST_EFFECT, options);
    Frame frame;
    frame.rendered = true;
    frame.request = {0, 0, 64, 36};
    frame.pixel_format = 0x61726762;
    EXPECT_EQ(
        lumivar::explain_frame(session, mischievous(test_effect::kNone), frame),
        "the plug-in drew nothing: the request of 64 x 36 pixels does not show why; it may have "
        "run out of memory");
}

TEST_F(ExplainFrame, SaysWhenNothingShowsWhy) {
    EXPECT_EQ(
        explain(test_effect::kDrawNothing),
        "the plug-in drew nothing: the request of 64 x 36 pixels does not show why; it may have "
        "run out of memory");
}

TEST_F(ExplainFrame, SaysThatThePlugInWasNotAsked) {
    EXPECT_EQ(explain(test_effect::kEmptyResult),
              "nothing was drawn: the plug-in was not asked to render");
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
    EXPECT_EQ(explanation([&] { write_file(root / "sky.stars", "\x89PNG\r\n\x1A\n and more"); }),
              "the plug-in drew nothing: " + catalogue() +
                  " is not a star database: it begins with \".PNG....\" (89 50 4e 47 0d 0a 1a 0a) "
                  "instead of \"LUMIVAR1\" or \"LUMIVAR2\"" +
                  kRemedy);
    EXPECT_EQ(explanation([&] { write_file(root / "sky.stars", ""); }),
              "the plug-in drew nothing: " + catalogue() +
                  " is empty: a star database begins with \"LUMIVAR1\" or \"LUMIVAR2\"" + kRemedy);
    EXPECT_EQ(explanation([&] { fs::remove(root / "sky.stars"); }),
              "the plug-in drew nothing: cannot read " + catalogue() +
                  ": No such file or directory" + kRemedy);
    EXPECT_EQ(explanation([] {}, strange_format()), kStrangeFormat);
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
}

TEST(ChosenCatalogue, IsNoneForAnEffectWithoutTheControl) {
    const Session session(TEST_EFFECT);
    EXPECT_FALSE(lumivar::chosen_catalogue(session, small_scene(), {0, 24}));
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
