#include <host/errors.h>
#include <host/module.h>
#include <osapi/loading.h>

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

/// A module file in the list of those in use, by its real path, while the object lives.
class InUse {
public:
    explicit InUse(const fs::path& file) {
        std::error_code error;
        real_ = fs::canonical(file, error);
        if (error) {
            real_ = file;
        }
        const std::lock_guard lock(open_modules_mutex);
        if (!open_modules().insert(real_).second) {
            throw ModuleError("\"" + file.string() + "\" is already open in this process");
        }
    }
    InUse(const InUse&) = delete;
    InUse& operator=(const InUse&) = delete;
    ~InUse() {
        const std::lock_guard lock(open_modules_mutex);
        open_modules().erase(real_);
    }

private:
    fs::path real_;
};

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

struct Module::Opened {
    explicit Opened(const fs::path& file) : in_use(file) {}

    InUse in_use;
    OSAPI::LoadedModule loaded;
};

bool is_resident(const fs::path& file) { return OSAPI::is_loaded(file.string().c_str()); }

Module::Module(const fs::path& bundle_or_file)
    : file_(module_file(bundle_or_file)), opened_(std::make_unique<Opened>(file_)) {
    if (!opened_->loaded.load(file_.string().c_str())) {
        throw ModuleError("\"" + file_.string() +
                          "\" cannot be loaded: " + opened_->loaded.failure().c_str());
    }
    entry_point_ = opened_->loaded.find(kEntryPointName);
    if (entry_point_ == nullptr) {
        throw NoEntryPoint("\"" + file_.string() + "\" exports no entry point " + kEntryPointName);
    }
}

Module::~Module() = default;

fs::path plugin_folder(const fs::path& bundle_or_file) {
#ifdef _WIN32
    const fs::path climbed = module_file(bundle_or_file).parent_path();
#else
    // The file system resolves "..", so that a linked bundle gives the folder of the real one.
    const fs::path climbed = module_file(bundle_or_file).parent_path() / ".." / ".." / "..";
#endif
    std::error_code error;
    const fs::path real = fs::canonical(climbed, error);
    return error ? climbed : real;
}

}  // namespace host
