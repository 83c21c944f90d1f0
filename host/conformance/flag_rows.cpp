// Row of the flags that the effect declares: whether they may stand there, and together.
#include <host_api/effect_interface.h>

#include <vector>

#include "examination.h"

namespace conformance {

void examine_flags(Examination& run) {
    std::vector<Finding> findings;
    if (run.declared->has2(PF_OutFlag2_FLOAT_COLOR_AWARE) &&
        !run.declared->has2(PF_OutFlag2_SUPPORTS_SMART_RENDER)) {
        findings.push_back({"",
                            "PF_OutFlag2_FLOAT_COLOR_AWARE needs "
                            "PF_OutFlag2_SUPPORTS_SMART_RENDER; declare both or neither",
                            ""});
    }
    if (run.declared->has(PF_OutFlag_PiPL_OVERRIDES_OUTDATA_OUTFLAGS)) {
        findings.push_back({"",
                            "PF_OutFlag_PiPL_OVERRIDES_OUTDATA_OUTFLAGS is for the registration "
                            "alone; leave it out of out_flags",
                            ""});
    }
    run.enter({"setup.flags", "global set-up", "flags have what they need, none is out of place"},
              findings, "nothing found");
}

}  // namespace conformance
