#include "database/database_reader.h"

#include <osapi/whole_file.h>

#include <algorithm>
#include <cstddef>

#include "database/star_file.h"
#include "failure.h"

namespace lumivar {
namespace {

constexpr std::size_t kRecordsReadAtOnce = 8192;

/// Calls `use` with its failures as those of reading the file `path`.
template <class Use>
auto while_reading(const std::string& path, Use use) {
    try {
        return use();
    } catch (const StrXception& failure) {
        throw Failure(OSAPI::cannot_read(path, failure));
    }
}

}  // namespace

DatabaseReader::DatabaseReader(const std::filesystem::path& path)
    : path_(path.string()), version_(star_file_version(path)) {
    while_reading(path_, [this] {
        file_.init(OSAPI::open(path_.c_str(), OSAPI::kRead));
        bytes_ = OSAPI::getsize(file_.fd());
        OSAPI::seek_from_start(file_.fd(), sizeof(star));
    });
    left_ = stars();
}

std::span<const star> DatabaseReader::next_block() {
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(left_, kRecordsReadAtOnce));
    block_.resize(count);
    const std::size_t wanted = count * sizeof(star);
    const auto got = while_reading(path_, [&] {
        return OSAPI::read_up_to(file_.fd(), reinterpret_cast<char*>(block_.data()), wanted);
    });
    if (static_cast<std::size_t>(got) < wanted) {
        throw Failure("cannot read " + path_ + ": it has become shorter meanwhile");
    }
    left_ -= count;
    return block_;
}

}  // namespace lumivar
