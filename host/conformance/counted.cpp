#include "counted.h"

#include <algorithm>
#include <utility>

namespace conformance {

std::vector<Finding> counted(const std::vector<Placed>& found, std::string_view preposition) {
    std::vector<std::pair<Placed, int>> counts;
    for (const Placed& one : found) {
        auto known = std::find_if(counts.begin(), counts.end(), [&](const auto& other) {
            return other.first.finding.text == one.finding.text &&
                   other.first.finding.deviation == one.finding.deviation;
        });
        if (known == counts.end()) {
            known = counts.insert(counts.end(), {one, 0});
        }
        ++known->second;
    }
    std::vector<Finding> told;
    told.reserve(counts.size());
    for (const auto& [one, count] : counts) {
        Finding finding = one.finding;
        if (!one.place.empty()) {
            const std::string times =
                count == 1 ? "once, " : std::to_string(count) + " times, first ";
            finding.text += " (" + times + std::string(preposition) + " " + one.place + ")";
        }
        told.push_back(std::move(finding));
    }
    return told;
}

}  // namespace conformance
