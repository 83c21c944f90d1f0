// UTF-8 and UTF-16, by the system's own conversion.
#include <algorithm>

#include "wide_text.h"
#include "windows_api.h"

namespace OSAPI {

namespace {

// A folder's path must leave room for a name of the old kind, 8 and 3 characters.
constexpr std::size_t kLongestPlainPath = MAX_PATH - 12;
const std::wstring kMark = L"\\\\?\\";
const std::wstring kMarkOfShares = L"\\\\?\\UNC\\";

bool starts_with(const std::wstring& text, const std::wstring& start) {
    return text.compare(0, start.size(), start) == 0;
}

}  // namespace

std::wstring wide_text(const char* utf8) {
    // The terminator is converted too, and counted.
    const int size = MultiByteToWideChar(CP_UTF8, 0, utf8, -1, nullptr, 0);
    if (size <= 1) {
        return {};
    }
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8, -1, wide.data(), size);
    wide.pop_back();
    return wide;
}

String utf8_text(const std::wstring& wide) {
    const auto length = static_cast<int>(wide.size());
    const int size =
        WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, utf8.data(), size, nullptr, nullptr);
    return utf8.c_str();
}

std::wstring wide_path(const char* path) {
    std::wstring wide = wide_text(path);
    std::replace(wide.begin(), wide.end(), L'/', L'\\');
    if (wide.size() < kLongestPlainPath || starts_with(wide, kMark)) {
        return wide;
    }
    // Behind the mark the system takes every character as it stands, "." and ".." too.
    const DWORD size = GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr);
    std::wstring full(size, L'\0');
    full.resize(GetFullPathNameW(wide.c_str(), size, full.data(), nullptr));
    return starts_with(full, L"\\\\") ? kMarkOfShares + full.substr(2) : kMark + full;
}

String path_text(const std::wstring& wide) {
    std::wstring plain = wide;
    if (starts_with(plain, kMarkOfShares)) {
        plain = L"\\\\" + plain.substr(kMarkOfShares.size());
    } else if (starts_with(plain, kMark)) {
        plain = plain.substr(kMark.size());
    }
    std::replace(plain.begin(), plain.end(), L'\\', L'/');
    return utf8_text(plain);
}

}  // namespace OSAPI
