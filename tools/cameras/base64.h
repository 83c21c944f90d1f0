// Bytes written as text by RFC 4648.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lumivar {

/// The bytes; nothing for a text that is no base64. The "=" at the end may be missing.
std::optional<std::string> from_base64(std::string_view text);

}  // namespace lumivar
