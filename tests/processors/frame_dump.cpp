// usage: frame_dump FOLDER
// Plays the scenes through the stand-in host to the plug-in of this build and writes what it draws,
// a file a frame.
#include <host/session.h>

#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <stdexcept>

#include "dumped_scenes.h"
#include "frame_file.h"
#include "support/scratch.h"

namespace {

namespace fs = std::filesystem;
using host::Depth;
using processors::DumpedScene;

host::Frame render(host::Session& session, const DumpedScene& dumped, Depth depth) {
    host::RenderOptions options;
    options.depth = depth;
    host::Frame frame =
        session.render(dumped.scene, dumped.scene.composition.frame_time(6), options);
    if (frame.status != 0 || !frame.drawn || frame.undrawn_pixels != 0 ||
        !frame.violations.empty()) {
        throw std::runtime_error(dumped.name + ": the plug-in did not draw the frame");
    }
    return frame;
}

template <class Channel>
support::Picture picture_of(const host::World& world) {
    support::Picture picture(world.width(), world.height(), 4);
    for (int y = 0; y < world.height(); ++y) {
        for (int x = 0; x < world.width(); ++x) {
            const auto pixel = world.pixel<Channel>(x, y);
            for (int channel = 0; channel < 4; ++channel) {
                picture.at(x, y, channel) =
                    static_cast<double>(pixel[static_cast<std::size_t>(channel)]);
            }
        }
    }
    return picture;
}

processors::FrameFile draw(const DumpedScene& dumped) {
    const ScratchFolder root;
#ifdef _WIN32
    const fs::path module = root / "Lumivar.aex";
#else
    const fs::path module = root / "Lumivar.plugin/Contents/MacOS/Lumivar";
    fs::create_directories(module.parent_path());
#endif
    fs::copy_file(LUMIVAR_MODULE, module);
    support::write_catalogue(root / "sky.stars", support::kVersion2, dumped.stars);
    host::Session session(module);

    processors::FrameFile file;
    const host::Frame floating = render(session, dumped, Depth::Float);
    file.shortest = processors::shortest_segment(dumped, floating.camera_times);
    file.light = picture_of<float>(floating.world);
    file.codes_of_8 = picture_of<std::uint8_t>(render(session, dumped, Depth::Bits8).world);
    file.codes_of_16 = picture_of<std::uint16_t>(render(session, dumped, Depth::Bits16).world);
    return file;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fputs("usage: frame_dump FOLDER\n", stderr);
        return 2;
    }
    try {
        for (const DumpedScene& dumped : processors::dumped_scenes()) {
            const processors::FrameFile file = draw(dumped);
            processors::write_frame(fs::path(arguments[1]) / (dumped.name + ".frame"), file);
            std::printf("%s: shortest segment %g pixels\n", dumped.name.c_str(), file.shortest);
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "frame_dump: %s\n", error.what());
        return 1;
    }
}
