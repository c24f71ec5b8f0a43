// The programs of the tests hold many files; ctest runs each file in a process of its own:
//
//     ui_dialog_tests.exe                      all of them
//     ui_dialog_tests.exe name_box             those of name_box_test.cpp
//     ui_dialog_tests.exe name_box --gtest_filter=NameBox.*
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <windows.h>

namespace {

std::string FileOf(const testing::TestSuite& suite)
{
    return std::filesystem::path(suite.GetTestInfo(0)->file()).stem().string();
}

// Leaves the given filter as it is for the file, and out all the others.
void KeepOnly(const std::string& file)
{
    std::string others;
    const testing::UnitTest& all = *testing::UnitTest::GetInstance();
    for (int i = 0; i < all.total_test_suite_count(); ++i) {
        const testing::TestSuite& suite = *all.GetTestSuite(i);
        if (FileOf(suite) != file)
            others += std::string(":") + suite.name() + ".*";
    }
    std::string& filter = testing::GTEST_FLAG(filter);
    filter += (filter.find('-') == std::string::npos ? "-" : "") + others;
}

} // namespace

int main(int count, char** arguments)
{
    if (const char* const begun = std::getenv("QX_BEGUN"))
        std::ofstream(begun).flush(); // see begin.sh
    // Newer systems show 96 dpi, whatever the screen has, to a program that does not say that it knows others.
    const char* const dotsPerInch = std::getenv("QX_DPI");
    if (dotsPerInch != nullptr && std::atoi(dotsPerInch) != USER_DEFAULT_SCREEN_DPI)
        SetProcessDPIAware();
    testing::InitGoogleTest(&count, arguments);
    if (count > 1)
        KeepOnly(std::string(arguments[1]) + "_test");
    const int failed = RUN_ALL_TESTS();
    if (testing::UnitTest::GetInstance()->test_to_run_count() != 0)
        return failed;
    std::fprintf(stderr, "There is no such test here.\n");
    return 1;
}
