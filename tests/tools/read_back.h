// Picture files read back through the picture library.
#pragma once

#include <OpenImageIO/imageio.h>

#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

struct ReadBack {
    OIIO::ImageSpec spec;
    std::vector<unsigned char> bytes;

    /// One value; `Sample` must be the file's type.
    template <class Sample>
    Sample at(int x, int y, int channel) const {
        Sample sample;
        std::memcpy(&sample,
                    bytes.data() + (static_cast<std::size_t>(y * spec.width + x) *
                                        static_cast<std::size_t>(spec.nchannels) +
                                    static_cast<std::size_t>(channel)) *
                                       sizeof(Sample),
                    sizeof sample);
        return sample;
    }
    /// All of them, from the first row on; `Sample` must be the file's type.
    template <class Sample>
    std::vector<Sample> samples() const {
        std::vector<Sample> all(bytes.size() / sizeof(Sample));
        std::memcpy(all.data(), bytes.data(), bytes.size());
        return all;
    }
};

/// The whole file in its own type. Throws when it cannot be read.
inline ReadBack read_back(const std::string& path) {
    const auto input = OIIO::ImageInput::open(path);
    if (!input) {
        throw std::runtime_error(OIIO::geterror());
    }
    ReadBack result;
    result.spec = input->spec();
    result.bytes.resize(result.spec.image_bytes(true));
    if (!input->read_image(0, 0, 0, -1, result.spec.format, result.bytes.data())) {
        throw std::runtime_error(input->geterror());
    }
    return result;
}
