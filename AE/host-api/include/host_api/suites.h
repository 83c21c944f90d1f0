// The function tables ("suites") that the host hands out by name and version.
//
// The versions asked for stand in constants.h. Tables of other versions of a name have other slots.
// Slots that nothing here calls hold their place as `UncalledFunction`. Functions of tables whose
// name begins with AEGP give 0 for success.
#pragma once

#include <host_api/records.h>
#include <host_api/scalars.h>

/// Where all other tables come from. A table stays valid while it is held.
struct SPBasicSuite {
    SPErr (*AcquireSuite)(const char* name, int32_t version, const void** suite_out);
    SPErr (*ReleaseSuite)(const char* name, int32_t version);
    UncalledFunction IsEqual;
    UncalledFunction AllocateBlock;
    UncalledFunction FreeBlock;
    UncalledFunction ReallocateBlock;
    UncalledFunction Undefined;
};

/// Version 2: memory that the host can own.
struct PF_HandleSuite1 {
    /// Null on failure.
    PF_Handle (*host_new_handle)(A_HandleSize bytes);
    void* (*host_lock_handle)(PF_Handle handle);
    void (*host_unlock_handle)(PF_Handle handle);
    void (*host_dispose_handle)(PF_Handle handle);
    A_HandleSize (*host_get_handle_size)(PF_Handle handle);
    PF_Err (*host_resize_handle)(A_HandleSize bytes, PF_Handle* handle);
};

/// Version 1: the host's C library; the order is that of the inline block.
struct PF_ANSICallbacksSuite1 {
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
};

/// Version 2.
struct PF_FillMatteSuite2 {
    /// A null colour is transparent black, a null area the whole world.
    PF_Err (*fill)(PF_ProgPtr effect_ref, const PF_Pixel* color, const PF_Rect* area,
                   PF_EffectWorld* world);
    UncalledFunction fill16;
    UncalledFunction fill_float;
    UncalledFunction premultiply;
    UncalledFunction premultiply_color;
    UncalledFunction premultiply_color16;
    UncalledFunction premultiply_color_float;
};

/// Version 1: from an effect to its layer, composition time and camera.
struct AEGP_PFInterfaceSuite1 {
    A_Err (*AEGP_GetEffectLayer)(PF_ProgPtr effect_ref, AEGP_LayerH* layer_out);
    UncalledFunction AEGP_GetNewEffectForEffect;
    A_Err (*AEGP_ConvertEffectToCompTime)(PF_ProgPtr effect_ref, A_long time, A_u_long time_scale,
                                          A_Time* comp_time_out);
    /// Null in `camera_out` when no camera layer is active at that time.
    A_Err (*AEGP_GetEffectCamera)(PF_ProgPtr effect_ref, const A_Time* comp_time,
                                  AEGP_LayerH* camera_out);
    UncalledFunction AEGP_GetEffectCameraMatrix;
};

/// Version 11.
struct AEGP_LayerSuite5 {
    UncalledFunction AEGP_GetCompNumLayers;
    UncalledFunction AEGP_GetCompLayerByIndex;
    UncalledFunction AEGP_GetActiveLayer;
    UncalledFunction AEGP_GetLayerIndex;
    UncalledFunction AEGP_GetLayerSourceItem;
    UncalledFunction AEGP_GetLayerSourceItemID;
    A_Err (*AEGP_GetLayerParentComp)(AEGP_LayerH layer, AEGP_CompH* comp_out);
    UncalledFunction AEGP_GetLayerName;
    UncalledFunction AEGP_GetLayerQuality;
    UncalledFunction AEGP_SetLayerQuality;
    UncalledFunction AEGP_GetLayerFlags;
    UncalledFunction AEGP_SetLayerFlag;
    UncalledFunction AEGP_IsLayerVideoReallyOn;
    UncalledFunction AEGP_IsLayerAudioReallyOn;
    UncalledFunction AEGP_GetLayerCurrentTime;
    UncalledFunction AEGP_GetLayerInPoint;
    UncalledFunction AEGP_GetLayerDuration;
    UncalledFunction AEGP_SetLayerInPointAndDuration;
    UncalledFunction AEGP_GetLayerOffset;
    UncalledFunction AEGP_SetLayerOffset;
    UncalledFunction AEGP_GetLayerStretch;
    UncalledFunction AEGP_SetLayerStretch;
    UncalledFunction AEGP_GetLayerTransferMode;
    UncalledFunction AEGP_SetLayerTransferMode;
    UncalledFunction AEGP_IsAddLayerValid;
    UncalledFunction AEGP_AddLayer;
    UncalledFunction AEGP_ReorderLayer;
    UncalledFunction AEGP_GetLayerMaskedBounds;
    UncalledFunction AEGP_GetLayerObjectType;
    UncalledFunction AEGP_IsLayer3D;
    UncalledFunction AEGP_IsLayer2D;
    UncalledFunction AEGP_IsVideoActive;
    UncalledFunction AEGP_IsLayerUsedAsTrackMatte;
    UncalledFunction AEGP_DoesLayerHaveTrackMatte;
    UncalledFunction AEGP_ConvertCompToLayerTime;
    UncalledFunction AEGP_ConvertLayerToCompTime;
    UncalledFunction AEGP_GetLayerDancingRandValue;
    UncalledFunction AEGP_GetLayerID;
    A_Err (*AEGP_GetLayerToWorldXform)(AEGP_LayerH layer, const A_Time* comp_time,
                                       A_Matrix4* transform_out);
    UncalledFunction AEGP_GetLayerToWorldXformFromView;
    UncalledFunction AEGP_SetLayerName;
    UncalledFunction AEGP_GetLayerParent;
    UncalledFunction AEGP_SetLayerParent;
    UncalledFunction AEGP_DeleteLayer;
    UncalledFunction AEGP_DuplicateLayer;
    UncalledFunction AEGP_GetLayerFromLayerID;
};

/// Version 10.
struct AEGP_ItemSuite6 {
    UncalledFunction AEGP_GetFirstProjItem;
    UncalledFunction AEGP_GetNextProjItem;
    UncalledFunction AEGP_GetActiveItem;
    UncalledFunction AEGP_IsItemSelected;
    UncalledFunction AEGP_SelectItem;
    UncalledFunction AEGP_GetItemType;
    UncalledFunction AEGP_GetTypeName;
    UncalledFunction AEGP_GetItemName;
    UncalledFunction AEGP_SetItemName;
    UncalledFunction AEGP_GetItemID;
    UncalledFunction AEGP_GetItemFlags;
    UncalledFunction AEGP_SetItemUseProxy;
    UncalledFunction AEGP_GetItemParentFolder;
    UncalledFunction AEGP_SetItemParentFolder;
    UncalledFunction AEGP_GetItemDuration;
    UncalledFunction AEGP_GetItemCurrentTime;
    A_Err (*AEGP_GetItemDimensions)(AEGP_ItemH item, A_long* width_out, A_long* height_out);
    UncalledFunction AEGP_GetItemPixelAspectRatio;
    UncalledFunction AEGP_DeleteItem;
    UncalledFunction AEGP_CreateNewFolder;
    UncalledFunction AEGP_SetItemCurrentTime;
    UncalledFunction AEGP_GetItemCommentLength;
    UncalledFunction AEGP_GetItemComment;
    UncalledFunction AEGP_SetItemComment;
    UncalledFunction AEGP_GetItemLabel;
    UncalledFunction AEGP_SetItemLabel;
};

/// Version 9.
struct AEGP_CompSuite4 {
    UncalledFunction AEGP_GetCompFromItem;
    A_Err (*AEGP_GetItemFromComp)(AEGP_CompH comp, AEGP_ItemH* item_out);
    UncalledFunction AEGP_GetCompDownsampleFactor;
    UncalledFunction AEGP_SetCompDownsampleFactor;
    UncalledFunction AEGP_GetCompBGColor;
    UncalledFunction AEGP_GetCompFlags;
    UncalledFunction AEGP_GetCompFramerate;
    UncalledFunction AEGP_SetCompFrameRate;
    UncalledFunction AEGP_GetCompShutterAnglePhase;
    /// Composition times, each with its own scale.
    A_Err (*AEGP_GetCompShutterFrameRange)(AEGP_CompH comp, const A_Time* comp_time,
                                           A_Time* start_out, A_Time* duration_out);
    UncalledFunction AEGP_GetCompWorkAreaStart;
    UncalledFunction AEGP_GetCompWorkAreaDuration;
    UncalledFunction AEGP_SetCompWorkAreaStartAndDuration;
    UncalledFunction AEGP_CreateSolidInComp;
    UncalledFunction AEGP_CreateCameraInComp;
    UncalledFunction AEGP_CreateLightInComp;
    UncalledFunction AEGP_CreateComp;
    UncalledFunction AEGP_GetNewCollectionFromCompSelection;
    UncalledFunction AEGP_SetSelection;
    UncalledFunction AEGP_GetCompDisplayStartTime;
    UncalledFunction AEGP_SetCompDisplayStartTime;
    UncalledFunction AEGP_SetCompDuration;
    UncalledFunction AEGP_CreateNullInComp;
    UncalledFunction AEGP_SetCompPixelAspectRatio;
    UncalledFunction AEGP_CreateTextLayerInComp;
    UncalledFunction AEGP_SetCompDimensions;
    UncalledFunction AEGP_DuplicateComp;
    UncalledFunction AEGP_GetCompFrameDuration;
};

/// Version 7.
struct AEGP_StreamSuite2 {
    UncalledFunction AEGP_IsStreamLegal;
    UncalledFunction AEGP_CanVaryOverTime;
    UncalledFunction AEGP_GetValidInterpolations;
    UncalledFunction AEGP_GetNewLayerStream;
    UncalledFunction AEGP_GetEffectNumParamStreams;
    UncalledFunction AEGP_GetNewEffectStreamByIndex;
    UncalledFunction AEGP_GetNewMaskStream;
    UncalledFunction AEGP_DisposeStream;
    UncalledFunction AEGP_GetStreamName;
    UncalledFunction AEGP_GetStreamUnitsText;
    UncalledFunction AEGP_GetStreamProperties;
    UncalledFunction AEGP_IsStreamTimevarying;
    UncalledFunction AEGP_GetStreamType;
    UncalledFunction AEGP_GetNewStreamValue;
    UncalledFunction AEGP_DisposeStreamValue;
    UncalledFunction AEGP_SetStreamValue;
    /// `type_out` may be null.
    A_Err (*AEGP_GetLayerStreamValue)(AEGP_LayerH layer, AEGP_LayerStream stream,
                                      AEGP_LTimeMode time_mode, const A_Time* time,
                                      A_Boolean pre_expression, AEGP_StreamVal* value_out,
                                      AEGP_StreamType* type_out);
    UncalledFunction AEGP_GetExpressionState;
    UncalledFunction AEGP_SetExpressionState;
    UncalledFunction AEGP_GetExpression;
    UncalledFunction AEGP_SetExpression;
    UncalledFunction AEGP_DuplicateStreamRef;
};

/// Version 2.
struct PF_WorldSuite2 {
    UncalledFunction PF_NewWorld;
    UncalledFunction PF_DisposeWorld;
    PF_Err (*PF_GetPixelFormat)(const PF_EffectWorld* world, PF_PixelFormat* format_out);
};

/// Version 1, Premiere's; the same name with version 2 is another table.
struct PF_PixelFormatSuite1 {
    PF_Err (*AddSupportedPixelFormat)(PF_ProgPtr effect_ref, PF_PixelFormat format);
    PF_Err (*ClearSupportedPixelFormats)(PF_ProgPtr effect_ref);
    UncalledFunction NewWorldOfPixelFormat;
    UncalledFunction DisposeWorld;
    UncalledFunction GetPixelFormat;
    UncalledFunction GetBlackForPixelFormat;
    UncalledFunction GetWhiteForPixelFormat;
    UncalledFunction ConvertColorToPixelFormattedData;
};
