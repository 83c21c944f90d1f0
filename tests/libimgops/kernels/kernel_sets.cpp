#include "kernel_sets.h"

namespace star_kernels {

extern const Kernels array4_kernels;
extern const Kernels array8_kernels;
extern const Kernels array16_kernels;

}  // namespace star_kernels

namespace kernel_sets {

const star_kernels::Kernels& array4 = star_kernels::array4_kernels;
const star_kernels::Kernels& array8 = star_kernels::array8_kernels;
const star_kernels::Kernels& array16 = star_kernels::array16_kernels;

namespace {

const star_kernels::Kernels* built(const std::string& name) {
    for (const star_kernels::Kernels* arrays : {&array4, &array8, &array16}) {
        if (name == arrays->name) {
            return arrays;
        }
    }
    for (const star_kernels::Kernels* const* set = star_kernels::built(); *set != nullptr; ++set) {
        if (name == (*set)->name) {
            return *set;
        }
    }
    return nullptr;
}

Calls counts;
const star_kernels::Kernels* worker;

const star_kernels::Kernels* counting_set() {
    // Where no set is built for the processor, the arrays draw as well.
    worker = star_kernels::in_use() != nullptr ? star_kernels::in_use() : &array4;
    counts = Calls();
    static star_kernels::Kernels set;
    set = *worker;
    set.name = "counting";
    set.draw_spot = [](const star_kernels::Pixels& to, const star_kernels::Spot& spot, float ry) {
        ++counts.spot;
        return worker->draw_spot(to, spot, ry);
    };
    set.draw_streak = [](const star_kernels::Pixels& to, const star_kernels::Streak& streak,
                         float ry) {
        ++counts.streak;
        return worker->draw_streak(to, streak, ry);
    };
    set.draw_trail = [](const star_kernels::Pixels& to, const star_kernels::Trail& trail) {
        ++counts.trail;
        worker->draw_trail(to, trail);
    };
    set.outside = [](const float* lon, const float* lat, const float* weight, int count,
                     const star_kernels::Plane* planes, int samples, unsigned char* is_outside) {
        ++counts.outside;
        worker->outside(lon, lat, weight, count, planes, samples, is_outside);
    };
    set.to_8_bits = [](const float* pixels, void* codes, std::size_t count) {
        ++counts.to_8_bits;
        worker->to_8_bits(pixels, codes, count);
    };
    set.to_16_bits = [](const float* pixels, void* codes, std::size_t count) {
        ++counts.to_16_bits;
        worker->to_16_bits(pixels, codes, count);
    };
    return &set;
}

}  // namespace

Counted::Counted() : in_use_(counting_set()) {}
const Calls& Counted::calls() const { return counts; }

const std::vector<std::string>& instruction_sets() {
    static const std::vector<std::string> names = {"sse2", "avx2", "avx512", "neon"};
    return names;
}

std::vector<std::string> all_sets() {
    std::vector<std::string> names = {"array4", "array8", "array16"};
    names.insert(names.end(), instruction_sets().begin(), instruction_sets().end());
    return names;
}

const star_kernels::Kernels* runnable(const std::string& name) {
    const star_kernels::Kernels* set = built(name);
    return set != nullptr && star_kernels::runs_here(*set) ? set : nullptr;
}

std::string why_not_run(const std::string& name) {
    return name + (built(name) == nullptr ? " was not run: it is for another processor"
                                          : " was not run: this machine lacks its instructions");
}

std::vector<const star_kernels::Kernels*> all_runnable() {
    std::vector<const star_kernels::Kernels*> sets;
    for (const std::string& name : all_sets()) {
        if (const star_kernels::Kernels* set = runnable(name)) {
            sets.push_back(set);
        }
    }
    return sets;
}

}  // namespace kernel_sets
