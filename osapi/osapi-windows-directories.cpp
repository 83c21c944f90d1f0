// What is in directories, over Windows.
#include <base/exceptions.h>
#include <osapi/directories.h>

#include "system_error.h"
#include "wide_text.h"
#include "windows_api.h"

namespace OSAPI {

namespace {

/// Closes the search when an exception passes, and ignores a failure of that: it would hide the
/// exception.
class Search {
public:
    explicit Search(HANDLE handle) : handle_(handle) {}
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;
    ~Search() {
        if (handle_ != INVALID_HANDLE_VALUE) {
            close();
        }
    }

    bool next(WIN32_FIND_DATAW& entry) { return FindNextFileW(handle_, &entry) != 0; }
    bool close() {
        HANDLE handle = handle_;
        handle_ = INVALID_HANDLE_VALUE;
        return FindClose(handle) != 0;
    }

private:
    HANDLE handle_;
};

[[noreturn]] void fail(const char* call, const char* path, DWORD error) {
    // The place of the raise is `lsdir` for whoever reads the message.
    throw StrXception(__FILE__, "void OSAPI::lsdir(const char*, Array<String>&)", __LINE__,
                      "%s(\"%s\"): %s", call, path, system_error(error).c_str());
}

}  // namespace

void lsdir(const char* path, Array<String>& out) {
    if (*path == '\0') {
        // With the pattern behind it this would be the root.
        fail("opendir", path, ERROR_PATH_NOT_FOUND);
    }
    WIN32_FIND_DATAW entry = {};
    const std::wstring pattern = wide_path((String(path) + "/*").c_str());
    const HANDLE first = FindFirstFileW(pattern.c_str(), &entry);
    if (first == INVALID_HANDLE_VALUE) {
        const DWORD error = GetLastError();
        // A root has no "." and may be empty.
        if (error == ERROR_FILE_NOT_FOUND) {
            return;
        }
        fail("opendir", path, error);
    }
    Search search(first);
    do {
        out.append(utf8_text(entry.cFileName));
    } while (search.next(entry));
    // Half a listing must not pass for the whole.
    const DWORD error = GetLastError();
    if (error != ERROR_NO_MORE_FILES) {
        fail("readdir", path, error);
    }
    if (!search.close()) {
        fail("closedir", path, GetLastError());
    }
}

}  // namespace OSAPI
