// What the test effect and the tests agree on.
#pragma once

namespace test_effect {

/// Ways to break the rules: the choices of the control "Mischief", from 1, named by their numbers.
enum Mischief {
    kNone = 1,
    kThrowStandard,
    kThrowForeign,
    kThrowNumber,
    kWritePastRow,
    kWriteBefore,
    kWriteBehind,
    kWriteInput,
    kLeakSuite,
    kReleaseUnheldSuite,
    kUnknownSuite,
    kNoDeleter,
    kThrowInDeleter,
    kUnknownCheckout,
    kFetchTwice,
    kDuplicateCheckout,
    kNegativeCheckout,
    kOutputFirst,
    kLargeResult,
    kEmptyResult,
    kDrawNothing,
    kDrawHalf,
    kFailWithMessage,
    kOverlongMessage,
    kUnterminatedMessage,
    kLeakHandle,
    kDisposeTwice,
    kHandleForCallbacks,
    kRubbishForCallbacks,
    kZeroTimeScale,
    kUnknownParameter,
    kForeignWorld,
    kCallUnprovided,
    kCrash,  ///< in 16-bit renders
    kHang,   ///< in 16-bit renders
    kLeakMemory,
    kKeepParameter,  ///< checked out and not in again
    kWrongCount,     ///< of parameters
    kStayLoaded,
    kLeakOnError,  ///< memory, when the output cannot be had
    kLeakAtSetUp,
    kLeakInAbout,
    kLeakDescriptor,
    kLeakMapping,
    kEndProcess,  ///< in 16-bit renders
    kLeakInFloat,
    kLeakInPremiere,
    kSlowLeakOnError,     ///< as kLeakOnError, in float renders, a tenth of a second each
    kCrashInSecondPlain,  ///< 16-bit render of a session
    kCrashAfterAbout,     ///< in Premiere Pro, when asked for dependencies
    kRefuseFlatten,       ///< in Premiere Pro
    kKeepLayer,           ///< its pixels, fetched and not checked in
    kReturnLayerTwice,
    kIgnoreOnce,           ///< a call of the first frame that fails
    kCallAtSequenceDown,   ///< what may be called in frames alone, if there were any
    kDisposeTwiceWhenTwo,  ///< frames are under way
    kNoFloat,              ///< declared: no mischief
    kExit,                 ///< in 16-bit renders
    kWriteRowAbove,        ///< the picture: a pixel amid it
    kWriteRowBelow,        ///< likewise
    kClearInput,           ///< its pixels
    kHalveInput,           ///< each byte of its pixels
    kForgetAlpha,          ///< leaves it as it was
    kAddToOutput,          ///< to what stood there, in float renders
    kExceedWhite,          ///< in 16-bit renders
    kDrawNotANumber,       ///< in float renders
    kCallFromThread,       ///< of its own, three times
    kLeaveProcess,         ///< running, in 16-bit renders
    kLeaveSession,         ///< likewise, in a session of its own
    kFailPart,             ///< of a frame
    kFailDownsampled,      ///< to the half
    kFailAspect,           ///< but that of square pixels
    kPremiereFloat,        ///< declared to Premiere Pro too: no mischief
    kPremiereFormats,      ///< likewise, more formats, and one that nobody knows
    kLeakEverySecond,      ///< render
    kFailFirst,            ///< frame of the composition
    kFailLast,             ///< frame of the composition
    kFailThird,            ///< frame of the composition
    kCallInThird,          ///< frame: a wrong call
    kNoSmart,              ///< rendering declared: no mischief
    kCrashSmart,           ///< renders, all
    kCrashPreRender,
    kLeakInFlatten,
    kLeakInResetup,
    kRefuseSetDown,
    kWriteInData,       ///< at pre-render
    kWriteRenderInput,  ///< and the worlds' records
    kWriteParameters,   ///< in plain renders
    kCrashInSetDown,
    kKeepThird,           ///< frame's parameter
    kSwallowCancel,       ///< for another error, when the output cannot be had
    kBlankWithoutHandle,  ///< draws nothing in a smart render that gets none
    kChangeFlags,         ///< at pre-render
    kChangeCount,         ///< of parameters, in smart renders
    kChangeVersion,       ///< in plain renders
    kAskForRefresh,       ///< no mischief
    kLeakInFlagQuery,
    kLeakInPlain,         ///< renders
    kHandleOnError,       ///< in the callbacks' slot, when the output cannot be had
    kThrowOnError,        ///< likewise
    kLeakWhenDenied,      ///< memory, when it gets no handle for its dependencies
    kKeepFlagParameter,   ///< checked out in the flag query and not in again
    kCrashDeniedResetup,  ///< when it gets no handle
    kRefuseUserChange,
    kWriteArbitrary,  ///< command's record
    kCrashInGpuSetup,
    kDeclareInterfaces,         ///< dialogs, events, sound, graphics processor: no mischief
    kDeclareUpdates,            ///< of its controls: no mischief
    kRefuseUpdates,             ///< declared too
    kSupervise,                 ///< a control: no mischief
    kCrashAfterFlatten,         ///< and re-set-up, in smart renders
    kForgetInFlatten,           ///< draws another picture afterwards
    kActOnTheTerminal,          ///< by the message of a 16-bit render that fails
    kNoPremiereFormats,         ///< declared: no mischief
    kPremiereFloatAlone,        ///< likewise
    kPremiereArgb,              ///< declared before BGRA: no mischief
    kPremiereUnknown,           ///< format alone: no mischief
    kWriteInPremiere,           ///< all BGRA formats, by itself: no mischief
    kAskPixels16InPremiere,     ///< where there is no such access, all BGRA formats declared
    kLeakInPremiereFloat,       ///< all BGRA formats declared
    kFailInPremiere16,          ///< likewise
    kIgnoreFillInPremiere16,    ///< likewise
    kWritePastRowInPremiere16,  ///< likewise
    kStartOutside,              ///< the valid range of a slider
    kDefaultOutside,            ///< likewise
    kSliderOutside,             ///< likewise, the track's end
    kCheckboxOfFive,
    kEmptyChoice,
    kUnknownControl,
    kSameId,              ///< of two controls
    kGroups,              ///< of controls declared, their ends without an id: no mischief
    kTurnOnFlag,          ///< that was not declared, in the flag query
    kTurnOnFlag2,         ///< likewise, of the second flags
    kFloatWithoutSmart,   ///< rendering declared
    kOverrideFlags,       ///< declared, which the registration alone may
    kCrashWithoutHandle,  ///< at pre-render
    kMischiefEnd
};

/// Float frames carry in row 0, in the red channel, what the effect was told.
enum Fact {
    kGain,
    kCount,
    kInvert,
    kShadeRed,
    kShadeGreen,
    kShadeBlue,
    kMode,
    kShutterAngle,  ///< degrees
    kCurrentTime,
    kTimeStep,
    kTimeScale,
    kTotalTime,
    kInWidth,
    kInHeight,
    kDownsampleNum,
    kDownsampleDen,
    kNumParams,
    kBitDepth,
    kHasCamera,
    kMatrix,  ///< 16 of them
    kZoom = kMatrix + 16,
    kItemWidth,
    kItemHeight,
    kShutterStart,     ///< value
    kShutterScale,     ///< scale
    kShutterDuration,  ///< value
    kOutputRowBytes,
    kInputRowBytes,
    kNullSlots,  ///< pointers in all of the host's tables that are null
    kAspectNum,  ///< of a pixel, as told with the time
    kAspectDen,
    kInputAspectNum,  ///< of a pixel, as told with the input layer's checkout
    kInputAspectDen,
    kReferenceWidth,  ///< likewise
    kReferenceHeight,
    kOriginX,  ///< of the output
    kOriginY,
    kFactEnd
};

}  // namespace test_effect
