// Rows of frames in a host in which nothing fails.
#include <host/errors.h>
#include <host/instance.h>
#include <host_api/effect_interface.h>

#include <functional>

#include "examination.h"
#include "frames.h"
#include "rules.h"
#include "stage.h"

namespace conformance {
namespace {

using host::Application;
using host::Depth;
using host::EffectInstance;
using host::Frame;
using host::PreRender;
using host::RenderOptions;
using host::Session;

host::Time frame_time(const host::Scene& scene) { return scene.composition.frame_time(kFrame); }

Frame draw(Session& session, const RenderOptions& options, const host::Scene& scene = pan_scene()) {
    return session.render(scene, frame_time(scene), options);
}

using Play = std::function<void(Session&, Notes&)>;

Play one_frame(const RenderOptions& options, Drawing drawing = Drawing::Whole) {
    return [=](Session& session, Notes& notes) { inspect(draw(session, options), drawing, notes); };
}

RenderOptions at(Depth depth, bool plain = false) {
    RenderOptions options;
    options.depth = depth;
    options.plain = plain;
    return options;
}

void play_one_pixel(Session& session, Notes& notes) {
    RenderOptions options;
    options.width = options.height = 1;
    inspect(draw(session, options), Drawing::Whole, notes);
}

void play_part(Session& session, Notes& notes) {
    RenderOptions options;
    options.region = host::Rect{7, 5, 29, 16};
    inspect(draw(session, options), Drawing::Whole, notes);
}

void play_empty_request(Session& session, Notes& notes) {
    const host::Rect whole = draw(session, {}).max_result_rect;
    RenderOptions options;
    options.region = host::Rect{};
    const Frame frame = draw(session, options);
    inspect(frame, Drawing::NotAsked, notes);
    if (!(frame.max_result_rect == whole)) {
        notes.find("", "the largest result depends on the request");
    }
    notes.say("status 0, the same largest result");
}

void play_without_camera(Session& session, Notes& notes) {
    host::Scene scene = pan_scene();
    scene.camera = nullptr;
    inspect(draw(session, {}, scene), Drawing::Whole, notes);
}

void play_without_blur(Session& session, Notes& notes) {
    host::Scene scene = pan_scene();
    scene.composition.motion_blur = false;
    inspect(draw(session, {}, scene), Drawing::Whole, notes);
}

void play_again(Session& session, Notes& notes) {
    const Frame first = draw(session, {});
    const Frame second = draw(session, {});
    inspect(second, Drawing::Whole, notes);
    if (pixels(first) != pixels(second)) {
        notes.find("", "the second picture differs from the first");
    }
    notes.say("status 0, the same pixels");
}

void play_other_rows(Session& session, Notes& notes) {
    const Frame first = draw(session, {});
    RenderOptions options;
    options.output_padding = 100;
    options.input_padding = 0;
    const Frame second = draw(session, options);
    inspect(second, Drawing::Whole, notes);
    if (pixels(first) != pixels(second)) {
        notes.find("", "the picture depends on the length of a row");
    }
    notes.say("status 0, the same pixels");
}

void play_no_render(Session& session, Notes& notes) {
    RenderOptions options;
    options.render_follows = false;
    inspect(draw(session, options), Drawing::NotAsked, notes);
}

/// Two layers in time of their own, pre-rendered one after the other and rendered the other way
/// round.
void play_interleaved(Session& session, Notes& notes) {
    host::Project project(pan_scene());
    project.layers.push_back(project.layers.front());
    project.layers.back().start = {1, 8};
    project.layers.back().stretch = {3, 2};
    const host::Time time = project.composition.frame_time(kFrame);
    EffectInstance below(session, project, 0);
    EffectInstance above(session, project, 1);
    const std::vector<std::byte> alone = pixels(below.render(time));
    PreRender first = below.pre_render(time);
    PreRender second = above.pre_render(time);
    if (!first.renderable() || !second.renderable()) {
        notes.find("", "a pre-render cannot be rendered: " + status_text(first.frame()));
        return;
    }
    inspect(above.render(second), Drawing::Whole, notes);
    second.discard();
    const Frame late = below.render(first);
    inspect(late, Drawing::Whole, notes);
    first.discard();
    if (pixels(late) != alone) {
        notes.find("", "the picture differs from that of the layer alone");
    }
    notes.say("status 0, the same pixels as alone");
}

struct FramePlay {
    RowText text;
    Play play;
    Application application = Application::AfterEffects;
};

constexpr char kDrawn[] = "status 0, every pixel drawn";

void add_smart(std::vector<FramePlay>& all, const Declared& declared) {
    const bool floats = declared.has2(PF_OutFlag2_FLOAT_COLOR_AWARE);
    all.push_back({{"frames.8-bit", "an 8-bit frame", kDrawn}, one_frame(at(Depth::Bits8))});
    if (declared.has(PF_OutFlag_DEEP_COLOR_AWARE)) {
        all.push_back({{"frames.16-bit", "a 16-bit frame", kDrawn}, one_frame(at(Depth::Bits16))});
    }
    if (!floats) {
        return;
    }
    const FramePlay plays[] = {
        {{"frames.float", "a float frame", kDrawn}, one_frame({})},
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
    all.insert(all.end(), std::begin(plays), std::end(plays));
}

std::vector<FramePlay> plays(const Declared& declared) {
    std::vector<FramePlay> all;
    const bool smart = declared.has2(PF_OutFlag2_SUPPORTS_SMART_RENDER);
    if (smart) {
        add_smart(all, declared);
    }
    // With smart rendering at hand the plain commands need not draw, outside Premiere Pro.
    const Drawing drawing = smart ? Drawing::WholeOrNone : Drawing::Whole;
    const char* const promise = smart ? "status 0, all pixels drawn or none" : kDrawn;
    all.push_back({{"frames.plain-8-bit", "a plain 8-bit render", promise},
                   one_frame(at(Depth::Bits8, true), drawing)});
    if (declared.has(PF_OutFlag_DEEP_COLOR_AWARE)) {
        all.push_back({{"frames.plain-16-bit", "a plain 16-bit render", promise},
                       one_frame(at(Depth::Bits16, true), drawing)});
    }
    all.push_back({{"frames.premiere", "a plain 8-bit render in Premiere Pro", kDrawn},
                   one_frame(at(Depth::Bits8)),
                   Application::Premiere});
    return all;
}

/// The same finding of several frames once, with their number.
std::vector<Finding> counted(const std::vector<Finding>& findings) {
    std::vector<std::pair<Finding, int>> counts;
    for (const Finding& finding : findings) {
        auto known = std::find_if(counts.begin(), counts.end(), [&](const auto& one) {
            return one.first.text == finding.text && one.first.deviation == finding.deviation;
        });
        if (known == counts.end()) {
            known = counts.insert(counts.end(), {finding, 0});
        }
        ++known->second;
    }
    std::vector<Finding> told;
    for (auto& [finding, count] : counts) {
        finding.text += count == 1 ? " (once)" : " (" + std::to_string(count) + " times)";
        told.push_back(finding);
    }
    return told;
}

}  // namespace

std::string status_text(const Frame& frame) {
    return "status " + std::to_string(frame.status) +
           (frame.message.text.empty() ? "" : ": " + frame.message.text);
}

void inspect(const Frame& frame, Drawing drawing, Notes& notes) {
    const std::size_t all = static_cast<std::size_t>(frame.world.width()) *
                            static_cast<std::size_t>(frame.world.height());
    if (frame.status != PF_Err_NONE) {
        notes.find("", status_text(frame));
    } else if (drawing != Drawing::NotAsked && !frame.rendered) {
        notes.find("", "nothing to render: the result is empty");
    } else if (frame.rendered && frame.undrawn_pixels != 0 &&
               (drawing == Drawing::Whole || frame.undrawn_pixels != all)) {
        notes.find("", std::to_string(frame.undrawn_pixels) + " of " + std::to_string(all) +
                           " pixels are not drawn");
    }
    if (frame.status == PF_Err_NONE && frame.message.is_error) {
        notes.find("messages", "an error message with status 0: " + frame.message.text);
    }
    for (const std::string& violation : frame.violations) {
        notes.find(rule_of(violation), violation);
    }
    if (frame.open_param_checkouts != 0) {
        notes.find(
            "parameters",
            std::to_string(frame.open_param_checkouts) + " parameters checked out and not in again",
            kParametersStayOut);
    }
    if (frame.handle_left) {
        notes.find("record", "a handle stands in the slot of the callbacks", kHandleInRecord);
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
    std::vector<Finding> found;
    for (const FramePlay& play : plays(*run.declared)) {
        const Heard heard = run.probe([&](Notes& notes) {
            notes.doing("set-up");
            host::SessionOptions options;
            options.application = play.application;
            Session session = run.open(options);
            notes.doing(play.text.sent);
            play.play(session, notes);
            // What is still held then was told with the frame.
            notes.doing("set-down");
            session.close();
        });
        run.enter(play.text, heard);
        for (const Finding& finding : heard.findings) {
            if (!finding.rule.empty()) {
                found.push_back(finding);
            }
        }
    }
    for (const Rule& rule : kRules) {
        std::vector<Finding> broken;
        std::copy_if(found.begin(), found.end(), std::back_inserter(broken),
                     [&](const Finding& finding) { return finding.rule == rule.name; });
        const std::string id = "frames." + std::string(rule.name);
        run.enter({id, "all of these frames", rule.promise}, counted(broken), "kept");
    }
}

}  // namespace conformance
