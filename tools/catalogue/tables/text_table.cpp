#include "tables/text_table.h"

#include <utility>

namespace lumivar {
namespace {

/// What VizieR writes before a table's line of names, once for each column.
constexpr std::string_view kColumnComment = "#Column";

}  // namespace

TextTable::TextTable(LineReader& lines, TextShape shape)
    : lines_(lines), shape_(std::move(shape)), splitter_(shape_.separator) {
    std::string_view ignored;
    while (lines_.number() < shape_.lines_before_rows &&
           lines_.next(ignored) != LineReader::Step::End) {
    }
}

std::string TextTable::place() const {
    return lines_.bytes().name() + ":" + std::to_string(lines_.number());
}

Table::Step TextTable::faulty(FaultKind kind, std::string detail) {
    fault_ = {kind, std::move(detail)};
    return Step::Faulty;
}

bool TextTable::begins_new_table() {
    // Asked at a comment: the ones that describe columns mean that a line of names follows.
    return line_.substr(0, kColumnComment.size()) == kColumnComment;
}

Table::Step TextTable::next() {
    for (;;) {
        if (new_table_announced_) {
            // The rest of the comments, the names, units and dashes of the next table.
            TextShape next = find_text_shape(lines_.look_ahead(kRowsForShape), shape_.separator);
            if (!next.has_names) {
                new_table_announced_ = false;
                continue;
            }
            next.epoch = next.epoch ? next.epoch : next_epoch_;
            next_epoch_.reset();
            next.has_comments = true;
            for (std::uint64_t i = 0; i < next.lines_before_rows; ++i) {
                lines_.next(line_);
            }
            shape_ = std::move(next);
            new_table_announced_ = false;
            return Step::NewColumns;
        }
        switch (lines_.next(line_)) {
            case LineReader::Step::End:
                return Step::End;
            case LineReader::Step::TooLong:
                return faulty(FaultKind::LineTooLong, "");
            case LineReader::Step::Line:
                break;
        }
        if (shape_.has_comments && !line_.empty() && line_.front() == '#') {
            new_table_announced_ = begins_new_table();
            if (const std::optional<double> epoch = epoch_of_comment(line_)) {
                next_epoch_ = epoch;
            }
            continue;
        }
        if (!trimmed(line_).empty()) {
            return read_row();
        }
    }
}

Table::Step TextTable::read_row() {
    if (!shape_.ranges.empty()) {
        return Step::Row;
    }
    if (!splitter_.split(line_)) {
        return faulty(FaultKind::QuoteOpen, "");
    }
    if (splitter_.fields().size() != shape_.columns.size()) {
        return faulty(FaultKind::FieldCount,
                      "has " + std::to_string(splitter_.fields().size()) +
                          " fields where the table has " + std::to_string(shape_.columns.size()) +
                          " columns; leave an unknown field empty, but keep its separator");
    }
    return Step::Row;
}

}  // namespace lumivar
