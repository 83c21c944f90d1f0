// What a macOS executable file says of itself: its slices, and of each slice the load commands.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "bytes.h"

namespace macho {

/// The format's own numbers.
enum class Processor : std::uint32_t { X86_64 = 0x01000007, Arm64 = 0x0100000C };

/// "x86_64" or "arm64".
std::string name_of(Processor processor);

/// Where a file holds the code for one processor.
struct Slice {
    Processor processor;
    std::uint64_t offset;
    std::uint64_t size;
};

constexpr std::uint32_t kBundle = 8;                  ///< kind of file
constexpr std::uint32_t kReadOnlyAfterFixups = 0x10;  ///< flag of a segment

struct Segment {
    std::string name;
    std::uint64_t address;
    std::uint64_t memory_size;
    std::uint64_t file_offset;
    std::uint64_t file_size;
    std::uint32_t protection;  ///< as for mmap
    std::uint32_t flags;
};

struct Section {
    std::string segment;
    std::string name;
    std::uint64_t address;
    std::uint64_t size;
    std::uint64_t file_offset;
    std::uint32_t flags;

    std::uint32_t type() const { return flags & 0xFF; }
    /// Whether it has no bytes in the file.
    bool zero_filled() const;
};

/// What a section's `type` may be.
constexpr std::uint32_t kZeroFilled = 0x01;
constexpr std::uint32_t kInitialisers = 0x09;
constexpr std::uint32_t kTerminators = 0x0A;
constexpr std::uint32_t kThreadData = 0x11;
constexpr std::uint32_t kThreadZeros = 0x12;
constexpr std::uint32_t kThreadVariables = 0x13;
constexpr std::uint32_t kInitialiserOffsets = 0x16;

struct Symbol {
    std::string name;
    std::uint8_t type;
    std::uint64_t value;

    bool of_debugger() const { return (type & 0xE0) != 0; }
    bool undefined() const { return !of_debugger() && (type & 0x0E) == 0; }
};

/// A pointer that the system's loader sets to a symbol of a library.
struct Bind {
    std::uint64_t address;
    std::string symbol;
    std::int64_t library;  ///< from 1 on, in the order of `libraries`
    std::int64_t addend;
};

struct Export {
    std::string name;
    std::uint64_t address;  ///< from the image's begin
};

/// One slice. All addresses are those that the file was linked for.
struct Image {
    Processor processor;
    std::uint32_t kind;
    std::vector<Segment> segments;
    std::vector<Section> sections;
    std::vector<Symbol> symbols;
    std::vector<std::string> libraries;
    std::uint32_t platform = 0;          ///< 1 is macOS
    std::uint32_t minimum_system = 0;    ///< 0x000B0000 is 11.0
    std::vector<std::uint64_t> rebases;  ///< addresses of pointers into the image itself
    std::vector<Bind> binds;
    std::vector<Bind> lazy_binds;
    std::vector<Export> exports;
    std::uint64_t signature_offset = 0;
    std::uint64_t signature_size = 0;  ///< 0 for none
    Bytes bytes;

    /// The lowest address.
    std::uint64_t begin() const { return segments.front().address; }
    /// Behind the highest.
    std::uint64_t end() const { return segments.back().address + segments.back().memory_size; }
    /// Null when there is none.
    const Section* section(const std::string& segment, const std::string& name) const;
    Bytes bytes_of(const Section& section) const;
};

/// The slices of a file: several of a universal one, one of any other.
std::vector<Slice> read_slices(const Bytes& file);
Bytes bytes_of(const Bytes& file, const Slice& slice);

/// Takes a slice apart. Throws `FileError` also for what this reader does not know, such as
/// chained fixups.
Image read_image(const Bytes& slice);

/// Whether a file begins as one of those that are read here.
bool is_macho(const Bytes& begin);

}  // namespace macho
