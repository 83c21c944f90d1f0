#include "diagnosis.h"

#include <host/controls.h>
#include <host/module.h>
#include <host_api/effect_interface.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "database/star_file.h"

namespace lumivar {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kImageBytesPerPixel = 16;

std::string in_quotes(const std::string& text) { return "\"" + text + "\""; }

std::string shown_format(std::int32_t format) {
    std::string code;
    for (int shift = 0; shift < 32; shift += 8) {
        code += static_cast<char>(static_cast<std::uint32_t>(format) >> shift & 0xFF);
    }
    return shown_bytes(code);
}

bool drawable(const host::Session& session, std::int32_t format) {
    const std::vector<std::int32_t>& declared = session.declared_pixel_formats();
    return format == PF_PixelFormat_ARGB32 || format == PF_PixelFormat_ARGB64 ||
           format == PF_PixelFormat_ARGB128 ||
           std::find(declared.begin(), declared.end(), format) != declared.end();
}

constexpr char kRemedy[] =
    "put a star database (.stars) in its place or choose another in \"Star Database\"";

}  // namespace

std::optional<std::string> refuse_size(int width, int height) {
    if (width < 1 || height < 1) {
        return std::nullopt;
    }
    const std::uint64_t bytes = kImageBytesPerPixel * static_cast<std::uint64_t>(width) *
                                static_cast<std::uint64_t>(height);
    if (bytes > std::numeric_limits<std::uint32_t>::max()) {
        return "a frame of " + std::to_string(width) + " x " + std::to_string(height) +
               " pixels is too large: its float image of " + std::to_string(bytes) +
               " bytes is beyond the effect's 32-bit limit of 4294967295; render it smaller";
    }
    return std::nullopt;
}

std::optional<std::string> catalogue_fault(const fs::path& file) {
    const StarFile found = look_at_star_file(file);
    if (found.version != 0) {
        return std::nullopt;
    }
    return found.problem + "; " + kRemedy;
}

std::optional<fs::path> chosen_catalogue(const host::Session& session, const host::Scene& scene,
                                         host::Time time) {
    const std::vector<host::DeclaredControl>& controls = session.controls();
    const auto control = std::find_if(
        controls.begin(), controls.end(),
        [](const host::DeclaredControl& one) { return one.name == kCatalogueControl; });
    if (control == controls.end() || control->choices.empty()) {
        return std::nullopt;
    }
    const host::ControlValues values(controls, scene.controls);
    const std::size_t place = static_cast<std::size_t>(control - controls.begin());
    const double last = static_cast<double>(control->choices.size()) - 1.0;
    const double choice = std::clamp(values.number(place, time.seconds()) - 1.0, 0.0, last);
    return session.folder() / control->choices[static_cast<std::size_t>(choice)];
}

std::string explain_frame(const host::Session& session, const host::Scene& scene,
                          const host::Frame& frame) {
    if (frame.drawn) {
        return {};
    }
    if (frame.status != PF_Err_NONE) {
        return "the plug-in could not draw the frame (status " + std::to_string(frame.status) +
               ")" + (frame.message.text.empty() ? "" : ": " + frame.message.text);
    }
    if (!frame.rendered) {
        return "nothing was drawn: the plug-in was not asked to render";
    }
    const std::string reason = "the plug-in drew nothing: ";
    if (!drawable(session, frame.pixel_format)) {
        return reason + "it has no use for pixels of the format " +
               shown_format(frame.pixel_format) + "; render 8-bit, 16-bit or float ARGB";
    }
    const auto catalogue = chosen_catalogue(session, scene, frame.time);
    if (catalogue) {
        if (const auto fault = catalogue_fault(*catalogue)) {
            return reason + *fault;
        }
    }
    const std::string request = "the request of " + std::to_string(frame.request.width()) + " x " +
                                std::to_string(frame.request.height()) + " pixels";
    return reason +
           (catalogue ? "neither " + request + " nor the catalogue " +
                            in_quotes(catalogue->string()) + " shows why"
                      : request + " does not show why") +
           "; it may have run out of memory";
}

std::string explain_set_up(const fs::path& plugin, const host::EffectError& error) {
    std::string text = error.what();
    fs::path folder;
    try {
        folder = host::plugin_folder(plugin);
    } catch (const host::ModuleError&) {
        return text;
    }
    for (const std::string& name : star_files_in(folder)) {
        if (const auto fault = catalogue_fault(folder / name)) {
            text += text.empty() || text.back() == '\n' ? "" : " ";
            text += "(" + *fault + ")";
        }
    }
    return text;
}

}  // namespace lumivar
