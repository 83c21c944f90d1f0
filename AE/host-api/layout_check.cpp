// Holds the records to the layout that the host has, on 64-bit hosts and on 32-bit ones.
#include <host_api/effect_interface.h>

#include "layout.h"

FIELD(A_Time, value, 0, 4, 0, 4);
FIELD(A_Time, scale, 4, 4, 4, 4);
RECORD(A_Time, 8, 8);

FIELD(A_Ratio, num, 0, 4, 0, 4);
FIELD(A_Ratio, den, 4, 4, 4, 4);
RECORD(A_Ratio, 8, 8);

FIELD(A_FloatPoint, x, 0, 8, 0, 8);
FIELD(A_FloatPoint, y, 8, 8, 8, 8);
RECORD(A_FloatPoint, 16, 16);

FIELD(A_FloatPoint3, x, 0, 8, 0, 8);
FIELD(A_FloatPoint3, y, 8, 8, 8, 8);
FIELD(A_FloatPoint3, z, 16, 8, 16, 8);
RECORD(A_FloatPoint3, 24, 24);

FIELD(A_FloatRect, left, 0, 8, 0, 8);
FIELD(A_FloatRect, top, 8, 8, 8, 8);
FIELD(A_FloatRect, right, 16, 8, 16, 8);
FIELD(A_FloatRect, bottom, 24, 8, 24, 8);
RECORD(A_FloatRect, 32, 32);

FIELD(A_Matrix4, mat, 0, 128, 0, 128);
RECORD(A_Matrix4, 128, 128);

FIELD(PF_Point, x_or_h, 0, 4, 0, 4);
FIELD(PF_Point, y_or_v, 4, 4, 4, 4);
RECORD(PF_Point, 8, 8);

FIELD(PF_LRect, left, 0, 4, 0, 4);
FIELD(PF_LRect, top, 4, 4, 4, 4);
FIELD(PF_LRect, right, 8, 4, 8, 4);
FIELD(PF_LRect, bottom, 12, 4, 12, 4);
RECORD(PF_LRect, 16, 16);

FIELD(PF_RationalScale, num, 0, 4, 0, 4);
FIELD(PF_RationalScale, den, 4, 4, 4, 4);
RECORD(PF_RationalScale, 8, 8);

FIELD(PF_SpecVersion, major, 0, 2, 0, 2);
FIELD(PF_SpecVersion, minor, 2, 2, 2, 2);
RECORD(PF_SpecVersion, 4, 4);

FIELD(PF_Pixel, alpha, 0, 1, 0, 1);
FIELD(PF_Pixel, red, 1, 1, 1, 1);
FIELD(PF_Pixel, green, 2, 1, 2, 1);
FIELD(PF_Pixel, blue, 3, 1, 3, 1);
RECORD(PF_Pixel, 4, 4);

FIELD(PF_Pixel16, alpha, 0, 2, 0, 2);
FIELD(PF_Pixel16, red, 2, 2, 2, 2);
FIELD(PF_Pixel16, green, 4, 2, 4, 2);
FIELD(PF_Pixel16, blue, 6, 2, 6, 2);
RECORD(PF_Pixel16, 8, 8);

FIELD(PF_PixelFloat, alpha, 0, 4, 0, 4);
FIELD(PF_PixelFloat, red, 4, 4, 4, 4);
FIELD(PF_PixelFloat, green, 8, 4, 8, 4);
FIELD(PF_PixelFloat, blue, 12, 4, 12, 4);
RECORD(PF_PixelFloat, 16, 16);

FIELD(PF_SoundFormatInfo, rateF, 0, 8, 0, 8);
FIELD(PF_SoundFormatInfo, num_channels, 8, 2, 8, 2);
FIELD(PF_SoundFormatInfo, format, 10, 2, 10, 2);
FIELD(PF_SoundFormatInfo, sample_size, 12, 2, 12, 2);
RECORD(PF_SoundFormatInfo, 16, 16);

FIELD(PF_SoundWorld, fi, 0, 16, 0, 16);
FIELD(PF_SoundWorld, num_samples, 16, 4, 16, 4);
FIELD(PF_SoundWorld, dataP, 24, 8, 20, 4);
RECORD(PF_SoundWorld, 32, 24);

FIELD(PF_LayerDef, reserved0, 0, 8, 0, 4);
FIELD(PF_LayerDef, reserved1, 8, 8, 4, 4);
FIELD(PF_LayerDef, world_flags, 16, 4, 8, 4);
FIELD(PF_LayerDef, data, 24, 8, 12, 4);
FIELD(PF_LayerDef, rowbytes, 32, 4, 16, 4);
FIELD(PF_LayerDef, width, 36, 4, 20, 4);
FIELD(PF_LayerDef, height, 40, 4, 24, 4);
FIELD(PF_LayerDef, extent_hint, 44, 16, 28, 16);
FIELD(PF_LayerDef, platform_ref, 64, 8, 44, 4);
FIELD(PF_LayerDef, reserved_long1, 72, 4, 48, 4);
FIELD(PF_LayerDef, reserved_long4, 80, 8, 52, 4);
FIELD(PF_LayerDef, pix_aspect_ratio, 88, 8, 56, 8);
FIELD(PF_LayerDef, reserved_long2, 96, 8, 64, 4);
FIELD(PF_LayerDef, origin_x, 104, 4, 68, 4);
FIELD(PF_LayerDef, origin_y, 108, 4, 72, 4);
FIELD(PF_LayerDef, reserved_long3, 112, 4, 76, 4);
FIELD(PF_LayerDef, dephault, 116, 4, 80, 4);
RECORD(PF_LayerDef, 120, 84);

FIELD(PF_SliderDef, value, 0, 4, 0, 4);
FIELD(PF_SliderDef, value_str, 4, 32, 4, 32);
FIELD(PF_SliderDef, value_desc, 36, 32, 36, 32);
FIELD(PF_SliderDef, valid_min, 68, 4, 68, 4);
FIELD(PF_SliderDef, valid_max, 72, 4, 72, 4);
FIELD(PF_SliderDef, slider_min, 76, 4, 76, 4);
FIELD(PF_SliderDef, slider_max, 80, 4, 80, 4);
FIELD(PF_SliderDef, dephault, 84, 4, 84, 4);
RECORD(PF_SliderDef, 88, 88);

FIELD(PF_FixedSliderDef, value, 0, 4, 0, 4);
FIELD(PF_FixedSliderDef, value_str, 4, 32, 4, 32);
FIELD(PF_FixedSliderDef, value_desc, 36, 32, 36, 32);
FIELD(PF_FixedSliderDef, valid_min, 68, 4, 68, 4);
FIELD(PF_FixedSliderDef, valid_max, 72, 4, 72, 4);
FIELD(PF_FixedSliderDef, slider_min, 76, 4, 76, 4);
FIELD(PF_FixedSliderDef, slider_max, 80, 4, 80, 4);
FIELD(PF_FixedSliderDef, dephault, 84, 4, 84, 4);
FIELD(PF_FixedSliderDef, precision, 88, 2, 88, 2);
FIELD(PF_FixedSliderDef, display_flags, 90, 2, 90, 2);
RECORD(PF_FixedSliderDef, 92, 92);

FIELD(PF_FloatSliderDef, value, 0, 8, 0, 8);
FIELD(PF_FloatSliderDef, phase, 8, 8, 8, 8);
FIELD(PF_FloatSliderDef, value_desc, 16, 32, 16, 32);
FIELD(PF_FloatSliderDef, valid_min, 48, 4, 48, 4);
FIELD(PF_FloatSliderDef, valid_max, 52, 4, 52, 4);
FIELD(PF_FloatSliderDef, slider_min, 56, 4, 56, 4);
FIELD(PF_FloatSliderDef, slider_max, 60, 4, 60, 4);
FIELD(PF_FloatSliderDef, dephault, 64, 4, 64, 4);
FIELD(PF_FloatSliderDef, precision, 68, 2, 68, 2);
FIELD(PF_FloatSliderDef, display_flags, 70, 2, 70, 2);
FIELD(PF_FloatSliderDef, fs_flags, 72, 4, 72, 4);
FIELD(PF_FloatSliderDef, curve_tolerance, 76, 4, 76, 4);
FIELD(PF_FloatSliderDef, useExponent, 80, 1, 80, 1);
FIELD(PF_FloatSliderDef, exponent, 84, 4, 84, 4);
RECORD(PF_FloatSliderDef, 88, 88);

FIELD(PF_AngleDef, value, 0, 4, 0, 4);
FIELD(PF_AngleDef, dephault, 4, 4, 4, 4);
FIELD(PF_AngleDef, valid_min, 8, 4, 8, 4);
FIELD(PF_AngleDef, valid_max, 12, 4, 12, 4);
RECORD(PF_AngleDef, 16, 16);

FIELD(PF_CheckBoxDef, value, 0, 4, 0, 4);
FIELD(PF_CheckBoxDef, dephault, 4, 1, 4, 1);
FIELD(PF_CheckBoxDef, reserved, 5, 1, 5, 1);
FIELD(PF_CheckBoxDef, reserved1, 6, 2, 6, 2);
FIELD(PF_CheckBoxDef, u.nameptr, 8, 8, 8, 4);
RECORD(PF_CheckBoxDef, 16, 12);

FIELD(PF_ColorDef, value, 0, 4, 0, 4);
FIELD(PF_ColorDef, dephault, 4, 4, 4, 4);
RECORD(PF_ColorDef, 8, 8);

FIELD(PF_PointDef, x_value, 0, 4, 0, 4);
FIELD(PF_PointDef, y_value, 4, 4, 4, 4);
FIELD(PF_PointDef, reserved, 8, 3, 8, 3);
FIELD(PF_PointDef, restrict_bounds, 11, 1, 11, 1);
FIELD(PF_PointDef, x_dephault, 12, 4, 12, 4);
FIELD(PF_PointDef, y_dephault, 16, 4, 16, 4);
RECORD(PF_PointDef, 20, 20);

FIELD(PF_Point3DDef, x_value, 0, 8, 0, 8);
FIELD(PF_Point3DDef, y_value, 8, 8, 8, 8);
FIELD(PF_Point3DDef, z_value, 16, 8, 16, 8);
FIELD(PF_Point3DDef, x_dephault, 24, 8, 24, 8);
FIELD(PF_Point3DDef, y_dephault, 32, 8, 32, 8);
FIELD(PF_Point3DDef, z_dephault, 40, 8, 40, 8);
FIELD(PF_Point3DDef, reserved, 48, 16, 48, 16);
RECORD(PF_Point3DDef, 64, 64);

FIELD(PF_PopupDef, value, 0, 4, 0, 4);
FIELD(PF_PopupDef, num_choices, 4, 2, 4, 2);
FIELD(PF_PopupDef, dephault, 6, 2, 6, 2);
FIELD(PF_PopupDef, u.namesptr, 8, 8, 8, 4);
RECORD(PF_PopupDef, 16, 12);

FIELD(PF_ArbitraryDef, id, 0, 2, 0, 2);
FIELD(PF_ArbitraryDef, pad, 2, 2, 2, 2);
FIELD(PF_ArbitraryDef, dephault, 8, 8, 4, 4);
FIELD(PF_ArbitraryDef, value, 16, 8, 8, 4);
FIELD(PF_ArbitraryDef, refconPV, 24, 8, 12, 4);
RECORD(PF_ArbitraryDef, 32, 16);

FIELD(PF_PathDef, path_id, 0, 4, 0, 4);
FIELD(PF_PathDef, reserved0, 4, 4, 4, 4);
FIELD(PF_PathDef, dephault, 8, 4, 8, 4);
RECORD(PF_PathDef, 12, 12);

FIELD(PF_ButtonDef, value, 0, 4, 0, 4);
FIELD(PF_ButtonDef, u.namesptr, 8, 8, 4, 4);
RECORD(PF_ButtonDef, 16, 8);

FIELD(PF_ParamDefUnion, ld, 0, 120, 0, 84);
FIELD(PF_ParamDefUnion, sd, 0, 88, 0, 88);
FIELD(PF_ParamDefUnion, fd, 0, 92, 0, 92);
FIELD(PF_ParamDefUnion, ad, 0, 16, 0, 16);
FIELD(PF_ParamDefUnion, bd, 0, 16, 0, 12);
FIELD(PF_ParamDefUnion, cd, 0, 8, 0, 8);
FIELD(PF_ParamDefUnion, td, 0, 20, 0, 20);
FIELD(PF_ParamDefUnion, pd, 0, 16, 0, 12);
FIELD(PF_ParamDefUnion, fs_d, 0, 88, 0, 88);
FIELD(PF_ParamDefUnion, arb_d, 0, 32, 0, 16);
FIELD(PF_ParamDefUnion, path_d, 0, 12, 0, 12);
FIELD(PF_ParamDefUnion, button_d, 0, 16, 0, 8);
FIELD(PF_ParamDefUnion, point3d_d, 0, 64, 0, 64);
RECORD(PF_ParamDefUnion, 120, 92);

FIELD(PF_ParamDef, uu.id_or_change_flags, 0, 4, 0, 4);
FIELD(PF_ParamDef, ui_flags, 4, 4, 4, 4);
FIELD(PF_ParamDef, ui_width, 8, 2, 8, 2);
FIELD(PF_ParamDef, ui_height, 10, 2, 10, 2);
FIELD(PF_ParamDef, param_type, 12, 4, 12, 4);
FIELD(PF_ParamDef, name, 16, 32, 16, 32);
FIELD(PF_ParamDef, flags, 48, 4, 48, 4);
FIELD(PF_ParamDef, unused, 52, 4, 52, 4);
FIELD(PF_ParamDef, u, 56, 120, 56, 92);
RECORD(PF_ParamDef, 176, 148);

FIELD(PF_InteractCallbacks, checkout_param, 0, 8, 0, 4);
FIELD(PF_InteractCallbacks, checkin_param, 8, 8, 4, 4);
FIELD(PF_InteractCallbacks, add_param, 16, 8, 8, 4);
FIELD(PF_InteractCallbacks, abort, 24, 8, 12, 4);
FIELD(PF_InteractCallbacks, progress, 32, 8, 16, 4);
FIELD(PF_InteractCallbacks, register_ui, 40, 8, 20, 4);
FIELD(PF_InteractCallbacks, checkout_layer_audio, 48, 8, 24, 4);
FIELD(PF_InteractCallbacks, checkin_layer_audio, 56, 8, 28, 4);
FIELD(PF_InteractCallbacks, get_audio_data, 64, 8, 32, 4);
FIELD(PF_InteractCallbacks, reserved_str, 72, 24, 36, 12);
FIELD(PF_InteractCallbacks, reserved, 96, 80, 48, 40);
RECORD(PF_InteractCallbacks, 176, 88);

FIELD(PF_InData, inter, 0, 176, 0, 88);
FIELD(PF_InData, utils, 176, 8, 88, 4);
FIELD(PF_InData, effect_ref, 184, 8, 92, 4);
FIELD(PF_InData, quality, 192, 4, 96, 4);
FIELD(PF_InData, version, 196, 4, 100, 4);
FIELD(PF_InData, serial_num, 200, 4, 104, 4);
FIELD(PF_InData, appl_id, 204, 4, 108, 4);
FIELD(PF_InData, num_params, 208, 4, 112, 4);
FIELD(PF_InData, reserved, 212, 4, 116, 4);
FIELD(PF_InData, what_cpu, 216, 4, 120, 4);
FIELD(PF_InData, what_fpu, 220, 4, 124, 4);
FIELD(PF_InData, current_time, 224, 4, 128, 4);
FIELD(PF_InData, time_step, 228, 4, 132, 4);
FIELD(PF_InData, total_time, 232, 4, 136, 4);
FIELD(PF_InData, local_time_step, 236, 4, 140, 4);
FIELD(PF_InData, time_scale, 240, 4, 144, 4);
FIELD(PF_InData, field, 244, 4, 148, 4);
FIELD(PF_InData, shutter_angle, 248, 4, 152, 4);
FIELD(PF_InData, width, 252, 4, 156, 4);
FIELD(PF_InData, height, 256, 4, 160, 4);
FIELD(PF_InData, extent_hint, 260, 16, 164, 16);
FIELD(PF_InData, output_origin_x, 276, 4, 180, 4);
FIELD(PF_InData, output_origin_y, 280, 4, 184, 4);
FIELD(PF_InData, downsample_x, 284, 8, 188, 8);
FIELD(PF_InData, downsample_y, 292, 8, 196, 8);
FIELD(PF_InData, pixel_aspect_ratio, 300, 8, 204, 8);
FIELD(PF_InData, in_flags, 308, 4, 212, 4);
FIELD(PF_InData, global_data, 312, 8, 216, 4);
FIELD(PF_InData, sequence_data, 320, 8, 220, 4);
FIELD(PF_InData, frame_data, 328, 8, 224, 4);
FIELD(PF_InData, start_sampL, 336, 4, 228, 4);
FIELD(PF_InData, dur_sampL, 340, 4, 232, 4);
FIELD(PF_InData, total_sampL, 344, 4, 236, 4);
FIELD(PF_InData, src_snd, 352, 32, 240, 24);
FIELD(PF_InData, pica_basicP, 384, 8, 264, 4);
FIELD(PF_InData, pre_effect_source_origin_x, 392, 4, 268, 4);
FIELD(PF_InData, pre_effect_source_origin_y, 396, 4, 272, 4);
FIELD(PF_InData, shutter_phase, 400, 4, 276, 4);
RECORD(PF_InData, 408, 280);

FIELD(PF_OutData, my_version, 0, 4, 0, 4);
FIELD(PF_OutData, name, 4, 32, 4, 32);
FIELD(PF_OutData, global_data, 40, 8, 36, 4);
FIELD(PF_OutData, num_params, 48, 4, 40, 4);
FIELD(PF_OutData, sequence_data, 56, 8, 44, 4);
FIELD(PF_OutData, flat_sdata_size, 64, 4, 48, 4);
FIELD(PF_OutData, frame_data, 72, 8, 52, 4);
FIELD(PF_OutData, width, 80, 4, 56, 4);
FIELD(PF_OutData, height, 84, 4, 60, 4);
FIELD(PF_OutData, origin, 88, 8, 64, 8);
FIELD(PF_OutData, out_flags, 96, 4, 72, 4);
FIELD(PF_OutData, return_msg, 100, 256, 76, 256);
FIELD(PF_OutData, start_sampL, 356, 4, 332, 4);
FIELD(PF_OutData, dur_sampL, 360, 4, 336, 4);
FIELD(PF_OutData, dest_snd, 368, 32, 340, 24);
FIELD(PF_OutData, out_flags2, 400, 4, 364, 4);
RECORD(PF_OutData, 408, 368);

FIELD(PF_ANSICallbacksBlock, atan, 0, 8, 0, 4);
FIELD(PF_ANSICallbacksBlock, atan2, 8, 8, 4, 4);
FIELD(PF_ANSICallbacksBlock, ceil, 16, 8, 8, 4);
FIELD(PF_ANSICallbacksBlock, cos, 24, 8, 12, 4);
FIELD(PF_ANSICallbacksBlock, exp, 32, 8, 16, 4);
FIELD(PF_ANSICallbacksBlock, fabs, 40, 8, 20, 4);
FIELD(PF_ANSICallbacksBlock, floor, 48, 8, 24, 4);
FIELD(PF_ANSICallbacksBlock, fmod, 56, 8, 28, 4);
FIELD(PF_ANSICallbacksBlock, hypot, 64, 8, 32, 4);
FIELD(PF_ANSICallbacksBlock, log, 72, 8, 36, 4);
FIELD(PF_ANSICallbacksBlock, log10, 80, 8, 40, 4);
FIELD(PF_ANSICallbacksBlock, pow, 88, 8, 44, 4);
FIELD(PF_ANSICallbacksBlock, sin, 96, 8, 48, 4);
FIELD(PF_ANSICallbacksBlock, sqrt, 104, 8, 52, 4);
FIELD(PF_ANSICallbacksBlock, tan, 112, 8, 56, 4);
FIELD(PF_ANSICallbacksBlock, sprintf, 120, 8, 60, 4);
FIELD(PF_ANSICallbacksBlock, strcpy, 128, 8, 64, 4);
FIELD(PF_ANSICallbacksBlock, asin, 136, 8, 68, 4);
FIELD(PF_ANSICallbacksBlock, acos, 144, 8, 72, 4);
FIELD(PF_ANSICallbacksBlock, unused_longA, 152, 4, 76, 4);
RECORD(PF_ANSICallbacksBlock, 160, 80);

FIELD(PF_ColorCallbacks, RGBtoHLS, 0, 8, 0, 4);
FIELD(PF_ColorCallbacks, HLStoRGB, 8, 8, 4, 4);
FIELD(PF_ColorCallbacks, RGBtoYIQ, 16, 8, 8, 4);
FIELD(PF_ColorCallbacks, YIQtoRGB, 24, 8, 12, 4);
FIELD(PF_ColorCallbacks, Luminance, 32, 8, 16, 4);
FIELD(PF_ColorCallbacks, Hue, 40, 8, 20, 4);
FIELD(PF_ColorCallbacks, Lightness, 48, 8, 24, 4);
FIELD(PF_ColorCallbacks, Saturation, 56, 8, 28, 4);
RECORD(PF_ColorCallbacks, 64, 32);

FIELD(PF_UtilCallbacks, begin_sampling, 0, 8, 0, 4);
FIELD(PF_UtilCallbacks, subpixel_sample, 8, 8, 4, 4);
FIELD(PF_UtilCallbacks, area_sample, 16, 8, 8, 4);
FIELD(PF_UtilCallbacks, get_batch_func_is_deprecated, 24, 8, 12, 4);
FIELD(PF_UtilCallbacks, end_sampling, 32, 8, 16, 4);
FIELD(PF_UtilCallbacks, composite_rect, 40, 8, 20, 4);
FIELD(PF_UtilCallbacks, blend, 48, 8, 24, 4);
FIELD(PF_UtilCallbacks, convolve, 56, 8, 28, 4);
FIELD(PF_UtilCallbacks, copy, 64, 8, 32, 4);
FIELD(PF_UtilCallbacks, fill, 72, 8, 36, 4);
FIELD(PF_UtilCallbacks, gaussian_kernel, 80, 8, 40, 4);
FIELD(PF_UtilCallbacks, iterate, 88, 8, 44, 4);
FIELD(PF_UtilCallbacks, premultiply, 96, 8, 48, 4);
FIELD(PF_UtilCallbacks, premultiply_color, 104, 8, 52, 4);
FIELD(PF_UtilCallbacks, new_world, 112, 8, 56, 4);
FIELD(PF_UtilCallbacks, dispose_world, 120, 8, 60, 4);
FIELD(PF_UtilCallbacks, iterate_origin, 128, 8, 64, 4);
FIELD(PF_UtilCallbacks, iterate_lut, 136, 8, 68, 4);
FIELD(PF_UtilCallbacks, transfer_rect, 144, 8, 72, 4);
FIELD(PF_UtilCallbacks, transform_world, 152, 8, 76, 4);
FIELD(PF_UtilCallbacks, host_new_handle, 160, 8, 80, 4);
FIELD(PF_UtilCallbacks, host_lock_handle, 168, 8, 84, 4);
FIELD(PF_UtilCallbacks, host_unlock_handle, 176, 8, 88, 4);
FIELD(PF_UtilCallbacks, host_dispose_handle, 184, 8, 92, 4);
FIELD(PF_UtilCallbacks, get_callback_addr, 192, 8, 96, 4);
FIELD(PF_UtilCallbacks, app, 200, 8, 100, 4);
FIELD(PF_UtilCallbacks, ansi, 208, 160, 104, 80);
FIELD(PF_UtilCallbacks, colorCB, 368, 64, 184, 32);
FIELD(PF_UtilCallbacks, get_platform_data, 432, 8, 216, 4);
FIELD(PF_UtilCallbacks, host_get_handle_size, 440, 8, 220, 4);
FIELD(PF_UtilCallbacks, iterate_origin_non_clip_src, 448, 8, 224, 4);
FIELD(PF_UtilCallbacks, iterate_generic, 456, 8, 228, 4);
FIELD(PF_UtilCallbacks, host_resize_handle, 464, 8, 232, 4);
FIELD(PF_UtilCallbacks, subpixel_sample16, 472, 8, 236, 4);
FIELD(PF_UtilCallbacks, area_sample16, 480, 8, 240, 4);
FIELD(PF_UtilCallbacks, fill16, 488, 8, 244, 4);
FIELD(PF_UtilCallbacks, premultiply_color16, 496, 8, 248, 4);
FIELD(PF_UtilCallbacks, iterate16, 504, 8, 252, 4);
FIELD(PF_UtilCallbacks, iterate_origin16, 512, 8, 256, 4);
FIELD(PF_UtilCallbacks, iterate_origin_non_clip_src16, 520, 8, 260, 4);
FIELD(PF_UtilCallbacks, get_pixel_data8, 528, 8, 264, 4);
FIELD(PF_UtilCallbacks, get_pixel_data16, 536, 8, 268, 4);
FIELD(PF_UtilCallbacks, reserved, 544, 4, 272, 4);
RECORD(PF_UtilCallbacks, 552, 276);

FIELD(PF_RenderRequest, rect, 0, 16, 0, 16);
FIELD(PF_RenderRequest, field, 16, 4, 16, 4);
FIELD(PF_RenderRequest, channel_mask, 20, 4, 20, 4);
FIELD(PF_RenderRequest, preserve_rgb_of_zero_alpha, 24, 1, 24, 1);
FIELD(PF_RenderRequest, unused, 25, 3, 25, 3);
FIELD(PF_RenderRequest, reserved, 28, 16, 28, 16);
RECORD(PF_RenderRequest, 44, 44);

FIELD(PF_PreRenderInput, output_request, 0, 44, 0, 44);
FIELD(PF_PreRenderInput, bitdepth, 44, 2, 44, 2);
FIELD(PF_PreRenderInput, gpu_data, 48, 8, 48, 4);
FIELD(PF_PreRenderInput, what_gpu, 56, 4, 52, 4);
FIELD(PF_PreRenderInput, device_index, 60, 4, 56, 4);
RECORD(PF_PreRenderInput, 64, 60);

FIELD(PF_PreRenderOutput, result_rect, 0, 16, 0, 16);
FIELD(PF_PreRenderOutput, max_result_rect, 16, 16, 16, 16);
FIELD(PF_PreRenderOutput, solid, 32, 1, 32, 1);
FIELD(PF_PreRenderOutput, reserved, 33, 1, 33, 1);
FIELD(PF_PreRenderOutput, flags, 34, 2, 34, 2);
FIELD(PF_PreRenderOutput, pre_render_data, 40, 8, 36, 4);
FIELD(PF_PreRenderOutput, delete_pre_render_data_func, 48, 8, 40, 4);
RECORD(PF_PreRenderOutput, 56, 44);

FIELD(PF_CheckoutResult, result_rect, 0, 16, 0, 16);
FIELD(PF_CheckoutResult, max_result_rect, 16, 16, 16, 16);
FIELD(PF_CheckoutResult, par, 32, 8, 32, 8);
FIELD(PF_CheckoutResult, solid, 40, 1, 40, 1);
FIELD(PF_CheckoutResult, reservedB, 41, 3, 41, 3);
FIELD(PF_CheckoutResult, ref_width, 44, 4, 44, 4);
FIELD(PF_CheckoutResult, ref_height, 48, 4, 48, 4);
FIELD(PF_CheckoutResult, reserved, 52, 24, 52, 24);
RECORD(PF_CheckoutResult, 76, 76);

FIELD(PF_PreRenderCallbacks, checkout_layer, 0, 8, 0, 4);
FIELD(PF_PreRenderCallbacks, GuidMixInPtr, 8, 8, 4, 4);
RECORD(PF_PreRenderCallbacks, 16, 8);

FIELD(PF_PreRenderExtra, input, 0, 8, 0, 4);
FIELD(PF_PreRenderExtra, output, 8, 8, 4, 4);
FIELD(PF_PreRenderExtra, cb, 16, 8, 8, 4);
RECORD(PF_PreRenderExtra, 24, 12);

FIELD(PF_SmartRenderInput, output_request, 0, 44, 0, 44);
FIELD(PF_SmartRenderInput, bitdepth, 44, 2, 44, 2);
FIELD(PF_SmartRenderInput, pre_render_data, 48, 8, 48, 4);
FIELD(PF_SmartRenderInput, gpu_data, 56, 8, 52, 4);
FIELD(PF_SmartRenderInput, what_gpu, 64, 4, 56, 4);
FIELD(PF_SmartRenderInput, device_index, 68, 4, 60, 4);
RECORD(PF_SmartRenderInput, 72, 64);

FIELD(PF_SmartRenderCallbacks, checkout_layer_pixels, 0, 8, 0, 4);
FIELD(PF_SmartRenderCallbacks, checkin_layer_pixels, 8, 8, 4, 4);
FIELD(PF_SmartRenderCallbacks, checkout_output, 16, 8, 8, 4);
RECORD(PF_SmartRenderCallbacks, 24, 12);

FIELD(PF_SmartRenderExtra, input, 0, 8, 0, 4);
FIELD(PF_SmartRenderExtra, cb, 8, 8, 4, 4);
RECORD(PF_SmartRenderExtra, 16, 8);

FIELD(PF_ExtDependenciesExtra, check_type, 0, 4, 0, 4);
FIELD(PF_ExtDependenciesExtra, dependencies_strH, 8, 8, 4, 4);
RECORD(PF_ExtDependenciesExtra, 16, 8);

FIELD(AEGP_ColorVal, alphaF, 0, 8, 0, 8);
FIELD(AEGP_ColorVal, redF, 8, 8, 8, 8);
FIELD(AEGP_ColorVal, greenF, 16, 8, 16, 8);
FIELD(AEGP_ColorVal, blueF, 24, 8, 24, 8);
RECORD(AEGP_ColorVal, 32, 32);

FIELD(AEGP_StreamVal, four_d, 0, 32, 0, 32);
FIELD(AEGP_StreamVal, three_d, 0, 24, 0, 24);
FIELD(AEGP_StreamVal, two_d, 0, 16, 0, 16);
FIELD(AEGP_StreamVal, one_d, 0, 8, 0, 8);
FIELD(AEGP_StreamVal, color, 0, 32, 0, 32);
FIELD(AEGP_StreamVal, arbH, 0, 8, 0, 4);
FIELD(AEGP_StreamVal, markerH, 0, 8, 0, 4);
FIELD(AEGP_StreamVal, layer_id, 0, 4, 0, 4);
FIELD(AEGP_StreamVal, mask_id, 0, 4, 0, 4);
FIELD(AEGP_StreamVal, mask, 0, 8, 0, 4);
FIELD(AEGP_StreamVal, text_documentH, 0, 8, 0, 4);
RECORD(AEGP_StreamVal, 32, 32);

FIELD(AEGP_StreamValue, streamH, 0, 8, 0, 4);
FIELD(AEGP_StreamValue, val, 8, 32, 4, 32);
RECORD(AEGP_StreamValue, 40, 36);
