#include "database/database_writer.h"

#include <span>

#include "failure.h"

namespace lumivar {
namespace {

constexpr std::size_t kRecordsInABlock = 8192;

}  // namespace

DatabaseWriter::DatabaseWriter(const std::filesystem::path& path, int version)
    : shown_(path.string()), file_(path), block_(kRecordsInABlock) {
    block_[used_++] = encode_header(version);
}

void DatabaseWriter::add(const CatalogueStar& star, unsigned /*input*/) {
    next_record() = encode_star(star);
}

void DatabaseWriter::add_record(const star& record) {
    star& added = next_record();
    added = record;
    added.reserved = 0;
}

star& DatabaseWriter::next_record() {
    if (stars_ == kMostStars) {
        throw Failure("cannot write " + shown_ + ": more stars than a database can hold (" +
                      std::to_string(kMostStars) + ")");
    }
    if (used_ == block_.size()) {
        flush();
    }
    ++stars_;
    return block_[used_++];
}

void DatabaseWriter::flush() {
    file_.write(std::as_bytes(std::span(block_).first(used_)));
    used_ = 0;
}

void DatabaseWriter::publish() {
    flush();
    file_.publish();
}

}  // namespace lumivar
