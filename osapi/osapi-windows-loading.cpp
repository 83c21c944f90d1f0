// Loading modules over Windows.
#include <base/exceptions.h>
#include <osapi/loading.h>

#include "system_error.h"
#include "wide_text.h"
#include "windows_api.h"

namespace OSAPI {

LoadedModule::~LoadedModule() {
    if (handle_ != nullptr) {
        FreeLibrary(static_cast<HMODULE>(handle_));
    }
}

bool LoadedModule::load(const char* path) {
    XASSERT(handle_ == nullptr);
    const std::wstring wide = wide_path(path);
    handle_ = LoadLibraryW(wide.c_str());
    if (handle_ == nullptr) {
        failure_ = system_error(GetLastError());
    }
    return handle_ != nullptr;
}

LoadedModule::Address LoadedModule::find(const char* name) const {
    return reinterpret_cast<Address>(GetProcAddress(static_cast<HMODULE>(handle_), name));
}

bool is_loaded(const char* path) { return GetModuleHandleW(wide_path(path).c_str()) != nullptr; }

}  // namespace OSAPI
