#include "made_image.h"

namespace macho {
namespace {

// Addresses; the file has less of each segment.
constexpr std::uint64_t kDataAddress = 0x4000;
constexpr std::uint64_t kLinkEditAddress = 0x8000;
constexpr std::uint64_t kSegmentSize = 0x4000;
// Where the code begins, in the file and in memory: behind the load commands.
constexpr std::uint64_t kCode = 0x400;
// In the data: the counter, a pointer to it, the initialiser's address, and the imports' pointers.
constexpr std::uint64_t kCounter = 0;
constexpr std::uint64_t kPointerToCounter = 8;
constexpr std::uint64_t kInitialiserPointer = 16;
constexpr std::uint64_t kSlots = 24;

void put(std::string& to, std::uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
        to.push_back(static_cast<char>(value >> 8 * i));
    }
}
void put32(std::string& to, std::uint64_t value) { put(to, value, 4); }
void put64(std::string& to, std::uint64_t value) { put(to, value, 8); }
void put_big32(std::string& to, std::uint64_t value) { put(to, __builtin_bswap64(value) >> 32, 4); }

void put_name(std::string& to, std::string name) {
    name.resize(16);
    to += name;
}

void put_uleb(std::string& to, std::uint64_t value) {
    for (; value > 0x7F; value >>= 7) {
        put(to, value | 0x80, 1);
    }
    put(to, value, 1);
}

/// Machine code at `kCode`.
class Code {
public:
    explicit Code(Processor processor) : processor_(processor) {}

    std::uint64_t here() const { return kCode + bytes.size(); }

    /// Returns the number that the pointer at `data` points to.
    void put_read(std::uint64_t data) {
        if (processor_ == Processor::X86_64) {
            put_relative({"\x48\x8B\x05", 3}, data);      // mov data(%rip), %rax
            bytes += std::string("\x48\x8B\x00\xC3", 4);  // mov (%rax), %rax; ret
        } else {
            put_adr(0, data);
            put32(bytes, 0xF9400000);  // ldr x0, [x0]
            put32(bytes, 0xF9400000);
            put32(bytes, 0xD65F03C0);  // ret
        }
    }
    /// Adds one to the number at `data`.
    void put_increment(std::uint64_t data) {
        if (processor_ == Processor::X86_64) {
            put_relative({"\x48\xFF\x05", 3}, data);  // incq data(%rip)
            bytes += "\xC3";
        } else {
            put_adr(0, data);
            put32(bytes, 0xF9400001);  // ldr x1, [x0]
            put32(bytes, 0x91000421);  // add x1, x1, #1
            put32(bytes, 0xF9000001);  // str x1, [x0]
            put32(bytes, 0xD65F03C0);
        }
    }
    /// Jumps to where the pointer at `data` points.
    void put_jump(std::uint64_t data) {
        if (processor_ == Processor::X86_64) {
            put_relative({"\xFF\x25", 2}, data);  // jmp *data(%rip)
        } else {
            put_adr(16, data);
            put32(bytes, 0xF9400210);  // ldr x16, [x16]
            put32(bytes, 0xD61F0200);  // br x16
        }
    }

    std::string bytes;

private:
    /// Four bytes that count from behind them.
    void put_relative(const std::string& instruction, std::uint64_t data) {
        bytes += instruction;
        put32(bytes, kDataAddress + data - (here() + 4));
    }
    /// adr, to the register of this number.
    void put_adr(std::uint32_t number, std::uint64_t data) {
        const std::uint64_t distance = kDataAddress + data - here();
        put32(bytes, 0x10000000 | (distance & 3) << 29 | (distance >> 2 & 0x7FFFF) << 5 | number);
    }

    Processor processor_;
};

struct Exported {
    std::string name;
    std::uint64_t address;
};

/// A root and a leaf for each name.
std::string export_table(const std::vector<Exported>& exports) {
    std::string leaves;
    std::vector<std::uint64_t> places;
    for (const Exported& one : exports) {
        places.push_back(leaves.size());
        std::string said;
        put_uleb(said, 0);  // an ordinary one
        put_uleb(said, one.address);
        put_uleb(leaves, said.size());
        leaves += said;
        put(leaves, 0, 1);  // no branches
    }
    // Two bytes for each leaf's place, whatever it is, so that the root's size is known.
    std::uint64_t root_size = 2;
    for (const Exported& one : exports) {
        root_size += one.name.size() + 1 + 2;
    }
    std::string root;
    put(root, 0, 1);
    put(root, exports.size(), 1);
    for (std::size_t i = 0; i < exports.size(); ++i) {
        root += exports[i].name + '\0';
        const std::uint64_t place = root_size + places[i];
        put(root, (place & 0x7F) | 0x80, 1);
        put(root, place >> 7, 1);
    }
    return root + leaves;
}

std::string rebase_table() {
    std::string table;
    put(table, 0x11, 1);  // pointers
    put(table, 0x21, 1);  // from the second segment's begin ...
    put_uleb(table, kPointerToCounter);
    put(table, 0x52, 1);  // ... two, one after the other
    put(table, 0x00, 1);
    return table;
}

std::string bind_table(const std::vector<std::string>& imports) {
    std::string table;
    put(table, 0x11, 1);  // of the first library
    put(table, 0x51, 1);  // pointers
    put(table, 0x71, 1);  // from the second segment's begin
    put_uleb(table, kSlots);
    for (const std::string& name : imports) {
        put(table, 0x40, 1);
        table += "_" + name + '\0';
        put(table, 0x90, 1);
    }
    put(table, 0x00, 1);
    return table;
}

/// Load commands, counted.
class Commands {
public:
    void add(std::uint32_t kind, const std::string& body) {
        put32(bytes, kind);
        const std::size_t padding = (8 - body.size() % 8) % 8;
        put32(bytes, 8 + body.size() + padding);
        bytes += body + std::string(padding, '\0');
        ++count;
    }

    std::string bytes;
    std::uint32_t count = 0;
};

struct MadeSection {
    std::string name;
    std::uint64_t offset;  ///< in the segment
    std::uint64_t size;
    std::uint32_t flags;
};

std::string segment(const std::string& name, std::uint64_t address, std::uint64_t file_offset,
                    std::uint64_t file_size, std::uint32_t protection,
                    const std::vector<MadeSection>& sections) {
    std::string body;
    put_name(body, name);
    put64(body, address);
    put64(body, kSegmentSize);
    put64(body, file_offset);
    put64(body, file_size);
    put32(body, protection);
    put32(body, protection);
    put32(body, sections.size());
    put32(body, 0);
    for (const MadeSection& section : sections) {
        put_name(body, section.name);
        put_name(body, name);
        put64(body, address + section.offset);
        put64(body, section.size);
        put32(body, file_offset + section.offset);
        put32(body, 3);  // aligned to eight bytes
        put64(body, 0);
        put32(body, section.flags);
        body.append(12, '\0');
    }
    return body;
}

}  // namespace

Processor own_processor() {
#if defined(__x86_64__)
    return Processor::X86_64;
#else
    return Processor::Arm64;
#endif
}

std::string MadeImage::bytes() const {
    Code code(processor);
    std::vector<Exported> exports = {{"_counter", code.here()}};
    code.put_read(kPointerToCounter);
    const std::uint64_t initialiser = code.here();
    code.put_increment(kCounter);
    std::string data;
    put64(data, 7);
    put64(data, kDataAddress + kCounter);
    put64(data, initialiser);
    for (const std::string& name : imports) {
        exports.push_back({"_call_" + name, code.here()});
        code.put_jump(data.size());
        put64(data, 0);
    }

    const std::string rebases = rebase_table();
    const std::string binds = bind_table(imports);
    const std::string exported = export_table(exports);
    const std::uint64_t data_at = kCode + code.bytes.size();
    const std::uint64_t link_edit_at = data_at + data.size();
    constexpr std::uint32_t read_execute = 5;
    constexpr std::uint32_t read_write = 3;
    constexpr std::uint32_t read = 1;

    Commands commands;
    commands.add(0x19, segment("__TEXT", 0, 0, data_at, read_execute,
                               {{"__text", kCode, code.bytes.size(), 0x80000400}}));
    commands.add(0x19, segment("__DATA", kDataAddress, data_at, data.size(), read_write,
                               {{"__mod_init_func", kInitialiserPointer, 8, kInitialisers}}));
    commands.add(0x19, segment("__LINKEDIT", kLinkEditAddress, link_edit_at,
                               rebases.size() + binds.size() + exported.size(), read, {}));
    std::string tables;
    put32(tables, link_edit_at);
    put32(tables, rebases.size());
    put32(tables, link_edit_at + rebases.size());
    put32(tables, binds.size());
    tables.append(16, '\0');  // none weak or lazy
    put32(tables, link_edit_at + rebases.size() + binds.size());
    put32(tables, exported.size());
    commands.add(0x80000022, tables);
    std::string version;
    put32(version, 1);           // macOS
    put32(version, 0x000B0000);  // 11.0
    put64(version, 0x000C0000);  // made with the headers of 12.0, by no tool
    commands.add(0x32, version);
    std::string library;
    put32(library, 24);
    library.append(12, '\0');
    library += "/usr/lib/libSystem.B.dylib" + std::string(1, '\0');
    commands.add(0x0C, library);

    std::string file;
    put32(file, 0xFEEDFACF);
    put32(file, static_cast<std::uint32_t>(processor));
    put32(file, 0);
    put32(file, kBundle);
    put32(file, commands.count);
    put32(file, commands.bytes.size());
    put64(file, 0);
    file += commands.bytes;
    file.resize(kCode);
    return file + code.bytes + data + rebases + binds + exported;
}

std::string universal(const std::vector<MadeImage>& images) {
    constexpr std::uint64_t page = 4096;
    std::string file;
    put_big32(file, 0xCAFEBABE);
    put_big32(file, images.size());
    std::string slices;
    for (const MadeImage& image : images) {
        const std::string bytes = image.bytes();
        put_big32(file, static_cast<std::uint32_t>(image.processor));
        put_big32(file, 0);
        put_big32(file, page + slices.size());
        put_big32(file, bytes.size());
        put_big32(file, 12);
        slices += bytes;
        slices.resize((slices.size() + page - 1) / page * page);
    }
    file.resize(page);
    return file + slices;
}

}  // namespace macho
