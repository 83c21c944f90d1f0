// What the built module answers to each command of the host but those for frames.
#include <algorithm>
#include <cstring>

#include "../host/process.h"
#include "built_effect.h"

namespace {

class Commands : public BuiltEffect {
protected:
    /// All bytes that the host shows the effect, to see what a command changed.
    std::string records() const {
        const auto bytes = [](const auto& record) {
            return std::string(reinterpret_cast<const char*>(&record), sizeof record);
        };
        return bytes(host.in_data) + bytes(host.out_data) + bytes(host.pre_output) +
               bytes(host.pre_extra) + bytes(host.render_extra);
    }
};

}  // namespace

TEST_F(Commands, OthersAreAnsweredWithoutTouchingAnything) {
    add_database("a.stars", kHeader);
    for (const bool is_set_up : {false, true}) {
        if (is_set_up) {
            set_up();
        }
        const std::string before = records();
        for (const PF_Cmd cmd : {2,  5,  6,  7,  8,  9,  10, 12, 13,   14,        15,        17, 19,
                                 20, 21, 22, 25, 26, 28, 31, 33, 1000, INT32_MAX, INT32_MIN, -1}) {
            EXPECT_EQ(send(cmd, &host.pre_extra), 0) << cmd;
            EXPECT_EQ(records(), before) << cmd;
        }
        EXPECT_EQ(host.log, Log{});
    }
}

TEST_F(Commands, HostWithoutBasicSuiteIsTurnedAway) {
    host.in_data.pica_basicP = nullptr;
    const std::string before = records();
    for (const PF_Cmd cmd : {0, 1, 2, 3, 4, 11, 16, 18, 23, 24, 25}) {
        EXPECT_EQ(send(cmd), 516) << cmd;
        EXPECT_EQ(records(), before) << cmd;
    }
    EXPECT_EQ(host.log, Log{});
}

TEST_F(Commands, AboutNamesEffectVersionAndMakerButNotUnderPremiere) {
    host.in_data.appl_id = 0x50724D72;
    std::strcpy(host.out_data.return_msg, "as it was");
    EXPECT_EQ(send(PF_Cmd_ABOUT), 0);
    EXPECT_EQ(message(), "as it was");
    EXPECT_EQ(host.log, Log{});
    host.in_data.appl_id = kAppID_AfterEffects;
    EXPECT_EQ(send(PF_Cmd_ABOUT), 0);
    EXPECT_EQ(message(), "Lumivar for After Effects v2.0\rLumivar, 2026");
    EXPECT_EQ(host.log, (Log{"acquire PF ANSI Suite 1", "sprintf", "release PF ANSI Suite 1"}));
    host.missing_suites = {"PF ANSI Suite"};
    host.out_data = {};
    EXPECT_EQ(send(PF_Cmd_ABOUT), 516);
    EXPECT_EQ(message(), "");
    EXPECT_TRUE(host.suites_balanced());
}

TEST_F(Commands, SetdownClosesTheDatabaseAndForgetsTheRest) {
    const std::string database = std::filesystem::canonical(bundle.root.path()) / "a.stars";
    add_database("a.stars", kHeader + kAhead);
    set_up();
    EXPECT_EQ(process::mappings_of(database), 0) << "opened to prove it readable, and closed";
    EXPECT_GT(middle(), 0.0F);
    EXPECT_EQ(process::mappings_of(database), 1);
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETDOWN), 0);
    EXPECT_EQ(process::mappings_of(database), 0);
    EXPECT_EQ(middle(), -1.0F) << "a frame finds no database";
    EXPECT_EQ(offered_databases(), "");
    EXPECT_EQ(send(PF_Cmd_GLOBAL_SETDOWN), 0) << "nothing left to do";
}

TEST_F(Commands, AllDependenciesAreATextAndOthersAnEmptyOne) {
    for (const PF_DepCheckType check : {1, 0, 3, -1, 65536}) {
        const std::string text = check == 1 ? "All Dependencies requested." : "";
        const std::string size = std::to_string(text.size() + 1);
        PF_ExtDependenciesExtra extra = {check, nullptr};
        host.log.clear();
        EXPECT_EQ(send(PF_Cmd_GET_EXTERNAL_DEPENDENCIES, &extra), 0);
        ASSERT_NE(extra.dependencies_strH, nullptr);
        EXPECT_EQ(FakeHost::handle_text(extra.dependencies_strH), text);
        EXPECT_EQ(host.log, (Log{"acquire PF Handle Suite 2", "acquire PF ANSI Suite 1",
                                 "host_new_handle " + size, "strcpy", "release PF Handle Suite 2",
                                 "release PF ANSI Suite 1"}));
        EXPECT_EQ(extra.check_type, check);
    }
}

TEST_F(Commands, DependenciesAreNullWhereNoneAreMissingOrTheHostHasNoMemory) {
    char block = 'x';
    char* handle = &block;
    PF_ExtDependenciesExtra extra = {2, &handle};
    EXPECT_EQ(send(PF_Cmd_GET_EXTERNAL_DEPENDENCIES, &extra), 0);
    EXPECT_EQ(extra.dependencies_strH, nullptr);
    EXPECT_EQ(host.log, Log{});
    host.failures["host_new_handle"] = {1};
    extra = {1, &handle};
    EXPECT_EQ(send(PF_Cmd_GET_EXTERNAL_DEPENDENCIES, &extra), 0);
    EXPECT_EQ(extra.dependencies_strH, nullptr);
}

TEST_F(Commands, DependenciesLoseNoHandleWhenASuiteIsMissing) {
    for (const std::string suite : {"PF ANSI Suite", "PF Handle Suite"}) {
        host.missing_suites = {suite};
        host.log.clear();
        PF_ExtDependenciesExtra extra = {1, nullptr};
        EXPECT_EQ(send(PF_Cmd_GET_EXTERNAL_DEPENDENCIES, &extra), 516) << suite;
        EXPECT_EQ(extra.dependencies_strH, nullptr) << suite;
        EXPECT_EQ(std::count(host.log.begin(), host.log.end(), "host_new_handle 28"), 0) << suite;
        EXPECT_TRUE(host.suites_balanced()) << suite;
    }
}

TEST_F(Commands, DynamicFlagsAddCameraAndLightsWhateverTheCheckbox) {
    const struct {
        PF_Err checkout, checkin, status;
        A_long added;
    } table[] = {{0, 0, 0, 6}, {0, 514, 514, 6}, {513, 514, 513, 0}};
    for (const auto& row : table) {
        host.failures = {{"checkout_param", {row.checkout}}, {"checkin_param", {row.checkin}}};
        host.out_data.out_flags2 = 0x1000;
        host.log.clear();
        EXPECT_EQ(send(PF_Cmd_QUERY_DYNAMIC_FLAGS), row.status);
        EXPECT_EQ(host.out_data.out_flags2, 0x1000 + row.added);
        EXPECT_EQ(host.log, (Log{"checkout_param 12", "checkin_param"}));
        EXPECT_EQ(host.checkouts.back(), (FakeHost::ParamCheckout{12, 100, 50, 1200}));
    }
}
