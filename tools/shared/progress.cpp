#include "progress.h"

#include <base/string.h>
#include <osapi/program.h>

#include <cstddef>
#include <cstdio>
#include <utility>

#include "text_columns.h"

namespace lumivar {
namespace {

constexpr std::chrono::milliseconds kBetweenLines{200};
constexpr const char* kWipe = "\r\x1b[K";

}  // namespace

std::string progress_text(std::uint64_t done, std::uint64_t total, double seconds,
                          const std::string& unit) {
    std::string text = std::to_string(done);
    if (total > 0) {
        text += "/" + std::to_string(total);
    }
    text += " " + unit;
    if (done > 0 && seconds > 0.0) {
        const double rate = static_cast<double>(done) / seconds;
        text +=
            String::fmt(rate < 100.0 ? ", %.1f %s/s" : ", %.0f %s/s", rate, unit.c_str()).c_str();
        if (total >= done) {
            const double left = static_cast<double>(total - done) / rate;
            text += String::fmt(", %.0f s left", left).c_str();
        }
    }
    return text;
}

std::string progress_text(std::uint64_t done, std::uint64_t total, double seconds,
                          const std::string& unit, const std::string& what) {
    // A line that goes on in the next one could not be wiped.
    constexpr std::size_t kNarrow = 79;
    const std::string text = progress_text(done, total, seconds, unit);
    return cut(what.empty() ? text : text + ": " + what, kNarrow);
}

ProgressLine::ProgressLine() : shown_(OSAPI::stderr_is_console()), last_(Clock::now()) {}

ProgressLine::~ProgressLine() { wipe(); }

bool ProgressLine::is_due() const { return shown_ && Clock::now() - last_ >= kBetweenLines; }

void ProgressLine::show(const std::string& text) {
    if (shown_) {
        last_ = Clock::now();
        std::fprintf(stderr, "%s%s", kWipe, text.c_str());
        std::fflush(stderr);
        open_ = true;
    }
}

void ProgressLine::wipe() {
    if (open_) {
        std::fputs(kWipe, stderr);
        open_ = false;
    }
}

Progress::Progress(std::uint64_t total, std::string unit)
    : total_(total), unit_(std::move(unit)), start_(Clock::now()) {}

void Progress::update(std::uint64_t done) {
    if (line_.is_due()) {
        show(done);
    }
}

void Progress::update(std::uint64_t done, const std::string& what) {
    if (what == what_) {
        update(done);
        return;
    }
    what_ = what;
    show(done);
}

void Progress::show(std::uint64_t done) {
    const std::chrono::duration<double> elapsed = Clock::now() - start_;
    line_.show(progress_text(done, total_, elapsed.count(), unit_, what_));
}

}  // namespace lumivar
