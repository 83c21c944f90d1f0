// Rows of set-up and questions in a host that fails.
#pragma once

#include "examination.h"

namespace conformance {

void examine_set_up_faults(Examination& run);

}  // namespace conformance
