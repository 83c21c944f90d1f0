// What the system's error numbers say.
#include "system_error.h"
#include "wide_text.h"
#include "windows_api.h"

namespace OSAPI {

String system_error(unsigned long number) {
    wchar_t* text = nullptr;
    void* const place = &text;
    // Asked to allocate, the call takes the address of a pointer in the buffer's place.
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, number, 0, static_cast<wchar_t*>(place), 0, nullptr);
    if (length == 0) {
        return String::fmt("system error %lu", number);
    }
    std::wstring line(text, length);
    LocalFree(text);
    while (!line.empty() && (line.back() == L'\n' || line.back() == L'\r' || line.back() == L' ')) {
        line.pop_back();
    }
    return utf8_text(line);
}

}  // namespace OSAPI
