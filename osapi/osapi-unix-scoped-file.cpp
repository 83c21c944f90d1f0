// The C library's buffered files.
#include <base/exceptions.h>
#include <base/release.h>
#include <osapi/scoped_file.h>

#include <cerrno>
#include <cstring>

#include "syscalls.h"

namespace OSAPI {

ScopedFILE::ScopedFILE(fd_t fd, const char* path, const char* mode) {
    FileDescriptor descriptor(fd);
    file_ = calls<DescriptorCalls>().fdopen(fd, mode);
    if (file_ == nullptr) {
        XTHROW("fdopen(\"%s\", \"%s\")", path, mode);
    }
    descriptor.release();
}

ScopedFILE::~ScopedFILE() noexcept(false) {
    // Inside the lambda the message would name the lambda in place of this destructor.
    const char* function = __PRETTY_FUNCTION__;
    release_in_destructor([this, function] {
        if (calls<DescriptorCalls>().fclose(file_) != 0) {
            throw StrXception(__FILE__, function, __LINE__, "fclose: %s", std::strerror(errno));
        }
    });
}

}  // namespace OSAPI
