#include "support/cabinet.h"
#include "support/compiled_help.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <regex>
#include <set>
#include <windows.h>

namespace qx {
namespace {

namespace fs = std::filesystem;

using Files = std::map<std::string, std::string>;

std::set<std::string> Matches(const std::string& text, const std::string& pattern)
{
    const std::regex regex(pattern);
    std::set<std::string> matches;
    for (auto match = std::sregex_iterator(text.begin(), text.end(), regex); match != std::sregex_iterator(); ++match)
        matches.insert((*match)[1]);
    return matches;
}

// The help of every language, by name, as it comes out of the built cabinet.
class HelpPages : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        const fs::path folder = fs::temp_directory_path() / ("help pages " + std::to_string(GetCurrentProcessId()));
        fs::create_directories(folder);
        test::UnpackCabinet(fs::path(std::getenv("QX_BINARY_DIR")) / "QXFAXHLP.CAB", folder);
        for (const auto& file : fs::directory_iterator(folder))
            help_[file.path().filename().string()] = test::ReadCompiledHelp(file.path());
        fs::remove_all(folder);
    }

    static std::set<std::string> PagesOf(const Files& files)
    {
        std::set<std::string> pages;
        for (const auto& [name, content] : files) {
            if (name.ends_with(".html"))
                pages.insert(name);
        }
        return pages;
    }

    static inline std::map<std::string, Files> help_;
};

TEST_F(HelpPages, ThereIsOneHelpFilePerLanguage)
{
    std::set<std::string> names;
    for (const auto& [name, files] : help_)
        names.insert(name);
    EXPECT_EQ(names, (std::set<std::string>{"QXZHENF1.CHM", "QXZHDEF1.CHM", "QXZHHEF1.CHM", "QXZHJAF1.CHM"}));
}

TEST_F(HelpPages, EveryLanguageHasTheSamePages)
{
    const std::set<std::string> english = PagesOf(help_.at("QXZHENF1.CHM"));
    EXPECT_FALSE(english.empty());
    for (const auto& [name, files] : help_)
        EXPECT_EQ(PagesOf(files), english) << name;
}

TEST_F(HelpPages, NoLinkIsDead)
{
    for (const auto& [name, files] : help_) {
        for (const auto& [page, content] : files) {
            for (const std::string& target : Matches(content, "(?:href=|name=\"Local\" value=)\"([^\"]*)\""))
                EXPECT_TRUE(files.contains(target)) << name << ": " << page << " leads to " << target;
        }
    }
}

TEST_F(HelpPages, ContentsAndIndexLeadToEveryPage)
{
    for (const auto& [name, files] : help_) {
        for (const char* const list : {"help.hhc", "help.hhk"})
            EXPECT_EQ(Matches(files.at(list), "name=\"Local\" value=\"([^\"]*)\""), PagesOf(files)) << name << ": " << list;
    }
}

TEST_F(HelpPages, EveryPageHasATitleAndSaysSomething)
{
    for (const auto& [name, files] : help_) {
        for (const std::string& page : PagesOf(files)) {
            const std::string& content = files.at(page);
            EXPECT_TRUE(std::regex_search(content, std::regex("<title>[^<]+</title>"))) << name << ": " << page;
            EXPECT_TRUE(std::regex_search(content, std::regex("<p>.{20}"))) << name << ": " << page;
            EXPECT_NE(content.find("charset=utf-8"), std::string::npos) << name << ": " << page;
        }
    }
}

TEST_F(HelpPages, OnlyHebrewReadsFromRightToLeft)
{
    for (const auto& [name, files] : help_) {
        const std::string direction = name == "QXZHHEF1.CHM" ? "rtl" : "ltr";
        for (const std::string& page : PagesOf(files))
            EXPECT_EQ(Matches(files.at(page), "<html[^>]* dir=\"([a-z]*)\""), std::set{direction}) << name << ": " << page;
    }
}

} // namespace
} // namespace qx
