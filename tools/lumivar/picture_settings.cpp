#include "picture_settings.h"

#include <base/newmatrix.h>
#include <base/string.h>
#include <host/controls.h>

#include <algorithm>
#include <cstddef>

#include "picture_info.h"

namespace lumivar {
namespace {

void set_number(Kelv::ImageSpec& spec, const std::string& name, double value) {
    spec.set_meta("float", settings_name(name).c_str(), static_cast<float>(value));
}

void set_text(Kelv::ImageSpec& spec, const std::string& name, const std::string& value) {
    if (is_carried(value)) {
        spec.set_meta("string", settings_name(name).c_str(), String(value.c_str()));
    }
}

Matrix4<float> single_precision(const host::Matrix& m) {
    Matrix4<float> result;
    for (std::size_t i = 0; i < m.size(); ++i) {
        const int place = static_cast<int>(i);
        result(place / 4, place % 4) = static_cast<float>(m[i]);
    }
    return result;
}

}  // namespace

std::string settings_name(const std::string& name) {
    std::string result = name;
    std::replace_if(
        result.begin(), result.end(), [](char c) { return c == ' ' || c == '='; }, '_');
    return result;
}

bool is_carried(const std::string& text) {
    // With a blank it is quoted, and would lose its backslashes; without one it stands as it is,
    // and must not look quoted or missing.
    return text.find(' ') != std::string::npos ? text.find('\\') == std::string::npos
                                               : !text.empty() && text.front() != '"';
}

Kelv::ImageSpec picture_settings(const host::Session& session, const host::Scene& scene,
                                 host::Time time, const std::optional<CatalogueUsed>& catalogue) {
    const host::Composition& composition = scene.composition;
    const double seconds = time.seconds();
    Kelv::ImageSpec spec(composition.width, composition.height, Kelv::ImageSpec::BGRA_FLOAT);
    set_text(spec, "scene", scene.source);
    set_number(spec, "time", seconds);
    set_number(spec, "frame_rate", composition.frame_rate.per_second());
    if (composition.motion_blur) {
        set_number(spec, "shutter_angle", composition.shutter_angle.at(seconds));
        set_number(spec, "shutter_phase", composition.shutter_phase.at(seconds));
    }
    if (scene.camera) {
        set_number(spec, "zoom", scene.camera->zoom(seconds));
        spec.set_meta("m44f", "camera", single_precision(scene.camera->layer_to_world(seconds)));
    }
    if (catalogue) {
        set_text(spec, "catalogue", catalogue->name);
        // A count may have more digits than a float.
        set_text(spec, "catalogue.stars", std::to_string(catalogue->stars));
        set_number(spec, "catalogue.version", catalogue->version);
    }
    set_text(spec, "plugin", session.info().version_text());
    const host::ControlValues values(session.controls(), scene.controls);
    for (std::size_t place = 0; place < session.controls().size(); ++place) {
        const host::DeclaredControl& control = session.controls()[place];
        const std::string name = "control:" + control.name;
        switch (control.kind) {
            case host::ControlKind::Slider:
            case host::ControlKind::FloatSlider:
                set_number(spec, name, values.number(place, seconds));
                break;
            case host::ControlKind::Colour:
                set_text(spec, name, value_text(control, 0.0, values.colour(place, seconds)));
                break;
            default:
                set_text(spec, name, used_value_text(control, values.number(place, seconds), {}));
        }
    }
    return spec;
}

}  // namespace lumivar
