#include "golden_picture.h"

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <stdexcept>
#include <vector>

namespace golden {

namespace {

using support::Picture;

constexpr std::array<const char*, 6> channel_names = {"R",           "G",           "B",
                                                      "allowance.R", "allowance.G", "allowance.B"};

/// A whole file in floats.
class Channels {
public:
    explicit Channels(const std::string& path) : path_(path) {
        const auto input = OIIO::ImageInput::open(path);
        if (!input) {
            throw std::runtime_error(OIIO::geterror());
        }
        spec_ = input->spec();
        values_.resize(spec_.image_pixels() * static_cast<std::size_t>(spec_.nchannels));
        if (!input->read_image(0, 0, 0, -1, OIIO::TypeFloat, values_.data())) {
            throw std::runtime_error(path + ": " + input->geterror());
        }
    }

    /// Three channels, the first of them `channel_names[first]`.
    Picture triple(std::size_t first) const {
        Picture picture(spec_.width, spec_.height, 3);
        for (std::size_t c = 0; c < 3; ++c) {
            // By name: files keep channels in an order of their own.
            const int at = spec_.channelindex(channel_names[first + c]);
            if (at < 0) {
                throw std::runtime_error(path_ + ": no channel " + channel_names[first + c]);
            }
            for (std::size_t i = 0; i < spec_.image_pixels(); ++i) {
                picture.values[3 * i + c] =
                    static_cast<double>(values_[i * static_cast<std::size_t>(spec_.nchannels) +
                                                static_cast<std::size_t>(at)]);
            }
        }
        return picture;
    }

private:
    std::string path_;
    OIIO::ImageSpec spec_;
    std::vector<float> values_;
};

}  // namespace

void write_picture(const std::string& path, const reference::Rendering& rendering) {
    const Picture& light = rendering.light;
    OIIO::ImageSpec spec(light.width, light.height, static_cast<int>(channel_names.size()),
                         OIIO::TypeFloat);
    spec.channelnames.assign(channel_names.begin(), channel_names.end());
    spec.attribute("compression", "zip");
    std::vector<float> values;
    values.reserve(spec.image_pixels() * channel_names.size());
    for (std::size_t i = 0; i < light.values.size(); i += 3) {
        for (const Picture* picture : {&light, &rendering.allowance}) {
            for (std::size_t c = 0; c < 3; ++c) {
                values.push_back(static_cast<float>(picture->values[i + c]));
            }
        }
    }
    const auto output = OIIO::ImageOutput::create(path);
    if (!output) {
        throw std::runtime_error(OIIO::geterror());
    }
    if (!output->open(path, spec) || !output->write_image(OIIO::TypeFloat, values.data()) ||
        !output->close()) {
        throw std::runtime_error(path + ": " + output->geterror());
    }
}

reference::Rendering read_picture(const std::string& path) {
    const Channels channels(path);
    return {channels.triple(0), channels.triple(3)};
}

Picture read_light(const std::string& path) { return Channels(path).triple(0); }

}  // namespace golden
