#include "bundle_files.h"

#include <AE/registration.h>

#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const fs::path& path, const std::error_code& error) {
    throw std::runtime_error("cannot write " + path.string() + ": " + error.message());
}

std::error_code last_error() { return {errno, std::generic_category()}; }

std::error_code write_plainly(const fs::path& path, const std::string& content) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) {
        return last_error();
    }
    std::error_code error;
    if (std::fwrite(content.data(), 1, content.size(), file) != content.size()) {
        error = last_error();
    }
    // A full disk may show only when the last bytes leave the buffer.
    if (std::fclose(file) != 0 && !error) {
        error = last_error();
    }
    return error;
}

std::string entry(std::string_view key, std::string_view value) {
    return "    <key>" + std::string(key) + "</key>\n    <string>" + std::string(value) +
           "</string>\n";
}

std::string true_entry(std::string_view key) {
    return "    <key>" + std::string(key) + "</key>\n    <true/>\n";
}

}  // namespace

std::string info_plist() {
    using namespace registration;
    const std::string version = std::to_string(kMajorVersion) + "." +
                                std::to_string(kMinorVersion) + "." + std::to_string(kBugVersion);
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">\n"
           "<dict>\n" +
           entry("CFBundleExecutable", kExecutable) +
           entry("CFBundleIdentifier", kBundleIdentifier) +
           entry("CFBundleInfoDictionaryVersion", "6.0") + entry("CFBundleName", kName) +
           entry("CFBundlePackageType", kPackageType) +
           entry("CFBundleShortVersionString", version) +
           entry("CFBundleSignature", kPackageSignature) + entry("CFBundleVersion", version) +
           true_entry("CSResourcesFileMapped") + true_entry("LSRequiresCarbon") +
           "</dict>\n"
           "</plist>\n";
}

std::string package_info() {
    return std::string(registration::kPackageType) + std::string(registration::kPackageSignature);
}

void write_whole(const fs::path& path, const std::string& content) {
    std::error_code error;
    fs::create_directories(path.parent_path(), error);
    if (error) {
        fail(path, error);
    }
    const fs::path unfinished = path.string() + ".inprogress";
    error = write_plainly(unfinished, content);
    if (!error) {
        fs::rename(unfinished, path, error);
    }
    if (error) {
        std::error_code ignored;
        fs::remove(unfinished, ignored);
        fail(path, error);
    }
}
