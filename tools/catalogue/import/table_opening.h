// From an input file to a table of stars whose columns are known.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "import/import_options.h"
#include "import/layout.h"
#include "tables/byte_stream.h"
#include "tables/line_reader.h"
#include "tables/table.h"
#include "tables/text_table.h"
#include "working_folder.h"

namespace lumivar {

/// The make-up of the text read before: a part of a catalogue may come without its line of names.
struct PreviousText {
    TextShape shape;
    Layout layout;
};

/// An input, opened and recognised.
class OpenedTable {
public:
    /// Opens `input` ("-" is standard input) and finds out what it is. `scratch` is a folder for a
    /// FITS file that cannot be read in place, from a pipe or compressed. `previous` is used for a
    /// text without a line of names that has as many columns, and becomes this text.
    ///
    /// Throws `Failure`: the file cannot be read, is something else than a table, or its columns
    /// cannot be placed; then its columns are listed.
    OpenedTable(const std::string& input, const ImportOptions& options,
                const std::filesystem::path& scratch, std::optional<PreviousText>& previous);

    Table& table() { return *table_; }
    const Layout& layout() const { return layout_; }
    /// One line for the user: the file, what it was taken for, its columns and units.
    std::string announcement() const;
    /// Finds the layout again, after the table has said that other columns begin. False when they
    /// are of no stars: then their rows are to be passed over.
    bool next_columns();
    /// Whether it is a part without a line of names, read like the text before.
    bool continues_previous() const { return continues_previous_; }

private:
    void open_fits(LineReader& lines, const std::filesystem::path& scratch);
    void open_text(LineReader& lines, std::optional<PreviousText>& previous);
    void choose_layout();

    std::string file_;
    const ImportOptions& options_;
    std::unique_ptr<ByteStream> bytes_;
    std::unique_ptr<LineReader> lines_;
    std::unique_ptr<WorkingFolder> folder_;
    std::unique_ptr<Table> table_;
    const TextTable* text_ = nullptr;  ///< the table, where it is a text
    Layout layout_;
    std::string note_;
    bool continues_previous_ = false;
};

}  // namespace lumivar
