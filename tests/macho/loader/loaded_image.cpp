#include "loaded_image.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <functional>

#include "system_locks.h"
#include "system_symbols.h"

namespace loader {
namespace {

#if defined(__x86_64__)
constexpr macho::Processor kProcessor = macho::Processor::X86_64;
#else
constexpr macho::Processor kProcessor = macho::Processor::Arm64;
#endif

macho::Image image_for_this_processor(const macho::Bytes& file) {
    for (const macho::Slice& slice : macho::read_slices(file)) {
        if (slice.processor == kProcessor) {
            return macho::read_image(macho::bytes_of(file, slice));
        }
    }
    file.fail("it has no slice for " + macho::name_of(kProcessor));
}

std::size_t size_of(const macho::Image& image) {
    constexpr std::uint64_t page = 16384;
    if (image.begin() % page != 0) {
        image.bytes.fail("its first segment begins within a page");
    }
    return (image.end() - image.begin() + page - 1) / page * page;
}

}  // namespace

LoadedImage::LoadedImage(const std::string& path, const macho::Bytes& file)
    : path_(path),
      image_(image_for_this_processor(file)),
      memory_(size_of(image_)),
      slide_(reinterpret_cast<std::uint64_t>(memory_.begin()) - image_.begin()),
      traps_(image_.binds.size() + image_.lazy_binds.size()) {
    for (const macho::Section& section : image_.sections) {
        if (section.type() == macho::kTerminators || section.type() == macho::kInitialiserOffsets) {
            image_.bytes.fail("it has initialisers or exits of a kind that is not run here");
        }
    }
    fill();
    rebase();
    // All at once: what is lazy about the others is only when.
    for (const auto* binds : {&image_.binds, &image_.lazy_binds}) {
        for (const macho::Bind& one : *binds) {
            bind(one);
        }
    }
    traps_.close();
    make_thread_variables();
    protect();
    frames_.emplace(image_, slide_);
}

LoadedImage::~LoadedImage() { forget_locks(memory_.begin(), memory_.begin() + memory_.size()); }

std::uint8_t* LoadedImage::at(std::uint64_t address) const {
    return memory_.begin() + (address - image_.begin());
}

void LoadedImage::fill() {
    for (const macho::Segment& segment : image_.segments) {
        std::memcpy(at(segment.address), image_.bytes.at(segment.file_offset, segment.file_size),
                    segment.file_size);
    }
}

void LoadedImage::rebase() {
    for (const std::uint64_t address : image_.rebases) {
        std::uint64_t pointer = 0;
        std::memcpy(&pointer, at(address), sizeof pointer);
        pointer += slide_;
        std::memcpy(at(address), &pointer, sizeof pointer);
    }
}

void LoadedImage::bind(const macho::Bind& bind) {
    void* symbol = system_symbol(bind.symbol);
    if (symbol == nullptr) {
        symbol = traps_.add(bind.symbol);
    }
    const std::uint64_t pointer =
        reinterpret_cast<std::uint64_t>(symbol) + static_cast<std::uint64_t>(bind.addend);
    std::memcpy(at(bind.address), &pointer, sizeof pointer);
}

void LoadedImage::make_thread_variables() {
    std::uint64_t begin = image_.end();
    std::uint64_t end = image_.begin();
    for (const macho::Section& section : image_.sections) {
        if (section.type() == macho::kThreadData || section.type() == macho::kThreadZeros) {
            begin = std::min(begin, section.address);
            end = std::max(end, section.address + section.size);
        }
    }
    if (begin < end) {
        thread_variables_ = std::make_unique<ThreadVariables>(at(begin), end - begin);
    }
    for (const macho::Section& section : image_.sections) {
        if (section.type() == macho::kThreadVariables) {
            for (std::uint64_t i = 0; i + sizeof(ThreadVariable) <= section.size;
                 i += sizeof(ThreadVariable)) {
                auto* const variable = reinterpret_cast<ThreadVariable*>(at(section.address + i));
                variable->of = thread_variables_.get();
            }
        }
    }
}

void LoadedImage::protect() {
    for (const macho::Segment& segment : image_.segments) {
        int protection = static_cast<int>(segment.protection);
        if ((segment.flags & macho::kReadOnlyAfterFixups) != 0) {
            protection = PROT_READ;
        }
        memory_.protect(segment.address - image_.begin(), segment.memory_size, protection);
    }
}

std::vector<std::uint64_t> LoadedImage::pointers(std::uint32_t type) const {
    std::vector<std::uint64_t> all;
    for (const macho::Section& section : image_.sections) {
        if (section.type() == type) {
            const std::size_t before = all.size();
            all.resize(before + section.size / 8);
            std::memcpy(all.data() + before, at(section.address), section.size / 8 * 8);
        }
    }
    return all;
}

void LoadedImage::run_initialisers() {
    for (const std::uint64_t initialiser : pointers(macho::kInitialisers)) {
        const char* const none[] = {nullptr};
        reinterpret_cast<Initialiser>(initialiser)(0, none, none, none, nullptr);
    }
}

void LoadedImage::run_exits() {
    while (!exits_.empty()) {
        const auto [function, argument] = exits_.back();
        exits_.pop_back();
        function(argument);
    }
}

bool LoadedImage::contains(const void* address) const {
    const auto* const byte = static_cast<const std::uint8_t*>(address);
    return std::greater_equal<>()(byte, memory_.begin()) &&
           std::less<>()(byte, memory_.begin() + memory_.size());
}

void* LoadedImage::symbol(const std::string& name) const {
    for (const macho::Export& one : image_.exports) {
        if (one.name == "_" + name) {
            return memory_.begin() + one.address;
        }
    }
    return nullptr;
}

void LoadedImage::run_at_end(void (*function)(void*), void* argument) {
    exits_.emplace_back(function, argument);
}

}  // namespace loader
