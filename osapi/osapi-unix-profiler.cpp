// Nested timings.
#include <osapi/clock.h>
#include <osapi/profiler.h>

#include <cstdio>

namespace OSAPI {

namespace {

int level = 0;

void indent() {
    for (int i = 0; i < level; ++i) {
        std::putchar('\t');
    }
}

}  // namespace

Profiler::Profiler(const char* name) : name_(name) {
    indent();
    std::printf("PROFILE: %s\n", name_.c_str());
    ++level;
    start_ = microsecs();
}

Profiler::~Profiler() {
    const u64 end = microsecs();
    --level;
    indent();
    // Signed: the clock may have been set back meanwhile.
    const s64 elapsed = static_cast<s64>(end - start_);
    std::printf("%s = %.4f ms\n", name_.c_str(), static_cast<double>(elapsed) * 0.001);
}

}  // namespace OSAPI
