// Any file as a picture of this program: refused by a failure that names the file, or read twice
// with the same details. The first byte tells the format, as it does in every picture.
#include <string>

#include "failure.h"
#include "harness.h"
#include "input_file.h"
#include "picture_reading.h"

namespace {

const char* ending_of(const std::string& bytes) {
    switch (bytes.empty() ? 0 : static_cast<unsigned char>(bytes[0])) {
        case 0x76:
            return "exr";
        case 0x89:
            return "png";
        case 0xFF:
            return "jpg";
        default:
            return "tif";
    }
}

/// The details, a line for each, or why the picture cannot be read.
std::string content_of(const std::string& path) {
    std::string content;
    try {
        for (const auto& [key, value] : lumivar::read_picture_details(path)) {
            content.append(key).append("=").append(value).append("\n");
        }
    } catch (const lumivar::Failure& failure) {
        content = failure.what();
        require(content.find(path) != std::string::npos, "a failure that does not name the file");
    }
    return content;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = text_of(data, size);
    const std::string path = input_file(std::string("picture.") + ending_of(bytes), bytes);
    require(content_of(path) == content_of(path), "a second reading gives other details");
    return 0;
}
