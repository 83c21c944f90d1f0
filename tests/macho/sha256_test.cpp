// SHA-256 by the examples that its standard's authors publish.
#include "sha256.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string hexadecimal(const std::string& text) {
    std::string digits;
    for (const std::uint8_t byte :
         macho::sha256(reinterpret_cast<const std::uint8_t*>(text.data()), text.size())) {
        constexpr char names[] = "0123456789abcdef";
        digits += {names[byte >> 4], names[byte & 15]};
    }
    return digits;
}

}  // namespace

TEST(Sha256, PublishedExamples) {
    EXPECT_EQ(hexadecimal(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(hexadecimal("abc"),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(hexadecimal("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    EXPECT_EQ(hexadecimal(std::string(1000000, 'a')),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}
