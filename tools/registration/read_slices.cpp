#include "read_slices.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace bundle {
namespace {

enum class Order { BigEndian, LittleEndian };

/// Numbers at the beginning of a file; 0 beyond its end, which none of the codes below is.
class Head {
public:
    explicit Head(std::string_view bytes) : bytes_(bytes) {}

    std::uint32_t number(std::size_t at, std::size_t size, Order order) const {
        if (at + size > bytes_.size()) {
            return 0;
        }
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < size; ++i) {
            const std::size_t place = order == Order::BigEndian ? at + i : at + size - 1 - i;
            value = value << 8U | static_cast<unsigned char>(bytes_[place]);
        }
        return value;
    }
    bool begins_with(std::string_view magic) const { return bytes_.starts_with(magic); }

private:
    std::string_view bytes_;
};

const Processor* of_mach_code(std::uint32_t code) {
    switch (code) {
        case 0x00000007:
            return processor_of("i386");
        case 0x01000007:
            return processor_of("x86_64");
        case 0x0100000C:
            return processor_of("arm64");
        default:
            return nullptr;
    }
}

const Processor* of_elf_code(std::uint32_t code) {
    switch (code) {
        case 3:
            return processor_of("i386");
        case 62:
            return processor_of("x86_64");
        case 183:
            return processor_of("arm64");
        default:
            return nullptr;
    }
}

// The codes of a file for several processors stand in records of 20 bytes (those with 64-bit
// offsets: 32) behind the magic and their number.
std::vector<const Processor*> of_several(const Head& head, std::size_t record) {
    const std::uint32_t count = head.number(4, 4, Order::BigEndian);
    std::vector<const Processor*> found;
    for (std::size_t i = 0; i < count && 8 + (i + 1) * record <= kModuleHead; ++i) {
        found.push_back(of_mach_code(head.number(8 + i * record, 4, Order::BigEndian)));
    }
    return found;
}

}  // namespace

std::optional<std::vector<const Processor*>> slices_of(std::string_view bytes) {
    using namespace std::string_view_literals;
    const Head head(bytes);
    std::vector<const Processor*> found;
    if (head.begins_with("\xCA\xFE\xBA\xBE"sv)) {
        found = of_several(head, 20);
    } else if (head.begins_with("\xCA\xFE\xBA\xBF"sv)) {
        found = of_several(head, 32);
    } else if (head.begins_with("\xCE\xFA\xED\xFE"sv) || head.begins_with("\xCF\xFA\xED\xFE"sv)) {
        found = {of_mach_code(head.number(4, 4, Order::LittleEndian))};
    } else if (head.begins_with("\x7F"
                                "ELF"sv)) {
        // The sixth byte tells the order of the others' bytes.
        const Order order =
            head.number(5, 1, Order::BigEndian) == 2 ? Order::BigEndian : Order::LittleEndian;
        found = {of_elf_code(head.number(18, 2, order))};
    } else {
        return std::nullopt;
    }
    std::vector<const Processor*> ordered;
    for (const Processor& processor : kProcessors) {
        if (std::find(found.begin(), found.end(), &processor) != found.end()) {
            ordered.push_back(&processor);
        }
    }
    return ordered;
}

}  // namespace bundle
