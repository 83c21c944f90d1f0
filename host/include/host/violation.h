// What a plug-in does against the rules of the effect interface, as the host notes it.
#pragma once

#include <string>

namespace host {

/// The rules that can be broken. The host notices most of them itself; those of the controls'
/// values are for whoever judges an effect.
enum class Rule {
    // In frames.
    Bounds,            ///< writes stay inside the pixels of the output and the input layer
    InputPixels,       ///< the input layer's pixels stay as they are
    Layers,            ///< only layers of the pre-render are fetched, and each once
    LayerNotHeld,      ///< only a fetched layer is checked in, and once
    Suites,            ///< each suite acquired is released
    SuiteNotHeld,      ///< only an acquired suite is released
    Handles,           ///< each handle made is disposed of
    Parameters,        ///< each parameter checked out is checked in
    ParameterNotHeld,  ///< only a parameter checked out is checked in
    Deleter,           ///< pre-render data comes with a deleter
    Rectangles,        ///< the result lies within the request
    Records,           ///< the host's records stay as it filled them in
    Messages,          ///< messages fit their buffer, and none is an error with status 0
    Calls,             ///< callbacks and suites are used as they may be
    // Of controls.
    ControlCount,
    ControlTexts,
    ControlKinds,
    ControlIds,
    ControlRanges,
    Checkboxes,
    PopupDefaults,
    ChoiceCounts,
};

struct Violation {
    Rule rule;
    std::string text;          ///< for people, one line
    std::string subject = {};  ///< of `SuiteNotHeld`: the suite's name; else empty

    bool operator==(const Violation&) const = default;
};

}  // namespace host
