#include "tables/fits_headers.h"

#include <base/exceptions.h>
#include <osapi/files.h>
#include <osapi/whole_file.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string_view>
#include <system_error>

#include "failure.h"
#include "tables/fields.h"

namespace lumivar {
namespace {

constexpr std::size_t kBlock = 2880;
constexpr std::size_t kCard = 80;
constexpr std::size_t kKeyword = 8;
/// Numbers take 30 characters at most, complex ones twice that; texts stand in quotes.
constexpr std::size_t kLongestNumber = 64;
/// A header of so many cards is none.
constexpr unsigned long kMostCards = 100000;
constexpr std::int64_t kMostColumns = 999;
constexpr std::string_view kFormat = "TFORM";
/// Larger than any file; sums and products of two such numbers do not overflow.
constexpr std::uint64_t kHuge = std::uint64_t{1} << 31U << 31U;

bool is_printable(std::string_view card) {
    return std::all_of(card.begin(), card.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

/// Of a card with a value: what stands behind "KEYWORD = ".
bool is_value(std::string_view field) {
    const std::string_view value = trimmed(field);
    if (value.empty() || value.front() == '/') {
        return true;
    }
    if (value.front() == '\'') {
        return value.find('\'', 1) != std::string_view::npos;
    }
    return trimmed(value.substr(0, value.find('/'))).size() <= kLongestNumber;
}

/// The whole number of a card; nothing where it is none.
std::optional<std::int64_t> number_of(std::string_view field) {
    const std::string_view value = trimmed(field.substr(0, field.find('/')));
    std::int64_t number = 0;
    const auto result = std::from_chars(value.data(), value.data() + value.size(), number);
    return result.ec == std::errc() && result.ptr == value.data() + value.size()
               ? std::optional(number)
               : std::nullopt;
}

std::uint64_t product(std::uint64_t a, std::uint64_t b) {
    return b != 0 && a > kHuge / b ? kHuge : a * b;
}

class HeaderCheck {
public:
    HeaderCheck(const std::string& path, const std::string& name)
        : name_(name), file_(path.c_str(), OSAPI::kRead), size_(file_.getsize()) {}

    /// The header at `at`; `at` becomes the place behind its data. Returns whether it is a table's.
    bool read(std::uint64_t& at) {
        at_ = at;
        number_ = 0;
        once_.clear();
        const std::string kind(next_card());
        if (kind.substr(0, kKeyword) != (at == 0 ? "SIMPLE  " : "XTENSION")) {
            fail("it is not the one that a header begins with");
        }
        const bool is_table = at != 0 && kind.find("TABLE") != std::string::npos;
        const std::uint64_t data = sizes(is_table);
        const std::int64_t columns = is_table ? required("TFIELDS", 0, kMostColumns) : 0;
        std::int64_t formats = 0;
        for (;;) {
            const std::string_view card = next_card();
            const std::string keyword(trimmed(card.substr(0, kKeyword)));
            if (keyword == "END") {
                break;
            }
            if (once_.count(keyword) != 0) {
                fail("the same stands before");
            }
            if (keyword.compare(0, kFormat.size(), kFormat) == 0) {
                once_.insert(keyword);
                ++formats;
            }
        }
        if (formats < columns) {
            fail("the header says of fewer columns what they hold than there are");
        }
        at = (at_ + kBlock - 1) / kBlock * kBlock + data;
        return is_table;
    }
    bool is_at_end(std::uint64_t at) const { return at >= size_; }

private:
    /// The cards that a header must begin with, in their order. Gives the bytes of its data,
    /// rounded up to whole blocks.
    std::uint64_t sizes(bool is_table) {
        const std::int64_t bits = required("BITPIX", is_table ? 8 : -64, is_table ? 8 : 64);
        const std::int64_t axes = required("NAXIS", is_table ? 2 : 0, is_table ? 2 : 999);
        std::uint64_t values = axes == 0 ? 0 : 1;
        for (std::int64_t axis = 1; axis <= axes; ++axis) {
            const std::int64_t length =
                required("NAXIS" + std::to_string(axis), 0, static_cast<std::int64_t>(kHuge));
            values = product(values, static_cast<std::uint64_t>(length));
        }
        if (is_table) {
            values +=
                static_cast<std::uint64_t>(required("PCOUNT", 0, static_cast<std::int64_t>(kHuge)));
            required("GCOUNT", 1, 1);
        }
        const std::uint64_t bytes = product(
            std::min(values, kHuge), static_cast<std::uint64_t>(bits < 0 ? -bits : bits) / 8);
        return (bytes + kBlock - 1) / kBlock * kBlock;
    }
    /// The next card, which must have that keyword and a whole number in that range.
    std::int64_t required(const std::string& keyword, std::int64_t low, std::int64_t high) {
        const std::string_view card = next_card();
        const auto number = trimmed(card.substr(0, kKeyword)) == keyword
                                ? number_of(card.substr(kKeyword + 2))
                                : std::nullopt;
        if (!number || *number < low || *number > high) {
            fail("it is no " + keyword + " as it must stand here");
        }
        once_.insert(keyword);
        return *number;
    }
    std::string_view next_card() {
        ++number_;
        if (size_ < kCard || at_ > size_ - kCard || number_ > kMostCards) {
            fail("the header has no END");
        }
        OSAPI::pread(file_.fd(), card_.data(), card_.size(), at_);
        at_ += kCard;
        const std::string_view card(card_.data(), card_.size());
        const std::string_view keyword = trimmed(card.substr(0, kKeyword));
        const bool is_remark = keyword.empty() || keyword == "COMMENT" || keyword == "HISTORY";
        if (!is_remark && !is_printable(card)) {
            fail("it has characters that no header has");
        }
        if (card.substr(kKeyword, 2) == "= " && !is_value(card.substr(kKeyword + 2))) {
            fail("its value has no end, or is too long for one without quotes");
        }
        return card;
    }
    [[noreturn]] void fail(const std::string& fault) const {
        throw Failure(name_ + ": is no FITS file that can be read: card " +
                      std::to_string(number_) + " of a header: " + fault);
    }

    const std::string& name_;
    OSAPI::DiskFile file_;
    std::uint64_t size_;
    std::uint64_t at_ = 0;        ///< of the next card
    unsigned long number_ = 0;    ///< of the last one in its header, from 1
    std::set<std::string> once_;  ///< keywords that may not come again
    std::array<char, kCard> card_{};
};

}  // namespace

void check_fits_headers(const std::string& path, const std::string& name) {
    try {
        HeaderCheck check(path, name);
        std::uint64_t at = 0;
        while (!check.read(at) && !check.is_at_end(at)) {
        }
    } catch (const StrXception& failure) {
        throw Failure(OSAPI::cannot_read(name, failure));
    }
}

}  // namespace lumivar
