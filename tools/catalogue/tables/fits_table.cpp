#include "tables/fits_table.h"

#include <fitsio.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <limits>
#include <system_error>
#include <utility>

#include "failure.h"
#include "tables/fields.h"
#include "tables/fits_headers.h"

namespace lumivar {
namespace {

/// Rows in memory at a time. The library's own advice follows its buffers, not ours.
constexpr long long kBlockRows = 4096;
/// Texts of a place or of a flag are short; a longer column is not for us.
constexpr long kLongestText = 256;

std::string reason_of(int status) {
    std::array<char, FLEN_STATUS> text{};
    fits_get_errstatus(status, text.data());
    // What the library has noted on the way would else come up with the next error.
    fits_clear_errmsg();
    return text.data();
}

struct ChosenColumn {
    ColumnIndex column = 0;
    bool is_text = false;
    std::vector<double> numbers;  ///< of the rows in memory; not a number where there is none
    std::vector<char> characters;
    std::vector<char*> texts;
};

}  // namespace

class FitsTable::File {
public:
    File(const std::string& path, std::string name) : name_(std::move(name)) {
        std::error_code error;
        const std::uintmax_t size = std::filesystem::file_size(path, error);
        size_ = error ? 0 : size;
        check_fits_headers(path, name_);
        int status = 0;
        // By the plain name: brackets and exclamation marks in it mean nothing.
        fits_open_diskfile(&file_, path.c_str(), READONLY, &status);
        check(status);
        try {
            find_table();
            read_columns();
        } catch (...) {
            close();
            throw;
        }
    }
    ~File() { close(); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    void choose(const std::vector<ColumnIndex>& columns) {
        for (const ColumnIndex column : columns) {
            if (!usable_[column]) {
                throw Failure(name_ + ": column " + std::to_string(column + 1) +
                              " cannot be used: it holds several values in each row, or a text of "
                              "more than 256 characters");
            }
            ChosenColumn chosen;
            chosen.column = column;
            chosen.is_text = types_[column] == TSTRING;
            if (chosen.is_text) {
                const auto width = static_cast<std::size_t>(widths_[column]) + 1;
                chosen.characters.resize(width * kBlockRows);
                for (std::size_t row = 0; row < kBlockRows; ++row) {
                    chosen.texts.push_back(chosen.characters.data() + row * width);
                }
            } else {
                chosen.numbers.resize(kBlockRows);
            }
            place_of_[column] = chosen_.size();
            chosen_.push_back(std::move(chosen));
        }
    }

    bool next() {
        if (row_ + 1 == first_ + loaded_) {
            load();
        }
        if (loaded_ == 0) {
            return false;
        }
        ++row_;
        return true;
    }

    const ChosenColumn& of(ColumnIndex column) const { return chosen_[place_of_[column]]; }
    std::size_t row_in_block() const { return static_cast<std::size_t>(row_ - first_); }
    std::string place() const { return name_ + ", row " + std::to_string(row_ + 1); }
    const std::vector<TableColumn>& columns() const { return columns_; }
    std::uint64_t size() const { return size_; }
    std::uint64_t done() const {
        return rows_ <= 0 ? 0
                          : static_cast<std::uint64_t>(static_cast<double>(size_) *
                                                       static_cast<double>(row_ + 1) /
                                                       static_cast<double>(rows_));
    }
    const RowFault& fault() const { return fault_; }

private:
    void close() {
        int ignored = 0;
        if (file_ != nullptr) {
            fits_close_file(std::exchange(file_, nullptr), &ignored);
        }
    }
    void check(int status) const {
        if (status != 0) {
            throw Failure(name_ + ": is no FITS file that can be read: " + reason_of(status));
        }
    }

    void find_table() {
        for (int unit = 1;; ++unit) {
            int status = 0;
            int kind = 0;
            fits_movabs_hdu(file_, unit, &kind, &status);
            if (status == END_OF_FILE) {
                fits_clear_errmsg();
                throw Failure(name_ + ": holds no table: it may be an image");
            }
            check(status);
            if (kind == BINARY_TBL || kind == ASCII_TBL) {
                return;
            }
        }
    }

    void read_columns() {
        int status = 0;
        int count = 0;
        LONGLONG rows = 0;
        fits_get_num_cols(file_, &count, &status);
        fits_get_num_rowsll(file_, &rows, &status);
        check(status);
        rows_ = rows;
        for (int number = 1; number <= count; ++number) {
            std::array<char, FLEN_VALUE> name{};
            std::array<char, FLEN_VALUE> unit{};
            read_key("TTYPE", number, name.data());
            read_key("TUNIT", number, unit.data());
            int type = 0;
            LONGLONG repeat = 0;
            LONGLONG width = 0;
            fits_get_coltypell(file_, number, &type, &repeat, &width, &status);
            check(status);
            // A column of several values in each row is none that we could use: it has no name.
            const bool usable = type == TSTRING ? repeat > 0 && repeat <= kLongestText
                                                : repeat == 1 && type > 0 && type != TBIT;
            columns_.push_back({usable ? std::string(trimmed(name.data())) : std::string(),
                                std::string(trimmed(unit.data()))});
            types_.push_back(type);
            usable_.push_back(usable);
            widths_.push_back(usable && type == TSTRING ? static_cast<long>(repeat) : 0);
        }
        place_of_.resize(columns_.size());
    }

    void read_key(const char* stem, int number, char* value) const {
        std::array<char, FLEN_KEYWORD> key{};
        int status = 0;
        fits_make_keyn(stem, number, key.data(), &status);
        fits_read_key(file_, TSTRING, key.data(), value, nullptr, &status);
        if (status != 0) {
            value[0] = '\0';  // columns need not have a name or unit
            fits_clear_errmsg();
        }
    }

    void load() {
        first_ = row_ + 1;
        loaded_ = std::min<long long>(kBlockRows, rows_ - first_);
        loaded_ = std::max<long long>(loaded_, 0);
        if (loaded_ == 0) {
            return;
        }
        for (ChosenColumn& chosen : chosen_) {
            int status = 0;
            int any_missing = 0;
            const int number = static_cast<int>(chosen.column) + 1;
            if (chosen.is_text) {
                std::array<char, 1> missing = {'\0'};
                fits_read_col(file_, TSTRING, number, first_ + 1, 1, loaded_, missing.data(),
                              chosen.texts.data(), &any_missing, &status);
            } else {
                double missing = std::numeric_limits<double>::quiet_NaN();
                fits_read_col(file_, TDOUBLE, number, first_ + 1, 1, loaded_, &missing,
                              chosen.numbers.data(), &any_missing, &status);
            }
            if (status != 0) {
                throw Failure(name_ + ", rows from " + std::to_string(first_ + 1) +
                              " on: cannot be read: " + reason_of(status));
            }
        }
    }

    std::string name_;
    fitsfile* file_ = nullptr;
    std::uint64_t size_ = 0;
    long long rows_ = 0;
    long long row_ = -1;   ///< the one read last, from 0
    long long first_ = 0;  ///< of those in memory
    long long loaded_ = 0;
    std::vector<TableColumn> columns_;
    std::vector<int> types_;
    std::vector<bool> usable_;
    std::vector<long> widths_;
    std::vector<std::size_t> place_of_;
    std::vector<ChosenColumn> chosen_;
    RowFault fault_;
};

FitsTable::FitsTable(const std::string& path, std::string name)
    : file_(std::make_unique<File>(path, std::move(name))) {}
FitsTable::~FitsTable() = default;

void FitsTable::choose(const std::vector<ColumnIndex>& columns) { file_->choose(columns); }
const std::vector<TableColumn>& FitsTable::columns() const { return file_->columns(); }
Table::Step FitsTable::next() { return file_->next() ? Step::Row : Step::End; }

FieldNumber FitsTable::number(ColumnIndex column) const {
    const ChosenColumn& chosen = file_->of(column);
    if (chosen.is_text) {
        return parse_number(text(column));
    }
    const double value = chosen.numbers[file_->row_in_block()];
    return std::isfinite(value) ? FieldNumber{FieldState::Given, value}
           : std::isnan(value)  ? FieldNumber{FieldState::Missing, 0.0}
                                : FieldNumber{FieldState::Malformed, 0.0};
}

std::string_view FitsTable::text(ColumnIndex column) const {
    const ChosenColumn& chosen = file_->of(column);
    return chosen.is_text ? trimmed(chosen.texts[file_->row_in_block()]) : std::string_view();
}

std::string FitsTable::place() const { return file_->place(); }
const RowFault& FitsTable::fault() const { return file_->fault(); }
std::uint64_t FitsTable::bytes_read() const { return file_->done(); }
std::uint64_t FitsTable::bytes_in_all() const { return file_->size(); }

}  // namespace lumivar
