// The file: a mark, then 32-bit words, lowest byte first: width, height, the shortest segment as a
// double (two words), then four words a pixel for each of the three pictures; light as its float's
// bits.
#include "frame_file.h"

#include <bit>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace processors {

namespace {

constexpr char kMark[] = "LVFRAME1";
constexpr std::size_t kMarkLength = sizeof kMark - 1;
constexpr std::size_t kHeaderLength = kMarkLength + 4 * 4;

void put(std::string& bytes, std::uint32_t word) {
    for (unsigned shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>(word >> shift & 0xFFU);
    }
}

class Words {
public:
    explicit Words(const std::string& bytes) : bytes_(bytes) {}
    std::uint32_t next() {
        std::uint32_t word = 0;
        for (unsigned shift = 0; shift < 32; shift += 8) {
            word |= std::uint32_t{static_cast<unsigned char>(bytes_[at_++])} << shift;
        }
        return word;
    }

private:
    const std::string& bytes_;
    std::size_t at_ = kMarkLength;
};

}  // namespace

void write_frame(const std::filesystem::path& path, const FrameFile& frame) {
    std::string bytes = kMark;
    put(bytes, static_cast<std::uint32_t>(frame.light.width));
    put(bytes, static_cast<std::uint32_t>(frame.light.height));
    const auto shortest = std::bit_cast<std::uint64_t>(frame.shortest);
    put(bytes, static_cast<std::uint32_t>(shortest));
    put(bytes, static_cast<std::uint32_t>(shortest >> 32U));
    for (const double value : frame.light.values) {
        put(bytes, std::bit_cast<std::uint32_t>(static_cast<float>(value)));
    }
    for (const support::Picture* codes : {&frame.codes_of_8, &frame.codes_of_16}) {
        for (const double code : codes->values) {
            put(bytes, static_cast<std::uint32_t>(code));
        }
    }
    std::ofstream out(path, std::ios::binary);
    out << bytes;
    if (!out.flush()) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

FrameFile read_frame(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    if (bytes.size() < kHeaderLength || bytes.compare(0, kMarkLength, kMark) != 0) {
        throw std::runtime_error("not a frame: " + path.string());
    }
    Words words(bytes);
    const std::uint32_t width = words.next();
    const std::uint32_t height = words.next();
    const std::uint64_t pixels = std::uint64_t{width} * height;
    if (bytes.size() != kHeaderLength + pixels * 3 * 4 * 4) {
        throw std::runtime_error("not a whole frame: " + path.string());
    }
    FrameFile frame;
    const std::uint64_t low = words.next();
    frame.shortest = std::bit_cast<double>(low | std::uint64_t{words.next()} << 32U);
    const support::Picture blank(static_cast<int>(width), static_cast<int>(height), 4);
    frame.light = frame.codes_of_8 = frame.codes_of_16 = blank;
    for (double& value : frame.light.values) {
        value = static_cast<double>(std::bit_cast<float>(words.next()));
    }
    for (support::Picture* codes : {&frame.codes_of_8, &frame.codes_of_16}) {
        for (double& code : codes->values) {
            code = words.next();
        }
    }
    return frame;
}

}  // namespace processors
