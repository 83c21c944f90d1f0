// Writes what the host reads of the bundle before it loads the module, or the resource that it
// reads of a module for Windows. usage: write_registration CONTENTS-FOLDER [PROCESSOR...]
//        write_registration --windows FILE
#include <AE/registration.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "bundle_files.h"
#include "processors.h"
#include "resource_file.h"

namespace {

/// Within the range that is customary for effects.
constexpr std::uint16_t kResourceIdentifier = 16000;

/// A host finds no code without the key of its own processor, and with a key that no slice of the
/// module answers it fails to load it.
using Processors = std::vector<const bundle::Processor*>;

/// Those named, in the order of a registration; nothing when a name is not known or comes twice.
std::optional<Processors> named(const std::vector<std::string>& names) {
    Processors found;
    for (const bundle::Processor& processor : bundle::kProcessors) {
        if (std::count(names.begin(), names.end(), processor.name) == 1) {
            found.push_back(&processor);
        }
    }
    return found.size() == names.size() ? std::optional(found) : std::nullopt;
}

void write_registration(const std::filesystem::path& contents, const Processors& processors) {
    write_whole(contents / "Info.plist", info_plist());
    write_whole(contents / "PkgInfo", package_info());
    // The host looks for the resources under the name of the executable.
    write_whole(contents / "Resources" / (std::string(registration::kExecutable) + ".rsrc"),
                resource_file("PiPL", kResourceIdentifier, registration_resource(processors)));
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    const bool for_windows =
        arguments.size() == 2 && arguments[0] == "--windows" && !arguments[1].empty();
    const std::optional<Processors> processors =
        arguments.empty() || arguments[0].empty() ? std::nullopt
                                                  : named({arguments.begin() + 1, arguments.end()});
    if (!for_windows && !processors) {
        std::fputs(
            "usage: write_registration CONTENTS-FOLDER [PROCESSOR...]\n"
            "       write_registration --windows FILE\n"
            "PROCESSOR: i386, x86_64 or arm64, once for each that the module has code for\n",
            stderr);
        return 2;
    }
    try {
        if (for_windows) {
            write_whole(arguments[1], windows_registration_resource());
        } else {
            write_registration(arguments[0], *processors);
        }
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "write_registration: %s\n", failure.what());
        return 1;
    }
    return 0;
}
