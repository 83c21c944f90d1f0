// The open database when the system fails underneath it.
#include <AE/globals.h>
#include <AE/render.h>
#include <gtest/gtest.h>

#include <support/catalogue.h>
#include <support/expect_throw.h>
#include <support/faults.h>
#include <support/scratch.h>

namespace {

constexpr int kWidth = 33;
constexpr int kHeight = 17;

/// Red of the frame's middle, which a star straight ahead lights.
float middle(std::int32_t database_index) {
    MyInstance instance;
    instance.spot_size = 60.0;
    instance.aspect_ratio = 1.0;
    instance.max_lum = 1.0;
    instance.star_brightness = 5.0;
    instance.brightness_bias = 1.0;
    instance.database_index = database_index;
    // Looks along +z, where lon is 90 degrees.
    instance.cameras.append();
    PF_PixelFloat pixels[kHeight][kWidth] = {};
    PF_EffectWorld world = {};
    world.data = reinterpret_cast<PF_Pixel*>(pixels);
    world.width = kWidth;
    world.height = kHeight;
    world.rowbytes = sizeof pixels[0];
    Lumivar_Render(instance, kWidth, kHeight, PF_PixelFormat_ARGB128, &world);
    return pixels[kHeight / 2][kWidth / 2].red;
}

}  // namespace

TEST(DatabaseFaults, FileThatCannotBeClosedIsNotTakenForTheNextOne) {
    const ScratchFolder folder;
    support::write_catalogue(folder / "star.stars", support::kVersion1, {{.lon = 90}});
    support::write_catalogue(folder / "dark.stars", support::kVersion1, {});
    globals = new LumivarGlobals;
    globals->starfiles.append((folder / "star.stars").c_str());
    globals->starfiles.append((folder / "dark.stars").c_str());
    EXPECT_GT(middle(0), 0.0F);
    {
        const Fault<&OSAPI::Syscalls::munmap> stuck(EINVAL);
        const std::string message = thrown_message([] { middle(1); });
        EXPECT_EQ(message.rfind(with_error("munmap", EINVAL), 0), 0U) << message;
    }
    EXPECT_GT(middle(0), 0.0F) << "the file with the star again, not the dark one";
    EXPECT_EQ(middle(1), 0.0F);
    drop_globals();
}
