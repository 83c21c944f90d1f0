// Faults as data.
#include <gtest/gtest.h>
#include <host/faults.h>
#include <host/session.h>

#include <map>
#include <string>
#include <vector>

#include "effect_frames.h"

namespace {

using namespace effect_frames;
using namespace test_effect;
using host::FaultPlan;
using host::Frame;
using host::Session;
using session_scene::small_scene;

using Statuses = std::vector<std::int32_t>;

class Faults : public testing::Test {
protected:
    Frame render() { return session.render(small_scene(), {0, 24}); }
    /// Of the six checkouts of a frame.
    Statuses checkouts() { return statuses(render(), "checkout_param"); }

    FaultPlan plan;
    Session session{TEST_EFFECT, {.filter = plan.filter()}};
};

TEST_F(Faults, StrikeTheNthCallSinceThePlanWasArmed) {
    render();
    plan.arm({{"checkout_param", 2, 513}});
    EXPECT_EQ(checkouts(), (Statuses{0, 513, 0, 0, 0, 0}));
    EXPECT_EQ(checkouts(), Statuses(6, 0));
    plan.arm({{"checkout_param", 1, 4}});
    EXPECT_EQ(checkouts()[0], 4);
    EXPECT_EQ(plan.delivered().at("checkout_param"), 2);
    EXPECT_EQ(plan.delivered_now().at("checkout_param"), 1);
}

TEST_F(Faults, StrikeEveryCallUntilDisarmed) {
    plan.arm({{"checkout_param", 0, 517}});
    EXPECT_EQ(checkouts(), Statuses(6, 517));
    plan.disarm();
    EXPECT_EQ(checkouts(), Statuses(6, 0));
    EXPECT_EQ(plan.delivered().at("checkout_param"), 6);
}

TEST_F(Faults, TakeOneSuiteAwayAndNoOther) {
    plan.arm({host::missing_suite("AEGP Item Suite")});
    const Frame frame = render();
    EXPECT_EQ(fact(frame, kItemWidth), 0.0) << "the effect did without";
    // Asked for with the camera and when the tables were looked through.
    EXPECT_EQ(plan.delivered().at("AcquireSuite AEGP Item Suite"), 2);
    for (const host::Call& call : frame.calls) {
        if (call.name == "AcquireSuite") {
            const bool items = call.arguments.find("AEGP Item Suite") != std::string::npos;
            EXPECT_EQ(call.status, items ? 0x53214664 : 0) << call.arguments;
        }
    }
    EXPECT_TRUE(frame.violations.empty());
}

TEST_F(Faults, OfReleaseLeaveNothingHeld) {
    plan.arm({{"ReleaseSuite", 0, 1}});
    EXPECT_TRUE(render().violations.empty());
    EXPECT_GT(plan.delivered().at("ReleaseSuite"), 0);
}

TEST_F(Faults, OfFunctionsWithoutAStatusAreNullZeroOrNegative) {
    plan.arm({{"sprintf", 1, 1}});
    EXPECT_EQ(session.about(), "");
    plan.disarm();
    EXPECT_EQ(session.about(), "Test effect v9");
    EXPECT_EQ(plan.delivered().at("sprintf"), 1);
}

TEST_F(Faults, OfTwoThatMeetTheFirstHolds) {
    plan.arm({{"checkout_param", 3, 7}, {"checkout_param", 0, 8}});
    EXPECT_EQ(checkouts(), (Statuses{8, 8, 7, 8, 8, 8}));
}

TEST_F(Faults, StrikeWhatCanFailOfTheCallsOfAGoodFrame) {
    const std::map<std::string, int> calls = host::calls_that_can_fail(render().calls);
    EXPECT_EQ(calls.at("checkout_param"), 6);
    EXPECT_EQ(calls.at("AcquireSuite PF World Suite"), 2);
    EXPECT_EQ(calls.count("PF_Cmd_SMART_RENDER"), 0u) << "the host's own";
    EXPECT_EQ(calls.count("host_dispose_handle"), 0u) << "cannot fail";
}

}  // namespace
