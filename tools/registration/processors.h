// The processors that a macOS host runs on, by the names that compilers give them and by the keys
// under which a registration names the entry point for each.
#pragma once

#include <string_view>

namespace bundle {

struct Processor {
    std::string_view name;
    std::string_view key;
};

/// In the order of the keys in a registration.
inline constexpr Processor kProcessors[] = {
    {"i386", "mi32"}, {"x86_64", "mi64"}, {"arm64", "ma64"}};

/// The one of that name; null if there is none.
constexpr const Processor* processor_of(std::string_view name) {
    for (const Processor& processor : kProcessors) {
        if (processor.name == name) {
            return &processor;
        }
    }
    return nullptr;
}

}  // namespace bundle
