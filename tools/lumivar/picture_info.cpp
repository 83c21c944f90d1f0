#include "picture_info.h"

#include <base/newmatrix.h>
#include <base/string.h>
#include <host/controls.h>
#include <libkelvimage/metadata.h>

#include <cmath>
#include <cstddef>
#include <string>

#include "counted.h"
#include "picture_settings.h"

namespace lumivar {
namespace {

std::string text_of(double number) { return String::fmt("%.9g", number).c_str(); }

std::string camera_text(const host::Scene& scene, double seconds) {
    if (!scene.camera) {
        return "none";
    }
    std::string text = "zoom " + text_of(scene.camera->zoom(seconds)) + ", layer to world";
    for (const double element : scene.camera->layer_to_world(seconds)) {
        text += " " + text_of(element);
    }
    return text;
}

}  // namespace

std::string value_text(const host::DeclaredControl& control, double number,
                       const host::Argb& colour) {
    switch (control.kind) {
        case host::ControlKind::Colour:
            return std::to_string(colour.red) + ", " + std::to_string(colour.green) + ", " +
                   std::to_string(colour.blue);
        case host::ControlKind::Checkbox:
            return number != 0.0 ? "on" : "off";
        case host::ControlKind::Popup:
            // Choices count from 1; 0, which some popups start with, is none of them.
            if (number >= 1.0 && number <= static_cast<double>(control.choices.size())) {
                return control.choices[static_cast<std::size_t>(number) - 1];
            }
            return text_of(number);
        default:
            // A default that was rounded to single precision reads as it was meant.
            return String::fmt("%.7g", number).c_str();
    }
}

std::string used_value_text(const host::DeclaredControl& control, double number,
                            const host::Argb& colour) {
    const bool before_the_first = control.kind == host::ControlKind::Popup && number < 1.0;
    return before_the_first && !control.choices.empty() ? control.choices.front()
                                                        : value_text(control, number, colour);
}

PictureInfo picture_info(const host::Session& session, const host::Scene& scene, host::Time time,
                         const std::optional<CatalogueUsed>& catalogue) {
    const host::Composition& composition = scene.composition;
    const double seconds = time.seconds();
    PictureInfo info;
    info.title = "Star field";
    info.details = {
        {"scene", scene.source},
        {"time", text_of(seconds) + " s"},
        {"composition", std::to_string(composition.width) + "x" +
                            std::to_string(composition.height) + ", " +
                            text_of(composition.frame_rate.per_second()) + " frames/s"},
        {"shutter", composition.motion_blur
                        ? "angle " + text_of(composition.shutter_angle.at(seconds)) + ", phase " +
                              text_of(composition.shutter_phase.at(seconds))
                        : "no motion blur"},
        {"camera", camera_text(scene, seconds)},
        {"catalogue", catalogue
                          ? catalogue->name + ", " + counted(catalogue->stars, "star", "stars") +
                                ", version " + std::to_string(catalogue->version)
                          : "none"},
        {"plugin", session.info().version_text()},
    };
    const host::ControlValues values(session.controls(), scene.controls);
    for (std::size_t place = 0; place < session.controls().size(); ++place) {
        const host::DeclaredControl& control = session.controls()[place];
        const bool is_colour = control.kind == host::ControlKind::Colour;
        const double number = is_colour ? 0.0 : values.number(place, seconds);
        const host::Argb colour = is_colour ? values.colour(place, seconds) : host::Argb{};
        info.details.emplace_back("control:" + control.name,
                                  used_value_text(control, number, colour));
    }
    info.settings = picture_settings(session, scene, time, catalogue).metadata->stringify().c_str();
    return info;
}

ShotInfo shot_info(const host::Scene& scene, host::Time time, std::optional<int> frame) {
    ShotInfo shot;
    const host::FrameRate& rate = scene.composition.frame_rate;
    shot.frame_rate = {static_cast<int>(rate.num), static_cast<int>(rate.den)};
    shot.frame = frame;
    if (!scene.camera) {
        return shot;
    }
    const host::Matrix to_world = scene.camera->layer_to_world(time.seconds());
    Matrix4<double> matrix;
    for (int i = 0; i < 16; ++i) {
        matrix(i / 4, i % 4) = to_world[static_cast<std::size_t>(i)];
    }
    matrix.invert();
    shot.world_to_camera.emplace();
    for (int i = 0; i < 16; ++i) {
        (*shot.world_to_camera)[static_cast<std::size_t>(i)] =
            static_cast<float>(matrix(i / 4, i % 4));
    }
    return shot;
}

}  // namespace lumivar
