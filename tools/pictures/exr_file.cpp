#include "exr_file.h"

#include <ImathBox.h>
#include <ImathMatrix.h>
#include <OpenEXR/Iex.h>
#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfIO.h>
#include <OpenEXR/ImfInputFile.h>
#include <OpenEXR/ImfIntAttribute.h>
#include <OpenEXR/ImfMatrixAttribute.h>
#include <OpenEXR/ImfOutputFile.h>
#include <OpenEXR/ImfRationalAttribute.h>
#include <OpenEXR/ImfStandardAttributes.h>
#include <OpenEXR/ImfStringAttribute.h>
#include <half.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "exr_attributes.h"
#include "failure.h"
#include "halo.h"
#include "linear_image.h"
#include "program_version.h"

namespace lumivar {
namespace {

using host::Depth;

constexpr std::array<const char*, 4> kChannels = {"R", "G", "B", "A"};
/// Where a channel stands in a pixel of the host: alpha, red, green, blue.
constexpr std::array<std::size_t, 4> kInFrame = {1, 2, 3, 0};
/// Rows that are converted together: enough for any block of the format.
constexpr int kRowsAtOnce = 256;
/// Frames of stars become 1 % larger than at the library's own level, 4, and are packed a quarter
/// faster.
constexpr int kDeflateLevel = 1;
/// All work in the calling thread: other frames are under way in other processes.
constexpr int kNoThreads = 0;

/// The format's library catches what its stream throws, and tells it in words of its own: the
/// failure is kept here.
class Stream : public Imf::OStream {
public:
    explicit Stream(AtomicFile& file) : OStream("picture"), file_(file) {}

    void write(const char* bytes, int count) override {
        keep(
            [&] { file_.write(std::as_bytes(std::span(bytes, static_cast<std::size_t>(count)))); });
        position_ += static_cast<std::uint64_t>(count);
        if (went_back_) {
            keep([&] { block_table_.append(bytes, static_cast<std::size_t>(count)); });
        }
    }
    std::uint64_t tellp() override { return position_; }
    void seekp(std::uint64_t position) override {
        if (position != position_) {
            keep([&] { file_.seek(position); });
            went_back_ = position < position_;
            position_ = position;
        }
    }
    /// Throws what a call has thrown before.
    void rethrow() const {
        if (failure_) {
            std::rethrow_exception(failure_);
        }
    }
    /// Whether the library has gone back and told where each block of rows lies: it passes over
    /// blocks that could not be packed, for want of memory say, and over a failure to tell, without
    /// a word. A block that is missing lies at 0.
    bool has_all_blocks() const {
        constexpr std::size_t kPlaceBytes = 8;
        const std::string_view table = block_table_;
        for (std::size_t at = 0; at < table.size(); at += kPlaceBytes) {
            if (table.substr(at, kPlaceBytes).find_first_not_of('\0') == std::string_view::npos) {
                return false;
            }
        }
        return !table.empty() && table.size() % kPlaceBytes == 0;
    }

private:
    template <class Call>
    void keep(Call call) {
        try {
            call();
        } catch (...) {
            failure_ = failure_ ? failure_ : std::current_exception();
            throw;
        }
    }

    AtomicFile& file_;
    std::uint64_t position_ = 0;
    std::exception_ptr failure_;
    bool went_back_ = false;
    std::string block_table_;
};

Imf::Compression library_compression(ExrCompression compression) {
    switch (compression) {
        case ExrCompression::None:
            return Imf::NO_COMPRESSION;
        case ExrCompression::Rle:
            return Imf::RLE_COMPRESSION;
        case ExrCompression::Zips:
            return Imf::ZIPS_COMPRESSION;
        case ExrCompression::Zip:
            return Imf::ZIP_COMPRESSION;
        case ExrCompression::Piz:
            return Imf::PIZ_COMPRESSION;
        case ExrCompression::Dwaa:
            return Imf::DWAA_COMPRESSION;
    }
    return Imf::ZIP_COMPRESSION;
}

void describe_shot(Imf::Header& header, const ShotInfo& shot) {
    if (shot.frame_rate) {
        const auto [num, den] = *shot.frame_rate;
        header.insert("framesPerSecond", Imf::RationalAttribute(Imf::Rational(num, den)));
    }
    if (shot.frame) {
        header.insert("frame", Imf::IntAttribute(*shot.frame));
    }
    // A time code counts whole frames a second, with two bits for the tens of a frame.
    constexpr int kFastest = 30;
    if (shot.frame && shot.frame_rate && shot.frame_rate->second == 1 &&
        shot.frame_rate->first <= kFastest && *shot.frame >= 0) {
        const int rate = shot.frame_rate->first;
        const int seconds = *shot.frame / rate;
        Imf::addTimeCode(header, Imf::TimeCode(seconds / 3600 % 24, seconds / 60 % 60, seconds % 60,
                                               *shot.frame % rate));
    }
    if (shot.world_to_camera) {
        Imath::M44f matrix;
        std::copy(shot.world_to_camera->begin(), shot.world_to_camera->end(), matrix.getValue());
        Imf::addWorldToCamera(header, matrix);
    }
}

Imf::Header header_of(const FrameView& frame, const PictureInfo& info,
                      const PictureContent& content) {
    Imf::Header header(frame.width, frame.height);
    header.compression() = library_compression(content.compression.value_or(kUsualCompression));
    header.zipCompressionLevel() = kDeflateLevel;
    header.insert("Software", Imf::StringAttribute(kProgramVersion));
    header.insert("oiio:ColorSpace", Imf::StringAttribute("Linear"));
    const std::string description = description_of(info);
    if (!description.empty()) {
        Imf::addComments(header, description);
    }
    for (const auto& [key, value] : info.details) {
        header.insert(std::string(kDetailPrefix) + key, Imf::StringAttribute(value));
    }
    if (!info.settings.empty()) {
        header.insert(std::string(kDetailPrefix) + "settings", Imf::StringAttribute(info.settings));
    }
    describe_shot(header, info.shot);
    const Imf::PixelType type = content.half ? Imf::HALF : Imf::FLOAT;
    for (const char* const name : kChannels) {
        header.channels().insert(name, Imf::Channel(type));
    }
    return header;
}

/// The library takes the address of the picture's first pixel, whatever row it is about to read.
Imf::Slice slice(Imf::PixelType type, const void* first, std::size_t x_bytes,
                 std::ptrdiff_t y_bytes) {
    return {type, static_cast<char*>(const_cast<void*>(first)), x_bytes,
            static_cast<std::size_t>(y_bytes)};
}

void write_in_place(Imf::OutputFile& output, const FrameView& frame) {
    Imf::FrameBuffer buffer;
    for (std::size_t channel = 0; channel < kChannels.size(); ++channel) {
        const auto* const first =
            static_cast<const std::byte*>(frame.pixels) + kInFrame[channel] * sizeof(float);
        buffer.insert(kChannels[channel],
                      slice(Imf::FLOAT, first, 4 * sizeof(float), frame.row_bytes));
    }
    output.setFrameBuffer(buffer);
    output.writePixels(frame.height);
}

/// Larger numbers than a half holds become infinite, as by the format's own conversion.
void store(float value, half& out) { out = half(value); }
void store(float value, float& out) { out = value; }

/// Some rows at a time, each sample by `value(x, y, channel)`.
template <class Sample, class Function>
void write_converted(Imf::OutputFile& output, const FrameView& frame, Imf::PixelType type,
                     Function value) {
    const std::size_t width = static_cast<std::size_t>(frame.width);
    const std::size_t row = width * kChannels.size();
    std::vector<Sample> rows(row * static_cast<std::size_t>(std::min(kRowsAtOnce, frame.height)));
    for (int top = 0; top < frame.height; top += kRowsAtOnce) {
        const int count = std::min(kRowsAtOnce, frame.height - top);
        Sample* out = rows.data();
        for (int y = top; y < top + count; ++y) {
            for (int x = 0; x < frame.width; ++x) {
                for (std::size_t channel = 0; channel < kChannels.size(); ++channel) {
                    store(value(x, y, channel), *out++);
                }
            }
        }
        Imf::FrameBuffer buffer;
        const auto y_bytes = static_cast<std::ptrdiff_t>(row * sizeof(Sample));
        for (std::size_t channel = 0; channel < kChannels.size(); ++channel) {
            const auto* const first = reinterpret_cast<const std::byte*>(&rows[channel]);
            buffer.insert(kChannels[channel], slice(type, first - top * y_bytes,
                                                    kChannels.size() * sizeof(Sample), y_bytes));
        }
        output.setFrameBuffer(buffer);
        output.writePixels(count);
    }
}

template <class Sample>
void write_light(Imf::OutputFile& output, const FrameView& frame, double halo,
                 Imf::PixelType type) {
    if (halo == 0.0) {
        write_converted<Sample>(output, frame, type, [&](int x, int y, std::size_t channel) {
            return linear_sample(frame, x, y, kInFrame[channel]);
        });
        return;
    }
    LinearImage light = linear_image(frame);
    add_halo(light, halo);
    write_converted<Sample>(output, frame, type, [&](int x, int y, std::size_t channel) {
        const std::size_t pixel =
            static_cast<std::size_t>(y) * static_cast<std::size_t>(frame.width) +
            static_cast<std::size_t>(x);
        return channel == 3 ? linear_sample(frame, x, y, 0) : light.samples[3 * pixel + channel];
    });
}

}  // namespace

void write_exr(AtomicFile& file, const FrameView& frame, const PictureInfo& info,
               const PictureContent& content) {
    Stream stream(file);
    try {
        Imf::OutputFile output(stream, header_of(frame, info, content), kNoThreads);
        if (content.half) {
            write_light<half>(output, frame, content.linear_halo, Imf::HALF);
        } else if (content.linear_halo != 0.0 || frame.depth != Depth::Float) {
            write_light<float>(output, frame, content.linear_halo, Imf::FLOAT);
        } else {
            write_in_place(output, frame);
        }
    } catch (const Iex::BaseExc& error) {
        stream.rethrow();
        throw Failure("cannot write " + file.path().string() + ": " + error.what());
    }
    // The library writes its last table when the file is taken down, where nothing may be thrown.
    stream.rethrow();
    if (!stream.has_all_blocks()) {
        throw Failure("cannot write " + file.path().string() +
                      ": not all rows could be packed; is there memory left?");
    }
}

PictureDetails read_exr_details(const std::filesystem::path& path) {
    try {
        // A file may say what it likes of its size: the library would make a table of that many
        // rows.
        constexpr int kLongestSide = 1 << 17;
        constexpr std::size_t kMostChannels = 64;
        Imf::Header::setMaxImageSize(kLongestSide, kLongestSide);
        require_plausible_attributes(path);
        Imf::InputFile input(path.c_str(), kNoThreads);
        if (!input.isComplete()) {
            throw Failure("cannot read the picture " + path.string() + ": it was cut short");
        }
        const Imath::Box2i window = input.header().dataWindow();
        const std::int64_t columns = std::int64_t{window.max.x} - window.min.x + 1;
        const auto fail = [&path]() -> Failure {
            return Failure("cannot read the picture " + path.string() + ": it is too large");
        };
        if (columns < 1 || columns > kLongestSide) {
            throw fail();
        }
        const auto width = static_cast<std::size_t>(columns);
        Imf::FrameBuffer buffer;
        std::vector<std::vector<float>> rows;
        const Imf::ChannelList& channels = input.header().channels();
        for (auto channel = channels.begin(); channel != channels.end(); ++channel) {
            if (rows.size() == kMostChannels) {
                throw fail();
            }
            // Every row into the same memory: what is in it does not matter.
            rows.emplace_back(width);
            buffer.insert(channel.name(),
                          slice(Imf::FLOAT, rows.back().data() - window.min.x, sizeof(float), 0));
        }
        input.setFrameBuffer(buffer);
        input.readPixels(window.min.y, window.max.y);
        PictureDetails details;
        for (auto attribute = input.header().begin(); attribute != input.header().end();
             ++attribute) {
            if (const auto* const text =
                    dynamic_cast<const Imf::StringAttribute*>(&attribute.attribute())) {
                add_attribute(attribute.name(), text->value(), details);
            }
        }
        return details;
    } catch (const Iex::BaseExc& error) {
        throw Failure("cannot read the picture " + path.string() + ": " + error.what());
    }
}

}  // namespace lumivar
