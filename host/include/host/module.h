// A plug-in bundle opened as a loadable module.
#pragma once

#include <filesystem>
#include <memory>

namespace host {

/// The function that the plug-in's registration names.
inline constexpr char kEntryPointName[] = "EntryPointFunc";

/// The folder where a bundle, named as for `Module`, stands; on Windows, where there are none, that
/// of the module file. Throws `ModuleError`.
std::filesystem::path plugin_folder(const std::filesystem::path& bundle_or_file);

/// The file that holds the module of a bundle, absolute; a module file is its own. Throws
/// `ModuleError` when there is none.
std::filesystem::path module_file(const std::filesystem::path& bundle_or_file);

/// Whether a module file is still part of the process after all that opened it closed it.
bool is_resident(const std::filesystem::path& file);

/// An opened module; closed on destruction. Everything of it, exceptions it threw included, must be
/// gone by then.
class Module {
public:
    /// Opens BUNDLE/Contents/MacOS/NAME, where NAME is the bundle's name without its extension, or
    /// the module file itself. Throws `ModuleError`, also when the same file is open already: its
    /// process-wide state can serve one host only.
    explicit Module(const std::filesystem::path& bundle_or_file);
    ~Module();
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    /// Address of the entry point, to be called through the effect interface's prototype.
    using Address = void (*)();
    Address entry_point() const { return entry_point_; }

    /// The module file, absolute.
    const std::filesystem::path& file() const { return file_; }
    /// `plugin_folder` of the module file.
    std::filesystem::path folder() const { return plugin_folder(file_); }

private:
    std::filesystem::path file_;
    struct Opened;
    std::unique_ptr<Opened> opened_;
    Address entry_point_ = nullptr;
};

}  // namespace host
