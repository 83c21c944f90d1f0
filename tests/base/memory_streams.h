// A source and a sink in memory that keep a record of how they are asked.
#pragma once

#include <base/io.h>

#include <algorithm>
#include <string>
#include <vector>

/// Gives the bytes of a text, at most `most` at a time.
class MemoryInput : public Input {
public:
    explicit MemoryInput(std::string bytes) : bytes_(std::move(bytes)) {}

    s64 curpos() const override { return position_; }
    int read(char* dest, int count) override {
        asked.push_back(count);
        if (fail_next) {
            fail_next = false;
            if (fail_by_throwing) {
                // What a failing source leaves in the block is nobody's business.
                std::fill_n(dest, count, '#');
                throw 5;
            }
            return -3;
        }
        const s64 rest = static_cast<s64>(bytes_.size()) - position_;
        const int got = static_cast<int>(std::clamp<s64>(rest, 0, std::min(count, most)));
        std::copy_n(bytes_.data() + position_, got, dest);
        position_ += got;
        return got;
    }
    s64 seek_from_start(s64 position) override {
        seeks.push_back(position);
        if (fail_next) {
            fail_next = false;
            throw 5;
        }
        return position_ = position;
    }
    s64 seek_from_curpos(s64 offset) override { return seek_from_start(position_ + offset); }

    int most = 1 << 30;
    bool fail_next = false;
    bool fail_by_throwing = false;
    std::vector<int> asked;
    std::vector<s64> seeks;

private:
    std::string bytes_;
    s64 position_ = 0;
};

/// Keeps what it is given. `answers` are returned in their turn in place of taking all: so many
/// bytes are taken, none when negative.
class MemoryOutput : public Output {
public:
    s64 curpos() const override { return position_; }
    int write(const char* bytes, int count) override {
        asked.push_back(count);
        if (fail_next) {
            fail_next = false;
            throw 5;
        }
        int taken = count;
        if (!answers.empty()) {
            taken = answers.front();
            answers.erase(answers.begin());
        }
        if (taken > 0) {
            written.append(bytes, static_cast<std::size_t>(taken));
            position_ += taken;
        }
        return taken;
    }
    s64 seek_from_start(s64 position) override {
        seeks.push_back(position);
        written_at_seek = written;
        return position_ = position;
    }
    s64 seek_from_curpos(s64 offset) override { return seek_from_start(position_ + offset); }

    bool fail_next = false;
    std::vector<int> answers;
    std::vector<int> asked;
    std::vector<s64> seeks;
    std::string written;
    std::string written_at_seek;

private:
    s64 position_ = 0;
};
