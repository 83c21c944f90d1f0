// The scalars and small records from which everything the host passes is made.
//
// Records are declared in the host's field order with natural alignment and no packing pragma; that
// is the layout of every host from the 10.0 generation on. AE/host-api/*layout_check.cpp holds them
// to it. Names are the host's own, so that its documentation can be read beside this code.
#pragma once

#include <stddef.h>
#include <stdint.h>

using A_long = int32_t;
using A_u_long = uint32_t;
using A_short = int16_t;
using A_u_short = uint16_t;
using A_char = char;
using A_u_char = uint8_t;
using A_Boolean = uint8_t;  ///< 0 or 1
using A_FpLong = double;
using A_FpShort = float;
using A_Err = A_long;
using A_AppID = A_long;
using A_u_longlong = uint64_t;
/// 64 bits also on 32-bit hosts. Those of older generations read the low word alone, which on the
/// stack stands where a 32-bit argument would.
using A_HandleSize = A_u_longlong;
using A_intptr_t = intptr_t;
using A_Handle = void*;

using PF_Err = A_long;
using PF_Cmd = A_long;
using PF_ParamIndex = A_long;
using PF_ParamValue = A_long;
using PF_ParamType = A_long;
using PF_ParamFlags = A_long;
using PF_ParamUIFlags = A_long;
using PF_OutFlags = A_long;
using PF_OutFlags2 = A_long;
using PF_InFlags = A_long;
using PF_WorldFlags = A_long;
using PF_Field = A_long;
using PF_Quality = A_long;
using PF_ChannelMask = A_long;
using PF_PixelFormat = A_long;
using PF_DepCheckType = A_long;
using PF_UFixed = A_u_long;
using PF_FSliderFlags = A_u_long;
using PF_Precision = A_short;
using PF_ValueDisplayFlags = A_short;
using PF_RenderOutputFlags = short;
using PF_Boolean = A_Boolean;
using PF_FpLong = A_FpLong;
using PF_FpShort = A_FpShort;
/// 16.16 fixed point.
using PF_Fixed = A_long;

/// The effect instance, as the host knows it: handed back with every callback.
using PF_ProgPtr = struct PF_Progress*;
/// Memory of the host; the first dereference gives the block.
using PF_Handle = char**;

using AEGP_MemHandle = struct AEGP_MemOpaque**;
// Objects of the host's project; null means none.
using AEGP_LayerH = struct AEGP_LayerOpaque**;
using AEGP_CompH = struct AEGP_CompOpaque**;
using AEGP_ItemH = struct AEGP_ItemOpaque**;
using AEGP_ProjectH = struct AEGP_ProjectOpaque**;
using AEGP_StreamRefH = struct AEGP_StreamRefOpaque**;
using AEGP_EffectRefH = struct AEGP_EffectRefOpaque**;
using AEGP_MaskRefH = struct AEGP_MaskRefOpaque**;

using AEGP_PluginID = A_long;
using AEGP_LayerStream = A_long;
using AEGP_StreamType = A_long;
using AEGP_LayerIDVal = A_long;
using AEGP_MaskIDVal = A_long;
using AEGP_LayerFlags = A_long;
using AEGP_CompFlags = A_long;
using AEGP_ItemFlags = A_long;
using AEGP_ObjectType = A_long;
using AEGP_StreamFlags = A_long;
using AEGP_KeyInterpolationMask = A_long;
using AEGP_MaskStream = A_long;
using AEGP_LTimeMode = A_short;
using AEGP_LayerQuality = A_short;
using AEGP_ItemType = A_short;
using AEGP_LabelID = A_char;

using SPErr = int32_t;
#ifdef _WIN32
using SPBoolean = int32_t;
#else
using SPBoolean = uint8_t;
#endif

/// A table slot or callback that this project never calls.
using UncalledFunction = void (*)();

/// `value` / `scale` seconds.
struct A_Time {
    A_long value;
    A_u_long scale;
};

struct A_Ratio {
    A_long num;
    A_u_long den;
};

struct A_FloatPoint {
    A_FpLong x;
    A_FpLong y;
};

struct A_FloatPoint3 {
    A_FpLong x;
    A_FpLong y;
    A_FpLong z;
};

struct A_FloatRect {
    A_FpLong left;
    A_FpLong top;
    A_FpLong right;
    A_FpLong bottom;
};

/// Row by row; multiplies row vectors from the left, so a layer's translation stands in row 3.
struct A_Matrix4 {
    A_FpLong mat[4][4];
};

struct PF_Point {
    A_long x_or_h;
    A_long y_or_v;
};

struct PF_LRect {
    A_long left;
    A_long top;
    A_long right;
    A_long bottom;
};
using PF_Rect = PF_LRect;
using PF_UnionableRect = PF_LRect;
using A_LRect = PF_LRect;
using A_Rect = PF_LRect;

struct PF_RationalScale {
    A_long num;
    A_u_long den;
};

struct PF_SpecVersion {
    A_short major;
    A_short minor;
};

/// Channels 0 to 255.
struct PF_Pixel {
    A_u_char alpha;
    A_u_char red;
    A_u_char green;
    A_u_char blue;
};
using PF_Pixel8 = PF_Pixel;
using PF_UnionablePixel = PF_Pixel;

/// Channels 0 to 32768, not 65535.
struct PF_Pixel16 {
    A_u_short alpha;
    A_u_short red;
    A_u_short green;
    A_u_short blue;
};

/// Channels 0.0 to 1.0, with values outside allowed.
struct PF_PixelFloat {
    A_FpShort alpha;
    A_FpShort red;
    A_FpShort green;
    A_FpShort blue;
};
using PF_Pixel32 = PF_PixelFloat;

struct AEGP_ColorVal {
    A_FpLong alphaF;
    A_FpLong redF;
    A_FpLong greenF;
    A_FpLong blueF;
};
