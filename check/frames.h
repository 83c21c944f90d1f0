// Frames: the kinds that an effect can be asked for, the small project that they show, and what an
// effect owes for each.
#pragma once

#include "run.h"

namespace check {

/// A few thousand pixels under a camera that pans, motion blur on: a frame asks for all that an
/// effect may want to know.
host::Scene pan_scene();

/// Any frame of it but the first.
inline constexpr int kFrame = 5;

/// Whether a frame has to be drawn.
enum class Drawing { Whole, WholeOrNone, NotAsked };

/// Each has its row as it is, its row of leaks, and is played under each fault.
struct FrameKind {
    std::string name;  ///< of its rows: frames.NAME, leaks.NAME
    std::string sent;
    host::Application application;
    host::Depth depth;
    bool smart;                        ///< goes by smart rendering
    Drawing drawing = Drawing::Whole;  ///< what the effect owes for it

    host::RenderOptions options() const;
    /// The row that tells whether it comes back.
    std::string row() const { return "frames." + name; }
};

/// Those that the effect declares, smart ones first, then plain ones, then Premiere Pro's, each
/// from the least depth on. Not empty, but Premiere Pro may have none.
std::vector<FrameKind> frame_kinds(const Declared& declared);

/// "16-bit ARGB and float ARGB": those of the formats declared to Premiere Pro that are not drawn
/// here, in their order; empty when all are.
std::string formats_not_drawn(const std::vector<std::int32_t>& declared);

/// What an effect owes its host when a call fails.
enum class Debt {
    None,             ///< no call fails
    Error,            ///< returns an error: pictures of calls that failed are cached otherwise
    ErrorOrFallback,  ///< suites: may do without, and draw all the same
    Anything,         ///< goes on; the call has no status that could be passed on
};

struct Owed {
    Drawing drawing = Drawing::Whole;
    Debt debt = Debt::None;
    bool cancelled = false;  ///< by the user, which every caller has to learn
    // Left behind although nothing fails: told elsewhere.
    int open_param_checkouts = 0;
    bool handle_left = false;
};

/// Finds what is wrong with a frame, told behind `where`, and says how it came back. Rules that it
/// broke stand in `frame.violations`, and are not told here.
void judge(const host::Frame& frame, const Owed& owed, Notes& notes, const std::string& where = {});

/// "status 516: its message".
std::string status_text(const host::Frame& frame);

}  // namespace check
