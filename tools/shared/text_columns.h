// Text in columns of a terminal: a character each, whatever bytes it takes.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace lumivar {

/// Characters of a UTF-8 text. Wide and combining ones count like any other.
std::size_t characters(const std::string& text);

/// Its first characters, `count` at most.
std::string cut(const std::string& text, std::size_t count);

/// Broken at spaces into lines of at most `width` characters, 1 at least; a longer word is cut
/// between two of its characters. One line at least.
std::vector<std::string> wrapped(const std::string& text, std::size_t width);

/// With spaces behind it up to `width` characters.
std::string padded(const std::string& text, std::size_t width);

}  // namespace lumivar
