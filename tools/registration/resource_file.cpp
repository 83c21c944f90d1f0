#include "resource_file.h"

#include <AE/registration.h>

#include <cstddef>

namespace {

/// Numbers are written a byte at a time, so that the order is that of the format and not that of
/// the processor.
class Bytes {
public:
    void add_16(std::uint16_t number) {
        bytes_ += static_cast<char>(number >> 8);
        bytes_ += static_cast<char>(number & 0xFF);
    }
    void add_32(std::uint32_t number) {
        add_16(static_cast<std::uint16_t>(number >> 16));
        add_16(static_cast<std::uint16_t>(number & 0xFFFF));
    }
    void add(std::string_view text) { bytes_ += text; }
    void add_zeros(std::size_t count) { bytes_.append(count, '\0'); }

    const std::string& bytes() const { return bytes_; }

private:
    std::string bytes_;
};

std::uint32_t size_of(std::string_view bytes) { return static_cast<std::uint32_t>(bytes.size()); }

std::string number_16(std::uint16_t number) {
    Bytes bytes;
    bytes.add_16(number);
    return bytes.bytes();
}

std::string number_32(std::uint32_t number) {
    Bytes bytes;
    bytes.add_32(number);
    return bytes.bytes();
}

/// One length byte, then the characters.
std::string counted_text(std::string_view text) {
    return static_cast<char>(text.size()) + std::string(text);
}

class Properties {
public:
    void add(std::string_view key, std::string_view data) {
        body_.add("8BIM");
        body_.add(key);
        body_.add_32(0);  // index
        // The length leaves the padding out.
        body_.add_32(size_of(data));
        body_.add(data);
        body_.add_zeros((4 - data.size() % 4) % 4);
        ++count_;
    }

    std::string resource() const {
        Bytes bytes;
        bytes.add_32(0);  // version of the format
        bytes.add_32(count_);
        bytes.add(body_.bytes());
        return bytes.bytes();
    }

private:
    Bytes body_;
    std::uint32_t count_ = 0;
};

}  // namespace

std::string registration_resource(const std::vector<const bundle::Processor*>& processors) {
    using namespace registration;
    constexpr std::uint32_t kResourceVersion = 0x20000;  // 2.0
    constexpr std::uint32_t kInterfaceVersion =
        kInterfaceMajorVersion * 0x10000U + kInterfaceMinorVersion;

    Properties properties;
    properties.add("kind", kPackageType);
    properties.add("name", counted_text(kName));
    properties.add("catg", counted_text(kCategory));
    for (const bundle::Processor* processor : processors) {
        properties.add(processor->key, counted_text(kEntryPoint));
    }
    properties.add("ePVR", number_32(kResourceVersion));
    properties.add("eSVR", number_32(kInterfaceVersion));
    properties.add("eVER", number_32(kVersion));
    properties.add("eINF", number_16(0));
    properties.add("eGLO", number_32(static_cast<std::uint32_t>(kOutFlags)));
    properties.add("eGL2", number_32(static_cast<std::uint32_t>(kOutFlags2)));
    properties.add("eMNA", counted_text(kMatchName));
    properties.add("aeFL", number_32(0));
    return properties.resource();
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
