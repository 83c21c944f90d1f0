// The main function of every test program. The sources of a program share the names of their cases,
// and one that a filter or a mistake leaves without any case would pass: both end the run here.
#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <string>

namespace {

// Whether each case has a name of its own; otherwise says which has not.
bool names_differ(const testing::UnitTest& program) {
    std::set<std::string> names;
    for (int s = 0; s != program.total_test_suite_count(); ++s) {
        const testing::TestSuite& suite = *program.GetTestSuite(s);
        for (int c = 0; c != suite.total_test_count(); ++c) {
            const std::string name = std::string(suite.name()) + "." + suite.GetTestInfo(c)->name();
            if (!names.insert(name).second) {
                std::fprintf(stderr, "Two cases have the name %s: rename one.\n", name.c_str());
                return false;
            }
        }
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const testing::UnitTest& program = *testing::UnitTest::GetInstance();
    if (!names_differ(program)) {
        return 1;
    }
    const int result = RUN_ALL_TESTS();
    if (program.test_to_run_count() == 0 && !GTEST_FLAG_GET(list_tests)) {
        std::fputs("There is no case to run.\n", stderr);
        return 1;
    }
    return result;
}
