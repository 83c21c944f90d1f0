// A Mach-O image in this process, as the system of its own would have it in one of its.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "../macho_file.h"
#include "memory.h"
#include "thread_variables.h"
#include "traps.h"
#include "unwind_frames.h"

namespace loader {

class LoadedImage {
public:
    /// Maps the slice for this processor, with every pointer set. Nothing of it is run yet. Throws
    /// `FileError` or `std::system_error`.
    LoadedImage(const std::string& path, const macho::Bytes& file);
    ~LoadedImage();
    LoadedImage(const LoadedImage&) = delete;
    LoadedImage& operator=(const LoadedImage&) = delete;

    void run_initialisers();
    /// Runs what the image wants to be run before it goes.
    void run_exits();

    const std::string& path() const { return path_; }
    void* begin() const { return memory_.begin(); }
    bool contains(const void* address) const;
    /// An exported symbol, named without the underscore in front; null if there is none.
    void* symbol(const std::string& name) const;
    void run_at_end(void (*function)(void*), void* argument);

private:
    using Initialiser = void (*)(int, const char* const*, const char* const*, const char* const*,
                                 const void*);

    void fill();
    void rebase();
    void bind(const macho::Bind& bind);
    void make_thread_variables();
    void protect();
    /// Where the image has what was linked for `address`.
    std::uint8_t* at(std::uint64_t address) const;
    /// The pointers in all sections of a type.
    std::vector<std::uint64_t> pointers(std::uint32_t type) const;

    std::string path_;
    macho::Image image_;
    Memory memory_;
    std::uint64_t slide_;
    Traps traps_;
    std::unique_ptr<ThreadVariables> thread_variables_;
    std::optional<UnwindFrames> frames_;
    std::vector<std::pair<void (*)(void*), void*>> exits_;
};

}  // namespace loader
