// The snapshot of all controls and cameras that one frame is rendered from.
#pragma once

#include <AE/suites.h>
#include <base/array.h>
#include <base/words.h>
#include <host_api/effect_interface.h>
#include <libimgops/records.h>

#include <cstdint>

/// The effect's controls by their index and id, which saved projects refer to. 0 is the input
/// layer.
enum ParamId : A_long {
    kStarBrightness = 1,
    kBrightnessBias = 2,
    kStarSaturation = 3,
    kTintStrength = 4,
    kTintColor = 5,
    kMaximumLuminance = 6,
    kLuminanceThreshold = 7,
    kStarSpotSize = 8,
    kStarAspectRatio = 9,
    kMotionBlurSegments = 10,
    kProjection = 11,
    k3DStars = 12,
    kParallaxCrush = 13,
    kTreatPixelsAs = 14,
    kAnamorphicDOF = 15,
    kStarDatabase = 16,
    kParamCount = 17  ///< the input layer counts
};

/// Everything a frame depends on besides the star databases. A field whose control could not be
/// read, or held a value without meaning, stays 0.
struct MyInstance {
    double spot_size = 0.0;
    double aspect_ratio = 0.0;
    double lum_threshold = 0.0;
    double max_lum = 0.0;
    double star_brightness = 0.0;
    double brightness_bias = 0.0;
    double star_saturation = 0.0;
    double tint_strength_param = 0.0;
    double tint_rgb[3] = {0.0, 0.0, 0.0};  ///< red, green, blue; 0 to 1
    double parallax_crush_param = 0.0;
    std::int32_t mb_segments = 0;
    u32 treat_srgb = 0;
    u32 anamorphic_dof = 0;
    u32 stars_3d = 0;
    op_stars_projection projection_mode = Persp;
    Array<camera> cameras;            ///< at least one once filled
    std::int32_t database_index = 0;  ///< counted from 0; -1 for the unset choice
};

/// Fills `instance` from the controls at the current time and the composition's camera across the
/// shutter. An error of the host ends the reading quietly; there is always a camera at the end.
/// Throws as `AEGP_SuiteHandler` does.
void get_params(PF_InData* in_data, MyInstance& instance, AEGP_SuiteHandler& suites);

/// Fills `out` with the camera's position and lens at `comp_time`; `comp_width` and `comp_height`
/// are the composition's size in pixels. What the host does not tell keeps its default. Throws as
/// `AEGP_SuiteHandler` does.
void get_camera_sample(camera& out, A_Time& comp_time, AEGP_SuiteHandler& suites,
                       AEGP_LayerH camera_layer, int comp_width, int comp_height);

/// Appends the camera at the shutter's opening and, with motion blur on, at the ends of
/// `mb_segments` equal parts of the time it stays open. Appends nothing when there is no camera or
/// the host reports an error.
void sample_cameras(PF_InData* in_data, MyInstance& instance, AEGP_SuiteHandler& suites);
