// Draws one frame: from the snapshot through the star renderer into the host's output.
#include <AE/globals.h>
#include <AE/messages.h>
#include <AE/render.h>
#include <base/exceptions.h>
#include <base/newmatrix.h>
#include <libimgops/records.h>
#include <libimgops/renderer.h>
#include <libimgops/star_input.h>
#include <libimgops/starfile.h>

#include <cstdint>
#include <limits>

namespace {

constexpr int kNoStarFilesLine = 740;
constexpr int kNoDatabaseLine = 751;

// Keeps the exponent finite when the control stands at 0.
constexpr double kBiasFloor = 0.000001;

StarRendererData renderer_data(const MyInstance& instance, int width, int height) {
    const double aspect = static_cast<double>(width) / height;
    StarRendererData data;
    data.window_x0 = -aspect;
    data.window_x1 = aspect;
    data.window_y0 = -1.0;
    data.window_y1 = 1.0;
    data.spot_size_x = instance.spot_size * instance.aspect_ratio;
    data.spot_size_y = instance.spot_size;
    data.threshold = instance.lum_threshold;
    data.max_luminance = instance.max_lum;
    data.brightness = instance.star_brightness;
    data.saturation = instance.star_saturation;
    data.bias_exponent = 1.0 / (instance.brightness_bias + kBiasFloor);
    data.tint_strength = instance.tint_strength_param;
    data.parallax_crush = instance.parallax_crush_param;
    data.tint_color =
        Color3(static_cast<float>(instance.tint_rgb[0]), static_cast<float>(instance.tint_rgb[1]),
               static_cast<float>(instance.tint_rgb[2]));
    data.projection = instance.projection_mode;
    data.lines = STARS_LINES_ALL;
    data.use_depth = true;
    // "Treat Pixels As", "Anamorphic DOF" and "3D Stars" do not reach the renderer, deliberately:
    // projects set them, and their frames must not change.
    return data;
}

/// The image as the renderer sees it: alpha, red, green, blue in each pixel.
StarFramebuffer framebuffer(Kelv::Image& image) {
    float* first = image.line_float(0);
    StarFramebuffer fb;
    fb.a = first;
    fb.r = first + 1;
    fb.g = first + 2;
    fb.b = first + 3;
    fb.width = image.width;
    fb.height = image.height;
    fb.stride = static_cast<int>(image.stride / sizeof(float));
    fb.pixel_stride = kFloatsPerPixel;
    return fb;
}

/// The database that the instance asks for, opened unless it is open already.
StarInput& chosen_database(std::int32_t database_index) {
    if (globals == nullptr || globals->starfiles.empty()) {
        throw AssertXception("!globals->starfiles.empty()", kShellSource, kRenderFunction,
                             kNoStarFilesLine);
    }
    // Compared before clamping, deliberately: with the choice left alone (-1) the file is opened
    // anew for every frame, so that one replaced on disk is seen.
    if (!globals->stardb || globals->stardb_index != database_index) {
        const int last = static_cast<int>(globals->starfiles.len()) - 1;
        const int index = clamp(database_index, 0, last);
        StarInput* opened =
            op_stars_file_input(globals->starfiles[static_cast<uword>(index)].c_str());
        // Before the old one closes, which may throw: the two always belong together.
        globals->stardb_index = index;
        globals->stardb.reset(opened);
    }
    if (!globals->stardb) {
        throw AssertXception("globals->stardb != 0", kShellSource, kRenderFunction,
                             kNoDatabaseLine);
    }
    return *globals->stardb;
}

}  // namespace

bool float_image_fits(int width, int height) {
    if (width < 0 || height < 0) {
        return false;
    }
    const u64 stride = static_cast<u64>(width) * kFloatsPerPixel * sizeof(float);
    const u64 limit = std::numeric_limits<u32>::max();
    return stride <= limit && (height == 0 || stride <= limit / static_cast<u64>(height));
}

void Lumivar_Render(const MyInstance& instance, int width, int height, PF_PixelFormat format,
                    PF_EffectWorld* output) {
    XASSERT(output != nullptr);
    if (!float_image_fits(width, height)) {
        XTHROW("a frame of %d x %d pixels is too large", width, height);
    }
    const StarRendererData data = renderer_data(instance, width, height);
    Kelv::Image image(Kelv::ImageSpec(width, height, Kelv::ImageSpec::BGRA_FLOAT));
    image.make_blank();
    const StarFramebuffer fb = framebuffer(image);

    StarInput& stars = chosen_database(instance.database_index);
    StarRenderer renderer(data, fb, stars, instance.cameras);
    bool drew = false;
    renderer.render_stars(drew);
    stars.reset();
    convert_image(image, format, output);
}
