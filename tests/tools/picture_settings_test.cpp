// Which names and texts the settings' one-line form carries; whole frames are in the test of the
// command.
#include "picture_settings.h"

#include <base/exceptions.h>
#include <gtest/gtest.h>
#include <libkelvimage/metadata.h>

namespace {

TEST(PictureSettings, SpellsNamesWithoutBlanks) {
    EXPECT_EQ(lumivar::settings_name("control:Star Brightness"), "control:Star_Brightness");
    EXPECT_EQ(lumivar::settings_name("a = b"), "a___b");
    EXPECT_EQ(lumivar::settings_name("zoom"), "zoom");
    EXPECT_EQ(lumivar::settings_name(""), "");
}

/// Whether a text comes back both in the middle and at the end of a record's line.
bool comes_back(const std::string& text) {
    Kelv::ImageSpec::MetaData record;
    record.set_meta("string", "n", String(text.c_str()));
    const std::string line = record.stringify().c_str();
    for (const std::string& whole : {line, line + " float:x=1"}) {
        Kelv::ImageSpec::MetaData read;
        try {
            read.from_string(whole.c_str());
        } catch (const Xception&) {
            return false;
        }
        String value("none");
        read.get_meta("string", "n", value);
        if (value.c_str() != text) {
            return false;
        }
    }
    return true;
}

TEST(PictureSettings, KnowsWhichTextsComeBack) {
    const struct {
        const char* text;
        bool carried;
    } table[] = {
        {"orion.json", true}, {"my scene.json", true}, {"a\\b", true},
        {"a b\\", false},     {"a\\ b", false},        {"", false},
        {"\"", false},        {"\"a\"", false},        {"\"a b\"", true},
        {"a\"b", true},       {"a=b:c", true},         {" ", true},
        {"a\nb", true},       {"c:\\x", true},         {"\\\"", true},
        {"\\ ", false},
    };
    for (const auto& row : table) {
        EXPECT_EQ(lumivar::is_carried(row.text), row.carried) << row.text;
        EXPECT_EQ(comes_back(row.text), row.carried) << row.text;
    }
}

}  // namespace
