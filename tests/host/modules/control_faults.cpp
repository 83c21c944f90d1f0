#include <cstring>

#include "effect.h"

namespace test_effect {
namespace {

PF_ParamDef blank_control(int id, const char* name, PF_ParamType type) {
    PF_ParamDef control;
    std::memset(&control, 0, sizeof control);
    control.uu.id = id;
    control.param_type = type;
    std::strcpy(control.name, name);
    return control;
}

PF_ParamDef checkbox(int id, const char* name) {
    PF_ParamDef control = blank_control(id, name, PF_Param_CHECKBOX);
    control.u.bd.u.nameptr = "";
    return control;
}

}  // namespace

void spoil_control(PF_ParamDef& control) {
    struct Spoiled {
        Mischief mischief;
        int id;
        void (*spoil)(PF_ParamDefUnion&);
    };
    constexpr Spoiled kSpoiled[] = {
        {kStartOutside, kGainId, [](PF_ParamDefUnion& u) { u.fs_d.value = 300.5; }},
        {kDefaultOutside, kCountId, [](PF_ParamDefUnion& u) { u.sd.dephault = -6; }},
        {kSliderOutside, kCountId, [](PF_ParamDefUnion& u) { u.sd.slider_max = 21; }},
        {kCheckboxOfFive, kInvertId, [](PF_ParamDefUnion& u) { u.bd.value = 5; }},
        {kEmptyChoice, kModeId, [](PF_ParamDefUnion& u) { u.pd.u.namesptr = "Ramp||Full Range"; }}};
    for (const Spoiled& one : kSpoiled) {
        if (one.mischief == asked_mischief() && one.id == control.uu.id) {
            one.spoil(control.u);
        }
    }
}

std::vector<PF_ParamDef> further_controls() {
    switch (asked_mischief()) {
        case kUnknownControl:
            return {blank_control(50, "Strange", 77)};
        case kSameId:
            return {checkbox(kShadeId, "Twin")};
        case kGroups:
            return {blank_control(50, "Outer", PF_Param_GROUP_START),
                    blank_control(51, "Inner", PF_Param_GROUP_START), checkbox(52, "Inside"),
                    blank_control(0, "", PF_Param_GROUP_END),
                    blank_control(0, "", PF_Param_GROUP_END)};
        default:
            return {};
    }
}

}  // namespace test_effect
