// How the controls are declared to the host. Users see these names, ranges and defaults, and saved
// projects depend on their order: they are a contract.
#include <AE/commands.h>
#include <AE/globals.h>
#include <AE/instance.h>
#include <osapi/path_text.h>
#include <osapi/system_text.h>

#include <cstring>

namespace {

constexpr float kCurveTolerance = 0.05F;
constexpr char kProjectionChoices[] = "Persp|HemiSph|AzEqu";
constexpr A_short kProjectionCount = 3;
constexpr char kTreatmentChoices[] = "Linear Luminance|sRGB";
constexpr A_short kTreatmentCount = 2;
constexpr PF_Pixel kTintDefault = {255, 128, 128, 128};

/// Adds controls one after the other until the host reports an error.
class ControlAdder {
public:
    explicit ControlAdder(PF_InData* in_data) : in_data_(in_data) {}

    void float_slider(ParamId id, const char* name, float valid_max, float slider_max, float value,
                      A_short precision) {
        add(id, name, PF_Param_FLOAT_SLIDER, [&](PF_ParamDefUnion& u) {
            u.fs_d.value = static_cast<double>(value);
            u.fs_d.dephault = value;
            u.fs_d.valid_min = 0.0F;
            u.fs_d.valid_max = valid_max;
            u.fs_d.slider_min = 0.0F;
            u.fs_d.slider_max = slider_max;
            u.fs_d.precision = precision;
            u.fs_d.display_flags = PF_ValueDisplayFlag_NONE;
            u.fs_d.fs_flags = PF_FSliderFlag_WANT_PHASE;
            u.fs_d.curve_tolerance = kCurveTolerance;
        });
    }

    void slider(ParamId id, const char* name, A_long max, A_long value) {
        add(id, name, PF_Param_SLIDER, [&](PF_ParamDefUnion& u) {
            u.sd.value = value;
            u.sd.dephault = value;
            u.sd.valid_min = 0;
            u.sd.valid_max = max;
            u.sd.slider_min = 0;
            u.sd.slider_max = max;
        });
    }

    void colour(ParamId id, const char* name, const PF_Pixel& value) {
        add(id, name, PF_Param_COLOR, [&](PF_ParamDefUnion& u) {
            u.cd.value = value;
            u.cd.dephault = value;
        });
    }

    void checkbox(ParamId id, const char* name, bool value) {
        add(id, name, PF_Param_CHECKBOX, [&](PF_ParamDefUnion& u) {
            u.bd.value = value ? 1 : 0;
            u.bd.dephault = value ? 1 : 0;
            u.bd.u.nameptr = "";
        });
    }

    /// `choices` are joined by "|"; `value` counts from 1, and 0 stands for none.
    void popup(ParamId id, const char* name, const char* choices, A_short num_choices,
               A_short value) {
        add(id, name, PF_Param_POPUP, [&](PF_ParamDefUnion& u) {
            u.pd.value = value;
            u.pd.dephault = value;
            u.pd.num_choices = num_choices;
            u.pd.u.namesptr = choices;
        });
    }

    PF_Err err() const { return err_; }

private:
    template <class Fill>
    void add(ParamId id, const char* name, PF_ParamType type, Fill fill) {
        if (err_ != PF_Err_NONE) {
            return;
        }
        PF_ParamDef def;
        // All of it: braces clear the union's first member and no more.
        std::memset(&def, 0, sizeof def);
        def.uu.id = id;
        def.param_type = type;
        in_data_->utils->ansi.strcpy(def.name, name);
        fill(def.u);
        err_ = in_data_->inter.add_param(in_data_->effect_ref, PF_ParamIndex_APPEND, &def);
    }

    PF_InData* in_data_;
    PF_Err err_ = PF_Err_NONE;
};

/// The databases' file names, joined by "|".
String database_choices() {
    String choices;
    if (globals != nullptr) {
        for (uword i = 0; i < globals->starfiles.len(); ++i) {
            if (i > 0) {
                choices += '|';
            }
            choices += OSAPI::basename(globals->starfiles[i].c_str());
        }
    }
    return choices;
}

}  // namespace

PF_Err ParamsSetup(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* /*params*/[],
                   PF_LayerDef* /*output*/) {
    const String databases = OSAPI::system_text(database_choices());
    // The length of the text instead of the number of files: projects were saved with such popups.
    const auto database_count = static_cast<A_short>(databases.len());

    ControlAdder add(in_data);
    add.float_slider(kStarBrightness, "Star Brightness", 1000.0F, 20.0F, 5.0F, 2);
    add.float_slider(kBrightnessBias, "Brightness Bias", 5.0F, 2.0F, 1.0F, 2);
    add.float_slider(kStarSaturation, "Star Saturation", 2.0F, 2.0F, 0.4F, 2);
    add.float_slider(kTintStrength, "Tint Strength", 1.0F, 1.0F, 0.0F, 2);
    add.colour(kTintColor, "Tint Color", kTintDefault);
    add.float_slider(kMaximumLuminance, "Maximum Luminance", 10.0F, 10.0F, 0.5F, 2);
    add.float_slider(kLuminanceThreshold, "Luminance Threshold", 1.0F, 1.0F, 0.0001F, 6);
    add.float_slider(kStarSpotSize, "Star Spot Size", 1000.0F, 10.0F, 2.5F, 2);
    add.float_slider(kStarAspectRatio, "Star Aspect Ratio", 10.0F, 4.0F, 1.0F, 2);
    add.slider(kMotionBlurSegments, "Motion Blur Segments", 100, 1);
    // Two popups start at 0 although choices count from 1, deliberately: 0 is "left alone", which
    // reads back as the first choice.
    add.popup(kProjection, "Projection", kProjectionChoices, kProjectionCount, 0);
    add.checkbox(k3DStars, "3D Stars", true);
    add.float_slider(kParallaxCrush, "Parallax Crush", 1000.0F, 100.0F, 100.0F, 2);
    add.popup(kTreatPixelsAs, "Treat Pixels As", kTreatmentChoices, kTreatmentCount, 1);
    add.checkbox(kAnamorphicDOF, "Anamorphic DOF", false);
    add.popup(kStarDatabase, "Star Database", databases.c_str(), database_count, 0);
    if (add.err() == PF_Err_NONE) {
        out_data->num_params = kParamCount;
    }
    return add.err();
}
