// The Fax Job page alone. What a user sees of it in a whole session is in fax_job_session_test.cpp.
#include "support/fax_job_page_stand.h"

#include <gtest/gtest.h>

namespace qx::test {
namespace {

using Rows = std::vector<Row>;
using Texts = std::vector<std::wstring>;

constexpr const wchar_t* kTooMany = L"The maximum number of fax numbers has been entered.";

class FaxJobPageTest : public testing::Test {
protected:
    void Fill(const std::wstring& name, const std::wstring& faxNumber, const std::wstring& company = L"")
    {
        stand.SetText(IDC_NAME_BOX, name);
        stand.SetText(IDC_FAX_NUMBER, faxNumber);
        stand.SetText(IDC_COMPANY, company);
    }
    void Add(const std::wstring& name, const std::wstring& faxNumber, const std::wstring& company = L"")
    {
        Fill(name, faxNumber, company);
        stand.Press(IDC_TO);
    }
    void AddMany(int count)
    {
        for (int i = 0; i < count; ++i)
            Add(L"", std::to_wstring(100 + i));
    }

    FaxJobPageStand stand;
};

TEST_F(FaxJobPageTest, StartsEmptyWithNothingToPress)
{
    stand.Show();
    for (const int id : {IDC_CLEAR_FIELDS, IDC_TO, IDC_DELETE, IDC_ADD_TO_PHONE_BOOK, IDC_GROUP_TEXT})
        EXPECT_FALSE(stand.IsEnabled(id)) << id;
    EXPECT_FALSE(stand.IsVisible(IDC_GROUP_TEXT));
    EXPECT_TRUE(stand.IsEnabled(IDC_PHONE_BOOK));
    EXPECT_EQ(stand.Rows(), Rows{});
}

TEST_F(FaxJobPageTest, TakesATypedRecipientIntoListAndRecord)
{
    stand.Show();
    Add(L"Anna", L"5550100", L"Orchard");
    EXPECT_EQ(stand.Rows(), (Rows{{L"Anna", L"5550100", L"Orchard"}}));
    EXPECT_EQ(stand.Recipients(), stand.Rows());
    EXPECT_EQ(stand.Job().RecipientCount, 1);
    EXPECT_EQ(stand.Text(IDC_NAME_BOX), L"");
    EXPECT_EQ(stand.Text(IDC_FAX_NUMBER), L"");
    EXPECT_EQ(stand.Text(IDC_COMPANY), L"");
    EXPECT_FALSE(stand.IsEnabled(IDC_TO));
}

TEST_F(FaxJobPageTest, TakesTheSameRecipientTwice)
{
    stand.Show();
    Add(L"Anna", L"5550100");
    Add(L"Anna", L"5550100");
    EXPECT_EQ(stand.Recipients(), (Rows{{L"Anna", L"5550100", L""}, {L"Anna", L"5550100", L""}}));
}

TEST_F(FaxJobPageTest, TakesTheHundredthRecipientAndKeepsTheFieldsOfTheNextOne)
{
    stand.Show();
    AddMany(100);
    EXPECT_EQ(stand.Rows().size(), 100u);
    Add(L"Bob", L"777");
    EXPECT_EQ(stand.Boxes().Take(), (std::vector<MessageBoxes::Box>{{L"QX MFP Send Fax Error", kTooMany}}));
    EXPECT_EQ(stand.Rows().size(), 100u);
    EXPECT_EQ(stand.Text(IDC_NAME_BOX), L"Bob");
    EXPECT_EQ(stand.Text(IDC_FAX_NUMBER), L"777");
}

TEST_F(FaxJobPageTest, ButtonsFollowTheFields)
{
    stand.Show();
    stand.SetText(IDC_NAME_BOX, L"Anna");
    EXPECT_TRUE(stand.IsEnabled(IDC_CLEAR_FIELDS));
    EXPECT_FALSE(stand.IsEnabled(IDC_ADD_TO_PHONE_BOOK));
    EXPECT_FALSE(stand.IsEnabled(IDC_TO));
    stand.SetText(IDC_FAX_NUMBER, L"1");
    EXPECT_TRUE(stand.IsEnabled(IDC_ADD_TO_PHONE_BOOK));
    EXPECT_TRUE(stand.IsEnabled(IDC_TO));
    stand.SetText(IDC_FAX_NUMBER, L"");
    EXPECT_FALSE(stand.IsEnabled(IDC_ADD_TO_PHONE_BOOK));
    EXPECT_FALSE(stand.IsEnabled(IDC_TO));
    stand.Press(IDC_CLEAR_FIELDS);
    EXPECT_EQ(stand.Text(IDC_NAME_BOX), L"");
    EXPECT_FALSE(stand.IsEnabled(IDC_CLEAR_FIELDS));
}

TEST_F(FaxJobPageTest, ATypedPlusIsDroppedAndTheRestTypedOn)
{
    stand.Show();
    const HWND fax = stand.Control(IDC_FAX_NUMBER);
    for (const wchar_t character : std::wstring(L"12+3 4"))
        SendMessageW(fax, WM_CHAR, character, 1);
    EXPECT_EQ(stand.Text(IDC_FAX_NUMBER), L"1234");
}

TEST_F(FaxJobPageTest, APasteWithAForeignCharacterBringsTheOldNumberBack)
{
    stand.Show();
    stand.SetText(IDC_FAX_NUMBER, L"12a3");
    EXPECT_EQ(stand.Text(IDC_FAX_NUMBER), L"");
    stand.SetText(IDC_FAX_NUMBER, L"(030)1234-5678,,#9");
    EXPECT_EQ(stand.Text(IDC_FAX_NUMBER), L"(030)1234-5678,,#9");
    stand.SetText(IDC_FAX_NUMBER, L"(030) 1234-5678");
    EXPECT_EQ(stand.Text(IDC_FAX_NUMBER), L"(030)1234-5678,,#9");
    stand.SetText(IDC_FAX_NUMBER, L"+1 555");
    EXPECT_EQ(stand.Text(IDC_FAX_NUMBER), L"(030)1234-5678,,#9");
}

TEST_F(FaxJobPageTest, DeletesExactlyTheScatteredRowsThatAreSelected)
{
    stand.Show();
    for (const wchar_t* name : {L"A", L"B", L"C", L"D", L"E", L"F"})
        Add(name, L"1");
    stand.SelectRows({0, 2, 5});
    EXPECT_TRUE(stand.IsEnabled(IDC_DELETE));
    stand.Press(IDC_DELETE);
    EXPECT_EQ(stand.Rows(), (Rows{{L"B", L"1", L""}, {L"D", L"1", L""}, {L"E", L"1", L""}}));
    EXPECT_EQ(stand.Recipients(), stand.Rows());
    EXPECT_FALSE(stand.IsEnabled(IDC_DELETE));
    EXPECT_EQ(GetFocus(), stand.Control(IDC_RECIPIENTS));
}

TEST_F(FaxJobPageTest, TheDeleteKeyDoesWhatTheButtonDoes)
{
    stand.Show();
    Add(L"A", L"1");
    Add(L"B", L"2");
    stand.PressListKey(VK_DELETE); // nothing is selected
    EXPECT_EQ(stand.Rows().size(), 2u);
    stand.SelectRows({0});
    stand.PressListKey(VK_DELETE);
    EXPECT_EQ(stand.Recipients(), (Rows{{L"B", L"2", L""}}));
}

TEST_F(FaxJobPageTest, APickedEntryFillsTheFields)
{
    stand.AddRecentEntry(L"Anna", L"111", L"Orchard");
    stand.AddRecentEntry(L"Bob", L"222");
    stand.Show();
    stand.DropNames(true);
    EXPECT_EQ(stand.Names(), (Texts{L"Bob", L"Anna"}));
    stand.PickName(1);
    EXPECT_EQ(stand.Text(IDC_NAME_BOX), L"Anna");
    EXPECT_EQ(stand.Text(IDC_FAX_NUMBER), L"111");
    EXPECT_EQ(stand.Text(IDC_COMPANY), L"Orchard");
    EXPECT_TRUE(stand.IsEnabled(IDC_TO));
    EXPECT_TRUE(stand.IsEnabled(IDC_ADD_TO_PHONE_BOOK));
}

TEST_F(FaxJobPageTest, WithNamesakesTheChosenRowDecides)
{
    stand.AddRecentEntry(L"Anna", L"111");
    stand.AddRecentEntry(L"Anna", L"222");
    stand.Show();
    stand.DropNames(true);
    stand.PickName(1);
    EXPECT_EQ(stand.Text(IDC_FAX_NUMBER), L"111");
    stand.PickName(0);
    EXPECT_EQ(stand.Text(IDC_FAX_NUMBER), L"222");
}

TEST_F(FaxJobPageTest, AStoredNumberThatTheFieldRefusesNeverBringsBackAnotherRecipients)
{
    stand.AddRecentEntry(L"Bad", L"555 12 x");
    stand.AddRecentEntry(L"Anna", L"111");
    stand.Show();
    stand.DropNames(true);
    stand.PickName(0);
    stand.PickName(1);
    EXPECT_EQ(stand.Text(IDC_NAME_BOX), L"Bad");
    EXPECT_EQ(stand.Text(IDC_FAX_NUMBER), L"");
    EXPECT_FALSE(stand.IsEnabled(IDC_TO));
}

TEST_F(FaxJobPageTest, WithoutItsTextAGroupCannotBeTaken)
{
    stand.AddRecentGroup(L"Team", 2);
    stand.Show();
    stand.DropNames(true);
    stand.PickName(0);
    EXPECT_TRUE(stand.IsVisible(IDC_GROUP_TEXT));
    EXPECT_FALSE(stand.IsVisible(IDC_FAX_NUMBER));
    EXPECT_FALSE(stand.IsEnabled(IDC_COMPANY));
    EXPECT_EQ(stand.Text(IDC_GROUP_TEXT), L"");
    EXPECT_FALSE(stand.IsEnabled(IDC_TO));
}

} // namespace
} // namespace qx::test
