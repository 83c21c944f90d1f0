#include <AE/suites.h>
#include <gtest/gtest.h>

#include <cstring>

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

PF_LRect rect(A_long left, A_long top, A_long right, A_long bottom) {
    return {left, top, right, bottom};
}

void expect_rect(const PF_LRect& actual, const PF_LRect& expected) {
    EXPECT_EQ(std::memcmp(&actual, &expected, sizeof actual), 0)
        << actual.left << " " << actual.top << " " << actual.right << " " << actual.bottom;
}

}  // namespace

TEST(SuiteHandler, NullBasicSuiteIsAMissingSuite) {
    EXPECT_EQ(thrown_status([] { AEGP_SuiteHandler suites(nullptr); }), 516);
}

TEST(SuiteHandler, LoadsAtFirstUseOnceAndReleasesWhatItLoaded) {
    FakeHost host;
    {
        AEGP_SuiteHandler suites(&host.basic);
        EXPECT_EQ(host.log, Log{});
        const PF_ANSICallbacksSuite1* first = suites.ANSICallbacksSuite1();
        EXPECT_EQ(suites.ANSICallbacksSuite1(), first);
        suites.HandleSuite1();
        EXPECT_EQ(host.log, (Log{"acquire PF ANSI Suite 1", "acquire PF Handle Suite 2"}));
    }
    EXPECT_TRUE(host.suites_balanced());
    EXPECT_EQ(host.log.size(), 4U);
}

TEST(SuiteHandler, AsksForEachSuiteByNameAndVersion) {
    FakeHost host;
    {
        AEGP_SuiteHandler suites(&host.basic);
        suites.HandleSuite1();
        suites.ANSICallbacksSuite1();
        suites.FillMatteSuite2();
        suites.PFInterfaceSuite1();
        suites.LayerSuite5();
        suites.ItemSuite6();
        suites.CompSuite4();
        suites.StreamSuite2();
    }
    EXPECT_EQ(Log(host.log.begin(), host.log.begin() + 8),
              (Log{"acquire PF Handle Suite 2", "acquire PF ANSI Suite 1",
                   "acquire PF Fill Matte Suite 2", "acquire AEGP PF Interface Suite 1",
                   "acquire AEGP Layer Suite 11", "acquire AEGP Item Suite 10",
                   "acquire AEGP Comp Suite 9", "acquire AEGP Stream Suite 7"}));
    EXPECT_EQ(host.log.size(), 16U);
    EXPECT_TRUE(host.suites_balanced());
}

TEST(SuiteHandler, MissingSuiteThrows516AndReleasesTheOthers) {
    FakeHost host;
    host.missing_suites = {"AEGP Layer Suite"};
    EXPECT_EQ(thrown_status([&] {
                  AEGP_SuiteHandler suites(&host.basic);
                  suites.ItemSuite6();
                  suites.LayerSuite5();
              }),
              516);
    EXPECT_EQ(host.log, (Log{"acquire AEGP Item Suite 10", "acquire AEGP Layer Suite 11",
                             "release AEGP Item Suite 10"}));
}

TEST(SuiteHandler, NullTableIsAMissingSuite) {
    FakeHost host;
    host.suites_succeed_with_null = true;
    EXPECT_EQ(thrown_status([&] {
                  AEGP_SuiteHandler suites(&host.basic);
                  suites.StreamSuite2();
              }),
              516);
    EXPECT_EQ(host.log, Log{"acquire AEGP Stream Suite 7"});
}

namespace {

int some_table = 0;
SPErr gives_a_table_and_an_error(const char*, int32_t, const void** table) {
    *table = &some_table;
    return kSPSuiteNotFoundError;
}
SPErr fails(const char*, int32_t) { return kSPSuiteNotFoundError; }

}  // namespace

TEST(SuiteHandler, TableThatComesWithAnErrorIsAMissingSuite) {
    FakeHost host;
    host.basic.AcquireSuite = gives_a_table_and_an_error;
    EXPECT_EQ(thrown_status([&] {
                  AEGP_SuiteHandler suites(&host.basic);
                  suites.ItemSuite6();
              }),
              516);
    EXPECT_EQ(host.log, Log{}) << "nothing is given back";
}

TEST(AcquireSuite, LooksAtTheTableInsteadOfTheHostsStatus) {
    FakeHost host;
    host.basic.AcquireSuite = gives_a_table_and_an_error;
    host.basic.ReleaseSuite = fails;
    const void* table = nullptr;
    EXPECT_EQ(AEFX_AcquireSuite(&host.in_data, &host.out_data, "PF World Suite", 2, "text", &table),
              0);
    EXPECT_EQ(table, &some_table);
    EXPECT_EQ(AEFX_ReleaseSuite(&host.in_data, &host.out_data, "PF World Suite", 2, "text"), 0);
    EXPECT_EQ(host.out_data.out_flags, 0);
    EXPECT_STREQ(host.out_data.return_msg, "");
}

TEST(AcquireSuite, GivesTheTable) {
    FakeHost host;
    const void* table = nullptr;
    EXPECT_EQ(AEFX_AcquireSuite(&host.in_data, &host.out_data, "PF World Suite", 2, "text", &table),
              0);
    EXPECT_NE(table, nullptr);
    EXPECT_EQ(host.out_data.out_flags, 0);
    EXPECT_STREQ(host.out_data.return_msg, "");
    EXPECT_EQ(AEFX_ReleaseSuite(&host.in_data, &host.out_data, "PF World Suite", 2, "text"), 0);
    EXPECT_TRUE(host.suites_balanced());
}

TEST(AcquireSuite, FailureSetsTheFlagAndTheGivenText) {
    FakeHost host;
    host.out_data.out_flags = 0x2;
    const void* table = nullptr;
    EXPECT_EQ(
        AEFX_AcquireSuite(&host.in_data, &host.out_data, "PF World Suite", 3, "No worlds.", &table),
        516);
    EXPECT_EQ(host.out_data.out_flags, 0x102);
    EXPECT_STREQ(host.out_data.return_msg, "No worlds.");
    EXPECT_EQ(host.log.back(), "sprintf");
}

TEST(AcquireSuite, FailureWithoutATextSaysSoInGeneral) {
    FakeHost host;
    host.suites_succeed_with_null = true;
    const void* table = nullptr;
    EXPECT_EQ(
        AEFX_AcquireSuite(&host.in_data, &host.out_data, "PF World Suite", 2, nullptr, &table),
        516);
    EXPECT_STREQ(host.out_data.return_msg, "Not able to acquire AEFX Suite.");
}

TEST(AcquireSuite, NullBasicSuiteFails) {
    FakeHost host;
    host.in_data.pica_basicP = nullptr;
    const void* table = &host;
    EXPECT_EQ(
        AEFX_AcquireSuite(&host.in_data, &host.out_data, "PF World Suite", 2, nullptr, &table),
        516);
    EXPECT_EQ(table, nullptr);
    EXPECT_STREQ(host.out_data.return_msg, "Not able to acquire AEFX Suite.");
    EXPECT_EQ(host.out_data.out_flags, 0x100);
}

TEST(AcquireSuite, TextsAreCutToTheHostsBuffer) {
    FakeHost host;
    host.missing_suites = {"PF World Suite"};
    host.out_data.start_sampL = 77;
    const std::string text(300, 'x');
    const void* table = nullptr;
    AEFX_AcquireSuite(&host.in_data, &host.out_data, "PF World Suite", 2, text.c_str(), &table);
    EXPECT_EQ(std::string(host.out_data.return_msg), std::string(255, 'x'));
    EXPECT_EQ(host.out_data.start_sampL, 77) << "the field behind the buffer";
}

TEST(ReleaseSuite, WithoutABasicSuiteSaysSo) {
    FakeHost host;
    host.in_data.pica_basicP = nullptr;
    EXPECT_EQ(AEFX_ReleaseSuite(&host.in_data, &host.out_data, "PF World Suite", 2, nullptr), 516);
    EXPECT_STREQ(host.out_data.return_msg, "Not able to release AEFX Suite.");
    EXPECT_EQ(host.out_data.out_flags, 0x100);
    EXPECT_EQ(AEFX_ReleaseSuite(&host.in_data, &host.out_data, "PF World Suite", 2, "Stuck."), 516);
    EXPECT_STREQ(host.out_data.return_msg, "Stuck.");
}

TEST(Rect, IsEmptyWithoutWidthOrHeight) {
    EXPECT_FALSE(IsEmptyRect(rect(0, 0, 1, 1)));
    EXPECT_TRUE(IsEmptyRect(rect(1, 0, 1, 1)));
    EXPECT_TRUE(IsEmptyRect(rect(2, 0, 1, 1)));
    EXPECT_TRUE(IsEmptyRect(rect(0, 1, 1, 1)));
    EXPECT_TRUE(IsEmptyRect(rect(0, 2, 1, 1)));
}

TEST(Rect, UnionOfEmptyWithEmptyCopiesTheSource) {
    PF_LRect dst = rect(0, 0, 0, 0);
    UnionLRect(rect(5, 6, 5, 9), dst);
    expect_rect(dst, rect(5, 6, 5, 9));
}

TEST(Rect, UnionIntoEmptyCopiesTheSource) {
    PF_LRect dst = rect(9, 9, 3, 3);
    UnionLRect(rect(-1, -2, 3, 4), dst);
    expect_rect(dst, rect(-1, -2, 3, 4));
}

TEST(Rect, UnionWithEmptyChangesNothing) {
    PF_LRect dst = rect(1, 2, 3, 4);
    UnionLRect(rect(-9, -9, -9, 100), dst);
    expect_rect(dst, rect(1, 2, 3, 4));
}

TEST(Rect, UnionIsTheBoxRoundBoth) {
    PF_LRect dst = rect(0, 10, 20, 30);
    UnionLRect(rect(5, -5, 25, 15), dst);
    expect_rect(dst, rect(0, -5, 25, 30));
    UnionLRect(rect(-1, 0, 2, 31), dst);
    expect_rect(dst, rect(-1, -5, 25, 31));
}
