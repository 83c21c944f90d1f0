#include "dyld_info.h"

#include <functional>

namespace macho {
namespace {

// The tables are programs for a small machine: the upper four bits of a byte are the instruction,
// the lower four a number to go with it.
constexpr std::uint8_t kInstruction = 0xF0;
constexpr std::uint8_t kNumber = 0x0F;
constexpr std::uint64_t kPointer = 8;

/// The place in a segment that the next pointer has.
class Place {
public:
    explicit Place(const Image& image) : image_(image) {}

    void set(Cursor& program, std::uint8_t segment) {
        if (segment >= image_.segments.size()) {
            program.fail("names segment " + std::to_string(segment) + ", which is not there");
        }
        segment_ = &image_.segments[segment];
        offset_ = program.uleb();
    }
    /// Also backwards, by numbers that overflow.
    void skip(std::uint64_t bytes) { offset_ += bytes; }
    /// The address of the pointer here; goes on behind it.
    std::uint64_t take(const Cursor& program) {
        if (segment_ == nullptr || segment_->memory_size < kPointer ||
            offset_ > segment_->memory_size - kPointer) {
            program.fail("sets a pointer outside of any segment");
        }
        if (++taken_ > image_.end() - image_.begin()) {
            program.fail("sets more pointers than the image has bytes");
        }
        const std::uint64_t address = segment_->address + offset_;
        offset_ += kPointer;
        return address;
    }

private:
    const Image& image_;
    const Segment* segment_ = nullptr;
    std::uint64_t offset_ = 0;
    std::uint64_t taken_ = 0;
};

[[noreturn]] void refuse(const Cursor& program, std::uint8_t byte) {
    program.fail("has the unknown instruction " + std::to_string(byte));
}

std::vector<std::uint64_t> read_rebases(const Bytes& bytes, const Image& image) {
    std::vector<std::uint64_t> rebases;
    Place place(image);
    Cursor program(bytes);
    const auto take = [&](std::uint64_t count, std::uint64_t skip) {
        for (std::uint64_t i = 0; i < count; ++i) {
            rebases.push_back(place.take(program));
            place.skip(skip);
        }
    };
    while (!program.done()) {
        const std::uint8_t byte = program.u8();
        const std::uint8_t number = byte & kNumber;
        switch (byte & kInstruction) {
            case 0x00:
                return rebases;
            case 0x10:
                if (number != 1) {
                    program.fail("rebases what is no pointer");
                }
                break;
            case 0x20:
                place.set(program, number);
                break;
            case 0x30:
                place.skip(program.uleb());
                break;
            case 0x40:
                place.skip(number * kPointer);
                break;
            case 0x50:
                take(number, 0);
                break;
            case 0x60:
                take(program.uleb(), 0);
                break;
            case 0x70:
                take(1, program.uleb());
                break;
            case 0x80: {
                const std::uint64_t count = program.uleb();
                take(count, program.uleb());
                break;
            }
            default:
                refuse(program, byte);
        }
    }
    return rebases;
}

/// Lazy tables have a zero byte behind each symbol, others one at their end.
std::vector<Bind> read_binds(const Bytes& bytes, const Image& image, bool lazy) {
    std::vector<Bind> binds;
    Place place(image);
    Bind next = {};
    Cursor program(bytes);
    const auto take = [&] {
        next.address = place.take(program);
        binds.push_back(next);
    };
    while (!program.done()) {
        const std::uint8_t byte = program.u8();
        const std::uint8_t number = byte & kNumber;
        switch (byte & kInstruction) {
            case 0x00:
                if (!lazy) {
                    return binds;
                }
                break;
            case 0x10:
                next.library = number;
                break;
            case 0x20:
                next.library = static_cast<std::int64_t>(program.uleb());
                break;
            case 0x30:  // any library, the program itself, ...
                next.library = number == 0 ? 0 : number - 16;
                break;
            case 0x40:
                next.symbol = program.text();
                break;
            case 0x50:
                if (number != 1) {
                    program.fail("binds what is no pointer");
                }
                break;
            case 0x60:
                next.addend = program.sleb();
                break;
            case 0x70:
                place.set(program, number);
                break;
            case 0x80:
                place.skip(program.uleb());
                break;
            case 0x90:
                take();
                break;
            case 0xA0:
                take();
                place.skip(program.uleb());
                break;
            case 0xB0:
                take();
                place.skip(number * kPointer);
                break;
            case 0xC0: {
                const std::uint64_t count = program.uleb();
                const std::uint64_t skip = program.uleb();
                for (std::uint64_t i = 0; i < count; ++i) {
                    take();
                    place.skip(skip);
                }
                break;
            }
            default:
                refuse(program, byte);
        }
    }
    return binds;
}

/// The names are the paths through a tree; each node says what its path exports and where its
/// branches are.
std::vector<Export> read_exports(const Bytes& bytes) {
    std::vector<Export> exports;
    std::uint64_t nodes = 0;
    const std::function<void(std::uint64_t, const std::string&)> visit =
        [&](std::uint64_t at, const std::string& path) {
            if (++nodes > bytes.size()) {
                bytes.fail("its branches lead back to where they came from");
            }
            Cursor node(bytes, at);
            const std::uint64_t size = node.uleb();
            const std::uint64_t behind = node.position() + size;
            if (size != 0) {
                if (node.uleb() != 0) {
                    node.fail("exports what is neither function nor data of its own");
                }
                exports.push_back({path, node.uleb()});
            }
            Cursor branches(bytes, behind);
            const std::uint8_t count = branches.u8();
            for (int i = 0; i < count; ++i) {
                const std::string name = branches.text();
                visit(branches.uleb(), path + name);
            }
        };
    if (bytes.size() != 0) {
        visit(0, "");
    }
    return exports;
}

}  // namespace

void read_dyld_info(const Bytes& command, Image& image) {
    const auto table = [&](std::uint64_t offset, const char* what) {
        return image.bytes.part(command.u32(offset), command.u32(offset + 4), what);
    };
    image.rebases = read_rebases(table(8, "rebase table"), image);
    image.binds = read_binds(table(16, "bind table"), image, false);
    if (!read_binds(table(24, "weak bind table"), image, false).empty()) {
        command.fail("it shares symbols with other images, which is not read here");
    }
    image.lazy_binds = read_binds(table(32, "lazy bind table"), image, true);
    image.exports = read_exports(table(40, "export table"));
}

}  // namespace macho
