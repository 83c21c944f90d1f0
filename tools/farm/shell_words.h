// Texts as words of a shell's script.
#pragma once

#include <string>
#include <vector>

namespace lumivar {

/// The text in single quotes, so that the shell takes every character as it is. Throws `UsageError`
/// for a line feed or a zero byte, which no script carries over well.
std::string quoted(const std::string& text);

/// Each quoted, with blanks between them.
std::string quoted_words(const std::vector<std::string>& words);

}  // namespace lumivar
