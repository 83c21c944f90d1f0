#include "counted.h"

namespace lumivar {

std::string counted(std::uint64_t count, const std::string& one, const std::string& many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

}  // namespace lumivar
