// The files of a bundle that the host reads before it loads the module.
#pragma once

#include <filesystem>
#include <string>

/// The content of Info.plist.
std::string info_plist();

/// The content of PkgInfo: type and signature, eight characters without a line end.
std::string package_info();

/// Puts a file into its place whole: until then an older one stays as it is. Missing folders are
/// made. Throws std::runtime_error "cannot write PATH: REASON", and leaves nothing half-written.
void write_whole(const std::filesystem::path& path, const std::string& content);
