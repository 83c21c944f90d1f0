// Rows of frames in a host in which nothing fails, and of the rules that hold in all of them.
#include <host/instance.h>
#include <host/project.h>
#include <host_api/effect_interface.h>

#include <cstddef>

#include "frames.h"
#include "run.h"

namespace check {
namespace {

using host::EffectInstance;
using host::Frame;
using host::PreRender;

// What a row's probe keeps for the rules: at the end, where all that its frames broke is told, and
// how many layers its frames left to the host.
constexpr char kCameToItsEnd[] = "came to its end";
constexpr char kLayersLeft[] = "layers left";

class Stage;

struct FrameRow {
    RowText text;
    std::function<void(Stage&)> play;
    bool smart_alone = true;  ///< only smart rendering can play it
    FrameKind kind = {};
    Heard heard = {};
};

/// A row's frames being made.
class Stage {
public:
    Stage(const FrameRow& of_row, host::Session& of, Notes& to)
        : row(of_row), session(of), notes(to) {}

    /// The frame as it is asked for now.
    Frame draw() {
        return judged(
            [&] { return session.render(scene, scene.composition.frame_time(frame), options); });
    }
    /// A frame made in some other way, which has the time of one step.
    template <class Make>
    Frame judged(const Make& make) {
        notes.doing(row.text.sent);
        Frame made = make();
        judge(made, {drawing}, notes);
        layers_left_ += made.open_layer_checkouts;
        notes.keep(kLayersLeft, layers_left_);
        return made;
    }
    /// Finds a difference between two frames, or says that they are the same.
    void compare(const Frame& one, const Frame& other, const char* difference, const char* same) {
        if (one.world.packed() != other.world.packed()) {
            notes.find(difference);
        }
        notes.say(same);
    }

    const FrameRow& row;
    host::Session& session;
    Notes& notes;
    // What is asked for, as the row's kind has it.
    host::Scene scene = pan_scene();
    int frame = kFrame;
    host::RenderOptions options = row.kind.options();
    Drawing drawing = row.kind.drawing;  // the chosen kind's is Whole: WholeOrNone is not smart

private:
    int layers_left_ = 0;
};

/// As a float of far greater magnitude than the default mark, and as 16-bit channels above the
/// maximum too.
constexpr std::byte kOtherMark{0xDA};
constexpr char kDrawn[] = "status 0, every pixel drawn";
constexpr char kSamePixels[] = "status 0, the same pixels";

using Change = void (*)(Stage& stage);

/// One frame.
std::function<void(Stage&)> with(Change change) {
    return [change](Stage& stage) {
        change(stage);
        stage.draw();
    };
}

/// Two frames: the second has a change that must not be seen in its pixels.
std::function<void(Stage&)> same_with(Change change, const char* difference) {
    return [change, difference](Stage& stage) {
        const Frame first = stage.draw();
        change(stage);
        stage.compare(first, stage.draw(), difference, kSamePixels);
    };
}

/// A preview, of a size whose half is a whole number of pixels.
void halve(Stage& stage) {
    stage.scene.composition.width = 48;
    stage.scene.composition.height = 28;
    stage.options.width = 24;
    stage.options.height = 14;
}

/// A layer of pixels that are not square.
void play_aspect(Stage& stage) {
    host::Project project(stage.scene);
    project.layers.front().pixel_aspect = {10, 11};
    EffectInstance instance(stage.session, project);
    stage.judged(
        [&] { return instance.render(project.composition.frame_time(kFrame), stage.options); });
}

void play_empty_request(Stage& stage) {
    const Frame whole = stage.draw();
    stage.options.region = host::Rect{};
    stage.drawing = Drawing::NotAsked;
    const Frame frame = stage.draw();
    if (!(frame.max_result_rect == whole.max_result_rect)) {
        stage.notes.find("the largest result depends on the request");
    }
    stage.notes.say("status 0, the same largest result");
}

/// As when the project is saved, closed and opened again.
void play_reopened(Stage& stage) {
    const Frame before = stage.draw();
    stage.notes.doing(stage.row.text.sent);
    for (const std::int32_t command : {PF_Cmd_SEQUENCE_FLATTEN, PF_Cmd_SEQUENCE_RESETUP}) {
        stage.session.command(command);
    }
    stage.compare(before, stage.draw(), "the picture afterwards differs from the one before",
                  kSamePixels);
}

/// Two layers in time of their own, pre-rendered one after the other and rendered the other way
/// round.
void play_interleaved(Stage& stage) {
    host::Project project(stage.scene);
    project.layers.push_back(project.layers.front());
    project.layers.back().start = {1, 8};
    project.layers.back().stretch = {3, 2};
    const host::Time time = project.composition.frame_time(kFrame);
    EffectInstance below(stage.session, project, 0);
    EffectInstance above(stage.session, project, 1);
    const Frame alone = stage.judged([&] { return below.render(time, stage.options); });
    const auto pre_render = [&](EffectInstance& instance) {
        stage.notes.doing(stage.row.text.sent);
        return instance.pre_render(time, stage.options);
    };
    PreRender first = pre_render(below);
    PreRender second = pre_render(above);
    if (!first.renderable() || !second.renderable()) {
        stage.notes.find("a pre-render cannot be rendered: " + status_text(first.frame()));
        return;
    }
    stage.judged([&] { return above.render(second); });
    second.discard();
    const Frame late = stage.judged([&] { return below.render(first); });
    first.discard();
    stage.compare(late, alone, "the picture differs from that of the layer alone",
                  "status 0, the same pixels as alone");
}

/// Played in the deepest of the smart kinds, in which an effect does most; else in the first kind.
const FrameRow kFrameRows[] = {
    {{"frames.first", "the first frame of the composition", kDrawn},
     with([](Stage& stage) { stage.frame = 0; }),
     false},
    {{"frames.last", "the last frame of the composition", kDrawn},
     with([](Stage& stage) { stage.frame = stage.scene.composition.frames() - 1; }),
     false},
    {{"frames.reopened", "a frame before and after flatten and re-set-up", "the same pixels"},
     play_reopened,
     false},
    {{"frames.still", "a frame without motion blur", kDrawn},
     with([](Stage& stage) { stage.scene.composition.motion_blur = false; })},
    {{"frames.no-camera", "a frame without a camera", kDrawn},
     with([](Stage& stage) { stage.scene.camera = nullptr; })},
    {{"frames.one-pixel", "a frame of one pixel", kDrawn},
     with([](Stage& stage) { stage.options.width = stage.options.height = 1; })},
    {{"frames.part", "a part of a frame", kDrawn}, with([](Stage& stage) {
         stage.options.region = host::Rect{7, 5, 29, 16};
     })},
    {{"frames.downsampled", "a frame at half resolution", kDrawn}, with(halve)},
    {{"frames.aspect", "a frame of pixels that are not square", kDrawn}, play_aspect},
    {{"frames.empty", "a pre-render that asks for no pixels",
      "status 0, the largest result as for a whole frame"},
     play_empty_request},
    {{"frames.no-render", "a pre-render without a render", "status 0, no render needed"},
     with([](Stage& stage) {
         stage.options.render_follows = false;
         stage.drawing = Drawing::NotAsked;
     })},
    // Over other pixels a channel that is left as it was, or added to, is seen.
    {{"frames.again", "the same frame twice, over other pixels", "the same pixels"},
     same_with([](Stage& stage) { stage.options.mark = kOtherMark; },
               "the second picture differs from the first")},
    {{"frames.rows", "a frame with longer rows", "the same pixels"},
     same_with(
         [](Stage& stage) {
             stage.options.output_padding = 100;
             stage.options.input_padding = 0;
         },
         "the picture depends on the length of a row")},
    {{"frames.interleaved", "two layers, rendered in another order than pre-rendered",
      "the same pixels as alone"},
     play_interleaved},
};

/// Those that the effect's declarations ask for.
std::vector<FrameRow> frame_rows(const Declared& declared) {
    const std::vector<FrameKind> kinds = frame_kinds(declared);
    const FrameKind* deepest = &kinds.front();
    std::vector<FrameRow> rows;
    for (const FrameKind& kind : kinds) {
        deepest = kind.smart ? &kind : deepest;
        const bool whole = kind.drawing == Drawing::Whole;
        rows.push_back(
            {{kind.row(), kind.sent, whole ? kDrawn : "status 0, all pixels drawn or none"},
             with([](Stage& /*stage*/) {}),
             kind.smart,
             kind});
    }
    for (FrameRow row : kFrameRows) {
        if (deepest->smart || !row.smart_alone) {
            row.kind = *deepest;
            rows.push_back(row);
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
        const std::string times = std::to_string(one.times) + " times, first in ";
        return " (" + (one.times == 1 ? "once, in " : times) + one.finding.during + ")";
    };
    run.enter({id, "all of these frames", std::string(rule.promise)}, told_once(broken, words),
              answer);
}

}  // namespace

void check_frames(Run& run) {
    std::vector<FrameRow> frames;
    const bool for_rules = std::ranges::any_of(kRuleRows, [&](const RuleRow& rule) {
        return run.needs("frames." + std::string(rule.name));
    });
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
    if (const std::string formats = formats_not_drawn(run.declared->premiere_formats);
        !formats.empty()) {
        run.note_limit("frames.premiere-formats",
                       "this host draws one format of a depth, BGRA or 8-bit ARGB, and the effect "
                       "also declares " +
                           formats);
    }
}

}  // namespace check
