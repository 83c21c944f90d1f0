// The rows of frames in a host in which nothing fails, and how each is played.
#pragma once

#include <host/frame.h>
#include <host/scene.h>
#include <host/session.h>

#include <string>
#include <string_view>
#include <vector>

#include "apart.h"
#include "frame_kinds.h"
#include "frames.h"
#include "played_scene.h"

namespace conformance {

struct Declared;
struct FrameRow;

/// A row's frames being made.
class Stage {
public:
    Stage(const FrameRow& row, host::Session& session, Notes& notes)
        : row_(row), session_(session), notes_(notes) {}

    /// The row's own wishes.
    host::RenderOptions options() const;
    host::Frame draw(const host::RenderOptions& options, const host::Scene& scene = pan_scene(),
                     int frame = kFrame);
    /// What follows has the time of one step.
    void begin_step();
    void inspect(const host::Frame& frame, Drawing drawing);
    void find(std::string_view text) { notes_.find("", text); }
    void say(std::string_view text) { notes_.say(text); }
    const FrameRow& row() const { return row_; }
    host::Session& session() { return session_; }

private:
    const FrameRow& row_;
    host::Session& session_;
    Notes& notes_;
    int layers_left_ = 0;
};

struct FrameRow {
    std::string id;
    std::string sent;
    std::string promise;
    FrameKind kind;
    Drawing drawing;
    void (*play)(Stage& stage);
};

/// Those that the effect's declarations ask for.
std::vector<FrameRow> frame_rows(const Declared& declared);

}  // namespace conformance
