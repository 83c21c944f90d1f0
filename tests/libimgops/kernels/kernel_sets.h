// All sets of kernels that there are: those of the instruction sets, and the same source over plain
// arrays, which runs everywhere.
#pragma once

#include "kernels/choice.h"

#include <string>
#include <vector>

namespace kernel_sets {

extern const star_kernels::Kernels& array4;
extern const star_kernels::Kernels& array8;
extern const star_kernels::Kernels& array16;

/// Names of the sets for instruction sets, of all processors.
const std::vector<std::string>& instruction_sets();
/// Names of all sets.
std::vector<std::string> all_sets();
/// The set of that name, null when it is not in this build or this machine lacks it.
const star_kernels::Kernels* runnable(const std::string& name);
/// Why `runnable` is null: one line, naming the set.
std::string why_not_run(const std::string& name);
/// Those that run here, those over arrays first.
std::vector<const star_kernels::Kernels*> all_runnable();

/// Puts a set into use for as long as it lives.
class InUse {
public:
    explicit InUse(const star_kernels::Kernels* kernels) { star_kernels::use(kernels); }
    InUse(const InUse&) = delete;
    InUse& operator=(const InUse&) = delete;
    ~InUse() { star_kernels::use(nullptr); }
};

}  // namespace kernel_sets
