// unit_tests [DIRECTORY]: all tests that call our functions, or those of a directory of tests/.
#include <gtest/gtest.h>

#include <string>

namespace {

// Their names, as a filter.
std::string tests_of(const std::string &directory) {
    const testing::UnitTest &all = *testing::UnitTest::GetInstance();
    std::string names;
    for (int s = 0; s < all.total_test_suite_count(); s++) {
        const testing::TestSuite &suite = *all.GetTestSuite(s);
        for (int t = 0; t < suite.total_test_count(); t++) {
            const testing::TestInfo &test = *suite.GetTestInfo(t);
            if (std::string(test.file()).find("tests/" + directory + "/") == std::string::npos) continue;
            names += std::string(suite.name()) + "." + test.name() + ":";
        }
    }
    return names;
}

}  // namespace

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    if (argc > 1) {
        testing::GTEST_FLAG(filter) = tests_of(argv[1]);
        if (testing::GTEST_FLAG(filter).empty()) return 1;
    }
    return RUN_ALL_TESTS();
}
