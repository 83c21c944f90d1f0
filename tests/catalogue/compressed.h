// Bytes as gzip and zstd write them.
#pragma once

#include <zlib.h>
#include <zstd.h>

#include <stdexcept>
#include <string>

inline std::string gzipped(const std::string& bytes) {
    z_stream state{};
    constexpr int kGzipFrame = 15 + 16;
    if (deflateInit2(&state, 6, Z_DEFLATED, kGzipFrame, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
        throw std::runtime_error("deflateInit2");
    }
    std::string text = bytes;
    std::string packed(deflateBound(&state, static_cast<uLong>(bytes.size())) + 64, '\0');
    state.next_in = reinterpret_cast<Bytef*>(text.data());
    state.avail_in = static_cast<uInt>(text.size());
    state.next_out = reinterpret_cast<Bytef*>(packed.data());
    state.avail_out = static_cast<uInt>(packed.size());
    const int result = deflate(&state, Z_FINISH);
    packed.resize(state.total_out);
    deflateEnd(&state);
    if (result != Z_STREAM_END) {
        throw std::runtime_error("deflate");
    }
    return packed;
}

inline std::string zstandard(const std::string& bytes) {
    std::string packed(ZSTD_compressBound(bytes.size()), '\0');
    const std::size_t size =
        ZSTD_compress(packed.data(), packed.size(), bytes.data(), bytes.size(), 3);
    if (ZSTD_isError(size) != 0) {
        throw std::runtime_error("ZSTD_compress");
    }
    packed.resize(size);
    return packed;
}
