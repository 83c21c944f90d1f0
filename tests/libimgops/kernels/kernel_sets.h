// All sets of kernels that there are: those of the instruction sets, and the same source over plain
// arrays, which runs everywhere.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fast/kernels/choice.h"

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
/// A test of the set that its parameter names; skipped, saying why, where that does not run.
class EachSet : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        set = runnable(GetParam());
        if (set == nullptr) {
            GTEST_SKIP() << why_not_run(GetParam());
        }
    }
    const star_kernels::Kernels* set = nullptr;
};

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

/// How often each function of a set was called.
struct Calls {
    int spot = 0;
    int streak = 0;
    int trail = 0;
    int outside = 0;
    int to_8_bits = 0;
    int to_16_bits = 0;

    int drawing() const { return spot + streak + trail; }
    int all() const { return drawing() + outside + to_8_bits + to_16_bits; }
};

/// Puts a set into use, for as long as it lives, that counts its calls and leaves the work to the
/// one that was in use. One at a time.
class Counted {
public:
    Counted();
    const Calls& calls() const;

private:
    InUse in_use_;
};

}  // namespace kernel_sets
