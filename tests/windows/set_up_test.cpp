// The module in folders as users have them, played by the stand-in host.
#include <gtest/gtest.h>
#include <host/camera.h>
#include <host/session.h>
#include <support/catalogue.h>
#include <support/scratch.h>
#include <windows.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;

// Cyrillic, Chinese, Arabic and a character beyond 16 bits: no code page but UTF-8 has them all.
const fs::path kManyScripts = u8"звёзды 星 نجوم \U0001F31F";
// The same letters, a '?' for each word of UTF-16 that code page 1252 has no character for.
const std::string kManyQuestions = "?????? ? ???? ??";

class WindowsModule : public testing::Test {
protected:
    WindowsModule() : place(fs::path(folder_.path()) / kManyScripts) {
        fs::create_directories(place);
        fs::copy_file(LUMIVAR_MODULE, place / "Lumivar.aex");
    }

    void add_database(const fs::path& name, const std::string& bytes) {
        make_file(place / name, bytes);
    }
    void make_file(const fs::path& path, const std::string& bytes) {
        // Streams of the library open the names of one code page alone.
        const std::string plain = folder_ / "made.stars";
        write_file(plain, bytes);
        fs::rename(plain, path);
    }
    fs::path module() const { return place / "Lumivar.aex"; }

    static const host::DeclaredControl& databases(const host::Session& session) {
        return session.controls().at(15);
    }
    /// One star straight ahead, seen in the middle of the picture and not in its corner.
    static void expect_star(host::Session& session, double choice) {
        host::Scene scene;
        scene.composition.width = 33;
        scene.composition.height = 17;
        scene.camera = host::placed_camera({}, {}, host::Lens::zoom(17.0));
        scene.controls.push_back({"Star Database", "test", host::Track(choice)});
        const host::Frame frame = session.render(scene, scene.composition.frame_time(0));
        EXPECT_EQ(frame.status, 0);
        EXPECT_EQ(frame.undrawn_pixels, 0U);
        EXPECT_GT(frame.world.pixel<float>(16, 8)[1], 0.005F);
        EXPECT_EQ(frame.world.pixel<float>(0, 0)[1], 0.0F);
    }
    /// What set-up says when it fails.
    std::string refusal() {
        try {
            const host::Session session(module());
        } catch (const host::EffectError& error) {
            EXPECT_EQ(error.status(), 512);
            return error.message();
        }
        return "no refusal";
    }
    /// As the message spells the folder.
    std::string spelt(const std::string& name_of_folder) const {
        return fs::path(folder_.path()).generic_string() + "/" + name_of_folder;
    }

    const std::string sky_ = support::catalogue_bytes(support::kVersion1, {{.lon = 90, .lat = 0}});

private:
    ScratchFolder folder_;

protected:
    fs::path place;
};

/// The texts that a host shows are those of the machine's code page.
void expect_code_page_1252() {
    ASSERT_EQ(GetACP(), 1252U) << "the test knows what this code page has no characters for";
}

}  // namespace

TEST_F(WindowsModule, FindsAndDrawsDatabasesBesideItWhateverTheScript) {
    add_database(kManyScripts.native() + L".stars", sky_);
    host::Session session(module());
    ASSERT_EQ(databases(session).name, "Star Database");
    ASSERT_EQ(databases(session).choices.size(), 1U);
    expect_star(session, 1);
    EXPECT_TRUE(session.violations().empty());
    session.close();
}

TEST_F(WindowsModule, ShowsQuestionMarksForWhatTheCodePageLacks) {
    ASSERT_NO_FATAL_FAILURE(expect_code_page_1252());
    add_database(L"\u00C9toiles " + kManyScripts.native() + L".stars", sky_);
    host::Session session(module());
    EXPECT_EQ(databases(session).choice_text, "\xC9toiles " + kManyQuestions + ".stars");
}

TEST_F(WindowsModule, NamesADatabaseThatCannotBeReadAsTheCodePageSpellsIt) {
    ASSERT_NO_FATAL_FAILURE(expect_code_page_1252());
    add_database("empty.stars", "");
    EXPECT_EQ(refusal(),
              "Error reading Lumivar database file " + spelt(kManyQuestions) + "/empty.stars.");
}

TEST_F(WindowsModule, WithoutDatabasesSaysWhereItLooked) {
    ASSERT_NO_FATAL_FAILURE(expect_code_page_1252());
    EXPECT_EQ(refusal(),
              "Cannot locate any Lumivar star database files. Please place the .stars file in the "
              "same directory as the Lumivar plugin (" +
                  spelt(kManyQuestions) + ").");
}

TEST_F(WindowsModule, DatabaseMayHaveALongerPathThanTheSystemTakesPlain) {
    const std::string name = std::string(200, 'd') + ".stars";
    make_file(L"\\\\?\\" + (place.make_preferred() / name).native(), sky_);
    host::Session session(module());
    EXPECT_EQ(databases(session).choice_text, name);
    expect_star(session, 1);
}

TEST_F(WindowsModule, IsLoadedAgainWithWhatStandsBesideItThen) {
    add_database("first.stars", sky_);
    {
        host::Session session(module());
        EXPECT_EQ(databases(session).choice_text, "first.stars");
        session.close();
    }
    EXPECT_FALSE(host::is_resident(module()));
    fs::rename(place / "first.stars", place / "second.stars");
    host::Session session(module());
    EXPECT_EQ(databases(session).choice_text, "second.stars");
    expect_star(session, 1);
}
