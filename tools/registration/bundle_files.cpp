#include "bundle_files.h"

#include <AE/registration.h>
#include <osapi/atomic_file_write.h>
#include <osapi/files.h>
#include <osapi/reason.h>

#include <stdexcept>
#include <string_view>
#include <system_error>

namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const fs::path& path, const std::string& reason) {
    throw std::runtime_error("cannot write " + path.string() + ": " + reason);
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
        fail(path, error.message());
    }
    try {
        OSAPI::AtomicFileWrite file(path.c_str(), OSAPI::kWrite);
        OSAPI::write(file.fd(), content.data(), content.size());
        // The build makes the file again if the machine stops before the disk has it.
        file.complete_nosync();
    } catch (const StrXception& failure) {
        fail(path, OSAPI::reason(failure).c_str());
    }
}
