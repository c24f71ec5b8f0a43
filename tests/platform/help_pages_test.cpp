#include "pages/edit_defaults_dialog.h"
#include "pages/fax_job_page.h"
#include "pages/setup_page.h"
#include "phonebook/ui/add_recipients_dialog.h"
#include "phonebook/ui/details_dialogs.h"
#include "phonebook/ui/edit_phone_book_dialog.h"
#include "phonebook/ui/entry_dialog.h"
#include "phonebook/ui/group_dialog.h"
#include "phonebook/ui/map_custom_fields_dialog.h"
#include "support/built.h"
#include "support/cabinet.h"
#include "support/compiled_help.h"
#include "support/help_topics.h"
#include "support/languages.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <span>
#include <vector>
#include <windows.h>

namespace qx {
namespace {

namespace fs = std::filesystem;

using Files = std::map<std::string, std::string>;
using Problems = std::vector<std::string>;

std::set<std::string> Matches(const std::string& text, const std::string& pattern)
{
    const std::regex regex(pattern);
    std::set<std::string> matches;
    for (auto match = std::sregex_iterator(text.begin(), text.end(), regex); match != std::sregex_iterator(); ++match)
        matches.insert((*match)[1]);
    return matches;
}

struct Dialog {
    const char* name;
    std::span<const Control> controls;
    test::HelpTopics topics;
};

// The sheet's own buttons have no table of controls.
std::vector<Dialog> Dialogs()
{
    return {
        {"Fax Job page", kFaxJobPage.controls, test::kFaxJobPageTopics},
        {"Setup page", kSetupPage.controls, test::kSetupPageTopics},
        {"Edit Defaults", kEditDefaultsDialog.controls, test::kEditDefaultsTopics},
        {"Add Recipients", kAddRecipientsDialog.controls, test::kAddRecipientsTopics},
        {"Edit Phone Book", kEditPhoneBookDialog.controls, test::kEditPhoneBookTopics},
        {"Entry, new", kAddEntryDialog.controls, test::kAddEntryTopics},
        {"Entry, changed", kEditEntryDialog.controls, test::kEditEntryTopics},
        {"Group", kAddGroupDialog.controls, test::kGroupTopics},
        {"Map Custom Fields", kMapCustomFieldsDialog.controls, test::kMapCustomFieldsTopics},
        {"Entry Details", kEntryDetailsDialog.controls, test::kDetailsTopics},
        {"Group Details", kGroupDetailsDialog.controls, test::kDetailsTopics},
    };
}

std::string HelpFileOf(const test::Language& language)
{
    return "QXZH" + language.helpCode + QX_HELP_ENDING ".CHM";
}

// Only controls that have a topic.
std::set<test::HelpTopic> TopicsOf(std::span<const Control> controls)
{
    std::set<test::HelpTopic> topics;
    for (const Control& control : controls) {
        if (control.topic != kNoTopic)
            topics.insert({control.id, control.topic});
    }
    return topics;
}

// Of all tables and Help buttons.
std::set<std::string> PagesAskedFor()
{
    std::set<int> topics{test::kSheetHelpTopic, test::kEditDefaultsHelpTopic};
    for (const test::HelpTopic& topic : test::kSheetTopics)
        topics.insert(topic.topic);
    for (const Dialog& dialog : Dialogs()) {
        for (const test::HelpTopic& topic : TopicsOf(dialog.controls))
            topics.insert(topic.topic);
    }
    std::set<std::string> pages;
    for (const int topic : topics)
        pages.insert(std::to_string(topic) + ".html");
    return pages;
}

// A page that no control opens has a word for its name.
bool IsTopicPage(const std::string& page)
{
    return page.find_first_not_of("0123456789") == page.find(".html");
}

std::set<std::string> Only(bool topicPages, const std::set<std::string>& pages)
{
    std::set<std::string> some;
    std::ranges::copy_if(pages, std::inserter(some, some.end()),
                         [=](const std::string& page) { return IsTopicPage(page) == topicPages; });
    return some;
}

// The help of every language, by name, as it comes out of the built cabinet.
class HelpPages : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        const test::TemporaryFolder folder;
        test::UnpackCabinet(test::BuiltFolder() / "QXFAXHLP.CAB", folder.Path());
        for (const auto& file : fs::directory_iterator(folder.Path()))
            help_[file.path().filename().string()] = test::ReadCompiledHelp(file.path());
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

    static Problems MissingPages(const std::map<std::string, Files>& help)
    {
        Problems problems;
        for (const auto& [name, files] : help) {
            for (const std::string& page : PagesAskedFor()) {
                if (!files.contains(page))
                    problems.push_back(name + " has no page " + page);
            }
        }
        return problems;
    }

    // Pages that are not in the language of their help, or read in another direction. A help that several languages
    // share is in the first of them.
    static Problems PagesOfOthers(const std::map<std::string, Files>& help)
    {
        std::map<std::string, std::string> expected;
        for (const test::Language& language : test::Languages()) {
            if (language.hasHelp)
                expected.insert(
                    {HelpFileOf(language), language.code + ", " + (language.isRightToLeft ? "rtl" : "ltr")});
        }
        const std::regex html("<html lang=\"([^\"]*)\" dir=\"([^\"]*)\"");
        Problems problems;
        for (const auto& [name, files] : help) {
            for (const std::string& page : PagesOf(files)) {
                std::smatch found;
                std::regex_search(files.at(page), found, html);
                const std::string is = found[1].str() + ", " + found[2].str();
                if (is != expected.at(name))
                    problems.push_back(name + ": " + page + " is in " + is);
            }
        }
        return problems;
    }

    static inline std::map<std::string, Files> help_;
};

TEST_F(HelpPages, ThereIsOneHelpFilePerLanguage)
{
    std::set<std::string> names, expected;
    for (const auto& [name, files] : help_)
        names.insert(name);
    for (const test::Language& language : test::Languages()) {
        if (language.hasHelp)
            expected.insert(HelpFileOf(language));
    }
    EXPECT_EQ(names, expected);
}

TEST(HelpTables, EveryControlNamesItsPage)
{
    for (const Dialog& dialog : Dialogs())
        EXPECT_EQ(TopicsOf(dialog.controls), std::set(dialog.topics.begin(), dialog.topics.end())) << dialog.name;
}

TEST_F(HelpPages, EveryTopicHasAPageInEveryLanguageAndEveryPageATopic)
{
    EXPECT_EQ(MissingPages(help_), Problems());
    for (const auto& [name, files] : help_)
        EXPECT_EQ(Only(true, PagesOf(files)), PagesAskedFor()) << name;
}

TEST_F(HelpPages, APageThatIsTakenOutIsNamedWithItsLanguage)
{
    std::map<std::string, Files> planted = help_;
    planted.at("QXZHDE" QX_HELP_ENDING ".CHM").erase("15583.html");
    EXPECT_EQ(MissingPages(planted), Problems{"QXZHDE" QX_HELP_ENDING ".CHM has no page 15583.html"});
}

TEST_F(HelpPages, APageInTheWrongDirectionOrLanguageIsNamed)
{
    std::map<std::string, Files> planted = help_;
    std::swap(planted.at("QXZHHE" QX_HELP_ENDING ".CHM").at("15583.html"),
              planted.at("QXZHDE" QX_HELP_ENDING ".CHM").at("15583.html"));
    EXPECT_EQ(PagesOfOthers(planted), (Problems{"QXZHDE" QX_HELP_ENDING ".CHM: 15583.html is in he, rtl",
                                                "QXZHHE" QX_HELP_ENDING ".CHM: 15583.html is in de, ltr"}));
}

TEST_F(HelpPages, OtherPagesAreTheSameInEveryLanguage)
{
    const std::set<std::string> expected{"keys.html", "recent_recipients.html", "empty_phone_book.html",
                                         "no_cover_page.html"};
    for (const auto& [name, files] : help_)
        EXPECT_EQ(Only(false, PagesOf(files)), expected) << name;
}

TEST_F(HelpPages, AnotherPageLeadsToEveryPageThatNoControlOpens)
{
    for (const auto& [name, files] : help_) {
        std::set<std::string> linked;
        for (const std::string& page : Only(true, PagesOf(files)))
            linked.merge(Matches(files.at(page), "href=\"([^\"]*)\""));
        for (const std::string& page : Only(false, PagesOf(files)))
            EXPECT_TRUE(linked.contains(page)) << name << ": " << page;
    }
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
            EXPECT_EQ(Matches(files.at(list), "name=\"Local\" value=\"([^\"]*)\""), PagesOf(files))
                << name << ": " << list;
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

TEST_F(HelpPages, CaptionsAreWrittenAsPeopleReadThem)
{
    const std::regex leftOver("&amp;|[:.]$|\xE2\x80[\x8E\x8F]"); // mnemonic, end of a label, mark of direction
    for (const auto& [name, files] : help_) {
        for (const std::string& page : PagesOf(files)) {
            for (const std::string& caption : Matches(files.at(page), "<b>([^<]*)</b>"))
                EXPECT_FALSE(std::regex_search(caption, leftOver)) << name << ": " << page << ": " << caption;
        }
    }
}

TEST_F(HelpPages, PagesAreInTheirLanguageAndReadInItsDirection)
{
    EXPECT_EQ(PagesOfOthers(help_), Problems());
}

} // namespace
} // namespace qx
