// Writes what the host reads of the bundle before it loads the module.
// usage: write_registration CONTENTS-FOLDER
#include <AE/registration.h>

#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

#include "bundle_files.h"
#include "resource_file.h"

namespace {

/// Within the range that is customary for effects.
constexpr std::uint16_t kResourceIdentifier = 16000;

void write_registration(const std::filesystem::path& contents) {
    write_whole(contents / "Info.plist", info_plist());
    write_whole(contents / "PkgInfo", package_info());
    // The host looks for the resources under the name of the executable.
    write_whole(contents / "Resources" / (std::string(registration::kExecutable) + ".rsrc"),
                resource_file("PiPL", kResourceIdentifier, registration_resource()));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2 || *argv[1] == '\0') {
        std::fputs("usage: write_registration CONTENTS-FOLDER\n", stderr);
        return 2;
    }
    try {
        write_registration(argv[1]);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "write_registration: %s\n", failure.what());
        return 1;
    }
    return 0;
}
