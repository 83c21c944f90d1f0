// The plug-in leaves nothing behind in its host's process, however often it comes and goes.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <host/session.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "process.h"
#include "starry.h"

namespace {

using namespace starry;

class Reload : public Lumivar {
protected:
    bool still_loaded() const {
        void* const handle = dlopen(executable().c_str(), RTLD_NOW | RTLD_NOLOAD);
        if (handle != nullptr) {
            dlclose(handle);
        }
        return handle != nullptr;
    }
    void come_and_go() {
        host::Session session(bundle());
        EXPECT_TRUE(still_loaded());
        EXPECT_TRUE(session.render(starry_scene(), {0, 24}).drawn);
        session.close();
        EXPECT_EQ(joined(session.violations()), "");
    }
};

TEST_F(Reload, AHundredTimesLeavesNothingMappedOpenOrHeld) {
    add_stars();
    constexpr int kWarmUp = 20;
    constexpr int kTimes = 100;
    for (int i = 0; i < kWarmUp; ++i) {
        come_and_go();
    }
    const process::Use before = process::use();
    for (int i = 0; i < kTimes; ++i) {
        come_and_go();
        ASSERT_FALSE(still_loaded()) << i;
        ASSERT_EQ(process::mappings_of(executable()), 0) << i;
    }
    const process::Use after = process::use();
    EXPECT_EQ(after.descriptors, before.descriptors);
    if (process::kMemoryTells) {
        // 41 KB a reload would show.
        EXPECT_LE(after.mappings, before.mappings + 2);
        EXPECT_LE(after.resident_bytes, before.resident_bytes + (std::size_t{4} << 20U));
    }
}

TEST_F(Reload, AfterARefusedSetUpLeavesNothingEither) {
    for (int i = 0; i < 10; ++i) {
        EXPECT_THROW(host::Session{bundle()}, host::EffectError);
        EXPECT_FALSE(still_loaded());
    }
}

}  // namespace
