#include <conformance/report.h>

#include <algorithm>

namespace conformance {

const char* name_of(Verdict verdict) {
    switch (verdict) {
        case Verdict::Pass:
            return "pass";
        case Verdict::Deviation:
            return "kept";
        case Verdict::Fail:
            break;
    }
    return "fail";
}

std::size_t Report::count(Verdict verdict) const {
    return static_cast<std::size_t>(std::count_if(
        rows.begin(), rows.end(), [=](const Row& row) { return row.verdict == verdict; }));
}

}  // namespace conformance
