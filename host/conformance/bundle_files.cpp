#include "bundle_files.h"

#include <cerrno>
#include <cstddef>
#include <fstream>
#include <system_error>
#include <utility>

namespace conformance {
namespace {

namespace fs = std::filesystem;

std::string unreadable(const std::error_code& error) {
    return "cannot be read: " + error.message();
}

BundleFile read(const fs::path& path) {
    BundleFile file{path, std::nullopt, ""};
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) {
        file.trouble = status.type() == fs::file_type::not_found ? "is missing" : unreadable(error);
        return file;
    }
    // What is none can be without end, or never begin.
    if (!fs::is_regular_file(status)) {
        file.trouble = "is no regular file";
        return file;
    }
    const std::uintmax_t size = fs::file_size(path, error);
    if (error) {
        file.trouble = unreadable(error);
        return file;
    }
    if (size > kLargestBundleFile) {
        file.trouble = "has " + std::to_string(size) + " bytes; " +
                       std::to_string(kLargestBundleFile) + " are read at most";
        return file;
    }
    errno = 0;
    std::ifstream in(path, std::ios::binary);
    std::string content(static_cast<std::size_t>(size), '\0');
    in.read(content.data(), static_cast<std::streamsize>(content.size()));
    if (!in) {
        file.trouble = errno != 0 ? unreadable({errno, std::generic_category()})
                                  : "ends before its " + std::to_string(size) + " bytes";
        return file;
    }
    file.content = std::move(content);
    return file;
}

}  // namespace

BundleFiles::BundleFiles(const fs::path& module) {
    // NAME.plugin/Contents/MacOS/NAME
    const fs::path contents = module.parent_path().parent_path();
    in_bundle = module.parent_path().filename() == "MacOS" && contents.filename() == "Contents";
    if (in_bundle) {
        info_list = read(contents / "Info.plist");
        package_info = read(contents / "PkgInfo");
        resource = read(contents / "Resources" / (module.filename().string() + ".rsrc"));
    }
}

}  // namespace conformance
