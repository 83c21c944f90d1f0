// Loading modules over POSIX.
#include <base/exceptions.h>
#include <dlfcn.h>
#include <osapi/loading.h>

#include <cstring>

namespace OSAPI {

LoadedModule::~LoadedModule() {
    if (handle_ != nullptr) {
        dlclose(handle_);
    }
}

bool LoadedModule::load(const char* path) {
    XASSERT(handle_ == nullptr);
    handle_ = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) {
        const char* text = dlerror();  // NOLINT(concurrency-mt-unsafe)
        failure_ = text == nullptr ? "the loader gives no reason" : text;
    }
    return handle_ != nullptr;
}

LoadedModule::Address LoadedModule::find(const char* name) const {
    void* const symbol = dlsym(handle_, name);
    // POSIX promises that pointers to objects and to functions have the same representation.
    Address address = nullptr;
    static_assert(sizeof symbol == sizeof address);
    std::memcpy(&address, &symbol, sizeof symbol);
    return address;
}

bool is_loaded(const char* path) {
    void* const handle = dlopen(path, RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD);
    if (handle == nullptr) {
        return false;
    }
    dlclose(handle);
    return true;
}

}  // namespace OSAPI
