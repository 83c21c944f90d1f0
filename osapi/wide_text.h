// Texts as Windows takes them. This room speaks UTF-16 to the system and UTF-8 to everyone else.
#pragma once

#include <base/string.h>

#include <string>

namespace OSAPI {

/// What is no UTF-8 becomes U+FFFD, as is what is no UTF-16 on the way back.
std::wstring wide_text(const char* utf8);
String utf8_text(const std::wstring& wide);

/// A path as the calls on files take it: with the system's separators, and for a long one with the
/// mark that lifts the limit of some 260 characters.
std::wstring wide_path(const char* path);
/// The way back: '/' between the names, without the mark.
String path_text(const std::wstring& wide);

}  // namespace OSAPI
