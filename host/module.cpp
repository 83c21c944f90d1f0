#include <dlfcn.h>
#include <host/errors.h>
#include <host/module.h>

#include <cstring>
#include <mutex>
#include <set>
#include <string>
#include <system_error>

namespace host {
namespace {

namespace fs = std::filesystem;

std::mutex open_modules_mutex;
std::set<fs::path>& open_modules() {
    static std::set<fs::path> modules;
    return modules;
}

/// Enters a module file in the list of those in use, by its real path, and returns that path.
fs::path enter(const fs::path& file) {
    std::error_code error;
    fs::path real = fs::canonical(file, error);
    if (error) {
        real = file;
    }
    const std::lock_guard lock(open_modules_mutex);
    if (!open_modules().insert(real).second) {
        throw ModuleError("\"" + file.string() + "\" is already open in this process");
    }
    return real;
}

void leave(const fs::path& entered) {
    const std::lock_guard lock(open_modules_mutex);
    open_modules().erase(entered);
}

std::string last_loader_error() {
    const char* text = dlerror();  // NOLINT(concurrency-mt-unsafe)
    return text == nullptr ? "the loader gives no reason" : text;
}

}  // namespace

fs::path module_file(const fs::path& given) {
    std::error_code error;
    fs::path path = fs::absolute(given, error).lexically_normal();
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) {
        throw ModuleError("no plug-in at \"" + given.string() + "\"");
    }
    if (!fs::is_directory(status)) {
        return path;
    }
    const fs::path bundle = path.has_filename() ? path : path.parent_path();
    fs::path file = bundle / "Contents" / "MacOS" / bundle.stem();
    if (!fs::is_regular_file(file, error)) {
        throw ModuleError("\"" + given.string() +
                          "\" is no plug-in bundle: it has no Contents/MacOS/" +
                          bundle.stem().string());
    }
    return file;
}

bool is_resident(const fs::path& file) {
    void* const handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD);
    if (handle == nullptr) {
        return false;
    }
    dlclose(handle);
    return true;
}

Module::Module(const fs::path& bundle_or_file)
    : file_(module_file(bundle_or_file)), entered_(enter(file_)) {
    handle_ = dlopen(file_.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) {
        const std::string reason = last_loader_error();
        leave(entered_);
        throw ModuleError("\"" + file_.string() + "\" cannot be loaded: " + reason);
    }
    void* const symbol = dlsym(handle_, kEntryPointName);
    if (symbol == nullptr) {
        dlclose(handle_);
        leave(entered_);
        throw NoEntryPoint("\"" + file_.string() + "\" exports no entry point " + kEntryPointName);
    }
    // POSIX promises that pointers to objects and to functions have the same representation.
    static_assert(sizeof symbol == sizeof entry_point_);
    std::memcpy(&entry_point_, &symbol, sizeof symbol);
}

Module::~Module() {
    dlclose(handle_);
    leave(entered_);
}

fs::path plugin_folder(const fs::path& bundle_or_file) {
    // The file system resolves "..", so that a linked bundle gives the folder of the real one.
    const fs::path climbed = module_file(bundle_or_file).parent_path() / ".." / ".." / "..";
    std::error_code error;
    const fs::path real = fs::canonical(climbed, error);
    return error ? climbed : real;
}

}  // namespace host
