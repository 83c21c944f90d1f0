#include "code_signature.h"

#include <algorithm>

namespace macho {
namespace {

constexpr std::uint32_t kSignatureMagic = 0xFADE0CC0;
constexpr std::uint32_t kDirectoryMagic = 0xFADE0C02;
constexpr std::uint8_t kSha256 = 2;

CodeSignature read_directory(const Bytes& directory) {
    if (directory.big_u32(0) != kDirectoryMagic || directory.u8(36) != sizeof(Digest) ||
        directory.u8(37) != kSha256 || directory.u8(39) > 16) {
        directory.fail("it is no directory of SHA-256 digests of pages");
    }
    CodeSignature signature = {.flags = directory.big_u32(12),
                               .identifier = directory.text(directory.big_u32(20)),
                               .covered = directory.big_u32(32),
                               .page_size = std::uint64_t{1} << directory.u8(39),
                               .pages = {}};
    const std::uint64_t count = directory.big_u32(28);
    const std::uint64_t digests = directory.big_u32(16);
    if (count != (signature.covered + signature.page_size - 1) / signature.page_size) {
        directory.fail("it has " + std::to_string(count) + " digests for " +
                       std::to_string(signature.covered) + " bytes");
    }
    for (std::uint64_t i = 0; i < count; ++i) {
        Digest digest = {};
        std::copy_n(directory.at(digests + i * digest.size(), digest.size()), digest.size(),
                    digest.begin());
        signature.pages.push_back(digest);
    }
    return signature;
}

}  // namespace

CodeSignature read_signature(const Image& image) {
    if (image.signature_size == 0) {
        image.bytes.fail("it has no signature");
    }
    const Bytes whole = image.bytes.part(image.signature_offset, image.signature_size, "signature");
    if (whole.big_u32(0) != kSignatureMagic) {
        whole.fail("it begins otherwise");
    }
    const std::uint32_t count = whole.big_u32(8);
    for (std::uint64_t i = 0; i < count; ++i) {
        constexpr std::uint32_t directory = 0;
        if (whole.big_u32(12 + 8 * i) == directory) {
            const std::uint64_t at = whole.big_u32(16 + 8 * i);
            return read_directory(whole.part(at, whole.big_u32(at + 4), "code directory"));
        }
    }
    whole.fail("it has no code directory");
}

std::vector<std::size_t> changed_pages(const Image& image, const CodeSignature& signature) {
    std::vector<std::size_t> changed;
    for (std::size_t i = 0; i < signature.pages.size(); ++i) {
        const std::uint64_t begin = i * signature.page_size;
        const std::uint64_t size = std::min(signature.page_size, signature.covered - begin);
        if (sha256(image.bytes.at(begin, size), size) != signature.pages[i]) {
            changed.push_back(i);
        }
    }
    return changed;
}

}  // namespace macho
