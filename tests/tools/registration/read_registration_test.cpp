// The registration resource of a bundle: read where it is whole, refused with the place where not.
#include "read_registration.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <random>
#include <string>

namespace {

using namespace std::string_literals;
using bundle::Registration;
using bundle::ResourceError;

/// A resource file by hand: the data at 16, two types in the map, the second the registration with
/// two properties, of 4 and of 3 bytes.
std::string resource_file() {
    const std::string registration =
        "\0\0\0\0\0\0\0\2"s + "8BIMkind\0\0\0\0\0\0\0\4eFKT"s + "8BIMeMNA\0\0\0\0\0\0\0\3\2Hi\0"s;
    const std::string data = "\0\0\0\3abc"s + "\0\0\0\x30"s + registration;
    const std::string types = "\0\1"s + "TEXT\0\0\0\x12"s + "PiPL\0\0\0\x1E"s;
    const std::string references =
        "\0\1\xFF\xFF\0\0\0\0\0\0\0\0"s + "\0\2\xFF\xFF\0\0\0\7\0\0\0\0"s;
    const std::string map = std::string(24, '\0') + "\0\x1C\0\x3E"s + types + references;
    const std::string map_at = {'\0', '\0', '\0', static_cast<char>(16 + data.size())};
    return "\0\0\0\x10"s + map_at + std::string(8, '\0') + data + map;
}

TEST(RegistrationFile, IsFoundThroughTheMap) {
    const Registration registration(resource_file());
    EXPECT_EQ(registration.bytes("kind"), "eFKT");
    EXPECT_EQ(registration.number("kind"), 0x65464B54U);
    EXPECT_EQ(registration.text("eMNA"), "Hi");
    EXPECT_FALSE(registration.has("eVER"));
    EXPECT_EQ(registration.number("eVER"), std::nullopt);
    EXPECT_EQ(registration.text("kind"), std::nullopt) << "its length byte is 0x65";
    EXPECT_EQ(registration.number("eMNA"), std::nullopt) << "three bytes are no number";
}

TEST(RegistrationFile, CutShortIsRefusedWhereverItIsCut) {
    const std::string file = resource_file();
    // The last twelve bytes are the second reference, of which byte eight is the last that matters.
    for (std::size_t size = 0; size < file.size() - 4; ++size) {
        EXPECT_THROW(Registration(file.substr(0, size)), ResourceError) << size;
    }
    EXPECT_NO_THROW(Registration(file.substr(0, file.size() - 4)));
}

TEST(RegistrationFile, IsRefusedWithThePlaceWhereItIsSpoilt) {
    const std::string whole = resource_file();
    ASSERT_EQ(whole.size(), 145U);
    const std::string beyond_file = ", reaches beyond the file, which ends at byte 145";
    // Bytes written over, among them sums that are back at the beginning of the file in words of 32
    // bits, and what is said then.
    const struct {
        std::size_t at;
        std::string bytes;
        std::string message;
    } cases[] = {
        {0, "\xFF\xFF\xFF\xFF",
         "the length of the resource PiPL, 4 bytes from byte 4294967302 on" + beyond_file},
        {4, "\xFF\xFF\xFF\xF0",
         "the offset of the list of types, 2 bytes from byte 4294967304 on" + beyond_file},
        {23, "\xFF\xFF\xFF\xFF",
         "the resource PiPL, 4294967295 bytes from byte 27 on" + beyond_file},
        {23, "\0\0\0\x20"s,
         "property 2 of 2, 16 bytes from byte 55 on, reaches beyond the resource PiPL, which ends "
         "at byte 59"},
        {27, "\0\0\0\7"s, "the resource PiPL at byte 27 has the version 7; known is 0"},
        {31, "\xFF\xFF\xFF\xFF",
         "property 3 of 4294967295, 16 bytes from byte 75 on, reaches beyond the resource PiPL, "
         "which ends at byte 75"},
        {47, "\xFF\xFF\xFF\xFF",
         "property 1 of 2, 4294967295 bytes from byte 51 on, reaches beyond the resource PiPL, "
         "which ends at byte 75"},
        {47, "\xFF\xFF\xFF\xFD",
         "property 1 of 2, 4294967293 bytes from byte 51 on, reaches beyond the resource PiPL, "
         "which ends at byte 75"},
        {99, "\xFF\xFF", "the number of types, 2 bytes from byte 65610 on" + beyond_file},
        {103, "\xFF\xFF", "none of the 0 types of resource, listed at byte 103, is PiPL"},
        {103, "\xFF\xFETEXTxxxxnone", "type 6 of 65535, 8 bytes from byte 145 on" + beyond_file},
        {113, "none", "none of the 2 types of resource, listed at byte 103, is PiPL"},
        {119, "\xFF\xFF",
         "the reference to the resource PiPL, 3 bytes from byte 65643 on" + beyond_file},
        {131 + 7, "\xFF\xFF\xFF",
         "the length of the resource PiPL, 4 bytes from byte 16777231 on" + beyond_file}};
    for (const auto& spoilt : cases) {
        std::string file = whole;
        file.replace(spoilt.at, spoilt.bytes.size(), spoilt.bytes);
        try {
            const Registration registration(file);
            ADD_FAILURE() << "accepted: " << spoilt.message;
        } catch (const ResourceError& error) {
            EXPECT_EQ(error.what(), spoilt.message);
        }
    }
}

TEST(RegistrationFile, IsReadOrRefusedWhateverItsBytes) {
    // Blocks of their own sizes, so that a sanitizer sees each byte read beyond.
    std::mt19937 random(20);
    int refused = 0;
    for (int i = 0; i < 20000; ++i) {
        std::string file = resource_file();
        for (unsigned changes = random() % 3; changes-- > 0;) {
            file[random() % file.size()] = static_cast<char>(random() % 2 == 0 ? 0xFF : random());
        }
        file.resize(i % 4 == 0 ? random() % file.size() : file.size());
        file.shrink_to_fit();
        try {
            const Registration registration(file);
        } catch (const ResourceError&) {
            ++refused;
        }
    }
    EXPECT_GT(refused, 5000) << "those cut short alone";
    EXPECT_THROW(Registration(std::string(300, '\xFF')), ResourceError);
    EXPECT_THROW(Registration(""), ResourceError);
}

}  // namespace
