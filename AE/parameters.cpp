// Reads the controls of one frame.
#include <AE/instance.h>

#include <cstdint>
#include <cstring>

namespace {

/// How a control's value becomes a field of the instance.
enum class ParamKind {
    Number,
    Colour,
    Integer,
    Checkbox,
    // Converted like a checkbox, deliberately: both choices of the popup read as 1.
    PixelTreatment,
    Projection,
    Database
};

/// An 8-bit channel as 0 to 1, in single precision: renders must not change in their last bits.
double channel(A_u_char code) { return static_cast<double>(static_cast<float>(code) / 255.0F); }

/// Stores a control's value in the member `field` of `instance`.
template <ParamKind kind, auto field>
void store(MyInstance& instance, const PF_ParamDefUnion& u) {
    auto& destination = instance.*field;
    if constexpr (kind == ParamKind::Number) {
        destination = u.fs_d.value;
    } else if constexpr (kind == ParamKind::Colour) {
        destination[0] = channel(u.cd.value.red);
        destination[1] = channel(u.cd.value.green);
        destination[2] = channel(u.cd.value.blue);
    } else if constexpr (kind == ParamKind::Integer) {
        destination = u.sd.value;
    } else if constexpr (kind == ParamKind::Checkbox) {
        destination = u.bd.value != 0 ? 1 : 0;
    } else if constexpr (kind == ParamKind::PixelTreatment) {
        destination = u.pd.value != 0 ? 1 : 0;
    } else if constexpr (kind == ParamKind::Projection) {
        switch (u.pd.value) {
            case 1:
                destination = Persp;
                break;
            case 2:
                destination = HemiSph;
                break;
            case 3:
                destination = AzEqu;
                break;
            default:
                break;
        }
    } else {
        static_assert(kind == ParamKind::Database);
        // As unsigned, so that the smallest value wraps instead of overflowing.
        destination = static_cast<std::int32_t>(static_cast<u32>(u.pd.value) - 1U);
    }
}

struct ParamRow {
    ParamId id;
    void (*store)(MyInstance& instance, const PF_ParamDefUnion& u);
};

// In the order in which the host is asked.
constexpr ParamRow kRows[] = {
    {kStarSpotSize, store<ParamKind::Number, &MyInstance::spot_size>},
    {kStarAspectRatio, store<ParamKind::Number, &MyInstance::aspect_ratio>},
    {kLuminanceThreshold, store<ParamKind::Number, &MyInstance::lum_threshold>},
    {kMaximumLuminance, store<ParamKind::Number, &MyInstance::max_lum>},
    {kStarBrightness, store<ParamKind::Number, &MyInstance::star_brightness>},
    {kBrightnessBias, store<ParamKind::Number, &MyInstance::brightness_bias>},
    {kStarSaturation, store<ParamKind::Number, &MyInstance::star_saturation>},
    {kTintStrength, store<ParamKind::Number, &MyInstance::tint_strength_param>},
    {kTintColor, store<ParamKind::Colour, &MyInstance::tint_rgb>},
    {kParallaxCrush, store<ParamKind::Number, &MyInstance::parallax_crush_param>},
    {kMotionBlurSegments, store<ParamKind::Integer, &MyInstance::mb_segments>},
    {kTreatPixelsAs, store<ParamKind::PixelTreatment, &MyInstance::treat_srgb>},
    {kAnamorphicDOF, store<ParamKind::Checkbox, &MyInstance::anamorphic_dof>},
    {k3DStars, store<ParamKind::Checkbox, &MyInstance::stars_3d>},
    {kProjection, store<ParamKind::Projection, &MyInstance::projection_mode>},
    {kStarDatabase, store<ParamKind::Database, &MyInstance::database_index>},
};

/// Reads the controls in order up to the first that the host refuses.
PF_Err read_controls(PF_InData* in_data, MyInstance& instance) {
    for (const ParamRow& row : kRows) {
        PF_ParamDef def;
        std::memset(&def, 0, sizeof def);
        // Never checked in again, deliberately: hosts release a pre-render's checkouts themselves.
        const PF_Err err =
            in_data->inter.checkout_param(in_data->effect_ref, row.id, in_data->current_time,
                                          in_data->time_step, in_data->time_scale, &def);
        if (err != PF_Err_NONE) {
            return err;
        }
        row.store(instance, def.u);
    }
    return PF_Err_NONE;
}

}  // namespace

void get_params(PF_InData* in_data, MyInstance& instance, AEGP_SuiteHandler& suites) {
    const PF_Err err = read_controls(in_data, instance);
    instance.cameras.clear();
    if (err == PF_Err_NONE) {
        sample_cameras(in_data, instance, suites);
    }
    if (instance.cameras.empty()) {
        // The default one: at the origin, with the lens that projects without a camera have.
        instance.cameras.append();
    }
}
