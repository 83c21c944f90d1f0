// Frames of the test effect, which tell what their host told it. Needs TEST_EFFECT for sessions.
#pragma once

#include <gtest/gtest.h>
#include <host/session.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "modules/test_effect.h"
#include "session_scene.h"
#include "violations.h"

namespace effect_frames {

inline double fact(const host::Frame& frame, int which) {
    return static_cast<double>(frame.world.pixel<float>(which, 0)[1]);
}

inline void expect_facts(const host::Frame& frame,
                         const std::vector<std::pair<int, double>>& expected) {
    for (const auto& [which, value] : expected) {
        EXPECT_EQ(fact(frame, which), value) << "fact " << which;
    }
}

/// Of the calls whose names begin so, the names.
inline std::vector<std::string> names(const std::vector<host::Call>& calls,
                                      const std::string& prefix) {
    std::vector<std::string> found;
    for (const host::Call& call : calls) {
        if (call.name.rfind(prefix, 0) == 0) {
            found.push_back(call.name);
        }
    }
    return found;
}

inline int count(const std::vector<host::Call>& calls, const std::string& name) {
    return static_cast<int>(std::count_if(
        calls.begin(), calls.end(), [&](const host::Call& call) { return call.name == name; }));
}

inline std::vector<std::int32_t> statuses(const host::Frame& frame, const std::string& name) {
    std::vector<std::int32_t> found;
    for (const host::Call& call : frame.calls) {
        if (call.name == name) {
            found.push_back(call.status);
        }
    }
    return found;
}

inline const std::vector<std::string> kPlainCommands = {
    "PF_Cmd_QUERY_DYNAMIC_FLAGS", "PF_Cmd_FRAME_SETUP", "PF_Cmd_RENDER", "PF_Cmd_FRAME_SETDOWN"};

inline const host::SessionOptions kInPremiere = {.application = host::Application::Premiere};

}  // namespace effect_frames
