// Ranges of frames as the field writes them: "1001-1240", "1-100x2", "1,5,9-12", "-5--1".
#pragma once

#include <string>
#include <vector>

namespace lumivar {

/// More frames than any shot has: a range beyond it is a slip of the hand.
inline constexpr int kMostFrames = 1'000'000;

/// Frames in ascending order, each once. `text` has parts with commas between them; a part is a
/// frame
/// ("12"), a range with both its ends ("9-12"), or every so manieth frame of a range, its first
/// among them
/// ("1-100x2"). Blanks around a part do not count. `option` is what messages call the text,
/// "--frames". Throws `UsageError`, which says what part is wrong and why.
std::vector<int> parse_frame_range(const std::string& text, const std::string& option = "--frames");

/// The shortest text of this kind that names these frames, which ascend: "1-5,8,10-20x5"; "" for
/// none.
std::string frame_range_text(const std::vector<int>& frames);

}  // namespace lumivar
