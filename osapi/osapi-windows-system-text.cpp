// Texts in the code page of the machine.
#include <osapi/system_text.h>

#include "wide_text.h"
#include "windows_api.h"

namespace OSAPI {

String system_text(String utf8) {
    // Where the code page is UTF-8 the conversion would refuse a replacement of our choice.
    if (GetACP() == CP_UTF8) {
        return utf8;
    }
    const std::wstring wide = wide_text(utf8.c_str());
    const auto length = static_cast<int>(wide.size());
    // Without this flag a character of another kind that looks alike would stand for the missing
    // one.
    constexpr DWORD kFlags = WC_NO_BEST_FIT_CHARS;
    const int size =
        WideCharToMultiByte(CP_ACP, kFlags, wide.data(), length, nullptr, 0, "?", nullptr);
    if (size == 0) {
        // A code page that takes no flags: better odd letters than none.
        return utf8;
    }
    std::string text(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_ACP, kFlags, wide.data(), length, text.data(), size, "?", nullptr);
    return text.c_str();
}

}  // namespace OSAPI
