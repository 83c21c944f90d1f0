// Texts of a property list, which tells a host that a bundle is an effect.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace bundle {

/// What stands behind a key, as far as it is a text.
struct Entry {
    std::size_t line = 0;  ///< of the key, from 1; 0: there is none
    std::optional<std::string> value;
};

/// A property list in XML.
class PropertyList {
public:
    explicit PropertyList(std::string text);

    Entry entry(const std::string& key) const;

private:
    std::string text_;
};

}  // namespace bundle
