// Files mapped for reading, over Windows.
#include <base/exceptions.h>
#include <base/release.h>
#include <osapi/mappings.h>

#include "system_error.h"
#include "wide_text.h"
#include "windows_api.h"

namespace OSAPI {

namespace {

/// Closes a handle of the system on every way out.
class Handle {
public:
    explicit Handle(HANDLE handle) : handle_(handle) {}
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() {
        if (is_valid()) {
            CloseHandle(handle_);
        }
    }

    bool is_valid() const { return handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return handle_; }

private:
    HANDLE handle_;
};

}  // namespace

MemoryMapping::~MemoryMapping() noexcept(false) {
    if (addr_ == nullptr) {
        return;
    }
    // Inside the lambda the message would name the lambda in place of this destructor.
    const char* function = __PRETTY_FUNCTION__;
    release_in_destructor([this, function] {
        if (UnmapViewOfFile(addr_) == 0) {
            throw StrXception(__FILE__, function, __LINE__, "munmap: %s",
                              system_error(GetLastError()).c_str());
        }
    });
    addr_ = nullptr;
    size_ = 0;
}

bool MemoryMapping::adopt(void* mapped, uword size) {
    addr_ = static_cast<char*>(mapped);
    size_ = mapped != nullptr ? size : 0;
    return mapped != nullptr;
}

FileMapping::FileMapping(const char* path, int mode) {
    XASSERT(mode == kRead);
    const std::wstring wide = wide_path(path);
    const Handle file(CreateFileW(wide.c_str(), GENERIC_READ,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.is_valid()) {
        const String error = system_error(GetLastError());
        XTHROW("opening file \"%s\": %s", path, error.c_str());
    }
    LARGE_INTEGER size = {};
    if (GetFileSizeEx(file.get(), &size) == 0) {
        XTHROW("fstat: %s", system_error(GetLastError()).c_str());
    }
    // The size is said, so that a file which has just been cut is not mapped for longer than it is.
    // An empty one the system refuses.
    const Handle mapping(CreateFileMappingW(file.get(), nullptr, PAGE_READONLY,
                                            static_cast<DWORD>(size.HighPart), size.LowPart,
                                            nullptr));
    void* const view =
        mapping.is_valid() ? MapViewOfFile(mapping.get(), FILE_MAP_READ, 0, 0, 0) : nullptr;
    // The view keeps the file mapped when both handles are closed.
    if (!adopt(view, static_cast<uword>(size.QuadPart))) {
        XTHROW("mmap(file): %s", system_error(GetLastError()).c_str());
    }
}

}  // namespace OSAPI
