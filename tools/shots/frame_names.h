// The names of a sequence's pictures.
#pragma once

#include <cstddef>
#include <string>

namespace lumivar {

/// A name with a place for the frame's number: "pan.####.exr", the number with zeros before it to
/// at least as many characters as there are "#", or "pan.%04d.exr", which means the same. The last
/// place in the file's name counts, and beside one with "%" a single "#" is none; folders have
/// none. A minus is one of the characters: "-003".
class FrameNames {
public:
    /// Throws `UsageError` for a name with "%d" and "##".
    explicit FrameNames(std::string pattern);

    const std::string& pattern() const { return pattern_; }
    /// Whether the pattern has a place for the number. Without one all frames have the pattern's
    /// own name.
    bool are_numbered() const { return length_ > 0; }
    std::string name_of(int frame) const;

private:
    void find_percent(std::size_t name);
    void find_hashes(std::size_t name);

    std::string pattern_;
    std::size_t start_ = 0;   ///< of the place
    std::size_t length_ = 0;  ///< of the place; 0: there is none
    std::size_t width_ = 0;   ///< characters that the number has at least
};

}  // namespace lumivar
