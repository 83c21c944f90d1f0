#include <libimgops/star_input.h>

#include <cstring>

namespace {

constexpr unsigned kMagicLength = 8;

bool has_magic(const star* header, const char* magic) {
    const void* bytes = header;
    // As text: a NUL in the header ends the comparison, as a difference.
    return std::strncmp(static_cast<const char*>(bytes), magic, kMagicLength) == 0;
}

}  // namespace

StarInput::~StarInput() noexcept(false) = default;

bool StarInput::is_valid() {
    const star* header = next();
    if (has_magic(header, "LUMIVAR1")) {
        return true;
    }
    if (has_magic(header, "LUMIVAR2")) {
        depth_ok = true;
        return true;
    }
    return false;
}

const star* StarInput::next_in_row(u32& count) {
    count = 1;
    return next();
}
