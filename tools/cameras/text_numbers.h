// Lines and numbers of text files.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumivar {

/// The whole text as a finite number; nothing if it is none. A sign may stand before it.
std::optional<double> finite_number(std::string_view text);

/// The shortest text that reads back as the same number; 0 has no sign.
std::string number_text(double number);

struct TextLine {
    std::size_t number = 0;  ///< from 1
    std::string_view text;
};

/// The lines of `text` that say something: without blank ones and those that begin with "#".
/// White space at both ends, a carriage return and a mark of UTF-8 at the start are taken off.
std::vector<TextLine> content_lines(std::string_view text);

/// Without white space at both ends.
std::string_view trimmed(std::string_view text);

}  // namespace lumivar
