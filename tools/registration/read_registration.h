// The resource by which a bundle registers its effect with a host.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>

namespace bundle {

/// Bytes that are no resource file with one registration resource in it; the message says what is
/// wrong and at which byte.
class ResourceError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The properties of a registration resource by their keys ("kind", "eMNA"), as bytes without
/// padding.
class Registration {
public:
    /// `file` is the bytes of a resource file (a resource fork kept as a plain file), whatever they
    /// are. Throws `ResourceError`.
    explicit Registration(const std::string& file);

    bool has(const std::string& key) const { return properties_.count(key) != 0; }
    /// Empty when there is none.
    std::string bytes(const std::string& key) const;
    /// A text with a length byte before it; nothing when the bytes are no such text.
    std::optional<std::string> text(const std::string& key) const;
    /// Four bytes, the most significant first; nothing when there are others.
    std::optional<std::uint32_t> number(const std::string& key) const;

private:
    std::map<std::string, std::string> properties_;
};

}  // namespace bundle
