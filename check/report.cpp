#include <check/report.h>

#include <algorithm>

namespace check {
namespace {

constexpr Deviation kStarField[] = {
    {kParametersStayOut, "each parameter that is checked out is checked in again",
     "hosts release a pre-render's parameters with the pre-render"},
    {kPopupDefaultZero, "choices count from 1",
     "projects store the 0: it leaves the projection as it is and takes the first database"},
    {kChoiceCount, "the count of choices is that of the names",
     "hosts have stored the length of the joined names"},
    {kStatusZero, "the error of a call is returned",
     "batch renders of saved projects go on past a frame that failed"},
    {kHandleInRecord, "the render record is the host's",
     "the dependency handler answers the render command too, in the slot of the callbacks"},
    {kWorldSuiteReleased, "a suite is released as often as it was acquired",
     "a frame gives back everything in the end, whatever failed before; hosts refuse it unharmed"},
    {kLayerCheckedIn, "a layer is checked in if it was fetched",
     "a frame gives back everything in the end, whatever failed before; hosts refuse it unharmed"},
    {kParameterCheckedIn, "a parameter is checked in if it was checked out",
     "the flag query gives back its parameter in the end; hosts refuse it unharmed"},
};

struct Contract {
    std::string_view match_name;
    std::span<const Deviation> deviations;
};

constexpr Contract kContracts[] = {{"Lumivar Star Field", kStarField}};

}  // namespace

const char* name_of(Verdict verdict) {
    switch (verdict) {
        case Verdict::Pass:
            return "pass";
        case Verdict::Kept:
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

std::span<const Deviation> deviations_of(std::string_view match_name) {
    for (const Contract& contract : kContracts) {
        if (contract.match_name == match_name) {
            return contract.deviations;
        }
    }
    return {};
}

}  // namespace check
