#include "frame_plays.h"

#include <host/instance.h>
#include <host/project.h>
#include <host_api/effect_interface.h>

#include <cstddef>
#include <cstdint>

#include "examination.h"
#include "frame_rules.h"

namespace conformance {
namespace {

using host::EffectInstance;
using host::Frame;
using host::PreRender;
using host::RenderOptions;

/// As a float of far greater magnitude than the default mark, and as 16-bit channels above the
/// maximum too.
constexpr std::byte kOtherMark{0xDA};
constexpr char kDrawn[] = "status 0, every pixel drawn";

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

/// A preview at half resolution.
void play_downsampled(Stage& stage) {
    host::Scene scene = pan_scene();
    // Whose half is a whole number of pixels.
    scene.composition.width = 48;
    scene.composition.height = 28;
    RenderOptions options = stage.options();
    options.width = scene.composition.width / 2;
    options.height = scene.composition.height / 2;
    stage.inspect(stage.draw(options, scene), Drawing::Whole);
}

/// A layer of pixels that are not square.
void play_aspect(Stage& stage) {
    host::Project project(pan_scene());
    project.layers.front().pixel_aspect = {10, 11};
    EffectInstance instance(stage.session(), project);
    stage.begin_step();
    stage.inspect(instance.render(project.composition.frame_time(kFrame), stage.options()),
                  Drawing::Whole);
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

/// Over other pixels, so that a channel left as it was, or added to, is seen.
void play_again(Stage& stage) {
    RenderOptions options = stage.options();
    options.mark = kOtherMark;
    play_twice(stage, options, "the second picture differs from the first");
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

/// As when the project is saved, closed and opened again.
void play_reopened(Stage& stage) {
    const Frame before = stage.draw(stage.options());
    stage.inspect(before, Drawing::Whole);
    stage.begin_step();
    for (const std::int32_t command : {PF_Cmd_SEQUENCE_FLATTEN, PF_Cmd_SEQUENCE_RESETUP}) {
        stage.session().command(command);
    }
    const Frame after = stage.draw(stage.options());
    stage.inspect(after, Drawing::Whole);
    if (pixels(after) != pixels(before)) {
        stage.find("the picture afterwards differs from the one before");
    }
    stage.say("status 0, the same pixels");
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
    {{"frames.reopened", "a frame before and after flatten and re-set-up", "the same pixels"},
     play_reopened},
};

/// Of a smart effect alone.
constexpr Play kSmartPlays[] = {
    {{"frames.still", "a frame without motion blur", kDrawn}, play_without_blur},
    {{"frames.no-camera", "a frame without a camera", kDrawn}, play_without_camera},
    {{"frames.one-pixel", "a frame of one pixel", kDrawn}, play_one_pixel},
    {{"frames.part", "a part of a frame", kDrawn}, play_part},
    {{"frames.downsampled", "a frame at half resolution", kDrawn}, play_downsampled},
    {{"frames.aspect", "a frame of pixels that are not square", kDrawn}, play_aspect},
    {{"frames.empty", "a pre-render that asks for no pixels",
      "status 0, the largest result as for a whole frame"},
     play_empty_request},
    {{"frames.no-render", "a pre-render without a render", "status 0, no render needed"},
     play_no_render},
    {{"frames.again", "the same frame twice, over other pixels", "the same pixels"}, play_again},
    {{"frames.rows", "a frame with longer rows", "the same pixels"}, play_other_rows},
    {{"frames.interleaved", "two layers, rendered in another order than pre-rendered",
      "the same pixels as alone"},
     play_interleaved},
};

}  // namespace

RenderOptions Stage::options() const { return row_.kind.options(); }

void Stage::begin_step() { notes_.doing(row_.sent); }

Frame Stage::draw(const RenderOptions& options, const host::Scene& scene, int frame) {
    begin_step();
    return session_.render(scene, scene.composition.frame_time(frame), options);
}

void Stage::inspect(const Frame& frame, Drawing drawing) {
    conformance::inspect(frame, drawing, notes_);
    layers_left_ += frame.open_layer_checkouts;
    notes_.keep(kLayersLeft, layers_left_);
}

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

}  // namespace conformance
