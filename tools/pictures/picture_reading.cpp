#include "picture_reading.h"

#include <OpenImageIO/imageio.h>

#include <cstddef>
#include <memory>
#include <sstream>
#include <string_view>
#include <vector>

#include "failure.h"

namespace lumivar {
namespace {

constexpr std::string_view kPrefix = "lumivar:";

}  // namespace

std::map<std::string, std::string> read_picture_details(const std::filesystem::path& path) {
    const std::string shown = "cannot read the picture " + path.string() + ": ";
    const std::unique_ptr<OIIO::ImageInput> input = OIIO::ImageInput::open(path.string());
    if (!input) {
        throw Failure(shown + OIIO::geterror());
    }
    const OIIO::ImageSpec& spec = input->spec();
    std::vector<std::byte> samples(spec.image_bytes(true));
    if (!input->read_image(0, 0, 0, spec.nchannels, OIIO::TypeUnknown, samples.data())) {
        throw Failure(shown + input->geterror());
    }
    std::map<std::string, std::string> details;
    for (const auto& attribute : spec.extra_attribs) {
        const std::string name = attribute.name().string();
        if (name.rfind(kPrefix, 0) == 0) {
            details[name.substr(kPrefix.size())] = attribute.get_string();
        }
    }
    // Formats without attributes of any name have them in the description, a line each.
    std::istringstream lines(spec.get_string_attribute("ImageDescription"));
    for (std::string line; std::getline(lines, line);) {
        const std::size_t colon = line.find(": ");
        if (colon != std::string::npos) {
            details.emplace(line.substr(0, colon), line.substr(colon + 2));
        }
    }
    return details;
}

}  // namespace lumivar
