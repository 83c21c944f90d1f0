// Things and how many there are, as a sentence has them.
#pragma once

#include <cstdint>
#include <string>

namespace lumivar {

/// "1 star", "0 stars", "2 stars": the number with `one` for exactly one, and `many` for all
/// others.
std::string counted(std::uint64_t count, const std::string& one, const std::string& many);

}  // namespace lumivar
