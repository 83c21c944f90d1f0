// Rows of frames in a host in which nothing fails.
#include <host/errors.h>
#include <host/instance.h>
#include <host_api/effect_interface.h>

#include "counted.h"
#include "examination.h"
#include "frame_kinds.h"
#include "frames.h"
#include "rules.h"
#include "stage.h"

namespace conformance {
namespace {

using host::Application;
using host::EffectInstance;
using host::Frame;
using host::PreRender;
using host::RenderOptions;
using host::Session;

/// Noted by a row's probe at the end, where all that its frames broke is told.
constexpr char kCameToItsEnd[] = "came to its end";

constexpr char kDrawn[] = "status 0, every pixel drawn";

struct FrameRow;

/// A row's frames being made.
class Stage {
public:
    Stage(const FrameRow& row, Session& session, Notes& notes)
        : row_(row), session_(session), notes_(notes) {}

    /// The row's own wishes.
    RenderOptions options() const;
    Frame draw(const RenderOptions& options, const host::Scene& scene = pan_scene(),
               int frame = kFrame);
    /// What follows has the time of one step.
    void begin_step();
    void inspect(const Frame& frame, Drawing drawing);
    void find(std::string_view text) { notes_.find("", text); }
    void say(std::string_view text) { notes_.say(text); }
    const FrameRow& row() const { return row_; }
    Session& session() { return session_; }

private:
    const FrameRow& row_;
    Session& session_;
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

RenderOptions Stage::options() const { return row_.kind.options(); }

void Stage::begin_step() { notes_.doing(row_.sent); }

Frame Stage::draw(const RenderOptions& options, const host::Scene& scene, int frame) {
    begin_step();
    return session_.render(scene, scene.composition.frame_time(frame), options);
}

void Stage::inspect(const Frame& frame, Drawing drawing) {
    conformance::inspect(frame, drawing, notes_);
    layers_left_ += frame.open_layer_checkouts;
    notes_.keep("layers left", layers_left_);
}

void play_one(Stage& stage) { stage.inspect(stage.draw(stage.options()), stage.row().drawing); }

void play_first(Stage& stage) {
    stage.inspect(stage.draw(stage.options(), pan_scene(), 0), Drawing::Whole);
}

void play_last(Stage& stage) {
    const host::Scene scene = pan_scene();
    stage.inspect(stage.draw(stage.options(), scene, scene.composition.frames() - 1),
                  Drawing::Whole);
}

void play_one_pixel(Stage& stage) {
    RenderOptions options = stage.options();
    options.width = options.height = 1;
    stage.inspect(stage.draw(options), Drawing::Whole);
}

void play_part(Stage& stage) {
    RenderOptions options = stage.options();
    options.region = host::Rect{7, 5, 29, 16};
    stage.inspect(stage.draw(options), Drawing::Whole);
}

void play_empty_request(Stage& stage) {
    const Frame whole = stage.draw(stage.options());
    stage.inspect(whole, Drawing::Whole);
    RenderOptions options = stage.options();
    options.region = host::Rect{};
    const Frame frame = stage.draw(options);
    stage.inspect(frame, Drawing::NotAsked);
    if (!(frame.max_result_rect == whole.max_result_rect)) {
        stage.find("the largest result depends on the request");
    }
    stage.say("status 0, the same largest result");
}

void play_without_camera(Stage& stage) {
    host::Scene scene = pan_scene();
    scene.camera = nullptr;
    stage.inspect(stage.draw(stage.options(), scene), Drawing::Whole);
}

void play_without_blur(Stage& stage) {
    host::Scene scene = pan_scene();
    scene.composition.motion_blur = false;
    stage.inspect(stage.draw(stage.options(), scene), Drawing::Whole);
}

/// The frame once more, with other wishes.
void play_twice(Stage& stage, const RenderOptions& options, const char* difference) {
    const Frame first = stage.draw(stage.options());
    stage.inspect(first, Drawing::Whole);
    const Frame second = stage.draw(options);
    stage.inspect(second, Drawing::Whole);
    if (pixels(first) != pixels(second)) {
        stage.find(difference);
    }
    stage.say("status 0, the same pixels");
}

void play_again(Stage& stage) {
    play_twice(stage, stage.options(), "the second picture differs from the first");
}

void play_other_rows(Stage& stage) {
    RenderOptions options = stage.options();
    options.output_padding = 100;
    options.input_padding = 0;
    play_twice(stage, options, "the picture depends on the length of a row");
}

void play_no_render(Stage& stage) {
    RenderOptions options = stage.options();
    options.render_follows = false;
    stage.inspect(stage.draw(options), Drawing::NotAsked);
}

/// Two layers in time of their own, pre-rendered one after the other and rendered the other way
/// round.
void play_interleaved(Stage& stage) {
    host::Project project(pan_scene());
    project.layers.push_back(project.layers.front());
    project.layers.back().start = {1, 8};
    project.layers.back().stretch = {3, 2};
    const host::Time time = project.composition.frame_time(kFrame);
    EffectInstance below(stage.session(), project, 0);
    EffectInstance above(stage.session(), project, 1);
    const auto step = [&](const auto& make) {
        stage.begin_step();
        return make();
    };
    const Frame alone = step([&] { return below.render(time, stage.options()); });
    stage.inspect(alone, Drawing::Whole);
    PreRender first = step([&] { return below.pre_render(time, stage.options()); });
    PreRender second = step([&] { return above.pre_render(time, stage.options()); });
    if (!first.renderable() || !second.renderable()) {
        stage.find("a pre-render cannot be rendered: " + status_text(first.frame()));
        return;
    }
    stage.inspect(step([&] { return above.render(second); }), Drawing::Whole);
    second.discard();
    const Frame late = step([&] { return below.render(first); });
    stage.inspect(late, Drawing::Whole);
    first.discard();
    if (pixels(late) != pixels(alone)) {
        stage.find("the picture differs from that of the layer alone");
    }
    stage.say("status 0, the same pixels as alone");
}

/// Played in the kind of frame that an effect does most in.
struct Play {
    RowText text;
    void (*play)(Stage& stage);
};

constexpr Play kPlays[] = {
    {{"frames.first", "the first frame of the composition", kDrawn}, play_first},
    {{"frames.last", "the last frame of the composition", kDrawn}, play_last},
};

/// Of a smart effect alone.
constexpr Play kSmartPlays[] = {
    {{"frames.still", "a frame without motion blur", kDrawn}, play_without_blur},
    {{"frames.no-camera", "a frame without a camera", kDrawn}, play_without_camera},
    {{"frames.one-pixel", "a frame of one pixel", kDrawn}, play_one_pixel},
    {{"frames.part", "a part of a frame", kDrawn}, play_part},
    {{"frames.empty", "a pre-render that asks for no pixels",
      "status 0, the largest result as for a whole frame"},
     play_empty_request},
    {{"frames.no-render", "a pre-render without a render", "status 0, no render needed"},
     play_no_render},
    {{"frames.again", "the same frame twice", "the same pixels"}, play_again},
    {{"frames.rows", "a frame with longer rows", "the same pixels"}, play_other_rows},
    {{"frames.interleaved", "two layers, rendered in another order than pre-rendered",
      "the same pixels as alone"},
     play_interleaved},
};

std::vector<FrameRow> frame_rows(const Declared& declared) {
    const std::vector<FrameKind> kinds = frame_kinds(declared);
    const FrameKind* const deep = deepest(kinds);
    std::vector<FrameRow> rows;
    for (const FrameKind& kind : kinds) {
        const Drawing drawing = due(kind, declared);
        rows.push_back({kind.row(), kind.sent,
                        drawing == Drawing::Whole ? kDrawn : "status 0, all pixels drawn or none",
                        kind, drawing, play_one});
    }
    const auto add = [&rows](const Play& play, const FrameKind& kind) {
        rows.push_back({std::string(play.text.id), std::string(play.text.sent),
                        std::string(play.text.promise), kind, Drawing::Whole, play.play});
    };
    for (const Play& play : kPlays) {
        add(play, deep != nullptr ? *deep : kinds.front());
    }
    if (deep != nullptr) {
        for (const Play& play : kSmartPlays) {
            add(play, *deep);
        }
    }
    return rows;
}

/// All that the session broke: with its frames, between them and in the end.
void play(const Examination& run, const FrameRow& row, Notes& notes) {
    const std::vector<std::string>& known = run.known_violations(row.kind.application);
    const auto tell = [&](const std::vector<std::string>& violations) {
        for (const std::string& violation : violations) {
            notes.find(rule_of(violation), violation);
        }
    };
    notes.doing("set-up");
    Session session = run.open({row.kind.application, nullptr});
    Stage stage(row, session, notes);
    row.play(stage);
    const std::vector<std::string> told = session.violations();
    tell(beyond(told, known));
    notes.doing("set-down");
    session.forget();
    session.close();
    tell(beyond_at_set_down(beyond(session.violations(), known), told));
    notes.keep(kCameToItsEnd, true);
}

/// The frames' rows and what was heard of them.
struct Played {
    FrameRow row;
    Heard heard;
};

/// Only smart frames have a part in it.
bool smart_alone(std::string_view rule) {
    return rule == "layers" || rule == "deleter" || rule == "rectangles";
}

void enter_rule(Examination& run, const Rule& rule, const std::vector<Played>& frames) {
    const std::string id = "frames." + std::string(rule.name);
    std::vector<Placed> broken;
    int all = 0;
    int ended = 0;
    int layers_left = 0;
    for (const Played& frame : frames) {
        for (const Finding& finding : Examination::under(frame.heard, rule.name)) {
            broken.push_back({finding, frame.row.id});
        }
        if (frame.row.kind.smart || !smart_alone(rule.name)) {
            ++all;
            ended += frame.heard.kept.contains(kCameToItsEnd) ? 1 : 0;
        }
        layers_left += frame.heard.kept.value("layers left", 0);
    }
    if (broken.empty() && ended == 0) {
        run.leave_out(id, all == 0 ? "smart rendering is not declared"
                                   : "no frame that it is for came to its end");
        return;
    }
    std::string answer = "kept";
    if (ended < all) {
        answer += " in " + std::to_string(ended) + " of " + std::to_string(all) + " rows";
    }
    // Layers need not be checked in: a host takes them back when the render returns.
    if (rule.name == "layers" && layers_left != 0) {
        answer += "; " + std::to_string(layers_left) + " left for the host to take back";
    }
    run.enter({id, "all of these frames", rule.promise}, counted(broken, "in"), answer);
}

}  // namespace

std::string status_text(const Frame& frame) {
    return "status " + std::to_string(frame.status) +
           (frame.message.text.empty() ? "" : ": " + frame.message.text);
}

Drawing due(const FrameKind& kind, const Declared& declared) {
    // With smart rendering at hand the plain commands need not draw, outside Premiere Pro.
    const bool may_rest = kind.plain && declared.has2(PF_OutFlag2_SUPPORTS_SMART_RENDER);
    return may_rest ? Drawing::WholeOrNone : Drawing::Whole;
}

void inspect(const Frame& frame, Drawing drawing, Notes& notes, const std::string& where) {
    const std::size_t all = static_cast<std::size_t>(frame.world.width()) *
                            static_cast<std::size_t>(frame.world.height());
    if (frame.status != PF_Err_NONE) {
        notes.find("", where + status_text(frame));
    } else if (drawing != Drawing::NotAsked && !frame.rendered) {
        notes.find("", where + "nothing to render: the result is empty");
    } else if (frame.rendered && frame.undrawn_pixels != 0 &&
               (drawing == Drawing::Whole || frame.undrawn_pixels != all)) {
        notes.find("", where + std::to_string(frame.undrawn_pixels) + " of " + std::to_string(all) +
                           " pixels are not drawn");
    }
    if (frame.status == PF_Err_NONE && frame.message.is_error) {
        notes.find("messages", where + "an error message with status 0: " + frame.message.text);
    }
    if (frame.open_param_checkouts != 0) {
        notes.find("parameters",
                   where + std::to_string(frame.open_param_checkouts) +
                       " parameters checked out and not in again",
                   kParametersStayOut);
    }
    if (frame.handle_left) {
        notes.find("record", where + "a handle stands in the slot of the callbacks",
                   kHandleInRecord);
    }
    const bool none = frame.rendered && frame.undrawn_pixels == all;
    notes.say("status 0" + (!frame.rendered ? ""
                            : none          ? ", no pixel drawn"
                                   : ", all of " + std::to_string(frame.world.width()) + " x " +
                                         std::to_string(frame.world.height()) + " pixels drawn"));
}

void examine_frames(Examination& run) {
    if (!run.declared) {
        run.leave_out("frames", "the effect cannot be set up");
        return;
    }
    std::vector<Played> frames;
    for (const FrameRow& row : frame_rows(*run.declared)) {
        frames.push_back({row, run.probe([&](Notes& notes) { play(run, row, notes); })});
        run.enter({row.id, row.sent, row.promise}, frames.back().heard);
    }
    for (const Rule& rule : kRules) {
        enter_rule(run, rule, frames);
    }
}

}  // namespace conformance
