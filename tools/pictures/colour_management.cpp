#include "colour_management.h"

#include <OpenColorIO/OpenColorIO.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "failure.h"

namespace lumivar {
namespace {

namespace OCIO = OCIO_NAMESPACE;

std::string in_one_line(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

OCIO::ConstConfigRcPtr open_config(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        throw Failure(
            "there is no OpenColorIO configuration " + path +
            "; give the path of a config.ocio to --ocio or in $OCIO, or choose --view photo");
    }
    // The library says on standard error what it thinks of a configuration; failures say it too.
    OCIO::SetLoggingLevel(OCIO::LOGGING_LEVEL_NONE);
    try {
        return OCIO::Config::CreateFromFile(path.c_str());
    } catch (const OCIO::Exception& reason) {
        throw Failure("cannot read the OpenColorIO configuration " + path + ": " +
                      in_one_line(reason.what()));
    }
}

std::vector<std::string> displays_of(const OCIO::Config& config) {
    std::vector<std::string> names;
    names.reserve(static_cast<std::size_t>(config.getNumDisplays()));
    for (int at = 0; at < config.getNumDisplays(); ++at) {
        names.emplace_back(config.getDisplay(at));
    }
    return names;
}

std::vector<std::string> views_of(const OCIO::Config& config, const std::string& display) {
    std::vector<std::string> names;
    names.reserve(static_cast<std::size_t>(config.getNumViews(display.c_str())));
    for (int at = 0; at < config.getNumViews(display.c_str()); ++at) {
        names.emplace_back(config.getView(display.c_str(), at));
    }
    return names;
}

std::vector<std::string> spaces_of(const OCIO::Config& config) {
    std::vector<std::string> names;
    names.reserve(static_cast<std::size_t>(config.getNumColorSpaces()));
    for (int at = 0; at < config.getNumColorSpaces(); ++at) {
        names.emplace_back(config.getColorSpaceNameByIndex(at));
    }
    return names;
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

Failure cannot_show(const ManagedView& view, const OCIO::Exception& reason) {
    return Failure("the OpenColorIO configuration " + view.config + " cannot show \"" + view.view +
                   "\" on \"" + view.display + "\": " + in_one_line(reason.what()));
}

OCIO::ConstCPUProcessorRcPtr processor_of(const ManagedView& view) {
    const auto config = open_config(view.config);
    try {
        const auto transform = OCIO::DisplayViewTransform::Create();
        transform->setSrc(view.space.c_str());
        transform->setDisplay(view.display.c_str());
        transform->setView(view.view.c_str());
        return config->getProcessor(transform)->getDefaultCPUProcessor();
    } catch (const OCIO::Exception& reason) {
        throw cannot_show(view, reason);
    }
}

}  // namespace

ManagedView found_in_config(const ManagedView& wanted) {
    const auto config = open_config(wanted.config);
    ManagedView found = wanted;
    if (found.display.empty()) {
        found.display = config->getDefaultDisplay();
    }
    require_name("display", found.display, displays_of(*config), found.config);
    if (found.view.empty()) {
        found.view = config->getDefaultView(found.display.c_str());
    }
    require_name("view", found.view, views_of(*config, found.display), found.config);
    if (found.space.empty()) {
        const OCIO::ConstColorSpaceRcPtr linear = config->getColorSpace(OCIO::ROLE_SCENE_LINEAR);
        found.space = linear ? linear->getName() : "";
        if (found.space.empty()) {
            throw Failure("the OpenColorIO configuration " + found.config +
                          " does not say its scene_linear space; name the space of the stars' "
                          "light with --ocio-space: " +
                          listed(spaces_of(*config)));
        }
    }
    require_name("colour space", found.space, spaces_of(*config), found.config);
    return found;
}

void view_managed(LinearImage& image, const ManagedView& view) {
    const auto processor = processor_of(view);
    try {
        OCIO::PackedImageDesc pixels(image.samples.data(), image.width, image.height, 3);
        processor->apply(pixels);
    } catch (const OCIO::Exception& reason) {
        throw cannot_show(view, reason);
    }
}

std::string fingerprint_of(const ManagedView& view) { return processor_of(view)->getCacheID(); }

}  // namespace lumivar
