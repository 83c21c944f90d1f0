// In a program of its own: it replaces the allocation function, for the module too.
#include <cstdlib>
#include <new>

#include "built_effect.h"

namespace {

bool no_memory = false;
int refused = 0;

}  // namespace

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    if (no_memory) {
        ++refused;
        return nullptr;
    }
    return ::operator new(size);
}

using OutOfMemory = BuiltEffect;

TEST_F(OutOfMemory, PreRenderReportsItAndLeavesNothingBehind) {
    add_database("a.stars", kHeader);
    set_up();
    no_memory = true;
    const PF_Err err = send(PF_Cmd_SMART_PRE_RENDER, &host.pre_extra);
    no_memory = false;
    EXPECT_EQ(refused, 1) << "the module's own";
    EXPECT_EQ(err, 4);
    EXPECT_EQ(host.pre_output.pre_render_data, nullptr);
    EXPECT_EQ(host.pre_output.delete_pre_render_data_func, nullptr);
    EXPECT_TRUE(host.log.empty());
    EXPECT_EQ(pre_render(), 0) << "with memory again";
}
