// In a program of its own: it replaces the allocation function.
#include <AE/commands.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "fake_host.h"

namespace {

bool no_memory = false;

}  // namespace

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return no_memory ? nullptr : ::operator new(size);
}

TEST(OutOfMemory, PreRenderReportsItAndLeavesNothingBehind) {
    FakeHost host;
    no_memory = true;
    const PF_Err err = SmartPreRender(&host.in_data, &host.out_data, &host.pre_extra);
    no_memory = false;
    EXPECT_EQ(err, 4);
    EXPECT_EQ(host.pre_output.pre_render_data, nullptr);
    EXPECT_EQ(host.pre_output.delete_pre_render_data_func, nullptr);
    EXPECT_TRUE(host.log.empty());
}
