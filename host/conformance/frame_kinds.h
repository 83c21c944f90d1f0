// The kinds of frame that an effect can be asked for: each has its row as it is, its row of leaks
// and its family of faults.
#pragma once

#include <host/frame.h>
#include <host/session.h>

#include <string>
#include <vector>

namespace conformance {

struct Declared;

struct FrameKind {
    std::string name;  ///< of its rows: frames.NAME, leaks.NAME, faults.NAME.CALL
    std::string sent;
    host::Application application;
    host::Depth depth;
    bool plain;
    bool smart;  ///< goes by smart rendering

    host::RenderOptions options() const;
    /// The row that tells whether it comes back.
    std::string row() const { return "frames." + name; }
};

/// Those that the effect declares, smart ones first, then plain ones, then Premiere Pro's, each
/// from the least depth on. Not empty, but Premiere Pro may have none.
std::vector<FrameKind> frame_kinds(const Declared& declared);

/// The deepest of the smart ones; null when there are none. An effect does most there.
const FrameKind* deepest(const std::vector<FrameKind>& kinds);

}  // namespace conformance
