// The records and callback tables that the host passes with a command.
#pragma once

#include <host_api/scalars.h>

struct SPBasicSuite;

struct PF_SoundFormatInfo {
    A_FpLong rateF;
    A_short num_channels;
    A_short format;
    A_short sample_size;
};

struct PF_SoundWorld {
    PF_SoundFormatInfo fi;
    A_long num_samples;
    void* dataP;
};

/// A frame of pixels. It belongs to the host; rows are `rowbytes` apart, which says nothing of
/// `width`.
struct PF_LayerDef {
    void* reserved0;
    void* reserved1;
    PF_WorldFlags world_flags;
    PF_Pixel* data;   ///< first pixel of row 0, whatever the depth
    A_long rowbytes;  ///< bytes from one row to the next
    A_long width;     ///< pixels
    A_long height;    ///< pixels
    PF_LRect extent_hint;
    void* platform_ref;
    A_long reserved_long1;
    void* reserved_long4;
    PF_RationalScale pix_aspect_ratio;
    void* reserved_long2;
    A_long origin_x;
    A_long origin_y;
    A_long reserved_long3;
    A_long dephault;
};
using PF_EffectWorld = PF_LayerDef;

// The values of a control, one record a kind.

struct PF_SliderDef {
    PF_ParamValue value;
    A_char value_str[32];
    A_char value_desc[32];
    PF_ParamValue valid_min;
    PF_ParamValue valid_max;
    PF_ParamValue slider_min;
    PF_ParamValue slider_max;
    PF_ParamValue dephault;
};

struct PF_FixedSliderDef {
    PF_Fixed value;
    A_char value_str[32];
    A_char value_desc[32];
    PF_Fixed valid_min;
    PF_Fixed valid_max;
    PF_Fixed slider_min;
    PF_Fixed slider_max;
    PF_Fixed dephault;
    PF_Precision precision;
    PF_ValueDisplayFlags display_flags;
};

struct PF_FloatSliderDef {
    PF_FpLong value;
    PF_FpLong phase;
    A_char value_desc[32];
    PF_FpShort valid_min;
    PF_FpShort valid_max;
    PF_FpShort slider_min;
    PF_FpShort slider_max;
    PF_FpShort dephault;
    PF_Precision precision;
    PF_ValueDisplayFlags display_flags;
    PF_FSliderFlags fs_flags;
    PF_FpShort curve_tolerance;
    PF_Boolean useExponent;
    PF_FpShort exponent;
};

struct PF_AngleDef {
    PF_Fixed value;
    PF_Fixed dephault;
    PF_Fixed valid_min;
    PF_Fixed valid_max;
};

struct PF_CheckBoxDef {
    PF_ParamValue value;  ///< 0 or 1
    PF_Boolean dephault;
    A_char reserved;
    A_short reserved1;
    union {
        const A_char* nameptr;  ///< label beside the box, never null; the host copies it
    } u;
};

struct PF_ColorDef {
    PF_Pixel value;
    PF_Pixel dephault;
};

struct PF_PointDef {
    PF_Fixed x_value;
    PF_Fixed y_value;
    A_char reserved[3];
    PF_Boolean restrict_bounds;
    PF_Fixed x_dephault;
    PF_Fixed y_dephault;
};

struct PF_Point3DDef {
    A_FpLong x_value;
    A_FpLong y_value;
    A_FpLong z_value;
    A_FpLong x_dephault;
    A_FpLong y_dephault;
    A_FpLong z_dephault;
    A_char reserved[16];
};

struct PF_PopupDef {
    PF_ParamValue value;  ///< counted from 1
    A_short num_choices;
    A_short dephault;  ///< counted from 1
    union {
        const A_char* namesptr;  ///< choices joined by vertical bars; the host copies them
    } u;
};

struct PF_ArbitraryDef {
    A_short id;
    A_short pad;
    PF_Handle dephault;
    PF_Handle value;
    void* refconPV;
};

struct PF_PathDef {
    A_u_long path_id;
    A_long reserved0;
    A_long dephault;
};

struct PF_ButtonDef {
    PF_ParamValue value;
    union {
        const A_char* namesptr;
    } u;
};

union PF_ParamDefUnion {
    PF_LayerDef ld;
    PF_SliderDef sd;
    PF_FixedSliderDef fd;
    PF_AngleDef ad;
    PF_CheckBoxDef bd;
    PF_ColorDef cd;
    PF_PointDef td;
    PF_PopupDef pd;
    PF_FloatSliderDef fs_d;
    PF_ArbitraryDef arb_d;
    PF_PathDef path_d;
    PF_ButtonDef button_d;
    PF_Point3DDef point3d_d;
};

/// A control: how it is declared, and its value at some time.
struct PF_ParamDef {
    union {
        A_long id;            ///< when declared
        A_long change_flags;  ///< later
        A_long id_or_change_flags;
    } uu;
    PF_ParamUIFlags ui_flags;
    A_short ui_width;
    A_short ui_height;
    PF_ParamType param_type;
    A_char name[32];  ///< 31 characters and a NUL
    PF_ParamFlags flags;
    A_long unused;
    PF_ParamDefUnion u;
};
using PF_ParamList = PF_ParamDef**;

struct PF_InteractCallbacks {
    PF_Err (*checkout_param)(PF_ProgPtr effect_ref, PF_ParamIndex index, A_long time,
                             A_long time_step, A_u_long time_scale, PF_ParamDef* param_out);
    PF_Err (*checkin_param)(PF_ProgPtr effect_ref, PF_ParamDef* param);
    PF_Err (*add_param)(PF_ProgPtr effect_ref, PF_ParamIndex index, PF_ParamDef* param);
    PF_Err (*abort)(PF_ProgPtr effect_ref);
    PF_Err (*progress)(PF_ProgPtr effect_ref, A_long current, A_long total);
    UncalledFunction register_ui;
    UncalledFunction checkout_layer_audio;
    UncalledFunction checkin_layer_audio;
    UncalledFunction get_audio_data;
    void* reserved_str[3];
    void* reserved[10];
};

struct PF_ANSICallbacksBlock {
    UncalledFunction atan;
    UncalledFunction atan2;
    UncalledFunction ceil;
    UncalledFunction cos;
    UncalledFunction exp;
    UncalledFunction fabs;
    UncalledFunction floor;
    UncalledFunction fmod;
    UncalledFunction hypot;
    UncalledFunction log;
    UncalledFunction log10;
    UncalledFunction pow;
    UncalledFunction sin;
    UncalledFunction sqrt;
    UncalledFunction tan;
    int (*sprintf)(A_char* out, const A_char* format, ...);
    A_char* (*strcpy)(A_char* to, const A_char* from);
    UncalledFunction asin;
    UncalledFunction acos;
    A_long unused_longA[1];
};

struct PF_ColorCallbacks {
    UncalledFunction RGBtoHLS;
    UncalledFunction HLStoRGB;
    UncalledFunction RGBtoYIQ;
    UncalledFunction YIQtoRGB;
    UncalledFunction Luminance;
    UncalledFunction Hue;
    UncalledFunction Lightness;
    UncalledFunction Saturation;
};

struct PF_UtilCallbacks {
    UncalledFunction begin_sampling;
    UncalledFunction subpixel_sample;
    UncalledFunction area_sample;
    void* get_batch_func_is_deprecated;
    UncalledFunction end_sampling;
    UncalledFunction composite_rect;
    UncalledFunction blend;
    UncalledFunction convolve;
    UncalledFunction copy;
    /// A null colour is transparent black, a null area the whole world.
    PF_Err (*fill)(PF_ProgPtr effect_ref, const PF_Pixel* color, const PF_Rect* area,
                   PF_EffectWorld* world);
    UncalledFunction gaussian_kernel;
    UncalledFunction iterate;
    UncalledFunction premultiply;
    UncalledFunction premultiply_color;
    UncalledFunction new_world;
    UncalledFunction dispose_world;
    UncalledFunction iterate_origin;
    UncalledFunction iterate_lut;
    UncalledFunction transfer_rect;
    UncalledFunction transform_world;
    PF_Handle (*host_new_handle)(A_HandleSize bytes);
    void* (*host_lock_handle)(PF_Handle handle);
    void (*host_unlock_handle)(PF_Handle handle);
    void (*host_dispose_handle)(PF_Handle handle);
    UncalledFunction get_callback_addr;
    UncalledFunction app;
    PF_ANSICallbacksBlock ansi;
    PF_ColorCallbacks colorCB;
    UncalledFunction get_platform_data;
    A_HandleSize (*host_get_handle_size)(PF_Handle handle);
    UncalledFunction iterate_origin_non_clip_src;
    UncalledFunction iterate_generic;
    PF_Err (*host_resize_handle)(A_HandleSize bytes, PF_Handle* handle);
    UncalledFunction subpixel_sample16;
    UncalledFunction area_sample16;
    UncalledFunction fill16;
    UncalledFunction premultiply_color16;
    UncalledFunction iterate16;
    UncalledFunction iterate_origin16;
    UncalledFunction iterate_origin_non_clip_src16;
    /// Null in `pixels_out` when the world is not 8-bit.
    PF_Err (*get_pixel_data8)(PF_EffectWorld* world, PF_Pixel* pixels, PF_Pixel** pixels_out);
    /// Null in `pixels_out` when the world is not 16-bit.
    PF_Err (*get_pixel_data16)(PF_EffectWorld* world, PF_Pixel* pixels, PF_Pixel16** pixels_out);
    A_long reserved[1];
};

/// What the host tells with every command.
struct PF_InData {
    PF_InteractCallbacks inter;
    PF_UtilCallbacks* utils;
    PF_ProgPtr effect_ref;
    PF_Quality quality;
    PF_SpecVersion version;
    A_long serial_num;
    A_AppID appl_id;
    A_long num_params;  ///< the input layer counts
    A_long reserved;
    A_long what_cpu;
    A_long what_fpu;
    A_long current_time;  ///< layer time, in units of 1 / time_scale seconds
    A_long time_step;     ///< may be 0 or negative
    A_long total_time;
    A_long local_time_step;
    A_u_long time_scale;  ///< units a second
    PF_Field field;
    PF_Fixed shutter_angle;  ///< degrees; 0 when motion blur is off
    A_long width;
    A_long height;
    PF_LRect extent_hint;
    A_long output_origin_x;
    A_long output_origin_y;
    PF_RationalScale downsample_x;
    PF_RationalScale downsample_y;
    PF_RationalScale pixel_aspect_ratio;
    PF_InFlags in_flags;
    PF_Handle global_data;
    PF_Handle sequence_data;
    PF_Handle frame_data;
    A_long start_sampL;
    A_long dur_sampL;
    A_long total_sampL;
    PF_SoundWorld src_snd;
    SPBasicSuite* pica_basicP;
    A_long pre_effect_source_origin_x;
    A_long pre_effect_source_origin_y;
    PF_Fixed shutter_phase;
};

/// What the effect tells back.
struct PF_OutData {
    A_u_long my_version;
    A_char name[32];
    PF_Handle global_data;
    A_long num_params;
    PF_Handle sequence_data;
    A_long flat_sdata_size;
    PF_Handle frame_data;
    A_long width;
    A_long height;
    PF_Point origin;
    PF_OutFlags out_flags;
    A_char return_msg[256];  ///< shown when not empty; an error with the display flag
    A_long start_sampL;
    A_long dur_sampL;
    PF_SoundWorld dest_snd;
    PF_OutFlags2 out_flags2;
};

// Smart rendering. The host owns these records and what they point to, for one call.

struct PF_RenderRequest {
    PF_LRect rect;
    PF_Field field;
    PF_ChannelMask channel_mask;
    PF_Boolean preserve_rgb_of_zero_alpha;
    A_char unused[3];
    A_long reserved[4];
};

/// Hosts before 16.0 end the record after `bitdepth`.
struct PF_PreRenderInput {
    PF_RenderRequest output_request;
    short bitdepth;
    const void* gpu_data;
    A_long what_gpu;
    A_u_long device_index;
};

using PF_DeletePreRenderDataFunc = void (*)(void* pre_render_data);

struct PF_PreRenderOutput {
    PF_LRect result_rect;
    PF_LRect max_result_rect;
    PF_Boolean solid;
    PF_Boolean reserved;
    PF_RenderOutputFlags flags;
    void* pre_render_data;  ///< the host's once the effect returns; freed by the deleter
    PF_DeletePreRenderDataFunc delete_pre_render_data_func;
};

struct PF_CheckoutResult {
    PF_LRect result_rect;
    PF_LRect max_result_rect;
    PF_RationalScale par;
    PF_Boolean solid;
    PF_Boolean reservedB[3];
    A_long ref_width;
    A_long ref_height;
    A_long reserved[6];
};

struct PF_PreRenderCallbacks {
    PF_Err (*checkout_layer)(PF_ProgPtr effect_ref, PF_ParamIndex index, A_long checkout_id,
                             const PF_RenderRequest* request, A_long time, A_long time_step,
                             A_u_long time_scale, PF_CheckoutResult* result_out);
    UncalledFunction GuidMixInPtr;  ///< absent in hosts before 13.5
};

struct PF_PreRenderExtra {
    PF_PreRenderInput* input;
    PF_PreRenderOutput* output;
    PF_PreRenderCallbacks* cb;
};

/// Hosts before 16.0 end the record after `pre_render_data`.
struct PF_SmartRenderInput {
    PF_RenderRequest output_request;
    short bitdepth;
    void* pre_render_data;
    const void* gpu_data;
    A_long what_gpu;
    A_u_long device_index;
};

struct PF_SmartRenderCallbacks {
    PF_Err (*checkout_layer_pixels)(PF_ProgPtr effect_ref, A_long checkout_id,
                                    PF_EffectWorld** pixels_out);
    PF_Err (*checkin_layer_pixels)(PF_ProgPtr effect_ref, A_long checkout_id);
    PF_Err (*checkout_output)(PF_ProgPtr effect_ref, PF_EffectWorld** output_out);
};

struct PF_SmartRenderExtra {
    PF_SmartRenderInput* input;
    PF_SmartRenderCallbacks* cb;
};

struct PF_ExtDependenciesExtra {
    PF_DepCheckType check_type;
    PF_Handle dependencies_strH;  ///< a C string; the host disposes of it
};

/// A stream's value; which member holds is told by its `AEGP_StreamType`.
union AEGP_StreamVal {
    A_FpLong four_d[4];
    A_FloatPoint3 three_d;
    A_FloatPoint two_d;
    A_FpLong one_d;
    AEGP_ColorVal color;
    A_Handle arbH;
    void** markerH;
    AEGP_LayerIDVal layer_id;
    AEGP_MaskIDVal mask_id;
    void* mask;
    void* text_documentH;
};

struct AEGP_StreamValue {
    AEGP_StreamRefH streamH;
    AEGP_StreamVal val;
};

/// The one function of an effect that the host calls; exported with C linkage.
using PF_EffectMain = PF_Err (*)(PF_Cmd cmd, PF_InData* in_data, PF_OutData* out_data,
                                 PF_ParamDef* params[], PF_LayerDef* output, void* extra);
