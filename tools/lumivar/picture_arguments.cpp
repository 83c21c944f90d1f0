#include "picture_arguments.h"

#include <base/string.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "failure.h"
#include "halo.h"

namespace lumivar {
namespace {

/// Beyond, the factor of the light is no number any more.
constexpr double kMostStops = 100.0;

/// In the order of `ExrCompression`.
constexpr std::array<const char*, 6> kCompressions = {"none", "rle", "zips", "zip", "piz", "dwaa"};

std::vector<std::string> compression_names() {
    return {kCompressions.begin(), kCompressions.end()};
}

const char* name_of(ExrCompression compression) {
    return kCompressions[static_cast<std::size_t>(compression)];
}

/// Nothing for an empty name.
std::optional<ExrCompression> named_compression(const std::string& name) {
    const auto* const found = std::find(kCompressions.begin(), kCompressions.end(), name);
    if (found == kCompressions.end()) {
        return std::nullopt;
    }
    return static_cast<ExrCompression>(found - kCompressions.begin());
}

bool asks_for_management(const PictureArguments& arguments) {
    return !(arguments.ocio + arguments.ocio_display + arguments.ocio_view + arguments.ocio_space)
                .empty();
}

bool asks_for_look(const PictureArguments& arguments) {
    return arguments.exposure || !arguments.view.empty() || arguments.bits ||
           asks_for_management(arguments);
}

void check_numbers(const PictureArguments& arguments) {
    if (arguments.exposure && !(std::fabs(*arguments.exposure) <= kMostStops)) {
        throw UsageError("--exposure takes stops from -100 to 100");
    }
    if (arguments.halo && !(*arguments.halo >= 0.0 && *arguments.halo <= kStrongestHalo)) {
        throw UsageError(std::string("--halo takes a strength from 0 to ") +
                         String::fmt("%.3f", kStrongestHalo).c_str() +
                         ", at which all light goes into the halo; 1 is a common lens");
    }
}

/// The view that was chosen, and for a managed one what of its configuration.
void choose_view(const PictureArguments& arguments, const PictureWishes& wishes, host::Depth depth,
                 const std::string& environment_config, Look& look) {
    if (!arguments.view.empty() && asks_for_management(arguments)) {
        throw UsageError("--view and the --ocio options both choose a view; give one of them");
    }
    std::string view = arguments.view;
    if (view.empty() && asks_for_management(arguments)) {
        view = "ocio";
    }
    if (view.empty() && wishes.view) {
        view = *wishes.view;
    }
    if (view.empty() && !environment_config.empty()) {
        view = "ocio";
    }
    if (view.empty()) {
        view = depth == host::Depth::Float ? "photo" : "plain";
    }
    if (view == "photo") {
        look.view = Look::View::Photo;
    } else if (view == "ocio") {
        look.view = Look::View::Managed;
        const std::string& config = arguments.ocio.empty() ? environment_config : arguments.ocio;
        if (config.empty()) {
            throw UsageError(
                "no OpenColorIO configuration is named; give its config.ocio to --ocio or in "
                "$OCIO");
        }
        try {
            look.managed = found_in_config(
                {config, arguments.ocio_display, arguments.ocio_view, arguments.ocio_space});
        } catch (const Failure& failure) {
            // The variable may have been set long ago, for another program.
            throw Failure(failure.what() +
                          std::string(arguments.ocio.empty()
                                          ? " (named by the environment variable OCIO)"
                                          : " (named by --ocio)"));
        }
    }
}

std::string number_text(double number) { return String::fmt("%.6g", number).c_str(); }

}  // namespace

void add_picture_arguments(Command& command, PictureArguments& arguments) {
    command.add("--exposure", arguments.exposure,
                "Stops by which the picture is brighter (below 0: darker) than the frame's light");
    command
        .add("--view", arguments.view,
             "How light becomes a picture: photo rolls off what is too bright and keeps its "
             "colour, plain cuts it off")
        .one_of(std::vector<std::string>{"photo", "plain"});
    command.add("--halo", arguments.halo,
                "Strength of the lens halo around the stars; 1 in the photo view, 0 elsewhere");
    command.add("--bits", arguments.bits, "Bits a channel of a .png or .tif to look at; 8 or 16")
        .one_of({8, 16});
    command.add("--ocio", arguments.ocio,
                "An OpenColorIO configuration, whose display and view make the picture; $OCIO is "
                "taken where no view is named");
    command.add("--ocio-display", arguments.ocio_display, "Its display, if not the default one");
    command.add("--ocio-view", arguments.ocio_view, "Its view, if not the display's default one");
    command.add("--ocio-space", arguments.ocio_space,
                "The space of the frame's light, if not the role scene_linear");
    command
        .add("--compression", arguments.compression,
             "How an .exr is packed; zips if nothing is said, and all but dwaa keep every bit")
        .one_of(compression_names());
    command.add_flag("--half", arguments.half, "Channels of 16 bits instead of 32 in an .exr");
    command.add_flag("--raw", arguments.raw,
                     "Write the integer codes of --depth 8 or 16 as they are");
}

PictureWishes picture_wishes(const host::Scene& scene) {
    const host::Picture& picture = scene.picture;
    if (picture.halo && *picture.halo > kStrongestHalo) {
        throw Failure(scene.source + ": /picture/halo: expected a strength from 0 to " +
                      String::fmt("%.3f", kStrongestHalo).c_str() + ", found " +
                      number_text(*picture.halo));
    }
    return {picture.exposure, picture.view, picture.halo};
}

PictureContent picture_content(const PictureArguments& arguments, const PictureWishes& wishes,
                               const std::string& path, host::Depth depth,
                               const std::string& environment_config) {
    check_numbers(arguments);
    PictureContent content;
    if (arguments.raw) {
        if (asks_for_look(arguments) || arguments.halo) {
            throw UsageError(
                "--raw writes the frame's codes as they are; leave out exposure, view and halo");
        }
        content.raw = true;
    } else {
        const auto format = picture_format(path);
        const bool for_looking = format == PictureFormat::Png || format == PictureFormat::Jpeg;
        if (for_looking || asks_for_look(arguments)) {
            Look& look = content.look.emplace();
            // Before a configuration is opened for nothing.
            check_picture_request(path, depth, content);
            choose_view(arguments, wishes, depth, environment_config, look);
            look.exposure = arguments.exposure.value_or(wishes.exposure.value_or(0.0));
            look.halo = arguments.halo.value_or(
                wishes.halo.value_or(look.view == Look::View::Photo ? 1.0 : 0.0));
            look.bits = arguments.bits.value_or(format == PictureFormat::Tiff ? 16 : 8);
        } else {
            content.linear_halo = arguments.halo.value_or(0.0);
        }
    }
    content.half = arguments.half;
    content.compression = named_compression(arguments.compression);
    check_picture_request(path, depth, content);
    return content;
}

std::string content_text(const PictureContent& content) {
    if (content.raw) {
        return "the plug-in's codes";
    }
    std::string text;
    double halo = content.linear_halo;
    if (content.look) {
        const Look& look = *content.look;
        halo = look.halo;
        text = look.view == Look::View::Photo ? "photo view"
               : look.view == Look::View::Plain
                   ? "plain view"
                   : "view \"" + look.managed.view + "\" of \"" + look.managed.display + "\" (" +
                         look.managed.config + ")";
        if (look.exposure != 0.0) {
            text.append(", exposure ")
                .append(look.exposure > 0.0 ? "+" : "")
                .append(number_text(look.exposure))
                .append(std::fabs(look.exposure) == 1.0 ? " stop" : " stops");
        }
    } else {
        text = "linear light";
    }
    if (halo != 0.0) {
        text.append(", halo ").append(number_text(halo));
    }
    if (content.half) {
        text.append(", half");
    }
    if (content.compression) {
        text.append(", ").append(name_of(*content.compression));
    }
    return text;
}

}  // namespace lumivar
