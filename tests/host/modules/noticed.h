// What the host notes of each mischief of the test effect: the rule broken and the exact text.
#pragma once

#include <host/violation.h>

#include <ostream>
#include <stdexcept>
#include <string>

#include "test_effect.h"

namespace test_effect {

struct Noticed {
    Mischief mischief;
    host::Rule rule;
    const char* text;  ///< a line for each violation, all of them of this rule
};

inline std::ostream& operator<<(std::ostream& out, const Noticed& noticed) {
    return out << noticed.text;
}

inline constexpr Noticed kNoticed[] = {
    {kWritePastRow, host::Rule::Bounds,
     "the plug-in wrote outside the output's pixels: in the padding of row 1, 3 bytes behind its "
     "last pixel"},
    {kWriteBefore, host::Rule::Bounds,
     "the plug-in wrote outside the output's pixels: 2 bytes before the first pixel"},
    {kWriteBehind, host::Rule::Bounds,
     "the plug-in wrote outside the output's pixels: 5 bytes behind the last row"},
    // Rows of 64 float pixels and 20 bytes.
    {kWriteRowAbove, host::Rule::Bounds,
     "the plug-in wrote outside the output's pixels: 532 bytes before the first pixel"},
    {kWriteRowBelow, host::Rule::Bounds,
     "the plug-in wrote outside the output's pixels: 512 bytes behind the last row"},
    {kWriteInput, host::Rule::InputPixels, "the plug-in wrote to the input layer's pixels"},
    {kClearInput, host::Rule::InputPixels, "the plug-in wrote to the input layer's pixels"},
    {kHalveInput, host::Rule::InputPixels, "the plug-in wrote to the input layer's pixels"},
    {kLeakSuite, host::Rule::Suites,
     "suite \"PF World Suite\" version 2 was acquired 1 times more than it was released"},
    {kReleaseUnheldSuite, host::Rule::SuiteNotHeld,
     "ReleaseSuite: name=\"PF World Suite\" version=2 is not held"},
    {kNoDeleter, host::Rule::Deleter,
     "PF_Cmd_SMART_PRE_RENDER: pre-render data without a deleter is lost"},
    {kUnknownCheckout, host::Rule::Layers,
     "checkout_layer_pixels: the id 99 was not checked out at pre-render"},
    {kFetchTwice, host::Rule::Layers, "checkout_layer_pixels: the id 0 was fetched already"},
    {kReturnLayerTwice, host::Rule::LayerNotHeld,
     "checkin_layer_pixels: the id 0 is not checked out"},
    {kDuplicateCheckout, host::Rule::Calls, "checkout_layer: the id 0 is in use"},
    {kNegativeCheckout, host::Rule::Calls, "checkout_layer: a negative id, -7"},
    {kOutputFirst, host::Rule::Calls, "checkout_output: the output is asked for before any input"},
    {kLargeResult, host::Rule::Rectangles,
     "PF_Cmd_SMART_PRE_RENDER: the result rectangle reaches beyond the request"},
    {kOverlongMessage, host::Rule::Messages, "sprintf: the text for return_msg is longer than it"},
    {kUnterminatedMessage, host::Rule::Messages,
     "PF_Cmd_SMART_RENDER: return_msg has no terminator within its 256 characters"},
    {kLeakHandle, host::Rule::Handles, "1 host handles were not disposed of"},
    {kCallFromThread, host::Rule::Calls, "3 calls from a thread without a command"},
    {kDisposeTwice, host::Rule::Calls,
     "host_dispose_handle: not a handle of this host, or disposed of already"},
    {kRubbishForCallbacks, host::Rule::Records,
     "PF_Cmd_SMART_RENDER: the callbacks' slot holds neither them nor a handle"},
    {kChangeFlags, host::Rule::Records,
     "PF_Cmd_SMART_PRE_RENDER: out_flags was changed\n"
     "PF_Cmd_SMART_PRE_RENDER: out_flags2 was changed"},
    {kWriteInData, host::Rule::Records, "PF_Cmd_SMART_PRE_RENDER: the input record was written to"},
    {kWriteRenderInput, host::Rule::Records,
     "PF_Cmd_SMART_RENDER: the render input's record was written to\n"
     "PF_Cmd_SMART_RENDER: the output world's record was written to\n"
     "PF_Cmd_SMART_RENDER: the input world's record was written to"},
    {kChangeCount, host::Rule::Records, "PF_Cmd_SMART_RENDER: num_params was changed"},
    {kZeroTimeScale, host::Rule::Calls,
     "checkout_param: null, a time scale of 0, or no frame being made"},
    {kUnknownParameter, host::Rule::Calls, "checkout_param: no parameter 99"},
    {kForeignWorld, host::Rule::Calls,
     "PF_GetPixelFormat: null, or a world that this host did not hand out"}};

/// The first line that the host notes of a mischief; it must be in the table.
inline std::string noticed_text(Mischief mischief) {
    for (const Noticed& noticed : kNoticed) {
        if (noticed.mischief == mischief) {
            const std::string text = noticed.text;
            return text.substr(0, text.find('\n'));
        }
    }
    throw std::logic_error("no text of mischief " + std::to_string(mischief));
}

}  // namespace test_effect
