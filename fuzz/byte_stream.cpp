// Any bytes as a file that may be compressed: the same text, or the same refusal, whatever the
// pieces are in which it is read; and whatever was compressed comes out as it was.
#include "tables/byte_stream.h"

#include <zlib.h>
#include <zstd.h>

#include <optional>
#include <vector>

#include "harness.h"
#include "input_file.h"

namespace {

/// The text; nothing when its data are damaged.
std::optional<std::string> text_in(const std::string& path, std::size_t at_once) {
    lumivar::ByteStream stream(path);
    std::string text;
    std::vector<char> block(at_once);
    try {
        while (const std::size_t count = stream.read(block.data(), block.size())) {
            require(count <= block.size(), "more bytes than there is room for");
            text.append(block.data(), count);
            constexpr std::size_t kEnough = std::size_t{1} << 20;
            if (text.size() > kEnough) {
                break;  // a few bytes can be a gigabyte of zeros
            }
        }
    } catch (const lumivar::DamagedData&) {
        return std::nullopt;
    }
    return text;
}

std::string gzip_member(const std::string& text) {
    z_stream state{};
    constexpr int kGzip = 15 + 16;
    require(deflateInit2(&state, Z_BEST_SPEED, Z_DEFLATED, kGzip, 8, Z_DEFAULT_STRATEGY) == Z_OK,
            "no compressor");
    std::string packed(deflateBound(&state, static_cast<uLong>(text.size())), '\0');
    std::string bytes = text;
    state.next_in = reinterpret_cast<Bytef*>(bytes.data());
    state.avail_in = static_cast<uInt>(bytes.size());
    state.next_out = reinterpret_cast<Bytef*>(packed.data());
    state.avail_out = static_cast<uInt>(packed.size());
    require(deflate(&state, Z_FINISH) == Z_STREAM_END, "not compressed");
    packed.resize(packed.size() - state.avail_out);
    deflateEnd(&state);
    return packed;
}

std::string zstd_frame(const std::string& text) {
    std::string packed(ZSTD_compressBound(text.size()), '\0');
    const std::size_t size =
        ZSTD_compress(packed.data(), packed.size(), text.data(), text.size(), 1);
    require(ZSTD_isError(size) == 0, "not compressed");
    packed.resize(size);
    return packed;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = text_of(data, size);
    // From the bytes themselves, so that any file can be one of the corpus.
    std::size_t sum = size;
    for (const char byte : bytes) {
        sum = sum * 31 + static_cast<unsigned char>(byte);
    }
    constexpr std::size_t kBlock = std::size_t{1} << 16;
    const std::size_t piece = sum % 61 + 1 + size / 100;
    const std::size_t at_once = sum / 61 % 97 + 1 + size / 10;

    const std::string path = input_file("bytes", bytes);
    read_in_pieces_of(kBlock);
    const std::optional<std::string> whole = text_in(path, kBlock);
    const bool is_plain = lumivar::ByteStream(path).compression()[0] == '\0';
    require(!is_plain || whole == bytes, "plain bytes are other ones");
    read_in_pieces_of(piece);
    const std::optional<std::string> pieces = text_in(path, at_once);
    require(pieces.has_value() == whole.has_value(), "damage depends on the pieces");
    require(!whole || pieces->substr(0, whole->size()) == whole->substr(0, pieces->size()),
            "the text depends on the pieces");

    const std::size_t middle = size == 0 ? 0 : sum % size;
    const std::string first = bytes.substr(0, middle);
    const std::string second = bytes.substr(middle);
    require(text_in(input_file("a.gz", gzip_member(first) + gzip_member(second)), at_once) == bytes,
            "gzip gives other bytes");
    require(text_in(input_file("a.zst", zstd_frame(first) + zstd_frame(second)), at_once) == bytes,
            "zstd gives other bytes");
    return 0;
}
