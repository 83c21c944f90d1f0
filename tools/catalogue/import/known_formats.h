// The public catalogues that are recognised by their content.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "import/layout.h"
#include "tables/text_shape.h"

namespace lumivar {

/// What the user may say that a file is.
enum class Format { Auto, Hyg, AtHyg, Hipparcos, Tycho2, Bsc5, Gaia, Csv, Tsv, Fits };

/// "auto", "hyg", ...; nothing for another word.
std::optional<Format> format_of(std::string_view word);
/// All of those words.
std::vector<std::string> format_words();

/// A text whose columns have no names in the file: the catalogue's description says what they hold.
struct KnownText {
    TextShape shape;
    Layout layout;
};

/// Recognises the Hipparcos main catalogue, Tycho-2 and its supplements, and the Bright Star
/// Catalogue by the beginning of the text. Nothing for any other.
std::optional<KnownText> recognise_text(std::string_view head, Format format);

/// The layout of a table with named columns: HYG, AT-HYG, Gaia and this program's own dumps by the
/// names that only they have, every other by names in general use. Throws `Failure` when `format`
/// names a catalogue that this table is not.
Layout recognise_columns(const Table& table, Format format, const std::string& file);

}  // namespace lumivar
