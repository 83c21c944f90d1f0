#include <AE/suites.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "fake_host.h"

namespace {

/// The integer that `run` throws; 0 when it throws none.
template <class Run>
int thrown_status(Run run) {
    try {
        run();
    } catch (const PF_Err& status) {
        return status;
    }
    return 0;
}

using Log = std::vector<std::string>;

}  // namespace

TEST(SuiteHandler, LoadsEachSuiteAtFirstUseOnceAndReleasesWhatItLoaded) {
    FakeHost host;
    {
        AEGP_SuiteHandler suites(&host.basic);
        EXPECT_EQ(host.log, Log{});
        const PF_HandleSuite1* first = suites.HandleSuite1();
        EXPECT_EQ(suites.HandleSuite1(), first);
        suites.ANSICallbacksSuite1();
        suites.FillMatteSuite2();
        suites.PFInterfaceSuite1();
        suites.LayerSuite5();
        suites.ItemSuite6();
        suites.CompSuite4();
        suites.StreamSuite2();
        EXPECT_EQ(host.log,
                  (Log{"acquire PF Handle Suite 2", "acquire PF ANSI Suite 1",
                       "acquire PF Fill Matte Suite 2", "acquire AEGP PF Interface Suite 1",
                       "acquire AEGP Layer Suite 11", "acquire AEGP Item Suite 10",
                       "acquire AEGP Comp Suite 9", "acquire AEGP Stream Suite 7"}));
    }
    EXPECT_EQ(host.log.size(), 16U);
    EXPECT_TRUE(host.suites_balanced());
}

namespace {

int some_table = 0;
SPErr gives_a_table_and_an_error(const char*, int32_t, const void** table) {
    *table = &some_table;
    return kSPSuiteNotFoundError;
}
SPErr fails(const char*, int32_t) { return kSPSuiteNotFoundError; }

}  // namespace

TEST(SuiteHandler, MissingSuiteThrows516AndReleasesTheOthers) {
    EXPECT_EQ(thrown_status([] { AEGP_SuiteHandler suites(nullptr); }), 516);
    FakeHost host;
    const auto load = [&] {
        host.log.clear();
        AEGP_SuiteHandler suites(&host.basic);
        suites.ItemSuite6();
        suites.LayerSuite5();
    };
    host.missing_suites = {"AEGP Layer Suite"};
    EXPECT_EQ(thrown_status(load), 516);
    EXPECT_EQ(host.log, (Log{"acquire AEGP Item Suite 10", "acquire AEGP Layer Suite 11",
                             "release AEGP Item Suite 10"}));
    host.suites_succeed_with_null = true;
    EXPECT_EQ(thrown_status(load), 516);
    EXPECT_EQ(host.log, Log{"acquire AEGP Item Suite 10"});
    // A table that comes with an error counts as none, and is not given back.
    host.basic.AcquireSuite = gives_a_table_and_an_error;
    EXPECT_EQ(thrown_status(load), 516);
    EXPECT_EQ(host.log, Log{});
}

namespace {

/// One suite taken and given back outside the handler.
class SingleSuite : public testing::Test {
protected:
    PF_Err acquire(const char* error_text, A_long version = 2) {
        return AEFX_AcquireSuite(&host.in_data, &host.out_data, "PF World Suite", version,
                                 error_text, &table);
    }
    PF_Err release(const char* error_text) {
        return AEFX_ReleaseSuite(&host.in_data, &host.out_data, "PF World Suite", 2, error_text);
    }
    void expect_silence() const {
        EXPECT_EQ(host.out_data.out_flags, 0);
        EXPECT_STREQ(host.out_data.return_msg, "");
    }

    FakeHost host;
    const void* table = &host;
};

}  // namespace

TEST_F(SingleSuite, IsTakenAndGivenBack) {
    EXPECT_EQ(acquire("text"), 0);
    EXPECT_NE(table, nullptr);
    EXPECT_EQ(release("text"), 0);
    EXPECT_TRUE(host.suites_balanced());
    expect_silence();
}

TEST_F(SingleSuite, IsJudgedByItsTableInsteadOfTheHostsStatus) {
    host.basic.AcquireSuite = gives_a_table_and_an_error;
    host.basic.ReleaseSuite = fails;
    EXPECT_EQ(acquire("text"), 0);
    EXPECT_EQ(table, &some_table);
    EXPECT_EQ(release("text"), 0);
    expect_silence();
}

TEST_F(SingleSuite, ThatIsMissingSetsTheFlagAndTheTextCutToTheHostsBuffer) {
    host.out_data.out_flags = 0x2;
    EXPECT_EQ(acquire("No worlds.", 3), 516);
    EXPECT_EQ(host.out_data.out_flags, 0x102);
    EXPECT_STREQ(host.out_data.return_msg, "No worlds.");
    EXPECT_EQ(host.log.back(), "sprintf");
    host.suites_succeed_with_null = true;
    EXPECT_EQ(acquire(nullptr), 516);
    EXPECT_STREQ(host.out_data.return_msg, "Not able to acquire AEFX Suite.");
    host.out_data.start_sampL = 77;
    acquire(std::string(300, 'x').c_str());
    EXPECT_EQ(std::string(host.out_data.return_msg), std::string(255, 'x'));
    EXPECT_EQ(host.out_data.start_sampL, 77) << "the field behind the buffer";
}

TEST_F(SingleSuite, IsNeitherTakenNorGivenBackWithoutABasicSuite) {
    host.in_data.pica_basicP = nullptr;
    EXPECT_EQ(acquire(nullptr), 516);
    EXPECT_EQ(table, nullptr);
    EXPECT_STREQ(host.out_data.return_msg, "Not able to acquire AEFX Suite.");
    EXPECT_EQ(host.out_data.out_flags, 0x100);
    host.out_data.out_flags = 0;
    EXPECT_EQ(release(nullptr), 516);
    EXPECT_STREQ(host.out_data.return_msg, "Not able to release AEFX Suite.");
    EXPECT_EQ(host.out_data.out_flags, 0x100);
    EXPECT_EQ(release("Stuck."), 516);
    EXPECT_STREQ(host.out_data.return_msg, "Stuck.");
}

TEST(Rect, IsEmptyWithoutWidthOrHeight) {
    EXPECT_FALSE(IsEmptyRect({0, 0, 1, 1}));
    for (const PF_LRect& empty : {PF_LRect{1, 0, 1, 1}, {2, 0, 1, 1}, {0, 1, 1, 1}, {0, 2, 1, 1}}) {
        EXPECT_TRUE(IsEmptyRect(empty));
    }
}

TEST(Rect, UnionIsTheBoxRoundBothOrTheOneThatIsNotEmpty) {
    const struct {
        PF_LRect dst, src, expected;
    } rows[] = {{{0, 10, 20, 30}, {5, -5, 25, 15}, {0, -5, 25, 30}},
                {{0, -5, 25, 30}, {-1, 0, 2, 31}, {-1, -5, 25, 31}},
                {{9, 9, 3, 3}, {-1, -2, 3, 4}, {-1, -2, 3, 4}},
                {{1, 2, 3, 4}, {-9, -9, -9, 100}, {1, 2, 3, 4}},
                // The source's, if both are empty.
                {{0, 0, 0, 0}, {5, 6, 5, 9}, {5, 6, 5, 9}}};
    for (const auto& row : rows) {
        PF_LRect dst = row.dst;
        UnionLRect(row.src, dst);
        EXPECT_EQ(std::memcmp(&dst, &row.expected, sizeof dst), 0)
            << dst.left << " " << dst.top << " " << dst.right << " " << dst.bottom;
    }
}
