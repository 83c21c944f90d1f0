#include "tables/byte_stream.h"

#include <base/exceptions.h>
#include <osapi/files.h>
#include <osapi/whole_file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>
#include <vector>

#include "failure.h"

namespace lumivar {
namespace {

constexpr std::size_t kBlockBytes = std::size_t{1} << 17;
constexpr std::string_view kGzipMagic = "\x1F\x8B";
constexpr std::string_view kZstdMagic = "\x28\xB5\x2F\xFD";

OSAPI::fd_t open_bytes(const std::string& path) {
    if (path == "-") {
        return STDIN_FILENO;
    }
    try {
        return OSAPI::open(path.c_str(), OSAPI::kRead);
    } catch (const StrXception& failure) {
        throw Failure(OSAPI::cannot_read(path, failure));
    }
}

}  // namespace

/// The file itself, with a block that can be looked at before it is taken.
class ByteStream::File {
public:
    File(const std::string& path, const std::string& name)
        : name_(name), file_(open_bytes(path)), block_(kBlockBytes) {
        struct stat status = {};
        if (fstat(file_.fd(), &status) == 0 && S_ISREG(status.st_mode)) {
            regular_ = true;
            size_ = static_cast<std::uint64_t>(status.st_size);
        }
    }
    ~File() {
        if (file_.fd() == STDIN_FILENO) {
            file_.release();  // the program's, not ours to close
        }
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    /// What has been read and not been taken; reads more when that is less than `wanted`.
    std::string_view look(std::size_t wanted = 1) {
        while (end_ - begin_ < wanted && fill()) {
        }
        return {block_.data() + begin_, end_ - begin_};
    }
    void take(std::size_t count) { begin_ += count; }
    std::size_t read(char* bytes, std::size_t size) {
        const std::string_view ready = look();
        const std::size_t count = std::min(size, ready.size());
        std::memcpy(bytes, ready.data(), count);
        take(count);
        return count;
    }
    std::uint64_t read_so_far() const { return read_ - (end_ - begin_); }
    std::uint64_t size() const { return size_; }
    bool is_regular() const { return regular_ && file_.fd() != STDIN_FILENO; }

private:
    bool fill() {
        std::memmove(block_.data(), block_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
        try {
            // Pipes give less than they are asked for.
            const sword count =
                OSAPI::read_short(file_.fd(), block_.data() + end_, block_.size() - end_);
            end_ += static_cast<std::size_t>(count);
            read_ += static_cast<std::uint64_t>(count);
            return count > 0;
        } catch (const StrXception& failure) {
            throw Failure(OSAPI::cannot_read(name_, failure));
        }
    }

    std::string name_;
    OSAPI::FileDescriptor file_;
    std::vector<char> block_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    std::uint64_t read_ = 0;
    std::uint64_t size_ = 0;
    bool regular_ = false;
};

class ByteStream::Decoder {
public:
    virtual ~Decoder() = default;
    virtual std::size_t read(File& file, char* bytes, std::size_t size) = 0;
    virtual const char* name() const = 0;
};

class ByteStream::Gzip : public Decoder {
public:
    Gzip() {
        constexpr int kLargestWindow = 15;
        constexpr int kGzipFrame = 16;  // of the library: the frame of gzip, with its checksum
        if (inflateInit2(&state_, kLargestWindow + kGzipFrame) != Z_OK) {
            throw std::bad_alloc();
        }
    }
    ~Gzip() override { inflateEnd(&state_); }
    Gzip(const Gzip&) = delete;
    Gzip& operator=(const Gzip&) = delete;

    const char* name() const override { return "gzip"; }
    std::size_t read(File& file, char* bytes, std::size_t size) override {
        while (!between_members_ || next_member(file)) {
            const std::string_view ready = file.look();
            if (ready.empty()) {
                throw DamagedData("the gzip data end too soon: the file is not whole");
            }
            const std::size_t made = inflate_some(file, ready, bytes, size);
            if (made > 0) {
                return made;
            }
        }
        return 0;
    }

private:
    /// Whether another member follows. Zeros behind the last one are padding, as of tapes.
    bool next_member(File& file) {
        for (;;) {
            const std::string_view ready = file.look(kGzipMagic.size());
            const std::size_t padding = std::min(ready.find_first_not_of('\0'), ready.size());
            if (ready.empty()) {
                return false;
            }
            if (padding > 0) {
                file.take(padding);
                continue;
            }
            if (ready.substr(0, kGzipMagic.size()) != kGzipMagic) {
                throw DamagedData("something else follows the gzip data");
            }
            inflateReset(&state_);
            between_members_ = false;
            return true;
        }
    }
    std::size_t inflate_some(File& file, std::string_view ready, char* bytes, std::size_t size) {
        // The library takes what it never changes through a pointer to what it may change.
        state_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(ready.data()));
        state_.avail_in = static_cast<uInt>(ready.size());
        const std::size_t room = std::min(size, kBlockBytes);
        state_.next_out = reinterpret_cast<Bytef*>(bytes);
        state_.avail_out = static_cast<uInt>(room);
        const int result = inflate(&state_, Z_NO_FLUSH);
        file.take(ready.size() - state_.avail_in);
        if (result == Z_STREAM_END) {
            between_members_ = true;
        } else if (result == Z_MEM_ERROR) {
            throw std::bad_alloc();
        } else if (result != Z_OK && result != Z_BUF_ERROR) {
            throw DamagedData(std::string("the gzip data are damaged: ") +
                              (state_.msg != nullptr ? state_.msg : "no more can be read"));
        }
        return room - state_.avail_out;
    }

    z_stream state_{};
    bool between_members_ = false;
};

class ByteStream::Zstd : public Decoder {
public:
    Zstd() : state_(ZSTD_createDStream()) {
        if (state_ == nullptr) {
            throw std::bad_alloc();
        }
    }
    ~Zstd() override { ZSTD_freeDStream(state_); }
    Zstd(const Zstd&) = delete;
    Zstd& operator=(const Zstd&) = delete;

    const char* name() const override { return "zstd"; }
    std::size_t read(File& file, char* bytes, std::size_t size) override {
        for (;;) {
            const std::string_view ready = file.look();
            if (ready.empty() && frame_left_ == 0) {
                return 0;
            }
            ZSTD_inBuffer input = {ready.data(), ready.size(), 0};
            ZSTD_outBuffer output = {bytes, size, 0};
            // Called without input too: a frame's last bytes may still be inside.
            const std::size_t result = ZSTD_decompressStream(state_, &output, &input);
            if (ZSTD_isError(result) != 0) {
                throw DamagedData(std::string("the zstd data are damaged: ") +
                                  ZSTD_getErrorName(result));
            }
            frame_left_ = result;
            file.take(input.pos);
            if (output.pos > 0) {
                return output.pos;
            }
            if (ready.empty()) {
                throw DamagedData("the zstd data end too soon: the file is not whole");
            }
        }
    }

private:
    ZSTD_DStream* state_;
    std::size_t frame_left_ = 0;
};

ByteStream::ByteStream(const std::string& path)
    : name_(path == "-" ? "standard input" : path), file_(std::make_unique<File>(path, name_)) {
    const std::string_view head = file_->look(kZstdMagic.size());
    if (head.substr(0, kGzipMagic.size()) == kGzipMagic) {
        decoder_ = std::make_unique<Gzip>();
    } else if (head.substr(0, kZstdMagic.size()) == kZstdMagic) {
        decoder_ = std::make_unique<Zstd>();
    }
}

ByteStream::~ByteStream() = default;

std::size_t ByteStream::read(char* bytes, std::size_t size) {
    return decoder_ ? decoder_->read(*file_, bytes, size) : file_->read(bytes, size);
}

bool ByteStream::is_plain_file() const { return !decoder_ && file_->is_regular(); }

const char* ByteStream::compression() const { return decoder_ ? decoder_->name() : ""; }

std::uint64_t ByteStream::bytes_read() const { return file_->read_so_far(); }

std::uint64_t ByteStream::bytes_in_all() const { return file_->size(); }

}  // namespace lumivar
