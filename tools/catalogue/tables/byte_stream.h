// The bytes of a file or of standard input, decompressed on the way.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

namespace lumivar {

/// Compressed data are damaged or end too soon. `what()` says so without the file's name: whoever
/// reads knows the place in the text.
class DamagedData : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads in blocks and holds a few hundred kilobytes, however large the file is. Gzip (also several
/// members, as parallel compressors write them) and Zstandard are recognised by their first bytes.
class ByteStream {
public:
    /// Opens `path`; "-" is standard input. Throws `Failure`.
    explicit ByteStream(const std::string& path);
    ~ByteStream();
    ByteStream(const ByteStream&) = delete;
    ByteStream& operator=(const ByteStream&) = delete;

    /// The next bytes, `size` at most and at least 1; 0 at the end. Throws `Failure` when the
    /// system cannot read, `DamagedData` when there is nothing to decompress.
    std::size_t read(char* bytes, std::size_t size);

    /// What messages call the file.
    const std::string& name() const { return name_; }
    /// Whether the bytes are those of the file itself, at the path it was opened by.
    bool is_plain_file() const;
    /// "gzip", "zstd" or nothing.
    const char* compression() const;
    /// Bytes of the file that have been read, compressed as they are, and all of them: 0 for a
    /// pipe, whose length nobody knows.
    std::uint64_t bytes_read() const;
    std::uint64_t bytes_in_all() const;

private:
    class File;
    class Decoder;
    class Gzip;
    class Zstd;

    std::string name_;
    std::unique_ptr<File> file_;
    std::unique_ptr<Decoder> decoder_;
};

}  // namespace lumivar
