// Where the running code lies, by the loader that POSIX systems share.
#include <dlfcn.h>
#include <osapi/module_path.h>

namespace OSAPI {

String module_path(const void* address) {
    Dl_info info = {};
    if (dladdr(address, &info) == 0 || info.dli_fname == nullptr) {
        return {};
    }
    return info.dli_fname;
}

}  // namespace OSAPI
