#include "unwind_table.h"

#include <map>

namespace macho {
namespace {

constexpr std::uint32_t kSectionOffset = 0x00FFFFFF;

/// A pointer as `__eh_frame` writes it: the lower four bits tell its size, the next three what it
/// counts from, the highest that what it finds is the address of the pointer that is meant.
std::uint64_t read_pointer(Cursor& cursor, std::uint8_t encoding, std::uint64_t section_address) {
    const std::uint64_t here = section_address + cursor.position();
    std::uint64_t value = 0;
    switch (encoding & 0x0F) {
        case 0x00:
        case 0x04:
        case 0x0C:
            value = cursor.u64();
            break;
        case 0x03:
            value = cursor.u32();
            break;
        case 0x0B:
            value = static_cast<std::uint64_t>(
                static_cast<std::int64_t>(static_cast<std::int32_t>(cursor.u32())));
            break;
        default:
            cursor.fail("has a pointer of an unknown size");
    }
    switch (encoding & 0x70) {
        case 0x00:
            return value;
        case 0x10:
            return value == 0 ? 0 : here + value;
        default:
            cursor.fail("has a pointer that counts from an unknown place");
    }
}

/// A record of `__eh_frame` from its length on; errors name the section.
struct Record {
    std::uint64_t body;
    std::uint64_t end;
};

Record read_record(const Bytes& section, std::uint64_t at) {
    const std::uint32_t length = section.u32(at);
    if (length < 4 || length == 0xFFFFFFFF) {
        section.fail("the record at " + std::to_string(at) + " has no length");
    }
    section.at(at + 4, length);
    return {at + 4, at + 4 + length};
}

Bytes rest(const Bytes& section, std::uint64_t from, std::uint64_t end) {
    if (from > end) {
        section.fail("a record ends within its head");
    }
    return section.part(from, end - from, "frame instructions");
}

/// What the functions of one compiler's object have in common.
struct CommonRecord {
    DwarfRules rules;
    std::uint8_t pointers = 0;
    std::optional<std::uint8_t> language_data;
    std::uint64_t personality_slot = 0;
};

CommonRecord read_common(const Bytes& section, std::uint64_t at, std::uint64_t address) {
    const Record record = read_record(section, at);
    Cursor cursor(section, record.body);
    if (cursor.u32() != 0) {
        cursor.fail("is no record of what functions have in common");
    }
    const std::uint8_t version = cursor.u8();
    const std::string augmentation = cursor.text();
    if ((version != 1 && version != 3) || augmentation.empty() || augmentation[0] != 'z') {
        cursor.fail("has a record of an unknown kind");
    }
    const std::uint64_t code_alignment = cursor.uleb();
    const std::int64_t data_alignment = cursor.sleb();
    const std::uint64_t return_register = version == 1 ? cursor.u8() : cursor.uleb();
    const std::uint64_t size = cursor.uleb();
    const std::uint64_t behind = cursor.position() + size;
    CommonRecord common = {{code_alignment, data_alignment, return_register,
                            rest(section, behind, record.end), section.part(0, 0, "none")},
                           0,
                           {},
                           0};
    for (const char letter : augmentation.substr(1)) {
        if (letter == 'P') {
            const std::uint8_t encoding = cursor.u8();
            if ((encoding & 0x80) == 0) {
                cursor.fail("names a personality routine that is not by way of a pointer");
            }
            common.personality_slot = read_pointer(cursor, encoding, address);
        } else if (letter == 'L') {
            common.language_data = cursor.u8();
        } else if (letter == 'R') {
            common.pointers = cursor.u8();
        } else {
            cursor.fail("has an augmentation of the unknown kind " + augmentation);
        }
    }
    return common;
}

/// Completes a function by its record at `at` of `__eh_frame`.
void read_dwarf(const Image& image, std::uint64_t at, UnwoundFunction& function) {
    const Section* const found = image.section("__TEXT", "__eh_frame");
    if (found == nullptr) {
        image.bytes.fail("its unwind table refers to a section __eh_frame that is not there");
    }
    const Bytes section = image.bytes_of(*found);
    const Record record = read_record(section, at);
    const std::uint32_t back = section.u32(record.body);
    if (back == 0 || back > record.body) {
        section.fail("the record at " + std::to_string(at) + " is of no function");
    }
    CommonRecord common = read_common(section, record.body - back, found->address);
    Cursor cursor(section, record.body + 4);
    const std::uint64_t begin = read_pointer(cursor, common.pointers, found->address);
    const std::uint64_t size = read_pointer(cursor, common.pointers & 0x0F, found->address);
    if (begin != function.begin || size == 0 || size > function.end - function.begin) {
        section.fail("the record at " + std::to_string(at) + " is of another function");
    }
    function.end = begin + size;
    const std::uint64_t augmentation = cursor.uleb();
    const std::uint64_t behind = cursor.position() + augmentation;
    if (common.language_data) {
        function.language_data = read_pointer(cursor, *common.language_data, found->address);
    }
    function.personality_slot = common.personality_slot;
    common.rules.instructions = rest(section, behind, record.end);
    function.dwarf = common.rules;
}

struct Entry {
    std::uint64_t begin;
    std::uint32_t encoding;
};

class Table {
public:
    Table(const Image& image, const Section& section)
        : image_(image), bytes_(image.bytes_of(section)) {}

    std::vector<UnwoundFunction> read() {
        if (bytes_.u32(0) != 1) {
            bytes_.fail("it has an unknown version");
        }
        read_language_data();
        for (std::uint64_t i = 0; i + 1 < index_count(); ++i) {
            read_page(i);
        }
        if (index_count() == 0) {
            return {};
        }
        entries_.push_back({image_.begin() + index(index_count() - 1).u32(0), 0});
        std::vector<UnwoundFunction> functions;
        for (std::size_t i = 0; i + 1 < entries_.size(); ++i) {
            functions.push_back(function(entries_[i], entries_[i + 1].begin));
        }
        return functions;
    }

private:
    std::uint64_t index_count() const { return bytes_.u32(24); }
    Bytes index(std::uint64_t i) const {
        return bytes_.part(bytes_.u32(20) + 12 * i, 12, "index " + std::to_string(i));
    }

    void read_language_data() {
        if (index_count() == 0) {
            return;
        }
        const std::uint64_t from = index(0).u32(8);
        const std::uint64_t behind = index(index_count() - 1).u32(8);
        for (std::uint64_t at = from; at < behind; at += 8) {
            language_data_[image_.begin() + bytes_.u32(at)] = image_.begin() + bytes_.u32(at + 4);
        }
    }

    void read_page(std::uint64_t i) {
        const std::uint64_t page = index(i).u32(4);
        if (page == 0) {
            return;
        }
        constexpr std::uint32_t regular = 2;
        constexpr std::uint32_t compressed = 3;
        const std::uint64_t from = page + bytes_.u16(page + 4);
        const std::uint16_t count = bytes_.u16(page + 6);
        for (std::uint64_t entry = 0; entry < count; ++entry) {
            if (bytes_.u32(page) == regular) {
                add(bytes_.u32(from + 8 * entry), bytes_.u32(from + 8 * entry + 4));
            } else if (bytes_.u32(page) == compressed) {
                const std::uint32_t both = bytes_.u32(from + 4 * entry);
                add(index(i).u32(0) + (both & kSectionOffset), encoding(page, both >> 24));
            } else {
                bytes_.fail("the page at " + std::to_string(page) + " is of an unknown kind");
            }
        }
    }

    /// By number: first those of all pages, then the page's own.
    std::uint32_t encoding(std::uint64_t page, std::uint32_t number) const {
        const std::uint32_t common = bytes_.u32(8);
        if (number < common) {
            return bytes_.u32(bytes_.u32(4) + std::uint64_t{4} * number);
        }
        if (number - common >= bytes_.u16(page + 10)) {
            bytes_.fail("it has no encoding of number " + std::to_string(number));
        }
        return bytes_.u32(page + bytes_.u16(page + 8) + std::uint64_t{4} * (number - common));
    }

    void add(std::uint64_t offset, std::uint32_t encoding) {
        const std::uint64_t begin = image_.begin() + offset;
        if (begin >= image_.end() || (!entries_.empty() && begin <= entries_.back().begin)) {
            bytes_.fail("the function at " + std::to_string(offset) + " is out of order");
        }
        entries_.push_back({begin, encoding});
    }

    UnwoundFunction function(const Entry& entry, std::uint64_t end) const {
        if (end <= entry.begin || end > image_.end()) {
            bytes_.fail("a function ends before it begins");
        }
        UnwoundFunction function = {entry.begin, end, entry.encoding, 0, 0, {}};
        const std::uint32_t mode = entry.encoding & kModeBits;
        if (mode == (image_.processor == Processor::X86_64 ? kDwarfModeX86_64 : kDwarfModeArm64)) {
            read_dwarf(image_, entry.encoding & kSectionOffset, function);
            return function;
        }
        const std::uint32_t personality = entry.encoding >> 28 & 3;
        if (personality > bytes_.u32(16)) {
            bytes_.fail("it has no personality routine of number " + std::to_string(personality));
        }
        if (personality != 0) {
            function.personality_slot =
                image_.begin() + bytes_.u32(bytes_.u32(12) + std::uint64_t{4} * (personality - 1));
        }
        if ((entry.encoding & 0x40000000) != 0) {
            const auto found = language_data_.find(entry.begin);
            if (found == language_data_.end()) {
                bytes_.fail("the data of a function's handlers is missing");
            }
            function.language_data = found->second;
        }
        return function;
    }

    const Image& image_;
    Bytes bytes_;
    std::map<std::uint64_t, std::uint64_t> language_data_;
    std::vector<Entry> entries_;
};

}  // namespace

std::vector<UnwoundFunction> read_unwind_table(const Image& image) {
    const Section* const section = image.section("__TEXT", "__unwind_info");
    return section == nullptr ? std::vector<UnwoundFunction>() : Table(image, *section).read();
}

}  // namespace macho
