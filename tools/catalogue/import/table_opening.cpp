#include "import/table_opening.h"

#include <base/string.h>
#include <osapi/files.h>

#include <algorithm>
#include <utility>

#include "failure.h"
#include "import/column_names.h"
#include "import/known_formats.h"
#include "import/other_files.h"
#include "tables/fits_table.h"
#include "tables/text_table.h"

namespace lumivar {
namespace {

constexpr std::size_t kCopyBytes = std::size_t{1} << 17;

std::optional<char> separator_of(Format format) {
    return format == Format::Csv   ? std::optional(',')
           : format == Format::Tsv ? std::optional('\t')
                                   : std::nullopt;
}

bool is_headless(Format format) {
    return format == Format::Hipparcos || format == Format::Tycho2 || format == Format::Bsc5;
}

const char* separator_text(char separator) {
    switch (separator) {
        case ',':
            return "comma-separated table";
        case '\t':
            return "tab-separated table";
        case ';':
            return "table separated by semicolons";
        case '|':
            return "table separated by bars";
        default:
            return "table separated by blanks";
    }
}

std::vector<ColumnIndex> used_columns(const Layout& layout) {
    std::vector<ColumnIndex> columns;
    for (const std::optional<ColumnUse>& use : layout.uses) {
        if (use && std::find(columns.begin(), columns.end(), use->column) == columns.end()) {
            columns.push_back(use->column);
        }
    }
    return columns;
}

}  // namespace

OpenedTable::OpenedTable(const std::string& input, const ImportOptions& options,
                         const std::filesystem::path& scratch,
                         std::optional<PreviousText>& previous)
    : file_(input == "-" ? "standard input" : input),
      options_(options),
      bytes_(std::make_unique<ByteStream>(input)),
      lines_(std::make_unique<LineReader>(*bytes_)) {
    const std::string_view head = lines_->look_ahead(kRowsForShape);
    if (head.empty()) {
        throw Failure(file_ +
                      ": is empty; it must begin with a line that names the columns, such as "
                      "ra_deg,dec_deg,vmag,bv,distance_pc");
    }
    refuse_other_files(head, file_);
    if (begins_fits(head)) {
        if (separator_of(options_.format) || is_headless(options_.format)) {
            throw Failure(file_ + ": is a FITS file; leave --format away to have it recognised");
        }
        open_fits(*lines_, scratch);
    } else if (options_.format == Format::Fits) {
        throw Failure(file_ +
                      ": is no FITS file: it does not begin with SIMPLE; leave --format "
                      "away to have it recognised");
    } else {
        open_text(*lines_, previous);
    }
    const char* compression = bytes_->compression();
    if (compression[0] != '\0') {
        note_ += std::string(" (") + compression + ")";
    }
}

void OpenedTable::open_fits(LineReader& lines, const std::filesystem::path& scratch) {
    std::string path = file_;
    if (!bytes_->is_plain_file()) {
        // The library goes to and fro in the file, which a stream does not allow.
        folder_ = std::make_unique<WorkingFolder>(scratch, "cannot unpack " + file_);
        path = folder_->file("unpacked.fits").string();
        const OSAPI::DiskFile copy(path.c_str(), OSAPI::kWrite);
        std::vector<char> block(kCopyBytes);
        try {
            while (const std::size_t count = lines.read(block.data(), block.size())) {
                OSAPI::write(copy.fd(), block.data(), count);
            }
        } catch (const StrXception& failure) {
            throw system_failure("cannot unpack " + file_, failure);
        }
    }
    auto fits = std::make_unique<FitsTable>(path, file_);
    FitsTable& chosen = *fits;
    table_ = std::move(fits);
    choose_layout();
    if (layout_.title.empty()) {
        layout_.title = "FITS table";
    }
    chosen.choose(used_columns(layout_));
}

void OpenedTable::open_text(LineReader& lines, std::optional<PreviousText>& previous) {
    const std::string_view head = lines.look_ahead(kRowsForShape);
    if (options_.columns.empty()) {
        if (std::optional<KnownText> known = recognise_text(head, options_.format)) {
            layout_ = std::move(known->layout);
            table_ = std::make_unique<TextTable>(lines, std::move(known->shape));
            return;
        }
        if (is_headless(options_.format)) {
            throw Failure(file_ +
                          ": is not laid out as that catalogue is; leave --format away to "
                          "have it recognised");
        }
    }
    TextShape shape = find_text_shape(head, separator_of(options_.format));
    if (shape.quote_open) {
        throw Failure(file_ + ":" + std::to_string(shape.lines_before_rows + 1) +
                      ": a double quote in the line of names is not closed, or text follows it");
    }
    if (shape.columns.empty()) {
        throw Failure(file_ + ": holds no line of a table" +
                      (head.size() > LineReader::kLongestLine
                           ? " in its first megabyte, which is all comments or one line"
                           : ""));
    }
    if (!shape.has_names && options_.columns.empty() && previous &&
        previous->shape.columns.size() == shape.columns.size() &&
        previous->shape.separator == shape.separator) {
        shape.columns = previous->shape.columns;
        shape.has_names = true;
        layout_ = previous->layout;
        note_ = ", no line of names: columns as in the file before";
        continues_previous_ = true;
        table_ = std::make_unique<TextTable>(lines, std::move(shape));
        return;
    }
    const char* kind = separator_text(shape.separator);
    auto text = std::make_unique<TextTable>(lines, std::move(shape));
    text_ = text.get();
    table_ = std::move(text);
    choose_layout();
    if (layout_.title.empty()) {
        layout_.title = kind;
    }
    if (table_->has_names()) {
        previous = PreviousText{text_->shape(), layout_};
    }
}

void OpenedTable::choose_layout() {
    if (options_.columns.empty()) {
        layout_ = recognise_columns(*table_, options_.format, file_);
    } else {
        try {
            layout_ = recognise_columns(*table_, options_.format, file_);
        } catch (const Failure&) {
            layout_ = {};  // the user knows better which of the columns count
        }
        choose_columns(layout_, *table_, options_.columns, file_);
    }
    // The place columns that the table's author measured have the epoch that its comments tell;
    // those that the archive computed are of the year in their name.
    const std::optional<ColumnUse>& ra = layout_.use(Quantity::RightAscension);
    if (ra && text_ != nullptr && text_->shape().epoch &&
        table_->columns()[ra->column].name.substr(0, 1) != "_") {
        layout_.epoch = *text_->shape().epoch;
    }
    if (ra && table_->columns()[ra->column].unit.find("d:m:s") != std::string::npos) {
        layout_.sexagesimal_in_degrees = true;
    }
    if (options_.angle_unit) {
        layout_.degrees_by_habit = false;
        layout_.sexagesimal_in_degrees = *options_.angle_unit == Unit::Degrees;
        for (const Quantity quantity : {Quantity::RightAscension, Quantity::Declination}) {
            if (const std::optional<ColumnUse>& use = layout_.use(quantity)) {
                const bool hours_of_declination =
                    *options_.angle_unit == Unit::Hours && quantity == Quantity::Declination;
                layout_.set(quantity, use->column,
                            hours_of_declination ? Unit::Degrees : *options_.angle_unit);
            }
        }
    }
    const std::string missing = missing_quantities(layout_);
    if (!missing.empty()) {
        throw Failure(file_ + ": cannot tell which columns hold: " + missing + "; it has " +
                      column_list(*table_) +
                      "; name them with --columns ra=COLUMN,dec=COLUMN,mag=COLUMN,... by name or "
                      "by number" +
                      (table_->has_names() ? ""
                                           : "; a part without a line of names goes behind the "
                                             "part that has one"));
    }
}

bool OpenedTable::next_columns() {
    layout_ = {};
    try {
        choose_layout();
        if (layout_.title.empty()) {
            layout_.title = "another table";
        }
        return true;
    } catch (const Failure&) {
        // References, notes and the like stand behind the stars in some answers of archives.
        return false;
    }
}

std::string OpenedTable::announcement() const {
    std::string text = file_ + ": " + describe_layout(layout_, *table_) + note_;
    if (layout_.has(Quantity::Luminance)) {
        return text;  // a database does not say of which year its places are
    }
    const double epoch = options_.catalogue_epoch.value_or(layout_.epoch);
    const bool in_rows = layout_.has(Quantity::Epoch) && !options_.catalogue_epoch;
    text += in_rows ? "; places of the year in the row"
                    : String::fmt("; places of J%.6g", epoch).c_str();
    if (!in_rows && epoch == options_.epoch) {
        return text;
    }
    const bool can_move =
        layout_.has(Quantity::ProperMotionRa) && layout_.has(Quantity::ProperMotionDec);
    text += can_move ? String::fmt(", moved to J%.6g", options_.epoch).c_str()
                     : ", not moved for want of proper motions";
    return text;
}

}  // namespace lumivar
