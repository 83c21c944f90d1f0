// A star source in memory that watches its user: it counts reads and reports one past the end.
#pragma once

#include <libimgops/star_input.h>

#include <cstring>
#include <stdexcept>

#include "support/catalogue.h"

namespace support {

class MemoryStars : public StarInput {
public:
    MemoryStars(const std::string& magic, const std::vector<CatalogueStar>& stars)
        : MemoryStars(catalogue_bytes(magic, stars)) {}
    /// Whole records of any content.
    explicit MemoryStars(const std::string& bytes) : records_(bytes.size() / sizeof(star)) {
        std::memcpy(records_.data(), bytes.data(), records_.size() * sizeof(star));
        n = static_cast<u32>(records_.size());
    }

    const star* next() override {
        ++reads_;
        if (at_ >= records_.size()) {
            throw std::logic_error("read past the last star");
        }
        return &records_[at_++];
    }
    void reset() override {
        at_ = 0;
        ++resets_;
    }

    /// Number of the record that comes next.
    std::size_t place() const { return at_; }
    /// Calls of `next` and of `reset` so far.
    int reads() const { return reads_; }
    int resets() const { return resets_; }

private:
    std::vector<star> records_;
    std::size_t at_ = 0;
    int reads_ = 0;
    int resets_ = 0;
};

}  // namespace support
