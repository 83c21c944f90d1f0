// Where the running code lies, over Windows.
#include <osapi/module_path.h>

#include "wide_text.h"
#include "windows_api.h"

namespace OSAPI {

String module_path(const void* address) {
    HMODULE module = nullptr;
    if (GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            static_cast<const wchar_t*>(address), &module) == 0) {
        return {};
    }
    // The system does not say how long the path is, only that the room was too small.
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) {
            return {};
        }
        if (length < path.size()) {
            path.resize(length);
            return path_text(path);
        }
        path.resize(2 * path.size());
    }
}

}  // namespace OSAPI
