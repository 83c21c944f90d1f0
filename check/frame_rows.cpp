// Rows of frames in a host in which nothing fails, and of the rules that hold in all of them.
#include <host/instance.h>
#include <host/project.h>
#include <host_api/effect_interface.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "frames.h"
#include "run.h"

namespace check {
namespace {

using host::EffectInstance;
using host::Frame;
using host::PreRender;
using host::RenderOptions;

// What a row's probe keeps for the rules: at the end, where all that its frames broke is told, and
// how many layers its frames left to the host.
constexpr char kCameToItsEnd[] = "came to its end";
constexpr char kLayersLeft[] = "layers left";

class Stage;

struct FrameRow {
    RowText text;
    FrameKind kind;
    std::function<void(Stage&)> play;
    Heard heard = {};
};

/// What is asked for in a frame.
struct Shot {
    host::Scene scene = pan_scene();
    int frame = kFrame;
    RenderOptions options = {};
};

/// A row's frames being made.
class Stage {
public:
    Stage(const FrameRow& of_row, host::Session& of, Notes& to)
        : row(of_row), session(of), notes(to) {}

    /// As the row's kind has it.
    Shot shot() const {
        Shot shot;
        shot.options = row.kind.options();
        return shot;
    }
    Frame draw(const Shot& shot, Drawing drawing = Drawing::Whole) {
        return judged(drawing, [&] {
            return session.render(shot.scene, shot.scene.composition.frame_time(shot.frame),
                                  shot.options);
        });
    }
    /// A frame made in some other way, which has the time of one step.
    template <class Make>
    Frame judged(Drawing drawing, const Make& make) {
        notes.doing(row.text.sent);
        Frame frame = make();
        judge(frame, {drawing}, notes);
        layers_left_ += frame.open_layer_checkouts;
        notes.keep(kLayersLeft, layers_left_);
        return frame;
    }
    /// Finds a difference between two frames, or says that they are the same.
    void compare(const Frame& one, const Frame& other, const char* difference, const char* same) {
        if (pixels(one) != pixels(other)) {
            notes.find(difference);
        }
        notes.say(same);
    }

    const FrameRow& row;
    host::Session& session;
    Notes& notes;

private:
    int layers_left_ = 0;
};

/// As a float of far greater magnitude than the default mark, and as 16-bit channels above the
/// maximum too.
constexpr std::byte kOtherMark{0xDA};
constexpr char kDrawn[] = "status 0, every pixel drawn";
constexpr char kSamePixels[] = "status 0, the same pixels";

using Change = void (*)(Shot& shot);

/// One frame.
std::function<void(Stage&)> with(Change change) {
    return [change](Stage& stage) {
        Shot shot = stage.shot();
        change(shot);
        stage.draw(shot);
    };
}

/// Two frames: the second has a change that must not be seen in its pixels.
std::function<void(Stage&)> same_with(Change change, const char* difference) {
    return [change, difference](Stage& stage) {
        const Frame first = stage.draw(stage.shot());
        Shot again = stage.shot();
        change(again);
        stage.compare(first, stage.draw(again), difference, kSamePixels);
    };
}

void play_one(Stage& stage) { stage.draw(stage.shot(), stage.row.kind.drawing); }

/// A preview, of a size whose half is a whole number of pixels.
void halve(Shot& shot) {
    shot.scene.composition.width = 48;
    shot.scene.composition.height = 28;
    shot.options.width = 24;
    shot.options.height = 14;
}

/// A layer of pixels that are not square.
void play_aspect(Stage& stage) {
    host::Project project(pan_scene());
    project.layers.front().pixel_aspect = {10, 11};
    EffectInstance instance(stage.session, project);
    stage.judged(Drawing::Whole, [&] {
        return instance.render(project.composition.frame_time(kFrame), stage.shot().options);
    });
}

void play_empty_request(Stage& stage) {
    const Frame whole = stage.draw(stage.shot());
    Shot shot = stage.shot();
    shot.options.region = host::Rect{};
    const Frame frame = stage.draw(shot, Drawing::NotAsked);
    if (!(frame.max_result_rect == whole.max_result_rect)) {
        stage.notes.find("the largest result depends on the request");
    }
    stage.notes.say("status 0, the same largest result");
}

void play_no_render(Stage& stage) {
    Shot shot = stage.shot();
    shot.options.render_follows = false;
    stage.draw(shot, Drawing::NotAsked);
}

/// As when the project is saved, closed and opened again.
void play_reopened(Stage& stage) {
    const Frame before = stage.draw(stage.shot());
    stage.notes.doing(stage.row.text.sent);
    for (const std::int32_t command : {PF_Cmd_SEQUENCE_FLATTEN, PF_Cmd_SEQUENCE_RESETUP}) {
        stage.session.command(command);
    }
    stage.compare(before, stage.draw(stage.shot()),
                  "the picture afterwards differs from the one before", kSamePixels);
}

/// Two layers in time of their own, pre-rendered one after the other and rendered the other way
/// round.
void play_interleaved(Stage& stage) {
    host::Project project(pan_scene());
    project.layers.push_back(project.layers.front());
    project.layers.back().start = {1, 8};
    project.layers.back().stretch = {3, 2};
    const host::Time time = project.composition.frame_time(kFrame);
    const RenderOptions options = stage.shot().options;
    EffectInstance below(stage.session, project, 0);
    EffectInstance above(stage.session, project, 1);
    const Frame alone = stage.judged(Drawing::Whole, [&] { return below.render(time, options); });
    const auto pre_render = [&](EffectInstance& instance) {
        stage.notes.doing(stage.row.text.sent);
        return instance.pre_render(time, options);
    };
    PreRender first = pre_render(below);
    PreRender second = pre_render(above);
    if (!first.renderable() || !second.renderable()) {
        stage.notes.find("a pre-render cannot be rendered: " + status_text(first.frame()));
        return;
    }
    stage.judged(Drawing::Whole, [&] { return above.render(second); });
    second.discard();
    const Frame late = stage.judged(Drawing::Whole, [&] { return below.render(first); });
    first.discard();
    stage.compare(late, alone, "the picture differs from that of the layer alone",
                  "status 0, the same pixels as alone");
}

/// Played in the kind of frame that an effect does most in.
struct Play {
    RowText text;
    std::function<void(Stage& stage)> play;
    bool smart_alone = true;
};

const Play kPlays[] = {
    {{"frames.first", "the first frame of the composition", kDrawn},
     with([](Shot& shot) { shot.frame = 0; }),
     false},
    {{"frames.last", "the last frame of the composition", kDrawn},
     with([](Shot& shot) { shot.frame = shot.scene.composition.frames() - 1; }),
     false},
    {{"frames.reopened", "a frame before and after flatten and re-set-up", "the same pixels"},
     play_reopened,
     false},
    {{"frames.still", "a frame without motion blur", kDrawn},
     with([](Shot& shot) { shot.scene.composition.motion_blur = false; })},
    {{"frames.no-camera", "a frame without a camera", kDrawn},
     with([](Shot& shot) { shot.scene.camera = nullptr; })},
    {{"frames.one-pixel", "a frame of one pixel", kDrawn},
     with([](Shot& shot) { shot.options.width = shot.options.height = 1; })},
    {{"frames.part", "a part of a frame", kDrawn}, with([](Shot& shot) {
         shot.options.region = host::Rect{7, 5, 29, 16};
     })},
    {{"frames.downsampled", "a frame at half resolution", kDrawn}, with(halve)},
    {{"frames.aspect", "a frame of pixels that are not square", kDrawn}, play_aspect},
    {{"frames.empty", "a pre-render that asks for no pixels",
      "status 0, the largest result as for a whole frame"},
     play_empty_request},
    {{"frames.no-render", "a pre-render without a render", "status 0, no render needed"},
     play_no_render},
    // Over other pixels a channel that is left as it was, or added to, is seen.
    {{"frames.again", "the same frame twice, over other pixels", "the same pixels"},
     same_with([](Shot& shot) { shot.options.mark = kOtherMark; },
               "the second picture differs from the first")},
    {{"frames.rows", "a frame with longer rows", "the same pixels"},
     same_with(
         [](Shot& shot) {
             shot.options.output_padding = 100;
             shot.options.input_padding = 0;
         },
         "the picture depends on the length of a row")},
    {{"frames.interleaved", "two layers, rendered in another order than pre-rendered",
      "the same pixels as alone"},
     play_interleaved},
};

/// Those that the effect's declarations ask for.
std::vector<FrameRow> frame_rows(const Declared& declared) {
    const std::vector<FrameKind> kinds = frame_kinds(declared);
    const FrameKind& deep = deepest(kinds);
    std::vector<FrameRow> rows;
    for (const FrameKind& kind : kinds) {
        const bool whole = kind.drawing == Drawing::Whole;
        rows.push_back(
            {{kind.row(), kind.sent, whole ? kDrawn : "status 0, all pixels drawn or none"},
             kind,
             play_one});
    }
    for (const Play& play : kPlays) {
        if (deep.smart || !play.smart_alone) {
            rows.push_back({play.text, deep, play.play});
        }
    }
    return rows;
}

/// Tells all that the session broke: with its frames, between them and in the end.
void play(const Run& run, const FrameRow& row, Notes& notes) {
    const Violations& known = run.violations_of_set_up.at(row.kind.application);
    notes.doing("set-up");
    host::Session session = run.open(row.kind.application);
    Stage stage(row, session, notes);
    row.play(stage);
    const Violations told = session.violations();
    notes.find(beyond(told, known));
    notes.doing("set-down");
    session.forget();
    session.close();
    notes.find(beyond_at_set_down(beyond(session.violations(), known), told));
    notes.keep(kCameToItsEnd, true);
}

/// Enters the row of a rule, with all that broke it in these rows, or leaves it out.
void enter_rule(Run& run, const RuleRow& rule, const std::vector<FrameRow>& frames) {
    const std::string id = "frames." + std::string(rule.name);
    std::vector<Finding> broken;
    int all = 0;
    int ended = 0;
    int layers_left = 0;
    for (const FrameRow& frame : frames) {
        for (Finding finding : frame.heard.findings) {
            if (finding.rule && row_of(*finding.rule) == rule.name) {
                finding.during = frame.text.id;
                broken.push_back(finding);
            }
        }
        if (frame.kind.smart || !rule.smart_alone) {
            ++all;
            ended += frame.heard.kept.contains(kCameToItsEnd) ? 1 : 0;
        }
        layers_left += frame.heard.kept.value(kLayersLeft, 0);
    }
    if (broken.empty() && ended == 0) {
        run.leave_out(id, all == 0 ? "smart rendering is not declared"
                                   : "no frame that it is for came to its end");
        return;
    }
    std::string answer = "nothing found";
    if (ended < all) {
        answer += " in the " + std::to_string(ended) + " of " + std::to_string(all) +
                  " rows that came to their end";
    }
    // Layers need not be checked in: a host takes them back when the render returns.
    if (rule.name == "layers" && layers_left != 0) {
        answer += "; " + std::to_string(layers_left) + " left for the host to take back";
    }
    const auto words = [](const Counted& one) {
        return " (" +
               (one.times == 1 ? "once, in " : std::to_string(one.times) + " times, first in ") +
               one.places.front() + ")";
    };
    run.enter({id, "all of these frames", std::string(rule.promise)},
              told_once(broken, &Finding::during, words), answer);
}

}  // namespace

void check_frames(Run& run) {
    if (!run.declared) {
        run.leave_out("frames", run.why_not_declared);
        return;
    }
    std::vector<FrameRow> frames;
    const bool for_rules = std::any_of(
        kRuleRows.begin(), kRuleRows.end(),
        [&](const RuleRow& rule) { return run.needs("frames." + std::string(rule.name)); });
    for (FrameRow& row : frame_rows(*run.declared)) {
        const std::string& id = row.text.id;
        const std::string& set_up_row = identity_of(row.kind.application).set_up_row;
        if (!for_rules && !run.needs(id)) {
            continue;
        }
        if (!run.stands(set_up_row)) {
            run.leave_out(id, "the effect cannot be set up, see " + set_up_row);
            continue;
        }
        row.heard = run.enter(row.text, [&](Notes& notes) { play(run, row, notes); });
        frames.push_back(row);
    }
    for (const RuleRow& rule : kRuleRows) {
        if (for_rules) {
            enter_rule(run, rule, frames);
        }
    }
    const std::string formats = formats_not_drawn(run.declared->premiere_formats);
    if (!formats.empty()) {
        run.note_limit("frames.premiere-formats",
                       "this host draws one format of a depth, BGRA or 8-bit ARGB, and the effect "
                       "also declares " +
                           formats);
    }
}

}  // namespace check
