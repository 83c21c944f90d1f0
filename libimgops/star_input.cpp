#include <libimgops/star_input.h>

StarInput::~StarInput() noexcept(false) = default;

bool StarInput::is_valid() {
    const int version = star_header_version(next());
    if (version == 2) {
        depth_ok = true;
    }
    return version != 0;
}

const star* StarInput::next_in_row(u32& count) {
    count = 1;
    return next();
}
