#include "whole_text.h"

#include <base/exceptions.h>
#include <osapi/whole_file.h>

#include <cstddef>
#include <string>

#include "failure.h"

namespace lumivar {

std::string whole_text(const std::string& path) {
    constexpr std::size_t kMost = std::size_t{1} << 30U;
    try {
        return OSAPI::read_whole(path.c_str(), kMost);
    } catch (const StrXception& failure) {
        throw Failure(OSAPI::cannot_read(path, failure));
    }
}

}  // namespace lumivar
