#include "macho_file.h"

#include "dyld_info.h"

namespace macho {
namespace {

constexpr std::uint32_t kUniversalMagic = 0xCAFEBABE;  // big-endian, as all of its header
constexpr std::uint32_t kMagic64 = 0xFEEDFACF;
constexpr std::uint64_t kHeaderSize = 32;

enum Command : std::uint32_t {
    kSymbolTable = 0x02,
    kLoadLibrary = 0x0C,
    kSegment64 = 0x19,
    kCodeSignature = 0x1D,
    kWeakLibrary = 0x80000018,
    kReexportedLibrary = 0x8000001F,
    kDyldInfo = 0x22,
    kDyldInfoOnly = 0x80000022,
    kBuildVersion = 0x32,
    kExportsTrie = 0x80000033,
    kChainedFixups = 0x80000034,
};

/// More than any image has; what claims more is malformed.
constexpr std::uint64_t kMostMemory = std::uint64_t{1} << 30;

Processor processor_of(const Bytes& bytes, std::uint32_t number) {
    const auto processor = static_cast<Processor>(number);
    if (processor != Processor::X86_64 && processor != Processor::Arm64) {
        bytes.fail("it is for processor " + std::to_string(number) +
                   ", known are x86_64 and arm64");
    }
    return processor;
}

void read_segment(const Bytes& command, Image& image) {
    Segment segment = {command.name(8, 16), command.u64(24), command.u64(32), command.u64(40),
                       command.u64(48),     command.u32(60), command.u32(68)};
    image.bytes.part(segment.file_offset, segment.file_size, "segment " + segment.name);
    const std::uint64_t begin =
        image.segments.empty() ? segment.address : image.segments.back().address;
    const std::uint64_t behind = image.segments.empty() ? segment.address : image.end();
    if (segment.memory_size > kMostMemory || segment.file_size > segment.memory_size ||
        segment.address < begin || segment.address < behind ||
        segment.address - begin > kMostMemory) {
        command.fail("segment " + segment.name + " has no place in memory");
    }
    image.segments.push_back(segment);
    const std::uint32_t count = command.u32(64);
    for (std::uint64_t i = 0; i < count; ++i) {
        const Bytes at = command.part(72 + 80 * i, 80, "section " + std::to_string(i));
        Section section = {at.name(16, 16), at.name(0, 16), at.u64(32),
                           at.u64(40),      at.u32(48),     at.u32(64)};
        if (section.address < segment.address ||
            section.address - segment.address > segment.memory_size ||
            section.size > segment.memory_size - (section.address - segment.address)) {
            at.fail(section.name + " is not within its segment");
        }
        if (!section.zero_filled()) {
            image.bytes_of(section);
        }
        image.sections.push_back(section);
    }
}

void read_symbols(const Bytes& command, Image& image) {
    const std::uint64_t count = command.u32(12);
    const Bytes table = image.bytes.part(command.u32(8), 16 * count, "symbol table");
    const Bytes names = image.bytes.part(command.u32(16), command.u32(20), "symbol names");
    for (std::uint64_t i = 0; i < count; ++i) {
        image.symbols.push_back(
            {names.text(table.u32(16 * i)), table.u8(16 * i + 4), table.u64(16 * i + 8)});
    }
}

void read_command(std::uint32_t kind, const Bytes& command, Image& image) {
    switch (kind) {
        case kSegment64:
            return read_segment(command, image);
        case kSymbolTable:
            return read_symbols(command, image);
        case kLoadLibrary:
        case kWeakLibrary:
        case kReexportedLibrary:
            image.libraries.push_back(command.text(command.u32(8)));
            return;
        case kBuildVersion:
            image.platform = command.u32(8);
            image.minimum_system = command.u32(12);
            return;
        case kCodeSignature:
            image.signature_offset = command.u32(8);
            image.signature_size = command.u32(12);
            image.bytes.part(image.signature_offset, image.signature_size, "signature");
            return;
        case kChainedFixups:
        case kExportsTrie:
            command.fail("chained fixups are not read here: link without them");
        default:
            return;  // says nothing that is asked here
    }
}

}  // namespace

std::string name_of(Processor processor) {
    return processor == Processor::X86_64 ? "x86_64" : "arm64";
}

bool Section::zero_filled() const { return type() == kZeroFilled || type() == kThreadZeros; }

const Section* Image::section(const std::string& segment, const std::string& name) const {
    for (const Section& section : sections) {
        if (section.segment == segment && section.name == name) {
            return &section;
        }
    }
    return nullptr;
}

Bytes Image::bytes_of(const Section& section) const {
    return bytes.part(section.file_offset, section.size, "section " + section.name);
}

bool is_macho(const Bytes& begin) {
    return begin.size() >= 8 && (begin.u32(0) == kMagic64 ||
                                 // A Java class begins alike; its version is no count of slices.
                                 (begin.big_u32(0) == kUniversalMagic && begin.big_u32(4) < 20));
}

std::vector<Slice> read_slices(const Bytes& file) {
    if (!is_macho(file)) {
        file.fail("it is no Mach-O file of 64 bits");
    }
    if (file.u32(0) == kMagic64) {
        return {{processor_of(file, file.u32(4)), 0, file.size()}};
    }
    std::vector<Slice> slices;
    const std::uint32_t count = file.big_u32(4);
    for (std::uint64_t i = 0; i < count; ++i) {
        const Bytes entry = file.part(8 + 20 * i, 20, "slice " + std::to_string(i));
        slices.push_back(
            {processor_of(entry, entry.big_u32(0)), entry.big_u32(8), entry.big_u32(12)});
        bytes_of(file, slices.back());
    }
    return slices;
}

Bytes bytes_of(const Bytes& file, const Slice& slice) {
    return file.part(slice.offset, slice.size, "slice for " + name_of(slice.processor));
}

Image read_image(const Bytes& slice) {
    if (slice.u32(0) != kMagic64) {
        slice.fail("the slice is no Mach-O image of 64 bits");
    }
    Image image = {.processor = processor_of(slice, slice.u32(4)),
                   .kind = slice.u32(12),
                   .segments = {},
                   .sections = {},
                   .symbols = {},
                   .libraries = {},
                   .rebases = {},
                   .binds = {},
                   .lazy_binds = {},
                   .exports = {},
                   .bytes = slice};
    const std::uint32_t count = slice.u32(16);
    const Bytes commands = slice.part(kHeaderSize, slice.u32(20), "load commands");
    std::uint64_t at = 0;
    std::optional<Bytes> dyld_info;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint32_t kind = commands.u32(at);
        const std::uint32_t size = commands.u32(at + 4);
        if (size < 8) {
            commands.fail("command " + std::to_string(i) + " has a size of " +
                          std::to_string(size));
        }
        const Bytes command = commands.part(at, size, "command " + std::to_string(i));
        if (kind == kDyldInfo || kind == kDyldInfoOnly) {
            dyld_info = command;
        } else {
            read_command(kind, command, image);
        }
        at += size;
    }
    if (image.segments.empty()) {
        slice.fail("it has no segment");
    }
    // Its addresses are counted from the segments' begins.
    if (dyld_info) {
        read_dyld_info(*dyld_info, image);
    }
    return image;
}

}  // namespace macho
