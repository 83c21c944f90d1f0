// The numbers of the effect interface: commands, statuses, flags, types, formats.
#pragma once

#include <host_api/scalars.h>

// What the host may ask of an effect.
inline constexpr PF_Cmd PF_Cmd_ABOUT = 0;
inline constexpr PF_Cmd PF_Cmd_GLOBAL_SETUP = 1;
inline constexpr PF_Cmd PF_Cmd_GLOBAL_SETDOWN = 3;
inline constexpr PF_Cmd PF_Cmd_PARAMS_SETUP = 4;
inline constexpr PF_Cmd PF_Cmd_SEQUENCE_SETUP = 5;
inline constexpr PF_Cmd PF_Cmd_SEQUENCE_RESETUP = 6;
inline constexpr PF_Cmd PF_Cmd_SEQUENCE_FLATTEN = 7;
inline constexpr PF_Cmd PF_Cmd_SEQUENCE_SETDOWN = 8;
inline constexpr PF_Cmd PF_Cmd_DO_DIALOG = 9;
inline constexpr PF_Cmd PF_Cmd_FRAME_SETUP = 10;
inline constexpr PF_Cmd PF_Cmd_RENDER = 11;
inline constexpr PF_Cmd PF_Cmd_FRAME_SETDOWN = 12;
inline constexpr PF_Cmd PF_Cmd_USER_CHANGED_PARAM = 13;
inline constexpr PF_Cmd PF_Cmd_UPDATE_PARAMS_UI = 14;
inline constexpr PF_Cmd PF_Cmd_EVENT = 15;
inline constexpr PF_Cmd PF_Cmd_GET_EXTERNAL_DEPENDENCIES = 16;
inline constexpr PF_Cmd PF_Cmd_COMPLETELY_GENERAL = 17;
inline constexpr PF_Cmd PF_Cmd_QUERY_DYNAMIC_FLAGS = 18;
inline constexpr PF_Cmd PF_Cmd_AUDIO_RENDER = 19;
inline constexpr PF_Cmd PF_Cmd_AUDIO_SETUP = 20;
inline constexpr PF_Cmd PF_Cmd_AUDIO_SETDOWN = 21;
inline constexpr PF_Cmd PF_Cmd_ARBITRARY_CALLBACK = 22;
inline constexpr PF_Cmd PF_Cmd_SMART_PRE_RENDER = 23;
inline constexpr PF_Cmd PF_Cmd_SMART_RENDER = 24;
inline constexpr PF_Cmd PF_Cmd_GET_FLATTENED_SEQUENCE_DATA = 28;
inline constexpr PF_Cmd PF_Cmd_TRANSLATE_PARAMS_TO_PREFS = 29;
inline constexpr PF_Cmd PF_Cmd_SMART_RENDER_GPU = 31;
inline constexpr PF_Cmd PF_Cmd_GPU_DEVICE_SETUP = 32;
inline constexpr PF_Cmd PF_Cmd_GPU_DEVICE_SETDOWN = 33;

// Statuses.
inline constexpr PF_Err PF_Err_NONE = 0;
inline constexpr PF_Err PF_Err_OUT_OF_MEMORY = 4;
inline constexpr PF_Err PF_Err_INTERNAL_STRUCT_DAMAGED = 512;
inline constexpr PF_Err PF_Err_INVALID_INDEX = 513;
inline constexpr PF_Err PF_Err_UNRECOGNIZED_PARAM_TYPE = 514;
inline constexpr PF_Err PF_Err_INVALID_CALLBACK = 515;
inline constexpr PF_Err PF_Err_BAD_CALLBACK_PARAM = 516;
inline constexpr PF_Err PF_Interrupt_CANCEL = 517;  ///< the user cancelled: must be passed back
inline constexpr PF_Err PF_Err_CANNOT_PARSE_KEYFRAME_TEXT = 518;
inline constexpr A_Err A_Err_NONE = 0;
inline constexpr A_Err A_Err_GENERIC = 1;
inline constexpr A_Err A_Err_STRUCT = 2;
inline constexpr A_Err A_Err_PARAMETER = 3;
inline constexpr A_Err A_Err_WRONG_THREAD = 5;
inline constexpr A_Err A_Err_MISSING_SUITE = 13;
inline constexpr SPErr kSPNoError = 0;
inline constexpr SPErr kSPSuiteNotFoundError = 0x53214664;  ///< "S!Fd"

// Output flags, first word.
inline constexpr PF_OutFlags PF_OutFlag_NONE = 0;
inline constexpr PF_OutFlags PF_OutFlag_KEEP_RESOURCE_OPEN = 0x1;
inline constexpr PF_OutFlags PF_OutFlag_WIDE_TIME_INPUT = 0x2;
inline constexpr PF_OutFlags PF_OutFlag_NON_PARAM_VARY = 0x4;
inline constexpr PF_OutFlags PF_OutFlag_SEQUENCE_DATA_NEEDS_FLATTENING = 0x10;
inline constexpr PF_OutFlags PF_OutFlag_I_DO_DIALOG = 0x20;
inline constexpr PF_OutFlags PF_OutFlag_USE_OUTPUT_EXTENT = 0x40;
inline constexpr PF_OutFlags PF_OutFlag_SEND_DO_DIALOG = 0x80;
inline constexpr PF_OutFlags PF_OutFlag_DISPLAY_ERROR_MESSAGE = 0x100;
inline constexpr PF_OutFlags PF_OutFlag_I_EXPAND_BUFFER = 0x200;
inline constexpr PF_OutFlags PF_OutFlag_PIX_INDEPENDENT = 0x400;
inline constexpr PF_OutFlags PF_OutFlag_I_WRITE_INPUT_BUFFER = 0x800;
inline constexpr PF_OutFlags PF_OutFlag_I_SHRINK_BUFFER = 0x1000;
inline constexpr PF_OutFlags PF_OutFlag_WORKS_IN_PLACE = 0x2000;
inline constexpr PF_OutFlags PF_OutFlag_CUSTOM_UI = 0x8000;
inline constexpr PF_OutFlags PF_OutFlag_REFRESH_UI = 0x20000;
inline constexpr PF_OutFlags PF_OutFlag_NOP_RENDER = 0x40000;
inline constexpr PF_OutFlags PF_OutFlag_I_USE_SHUTTER_ANGLE = 0x80000;
inline constexpr PF_OutFlags PF_OutFlag_I_USE_AUDIO = 0x100000;
inline constexpr PF_OutFlags PF_OutFlag_I_AM_OBSOLETE = 0x200000;
inline constexpr PF_OutFlags PF_OutFlag_FORCE_RERENDER = 0x400000;
/// In the registration resource only.
inline constexpr PF_OutFlags PF_OutFlag_PiPL_OVERRIDES_OUTDATA_OUTFLAGS = 0x800000;
inline constexpr PF_OutFlags PF_OutFlag_I_HAVE_EXTERNAL_DEPENDENCIES = 0x1000000;
inline constexpr PF_OutFlags PF_OutFlag_DEEP_COLOR_AWARE = 0x2000000;
inline constexpr PF_OutFlags PF_OutFlag_SEND_UPDATE_PARAMS_UI = 0x4000000;

// Output flags, second word.
inline constexpr PF_OutFlags2 PF_OutFlag2_NONE = 0;
inline constexpr PF_OutFlags2 PF_OutFlag2_SUPPORTS_QUERY_DYNAMIC_FLAGS = 0x1;
inline constexpr PF_OutFlags2 PF_OutFlag2_I_USE_3D_CAMERA = 0x2;
inline constexpr PF_OutFlags2 PF_OutFlag2_I_USE_3D_LIGHTS = 0x4;
inline constexpr PF_OutFlags2 PF_OutFlag2_PARAM_GROUP_START_COLLAPSED_FLAG = 0x8;
inline constexpr PF_OutFlags2 PF_OutFlag2_I_AM_THREADSAFE = 0x10;  ///< ignored by the host
inline constexpr PF_OutFlags2 PF_OutFlag2_DOESNT_NEED_EMPTY_PIXELS = 0x40;
inline constexpr PF_OutFlags2 PF_OutFlag2_REVEALS_ZERO_ALPHA = 0x80;
inline constexpr PF_OutFlags2 PF_OutFlag2_SUPPORTS_SMART_RENDER = 0x400;
inline constexpr PF_OutFlags2 PF_OutFlag2_FLOAT_COLOR_AWARE = 0x1000;  ///< needs smart render
inline constexpr PF_OutFlags2 PF_OutFlag2_I_AM_DEPRECATED = 0x4000;
inline constexpr PF_OutFlags2 PF_OutFlag2_AUTOMATIC_WIDE_TIME_INPUT = 0x20000;
inline constexpr PF_OutFlags2 PF_OutFlag2_I_USE_TIMECODE = 0x40000;
inline constexpr PF_OutFlags2 PF_OutFlag2_DEPENDS_ON_UNREFERENCED_MASKS = 0x80000;
inline constexpr PF_OutFlags2 PF_OutFlag2_OUTPUT_IS_WATERMARKED = 0x100000;
inline constexpr PF_OutFlags2 PF_OutFlag2_I_MIX_GUID_DEPENDENCIES = 0x200000;
inline constexpr PF_OutFlags2 PF_OutFlag2_SUPPORTS_GPU_RENDER_F32 = 0x2000000;
inline constexpr PF_OutFlags2 PF_OutFlag2_SUPPORTS_THREADED_RENDERING = 0x8000000;

// What an effect may answer to the query of flags, within those that it declared.
inline constexpr PF_OutFlags kDynamicOutFlags =
    PF_OutFlag_WIDE_TIME_INPUT | PF_OutFlag_NON_PARAM_VARY | PF_OutFlag_PIX_INDEPENDENT |
    PF_OutFlag_I_USE_SHUTTER_ANGLE;
inline constexpr PF_OutFlags2 kDynamicOutFlags2 =
    PF_OutFlag2_I_USE_3D_CAMERA | PF_OutFlag2_I_USE_3D_LIGHTS |
    PF_OutFlag2_DOESNT_NEED_EMPTY_PIXELS | PF_OutFlag2_REVEALS_ZERO_ALPHA;

/// Stages of an effect's version.
inline constexpr A_u_long PF_Stage_DEVELOP = 0;
inline constexpr A_u_long PF_Stage_ALPHA = 1;
inline constexpr A_u_long PF_Stage_BETA = 2;
inline constexpr A_u_long PF_Stage_RELEASE = 3;

/// An effect's version in one word: the major number's low three bits and high four bits stand
/// apart.
constexpr A_u_long PF_VERSION(A_u_long major, A_u_long minor, A_u_long bug, A_u_long stage,
                              A_u_long build) {
    return ((major / 8 % 16) << 26) | ((major % 8) << 19) | ((minor % 16) << 15) |
           ((bug % 16) << 11) | ((stage % 4) << 9) | (build % 512);
}

// Kinds of controls.
inline constexpr PF_ParamType PF_Param_LAYER = 0;
inline constexpr PF_ParamType PF_Param_SLIDER = 1;
inline constexpr PF_ParamType PF_Param_FIX_SLIDER = 2;
inline constexpr PF_ParamType PF_Param_ANGLE = 3;
inline constexpr PF_ParamType PF_Param_CHECKBOX = 4;
inline constexpr PF_ParamType PF_Param_COLOR = 5;
inline constexpr PF_ParamType PF_Param_POINT = 6;
inline constexpr PF_ParamType PF_Param_POPUP = 7;
inline constexpr PF_ParamType PF_Param_CUSTOM = 8;
inline constexpr PF_ParamType PF_Param_NO_DATA = 9;
inline constexpr PF_ParamType PF_Param_FLOAT_SLIDER = 10;
inline constexpr PF_ParamType PF_Param_ARBITRARY_DATA = 11;
inline constexpr PF_ParamType PF_Param_PATH = 12;
inline constexpr PF_ParamType PF_Param_GROUP_START = 13;
inline constexpr PF_ParamType PF_Param_GROUP_END = 14;
inline constexpr PF_ParamType PF_Param_BUTTON = 15;
inline constexpr PF_ParamType PF_Param_POINT_3D = 18;

inline constexpr PF_ParamFlags PF_ParamFlag_CANNOT_TIME_VARY = 0x2;
inline constexpr PF_ParamFlags PF_ParamFlag_CANNOT_INTERP = 0x4;
inline constexpr PF_ParamFlags PF_ParamFlag_COLLAPSE_TWIRLY = 0x20;
inline constexpr PF_ParamFlags PF_ParamFlag_START_COLLAPSED = 0x20;
inline constexpr PF_ParamFlags PF_ParamFlag_SUPERVISE = 0x40;
inline constexpr PF_ParamFlags PF_ParamFlag_USE_VALUE_FOR_OLD_PROJECTS = 0x80;

inline constexpr PF_ParamUIFlags PF_PUI_TOPIC = 0x1;
inline constexpr PF_ParamUIFlags PF_PUI_CONTROL = 0x2;
inline constexpr PF_ParamUIFlags PF_PUI_STD_CONTROL_ONLY = 0x4;
inline constexpr PF_ParamUIFlags PF_PUI_NO_ECW_UI = 0x8;
inline constexpr PF_ParamUIFlags PF_PUI_ECW_SEPARATOR = 0x10;
inline constexpr PF_ParamUIFlags PF_PUI_DISABLED = 0x20;
inline constexpr PF_ParamUIFlags PF_PUI_INVISIBLE = 0x200;

inline constexpr PF_FSliderFlags PF_FSliderFlag_NONE = 0;
inline constexpr PF_FSliderFlags PF_FSliderFlag_WANT_PHASE = 0x1;

inline constexpr PF_ValueDisplayFlags PF_ValueDisplayFlag_NONE = 0;
inline constexpr PF_ValueDisplayFlags PF_ValueDisplayFlag_PERCENT = 0x1;
inline constexpr PF_ValueDisplayFlags PF_ValueDisplayFlag_PIXEL = 0x2;
inline constexpr PF_ValueDisplayFlags PF_ValueDisplayFlag_REVERSE = 0x8;

// Digits after the point; larger numbers pass as a digit count.
inline constexpr PF_Precision PF_Precision_INTEGER = 0;
inline constexpr PF_Precision PF_Precision_TENTHS = 1;
inline constexpr PF_Precision PF_Precision_HUNDREDTHS = 2;
inline constexpr PF_Precision PF_Precision_THOUSANDTHS = 3;
inline constexpr PF_Precision PF_Precision_TEN_THOUSANDTHS = 4;

/// Index for `add_param`: append. No other place is allowed.
inline constexpr PF_ParamIndex PF_ParamIndex_APPEND = -1;

// Worlds, fields, channels, qualities.
inline constexpr PF_WorldFlags PF_WorldFlag_DEEP = 0x1;  ///< 16-bit pixels; clear for float ones
inline constexpr PF_WorldFlags PF_WorldFlag_WRITEABLE = 0x2;
inline constexpr PF_Field PF_Field_FRAME = 0;
inline constexpr PF_Field PF_Field_UPPER = 1;
inline constexpr PF_Field PF_Field_LOWER = 2;
inline constexpr PF_ChannelMask PF_ChannelMask_ALPHA = 0x1;
inline constexpr PF_ChannelMask PF_ChannelMask_RED = 0x2;
inline constexpr PF_ChannelMask PF_ChannelMask_GREEN = 0x4;
inline constexpr PF_ChannelMask PF_ChannelMask_BLUE = 0x8;
inline constexpr PF_ChannelMask PF_ChannelMask_ARGB = 0xF;
inline constexpr PF_Quality PF_Quality_DRAWING_AUDIO = -1;
inline constexpr PF_Quality PF_Quality_LO = 0;
inline constexpr PF_Quality PF_Quality_HI = 1;
inline constexpr PF_RenderOutputFlags PF_RenderOutputFlag_RETURNS_EXTRA_PIXELS = 0x1;
inline constexpr PF_RenderOutputFlags PF_RenderOutputFlag_GPU_RENDER_POSSIBLE = 0x2;
inline constexpr PF_DepCheckType PF_DepCheckType_NONE = 0;
inline constexpr PF_DepCheckType PF_DepCheckType_ALL_DEPENDENCIES = 1;
inline constexpr PF_DepCheckType PF_DepCheckType_MISSING_DEPENDENCIES = 2;
inline constexpr A_long PF_LayerDefault_MYSELF = -1;
inline constexpr A_long PF_LayerDefault_NONE = 0;

/// A pixel format's number: the first character is the low byte, so the first in memory on a
/// little-endian host.
constexpr PF_PixelFormat PF_PIXEL_FORMAT(const char (&code)[5]) {
    A_u_long number = 0;
    for (int i = 3; i >= 0; --i) {
        number = number << 8 | static_cast<A_u_char>(code[i]);
    }
    return static_cast<PF_PixelFormat>(number);
}

inline constexpr PF_PixelFormat PF_PixelFormat_ARGB32 = PF_PIXEL_FORMAT("argb");   ///< 8-bit
inline constexpr PF_PixelFormat PF_PixelFormat_ARGB64 = PF_PIXEL_FORMAT("ae16");   ///< 16-bit
inline constexpr PF_PixelFormat PF_PixelFormat_ARGB128 = PF_PIXEL_FORMAT("ae32");  ///< float
inline constexpr PF_PixelFormat PF_PixelFormat_INVALID = PF_PIXEL_FORMAT("badf");
inline constexpr PF_PixelFormat PF_PixelFormat_BGRA32 = PF_PIXEL_FORMAT("bgra");   ///< 8-bit
inline constexpr PF_PixelFormat PF_PixelFormat_BGRA64 = PF_PIXEL_FORMAT("Bgra");   ///< 16-bit
inline constexpr PF_PixelFormat PF_PixelFormat_BGRA128 = PF_PIXEL_FORMAT("BGra");  ///< float

// Applications; here the first character is the most significant byte.
inline constexpr A_AppID kAppID_AfterEffects = 0x46585443;  ///< "FXTC"
inline constexpr A_AppID kAppID_Premiere = 0x50724D72;      ///< "PrMr"

// Time and streams.
inline constexpr AEGP_LTimeMode AEGP_LTimeMode_LayerTime = 0;
inline constexpr AEGP_LTimeMode AEGP_LTimeMode_CompTime = 1;
inline constexpr AEGP_LayerStream AEGP_LayerStream_NONE = -1;
inline constexpr AEGP_LayerStream AEGP_LayerStream_ANCHORPOINT = 0;
inline constexpr AEGP_LayerStream AEGP_LayerStream_POSITION = 1;
inline constexpr AEGP_LayerStream AEGP_LayerStream_SCALE = 2;
inline constexpr AEGP_LayerStream AEGP_LayerStream_ROTATION = 3;
inline constexpr AEGP_LayerStream AEGP_LayerStream_OPACITY = 4;
inline constexpr AEGP_LayerStream AEGP_LayerStream_AUDIO = 5;
inline constexpr AEGP_LayerStream AEGP_LayerStream_MARKER = 6;
inline constexpr AEGP_LayerStream AEGP_LayerStream_TIME_REMAP = 7;
inline constexpr AEGP_LayerStream AEGP_LayerStream_ROTATE_X = 8;
inline constexpr AEGP_LayerStream AEGP_LayerStream_ROTATE_Y = 9;
inline constexpr AEGP_LayerStream AEGP_LayerStream_ORIENTATION = 10;
inline constexpr AEGP_LayerStream AEGP_LayerStream_ZOOM = 11;  ///< cameras
inline constexpr AEGP_LayerStream AEGP_LayerStream_DEPTH_OF_FIELD = 12;
inline constexpr AEGP_LayerStream AEGP_LayerStream_FOCUS_DISTANCE = 13;
inline constexpr AEGP_LayerStream AEGP_LayerStream_APERTURE = 14;
inline constexpr AEGP_LayerStream AEGP_LayerStream_BLUR_LEVEL = 15;
inline constexpr AEGP_StreamType AEGP_StreamType_NO_DATA = 0;
inline constexpr AEGP_StreamType AEGP_StreamType_ThreeD_SPATIAL = 1;
inline constexpr AEGP_StreamType AEGP_StreamType_ThreeD = 2;
inline constexpr AEGP_StreamType AEGP_StreamType_TwoD_SPATIAL = 3;
inline constexpr AEGP_StreamType AEGP_StreamType_TwoD = 4;
inline constexpr AEGP_StreamType AEGP_StreamType_OneD = 5;
inline constexpr AEGP_StreamType AEGP_StreamType_COLOR = 6;
inline constexpr AEGP_StreamType AEGP_StreamType_ARB = 7;
inline constexpr AEGP_StreamType AEGP_StreamType_MARKER = 8;
inline constexpr AEGP_StreamType AEGP_StreamType_LAYER_ID = 9;
inline constexpr AEGP_StreamType AEGP_StreamType_MASK_ID = 10;
inline constexpr AEGP_StreamType AEGP_StreamType_MASK = 11;
inline constexpr AEGP_StreamType AEGP_StreamType_TEXT_DOCUMENT = 12;
inline constexpr AEGP_ObjectType AEGP_ObjectType_NONE = -1;
inline constexpr AEGP_ObjectType AEGP_ObjectType_AV = 0;
inline constexpr AEGP_ObjectType AEGP_ObjectType_LIGHT = 1;
inline constexpr AEGP_ObjectType AEGP_ObjectType_CAMERA = 2;
inline constexpr AEGP_ObjectType AEGP_ObjectType_TEXT = 3;
inline constexpr AEGP_ObjectType AEGP_ObjectType_VECTOR = 4;

// Suites and the versions asked for; a version goes with one table of suites.h and no other.
inline constexpr char kPFHandleSuite[] = "PF Handle Suite";
inline constexpr A_long kPFHandleSuiteVersion1 = 2;  ///< PF_HandleSuite1
inline constexpr char kPFANSISuite[] = "PF ANSI Suite";
inline constexpr A_long kPFANSISuiteVersion1 = 1;  ///< PF_ANSICallbacksSuite1
inline constexpr char kPFFillMatteSuite[] = "PF Fill Matte Suite";
inline constexpr A_long kPFFillMatteSuiteVersion2 = 2;  ///< PF_FillMatteSuite2
inline constexpr char kAEGPPFInterfaceSuite[] = "AEGP PF Interface Suite";
inline constexpr A_long kAEGPPFInterfaceSuiteVersion1 = 1;  ///< AEGP_PFInterfaceSuite1
inline constexpr char kAEGPLayerSuite[] = "AEGP Layer Suite";
inline constexpr A_long kAEGPLayerSuiteVersion5 = 11;  ///< AEGP_LayerSuite5
inline constexpr char kAEGPItemSuite[] = "AEGP Item Suite";
inline constexpr A_long kAEGPItemSuiteVersion6 = 10;  ///< AEGP_ItemSuite6
inline constexpr char kAEGPCompSuite[] = "AEGP Comp Suite";
inline constexpr A_long kAEGPCompSuiteVersion4 = 9;  ///< AEGP_CompSuite4
inline constexpr char kAEGPStreamSuite[] = "AEGP Stream Suite";
inline constexpr A_long kAEGPStreamSuiteVersion2 = 7;  ///< AEGP_StreamSuite2
inline constexpr char kPFWorldSuite[] = "PF World Suite";
inline constexpr A_long kPFWorldSuiteVersion2 = 2;  ///< PF_WorldSuite2
inline constexpr char kPFPixelFormatSuite[] = "PF Pixel Format Suite";
inline constexpr A_long kPFPixelFormatSuiteVersion1 = 1;  ///< PF_PixelFormatSuite1; Premiere only
