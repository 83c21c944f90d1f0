#include "database/external_sort.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>
#include <system_error>
#include <utility>

namespace lumivar {
namespace {

constexpr std::size_t kKeyBytes = sizeof(std::uint64_t);
constexpr std::size_t kWriteBytes = std::size_t{1} << 18U;

std::uint64_t key_of(const std::byte* entry) {
    std::uint64_t key;
    std::memcpy(&key, entry, sizeof key);
    return key;
}

/// Collects entries and writes them in large pieces.
class RunWriter {
public:
    explicit RunWriter(SpillFile& file) : file_(file) { buffer_.reserve(kWriteBytes); }
    void add(std::span<const std::byte> entry) {
        if (buffer_.size() + entry.size() > kWriteBytes) {
            flush();
        }
        buffer_.insert(buffer_.end(), entry.begin(), entry.end());
    }
    void flush() {
        file_.append(buffer_);
        buffer_.clear();
    }

private:
    SpillFile& file_;
    std::vector<std::byte> buffer_;
};

}  // namespace

/// Reads some runs of a file side by side, always the one with the smallest key first.
class RecordSorter::Merge {
public:
    Merge(SpillFile& file, std::span<const Run> runs, std::size_t entry_bytes, std::size_t memory)
        : file_(file), entry_bytes_(entry_bytes) {
        const std::size_t entries_each =
            std::max<std::size_t>(1, memory / (runs.size() * entry_bytes));
        for (const Run& run : runs) {
            cursors_.push_back({run, {}, 0});
            cursors_.back().buffer.resize(
                entry_bytes *
                static_cast<std::size_t>(std::min<std::uint64_t>(entries_each, run.entries)));
            cursors_.back().at = cursors_.back().buffer.size();
        }
        for (std::size_t run = 0; run < cursors_.size(); ++run) {
            if (advance(run)) {
                heap_.push_back({key_of(current(run)), run});
            }
        }
        std::make_heap(heap_.begin(), heap_.end(), is_later);
    }

    /// The next entry, key and record; null at the end.
    const std::byte* next() {
        if (taken_) {
            // The first run's next entry takes the place of the one that was handed out.
            const std::size_t run = heap_.front().run;
            if (advance(run)) {
                heap_.front().key = key_of(current(run));
                sink_first();
            } else {
                std::pop_heap(heap_.begin(), heap_.end(), is_later);
                heap_.pop_back();
            }
        }
        taken_ = !heap_.empty();
        return taken_ ? current(heap_.front().run) : nullptr;
    }

private:
    struct Cursor {
        Run rest;  ///< what has not been read yet
        std::vector<std::byte> buffer;
        std::size_t at;  ///< the current entry's place in the buffer
    };
    struct Head {
        std::uint64_t key;
        std::size_t run;
    };
    /// Among equal keys the earlier run comes first, as its records were added first.
    static bool is_later(const Head& a, const Head& b) {
        return a.key != b.key ? a.key > b.key : a.run > b.run;
    }

    const std::byte* current(std::size_t run) const {
        return cursors_[run].buffer.data() + cursors_[run].at;
    }

    bool advance(std::size_t run) {
        Cursor& cursor = cursors_[run];
        if (cursor.at < cursor.buffer.size()) {
            cursor.at += entry_bytes_;
        }
        if (cursor.at == cursor.buffer.size()) {
            const std::uint64_t left = cursor.rest.entries * entry_bytes_;
            if (left == 0) {
                return false;
            }
            cursor.buffer.resize(
                static_cast<std::size_t>(std::min<std::uint64_t>(left, cursor.buffer.size())));
            file_.read(cursor.rest.offset, cursor.buffer);
            cursor.rest.offset += cursor.buffer.size();
            cursor.rest.entries -= cursor.buffer.size() / entry_bytes_;
            cursor.at = 0;
        }
        return true;
    }

    /// The first of the heap has become larger; it sinks to its place.
    void sink_first() {
        const Head head = heap_.front();
        std::size_t hole = 0;
        for (std::size_t child = 1; child < heap_.size(); child = 2 * hole + 1) {
            if (child + 1 < heap_.size() && is_later(heap_[child], heap_[child + 1])) {
                ++child;
            }
            if (!is_later(head, heap_[child])) {
                break;
            }
            heap_[hole] = heap_[child];
            hole = child;
        }
        heap_[hole] = head;
    }

    SpillFile& file_;
    std::size_t entry_bytes_;
    std::vector<Cursor> cursors_;
    std::vector<Head> heap_;
    bool taken_ = false;
};

RecordSorter::RecordSorter(std::size_t record_bytes, const std::filesystem::path& output,
                           const SortLimits& limits)
    : entry_bytes_(kKeyBytes + record_bytes), limits_(limits), output_(output) {
    // An entry has two places, the second of them in the scratch memory of the sort.
    const std::size_t entries = limits_.bytes_in_memory / (entry_bytes_ + 2 * sizeof(Place));
    most_entries_ = std::clamp<std::size_t>(entries, 1, std::numeric_limits<std::uint32_t>::max());
}

RecordSorter::~RecordSorter() = default;

void RecordSorter::add(std::uint64_t key, const void* record) {
    if (places_.size() == most_entries_) {
        write_run();
    }
    places_.push_back({key, static_cast<std::uint32_t>(places_.size())});
    const std::size_t at = entries_.size();
    if (at + entry_bytes_ > entries_.capacity()) {
        // Twice as much each time, but never more than will be filled: pages count when touched.
        entries_.reserve(std::min(most_entries_ * entry_bytes_, 2 * at + kWriteBytes));
    }
    entries_.resize(at + entry_bytes_);
    std::memcpy(entries_.data() + at, &key, sizeof key);
    std::memcpy(entries_.data() + at + kKeyBytes, record, entry_bytes_ - kKeyBytes);
}

const std::byte* RecordSorter::next() {
    if (!reading_) {
        start_reading();
    }
    if (merge_) {
        const std::byte* found = merge_->next();
        return found == nullptr ? nullptr : found + kKeyBytes;
    }
    return next_place_ == places_.size() ? nullptr
                                         : entry(places_[next_place_++].index) + kKeyBytes;
}

const std::byte* RecordSorter::entry(std::size_t index) const {
    return entries_.data() + index * entry_bytes_;
}

/// Byte by byte from the lowest, each pass keeping the order of the one before: equal keys stay as
/// they were added. A byte that is the same in all keys needs no pass.
void RecordSorter::sort_places() {
    constexpr std::size_t kDigits = 8;
    constexpr std::size_t kValues = 256;
    std::array<std::array<std::size_t, kValues>, kDigits> counts{};
    for (const Place& place : places_) {
        for (std::size_t digit = 0; digit < kDigits; ++digit) {
            ++counts[digit][place.key >> (8 * digit) & 0xFFU];
        }
    }
    scratch_.resize(places_.size());
    for (std::size_t digit = 0; digit < kDigits; ++digit) {
        std::array<std::size_t, kValues>& starts = counts[digit];
        if (std::find(starts.begin(), starts.end(), places_.size()) != starts.end()) {
            continue;
        }
        std::size_t sum = 0;
        for (std::size_t& start : starts) {
            sum += std::exchange(start, sum);
        }
        for (const Place& place : places_) {
            scratch_[starts[place.key >> (8 * digit) & 0xFFU]++] = place;
        }
        std::swap(places_, scratch_);
    }
}

std::unique_ptr<SpillFile> RecordSorter::new_file() {
    const std::string complaint = "cannot write " + output_.string();
    if (!folder_) {
        // Where the output will stand, also if its name is a link.
        std::error_code error;
        const std::filesystem::path place = std::filesystem::weakly_canonical(output_, error);
        folder_ =
            std::make_unique<WorkingFolder>((error ? output_ : place).parent_path(), complaint);
    }
    return std::make_unique<SpillFile>(folder_->file("runs-" + std::to_string(files_++)),
                                       complaint);
}

void RecordSorter::write_run() {
    sort_places();
    if (!file_) {
        file_ = new_file();
    }
    runs_.push_back({file_->bytes(), places_.size()});
    RunWriter writer(*file_);
    for (const Place& place : places_) {
        writer.add({entry(place.index), entry_bytes_});
    }
    writer.flush();
    places_.clear();
    entries_.clear();
}

void RecordSorter::start_reading() {
    reading_ = true;
    if (runs_.empty()) {
        sort_places();
        return;
    }
    if (!places_.empty()) {
        write_run();
    }
    // The runs need the memory now. Assigning {} would keep it.
    std::vector<std::byte>().swap(entries_);
    std::vector<Place>().swap(places_);
    std::vector<Place>().swap(scratch_);
    while (runs_.size() > limits_.runs_at_once) {
        merge_runs();
    }
    merge_ = std::make_unique<Merge>(*file_, runs_, entry_bytes_, limits_.bytes_in_memory);
}

/// One pass: neighbouring runs become one, in a new file.
void RecordSorter::merge_runs() {
    std::unique_ptr<SpillFile> merged = new_file();
    std::vector<Run> longer;
    for (std::size_t first = 0; first < runs_.size(); first += limits_.runs_at_once) {
        const std::size_t count = std::min(limits_.runs_at_once, runs_.size() - first);
        Merge merge(*file_, std::span(runs_).subspan(first, count), entry_bytes_,
                    limits_.bytes_in_memory);
        longer.push_back({merged->bytes(), 0});
        RunWriter writer(*merged);
        for (const std::byte* next = merge.next(); next != nullptr; next = merge.next()) {
            writer.add({next, entry_bytes_});
            ++longer.back().entries;
        }
        writer.flush();
    }
    file_ = std::move(merged);
    runs_ = std::move(longer);
}

}  // namespace lumivar
