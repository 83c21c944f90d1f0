// The files beside a module in its bundle, which a host reads before it loads the module.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

namespace conformance {

struct BundleFile {
    std::filesystem::path path;
    std::optional<std::string> content;
    std::string trouble;  ///< why there is no content: "is missing", "cannot be read: ..."

    /// The path in quotes, for messages.
    std::string name() const { return "\"" + path.string() + "\""; }
};

struct BundleFiles {
    /// Nobody expects the files of a module that stands alone; they are not looked for.
    bool in_bundle = false;
    BundleFile info_list;
    BundleFile package_info;
    BundleFile resource;

    explicit BundleFiles(const std::filesystem::path& module);
};

/// More than such a file ever has; larger ones are not read.
inline constexpr std::size_t kLargestBundleFile = std::size_t{16} << 20U;

}  // namespace conformance
