#include "resource_file.h"

#include <AE/registration.h>

#include <cstddef>

namespace {

enum class ByteOrder { HighestFirst, LowestFirst };

/// Numbers are written a byte at a time, so that the order is that of the format and not that of
/// the processor.
class Bytes {
public:
    explicit Bytes(ByteOrder order = ByteOrder::HighestFirst) : order_(order) {}

    void add_16(std::uint16_t number) { add_number(number, 2); }
    void add_32(std::uint32_t number) { add_number(number, 4); }
    /// A four-character code is a number, whose highest byte is the first character.
    void add_code(std::string_view code) {
        bytes_ += order_ == ByteOrder::HighestFirst ? std::string(code)
                                                    : std::string(code.rbegin(), code.rend());
    }
    void add(std::string_view text) { bytes_ += text; }
    void add_zeros(std::size_t count) { bytes_.append(count, '\0'); }

    const std::string& bytes() const { return bytes_; }

private:
    void add_number(std::uint32_t number, unsigned size) {
        for (unsigned i = 0; i < size; ++i) {
            const unsigned place = order_ == ByteOrder::HighestFirst ? size - 1 - i : i;
            bytes_ += static_cast<char>(number >> 8 * place & 0xFFU);
        }
    }

    ByteOrder order_;
    std::string bytes_;
};

std::uint32_t size_of(std::string_view bytes) { return static_cast<std::uint32_t>(bytes.size()); }

/// One length byte, then the characters.
std::string counted_text(std::string_view text) {
    return static_cast<char>(text.size()) + std::string(text);
}

/// How a system's hosts read the properties.
struct Format {
    ByteOrder order;
    bool length_counts_padding;
};
constexpr Format kOnMacOS = {ByteOrder::HighestFirst, false};
constexpr Format kOnWindows = {ByteOrder::LowestFirst, true};

class Properties {
public:
    explicit Properties(Format format) : format_(format), body_(format.order) {}

    void add(std::string_view key, std::string_view data) {
        const std::size_t padding = (4 - data.size() % 4) % 4;
        body_.add_code("8BIM");
        body_.add_code(key);
        body_.add_32(0);  // index
        body_.add_32(size_of(data) +
                     (format_.length_counts_padding ? static_cast<std::uint32_t>(padding) : 0));
        body_.add(data);
        body_.add_zeros(padding);
        ++count_;
    }
    void add_code(std::string_view key, std::string_view code) {
        Bytes bytes(format_.order);
        bytes.add_code(code);
        add(key, bytes.bytes());
    }
    void add_16(std::string_view key, std::uint16_t number) {
        Bytes bytes(format_.order);
        bytes.add_16(number);
        add(key, bytes.bytes());
    }
    void add_32(std::string_view key, std::uint32_t number) {
        Bytes bytes(format_.order);
        bytes.add_32(number);
        add(key, bytes.bytes());
    }

    std::uint32_t count() const { return count_; }
    const std::string& bytes() const { return body_.bytes(); }

private:
    Format format_;
    Bytes body_;
    std::uint32_t count_ = 0;
};

/// All properties in the order of every registration. `add_entry_points` adds the keys of the
/// system's processors.
template <class AddEntryPoints>
Properties all_properties(Format format, AddEntryPoints add_entry_points) {
    using namespace registration;
    constexpr std::uint32_t kResourceVersion = 0x20000;  // 2.0
    constexpr std::uint32_t kInterfaceVersion =
        kInterfaceMajorVersion * 0x10000U + kInterfaceMinorVersion;

    Properties properties(format);
    properties.add_code("kind", kPackageType);
    properties.add("name", counted_text(kName));
    properties.add("catg", counted_text(kCategory));
    add_entry_points(properties);
    properties.add_32("ePVR", kResourceVersion);
    properties.add_32("eSVR", kInterfaceVersion);
    properties.add_32("eVER", kVersion);
    properties.add_16("eINF", 0);
    properties.add_32("eGLO", static_cast<std::uint32_t>(kOutFlags));
    properties.add_32("eGL2", static_cast<std::uint32_t>(kOutFlags2));
    properties.add("eMNA", counted_text(kMatchName));
    properties.add_32("aeFL", 0);
    return properties;
}

}  // namespace

std::string registration_resource(const std::vector<const bundle::Processor*>& processors) {
    const Properties properties = all_properties(kOnMacOS, [&](Properties& keys) {
        for (const bundle::Processor* processor : processors) {
            keys.add(processor->key, counted_text(registration::kEntryPoint));
        }
    });
    Bytes bytes;
    bytes.add_32(0);  // version of the format
    bytes.add_32(properties.count());
    bytes.add(properties.bytes());
    return bytes.bytes();
}

std::string windows_registration_resource() {
    const Properties properties = all_properties(kOnWindows, [](Properties& keys) {
        // Here the name ends in a NUL, where it has its length in front on macOS.
        keys.add("8664", std::string(registration::kEntryPoint) + '\0');
    });
    Bytes bytes(kOnWindows.order);
    bytes.add_16(1);
    bytes.add_32(0);  // version of the format
    bytes.add_32(properties.count());
    bytes.add(properties.bytes());
    return bytes.bytes();
}

std::string resource_file(std::string_view type, std::uint16_t identifier,
                          std::string_view resource) {
    constexpr std::uint32_t kDataOffset = 256;
    constexpr std::uint16_t kTypeListOffset = 28;
    constexpr std::uint16_t kReferenceListOffset = 10;  // from the type list
    constexpr std::uint16_t kMapSize = 50;
    const std::uint32_t data_size = 4 + size_of(resource);

    Bytes header;
    header.add_32(kDataOffset);
    header.add_32(kDataOffset + data_size);
    header.add_32(data_size);
    header.add_32(kMapSize);

    Bytes file;
    file.add(header.bytes());
    file.add_zeros(kDataOffset - header.bytes().size());
    file.add_32(size_of(resource));
    file.add(resource);

    // The map begins with the header once more.
    file.add(header.bytes());
    file.add_zeros(8);  // next map, file reference, attributes
    file.add_16(kTypeListOffset);
    file.add_16(kMapSize);  // the list of names, which is empty
    file.add_16(0);         // types, less one
    file.add(type);
    file.add_16(0);  // resources of the type, less one
    file.add_16(kReferenceListOffset);
    file.add_16(identifier);
    file.add_16(0xFFFF);  // no name
    file.add_32(0);       // attributes and offset within the data
    file.add_32(0);
    return file.bytes();
}
