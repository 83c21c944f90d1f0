// Faults as data.
#include <gtest/gtest.h>
#include <host/faults.h>
#include <host/session.h>

#include <algorithm>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "effect_frames.h"
#include "random_faults.h"

namespace {

using namespace effect_frames;
using namespace test_effect;
using host::CallFault;
using host::FaultPlan;
using host::Frame;
using host::Session;
using session_scene::small_scene;

class Faults : public testing::Test {
protected:
    static host::SessionOptions with(FaultPlan& plan) {
        host::SessionOptions options;
        options.filter = plan.filter();
        return options;
    }
    Frame render() { return session.render(small_scene(), {0, 24}); }

    FaultPlan plan;
    Session session{TEST_EFFECT, with(plan)};
};

std::vector<std::int32_t> statuses(const Frame& frame, const std::string& name) {
    std::vector<std::int32_t> found;
    for (const host::Call& call : frame.calls) {
        if (call.name == name) {
            found.push_back(call.status);
        }
    }
    return found;
}

TEST_F(Faults, StrikeTheNthCallSinceThePlanWasArmed) {
    render();
    plan.arm({{"checkout_param", 2, 513}});
    EXPECT_EQ(statuses(render(), "checkout_param"),
              (std::vector<std::int32_t>{0, 513, 0, 0, 0, 0}));
    EXPECT_EQ(statuses(render(), "checkout_param"), std::vector<std::int32_t>(6, 0));
    plan.arm({{"checkout_param", 1, 4}});
    EXPECT_EQ(statuses(render(), "checkout_param")[0], 4);
    EXPECT_EQ(plan.delivered().at("checkout_param"), 2);
    EXPECT_EQ(plan.delivered_now().at("checkout_param"), 1);
}

TEST_F(Faults, StrikeEveryCallUntilDisarmed) {
    plan.arm({{"checkout_param", 0, 517}});
    EXPECT_EQ(statuses(render(), "checkout_param"), std::vector<std::int32_t>(6, 517));
    plan.disarm();
    EXPECT_EQ(statuses(render(), "checkout_param"), std::vector<std::int32_t>(6, 0));
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
    EXPECT_EQ(statuses(render(), "checkout_param"), (std::vector<std::int32_t>{8, 8, 7, 8, 8, 8}));
}

TEST_F(Faults, AtRandomAreLearnedFromAGoodFrame) {
    const Frame good = render();
    const RandomFaults faults(1, good.calls, {1});
    EXPECT_EQ(faults.calls().at("checkout_param"), 6);
    EXPECT_EQ(faults.calls().at("AcquireSuite PF World Suite"), 2);
    EXPECT_EQ(faults.calls().count("PF_Cmd_SMART_RENDER"), 0u) << "the host's own";
    EXPECT_EQ(faults.calls().count("host_dispose_handle"), 0u) << "cannot fail";
}

TEST_F(Faults, AtRandomAreTheSameForTheSameSeed) {
    const Frame good = render();
    const auto shown = [&](std::uint64_t seed) {
        RandomFaults faults(seed, good.calls, {1, 4, 516});
        std::string text;
        for (int i = 0; i < 50; ++i) {
            for (const CallFault& fault : faults.draw()) {
                text += fault.call + " " + std::to_string(fault.nth) + " " +
                        std::to_string(fault.status) + "; ";
            }
        }
        return text;
    };
    EXPECT_EQ(shown(7), shown(7));
    EXPECT_NE(shown(7), shown(8));
}

TEST_F(Faults, AtRandomReachEveryNameCallAndStatus) {
    const Frame good = render();
    RandomFaults faults(3, good.calls, {1, 4, 516});
    std::set<std::pair<std::string, int>> drawn;
    std::set<std::int32_t> answers;
    for (int i = 0; i < 20000; ++i) {
        const auto some = faults.draw(2);
        ASSERT_GE(some.size(), 1u);
        ASSERT_LE(some.size(), 2u);
        for (const CallFault& fault : some) {
            drawn.insert({fault.call, fault.nth});
            answers.insert(fault.status);
        }
    }
    std::set<std::pair<std::string, int>> all;
    for (const auto& [name, count] : faults.calls()) {
        for (int nth = 0; nth <= count; ++nth) {
            all.insert({name, nth});
        }
    }
    EXPECT_EQ(drawn, all);
    EXPECT_EQ(answers, (std::set<std::int32_t>{1, 4, 516}));
}

TEST_F(Faults, AtRandomNeedSomethingThatCanFail) {
    EXPECT_THROW(RandomFaults(1, {}, {1}), std::invalid_argument);
    EXPECT_THROW(RandomFaults(1, render().calls, {}), std::invalid_argument);
}

}  // namespace
