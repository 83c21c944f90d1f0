// A picture file is whole or not there, whichever piece of memory its library does not get.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "failure.h"
#include "picture_file.h"
#include "picture_reading.h"
#include "support/scratch.h"

// The allocator itself, under the names by which the C library's own calls it.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
}

namespace {

/// How many requests are granted before one is refused; below 0: all.
long granted = -1;
bool refused = false;

bool is_refused() {
    if (granted < 0 || granted-- > 0) {
        return false;
    }
    refused = true;
    return true;
}

}  // namespace

extern "C" {
void* malloc(std::size_t size) { return is_refused() ? nullptr : __libc_malloc(size); }
void* calloc(std::size_t count, std::size_t size) {
    return is_refused() ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) {
    return is_refused() ? nullptr : __libc_realloc(block, size);
}
}

namespace {

constexpr int kCrash = 1000;  ///< and the signal

enum Outcome { kWhole, kRefused, kDamaged, kWithoutAnyRefusal };

struct Format {
    const char* name;
    lumivar::PictureContent content;
};
std::ostream& operator<<(std::ostream& out, const Format& format) { return out << format.name; }

class PictureMemory : public testing::TestWithParam<Format> {
protected:
    PictureMemory() {
        unsigned int state = 1;
        for (float& sample : pixels_) {
            state = state * 1664525U + 1013904223U;
            sample = static_cast<float>(state >> 8U) * 0x1p-24F;
        }
        info_.title = "Star field";
        info_.details = {{"fingerprint", "0123"}, {"control:Star Brightness", "5"}};
        lumivar::AtomicFile file(whole_path_);
        write(file);
        file.publish();
        whole_ = read_file(whole_path_);
    }

    void write(lumivar::AtomicFile& file) const {
        lumivar::write_picture(file, file.path(), {pixels_.data(), 16 * kSide, kSide, kSide}, info_,
                               GetParam().content);
    }
    /// In a process of its own: a crash there is an outcome too. `action` throws `Failure` or
    /// `std::bad_alloc` where it has not enough memory.
    template <class Action, class Judge>
    int ends_after(long count, Action action, Judge judge) const {
        const pid_t child = fork();
        if (child == 0) {
            granted = count;
            bool failed = false;
            try {
                action();
            } catch (const lumivar::Failure&) {
                failed = true;
            } catch (const std::bad_alloc&) {
                failed = true;
            } catch (...) {
                _exit(kDamaged);
            }
            granted = -1;
            _exit(refused ? judge(failed) : kWithoutAnyRefusal);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : kCrash + WTERMSIG(status);
    }

    /// The library for TIFF follows a null pointer at some refusals: no file appears then either.
    static bool is_fine(int outcome) {
        const bool may_crash = GetParam().name == std::string("tif");
        return outcome == kWhole || outcome == kRefused ||
               (may_crash && outcome == kCrash + SIGSEGV);
    }

    static constexpr int kSide = 48;
    ScratchFolder folder_;
    std::string whole_path_ = folder_ / (std::string("whole.") + GetParam().name);
    std::string path_ = folder_ / (std::string("a.") + GetParam().name);
    std::vector<float> pixels_ = std::vector<float>(4UL * kSide * kSide);
    lumivar::PictureInfo info_;
    std::string whole_;
};

}  // namespace

TEST_P(PictureMemory, WritesAWholeFileOrNone) {
    std::optional<lumivar::AtomicFile> file;
    const auto judge = [&](bool failed) {
        if (failed) {
            return kRefused;
        }
        file->publish();
        return read_file(path_) == whole_ ? kWhole : kDamaged;
    };
    int refusals = 0;
    for (long count = 0;; ++count) {
        file.emplace(path_);
        const int outcome = ends_after(
            count, [&] { write(*file); }, judge);
        file.reset();
        if (outcome == kWithoutAnyRefusal) {
            break;
        }
        ASSERT_TRUE(is_fine(outcome)) << "request " << count << " refused: outcome " << outcome;
        refusals += outcome == kRefused ? 1 : 0;
        unlink(path_.c_str());
    }
    EXPECT_GT(refusals, 10);
}

TEST_P(PictureMemory, ReadsDetailsOrFails) {
    lumivar::PictureDetails details;
    const auto judge = [&details](bool failed) {
        // What it has no memory for it may pass over: the frame is rendered anew then.
        const bool is_right = details.count("fingerprint") == 0 || details["fingerprint"] == "0123";
        return failed ? kRefused : is_right ? kWhole : kDamaged;
    };
    int refusals = 0;
    for (long count = 0;; ++count) {
        const int outcome = ends_after(
            count, [&] { details = lumivar::read_picture_details(whole_path_); }, judge);
        if (outcome == kWithoutAnyRefusal) {
            break;
        }
        ASSERT_TRUE(is_fine(outcome)) << "request " << count << " refused: outcome " << outcome;
        refusals += outcome == kRefused ? 1 : 0;
    }
    EXPECT_GT(refusals, 5);
}

INSTANTIATE_TEST_SUITE_P(Formats, PictureMemory,
                         testing::Values(Format{"exr", {}}, Format{"png", {}}, Format{"jpg", {}},
                                         Format{"tif", {}}),
                         [](const auto& tested) { return std::string(tested.param.name); });
