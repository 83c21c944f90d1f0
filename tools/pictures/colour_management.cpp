#include "colour_management.h"

#include <OpenImageIO/color.h>
#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "failure.h"

namespace lumivar {
namespace {

std::unique_ptr<OIIO::ColorConfig> open_config(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        throw Failure(
            "there is no OpenColorIO configuration " + path +
            "; give the path of a config.ocio to --ocio or in $OCIO, or choose --view photo");
    }
    auto config = std::make_unique<OIIO::ColorConfig>(path);
    if (config->has_error()) {
        std::string reason = config->geterror();
        std::replace(reason.begin(), reason.end(), '\n', ' ');
        throw Failure("cannot read the OpenColorIO configuration " + path + ": " + reason);
    }
    return config;
}

std::string listed(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text.append(text.empty() ? "\"" : ", \"").append(name).append("\"");
    }
    return text.empty() ? "none" : text;
}

void require_name(const std::string& what, const std::string& name,
                  const std::vector<std::string>& names, const std::string& config) {
    if (std::find(names.begin(), names.end(), name) == names.end()) {
        throw Failure("the OpenColorIO configuration " + config + " has no " + what + " \"" + name +
                      "\"; it has " + listed(names));
    }
}

std::string text_of(const char* text) { return text != nullptr ? text : ""; }

}  // namespace

ManagedView found_in_config(const ManagedView& wanted) {
    const auto config = open_config(wanted.config);
    ManagedView found = wanted;
    if (found.display.empty()) {
        found.display = text_of(config->getDefaultDisplayName());
    }
    require_name("display", found.display, config->getDisplayNames(), found.config);
    if (found.view.empty()) {
        found.view = text_of(config->getDefaultViewName(found.display));
    }
    require_name("view", found.view, config->getViewNames(found.display), found.config);
    if (found.space.empty()) {
        found.space = text_of(config->getColorSpaceNameByRole("scene_linear"));
        if (found.space.empty()) {
            throw Failure("the OpenColorIO configuration " + found.config +
                          " does not say its scene_linear space; name the space of the stars' "
                          "light with --ocio-space: " +
                          listed(config->getColorSpaceNames()));
        }
    }
    require_name("colour space", found.space, config->getColorSpaceNames(), found.config);
    return found;
}

void view_managed(LinearImage& image, const ManagedView& view) {
    const auto config = open_config(view.config);
    const OIIO::ImageSpec spec(image.width, image.height, 3, OIIO::TypeFloat);
    OIIO::ImageBuf pixels(spec, image.samples.data());
    // One thread: the same frame must give the same bytes, and other frames may be under way.
    if (!OIIO::ImageBufAlgo::ociodisplay(pixels, pixels, view.display, view.view, view.space, "",
                                         false, "", "", config.get(), {}, 1)) {
        throw Failure("the OpenColorIO configuration " + view.config + " cannot show \"" +
                      view.view + "\" on \"" + view.display + "\": " + pixels.geterror());
    }
}

}  // namespace lumivar
