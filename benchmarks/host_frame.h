// A frame of the host's integer pixels, as the effect fills it.
#pragma once

#include <AE/render.h>
#include <libkelvimage/image.h>

#include <cstddef>
#include <vector>

namespace bench {

/// `Code`: an unsigned char or an unsigned short, for 8 or 16 bits a channel.
template <class Code>
class HostFrame {
public:
    HostFrame(int width, int height)
        : codes_(std::size_t{4} * static_cast<std::size_t>(width) *
                 static_cast<std::size_t>(height)) {
        void* const first = codes_.data();
        world_.data = static_cast<PF_Pixel*>(first);
        world_.width = width;
        world_.height = height;
        world_.rowbytes = 4 * width * static_cast<int>(sizeof(Code));
    }
    HostFrame(const HostFrame&) = delete;
    HostFrame& operator=(const HostFrame&) = delete;

    void take(Kelv::Image& image) {
        convert_image(image, sizeof(Code) == 1 ? PF_PixelFormat_ARGB32 : PF_PixelFormat_ARGB64,
                      &world_);
    }
    const std::vector<Code>& codes() const { return codes_; }

private:
    std::vector<Code> codes_;
    PF_EffectWorld world_ = {};
};

}  // namespace bench
