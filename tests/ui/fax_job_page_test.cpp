// The Fax Job page alone. What a user sees of it in a whole session is in fax_job_session_test.cpp.
#include "settings/device_state.h"
#include "support/failing_calls.h"
#include "support/fax_job_page_stand.h"
#include "support/input_method.h"
#include "support/print_host.h"
#include "support/ui_language.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace qx::test {
namespace {

using Rows = std::vector<Recipient>;
using Texts = std::vector<std::wstring>;

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

    void ShowAndPick(int name)
    {
        stand.Show();
        stand.DropNames(true);
        stand.PickName(name);
    }
    Recipient Fields() { return {stand.Text(IDC_NAME_BOX), stand.Text(IDC_FAX_NUMBER), stand.Text(IDC_COMPANY)}; }

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

TEST_F(FaxJobPageTest, ItsFieldsTakeNoMoreCharactersThanTheirLimits)
{
    stand.Show();
    const auto limit = [](HWND edit) { return SendMessageW(edit, EM_GETLIMITTEXT, 0, 0); };
    EXPECT_EQ(limit(stand.Page().fields.nameBox.edit), 50);
    EXPECT_EQ(limit(stand.Control(IDC_FAX_NUMBER)), 50);
    EXPECT_EQ(limit(stand.Control(IDC_COMPANY)), 50);
    EXPECT_EQ(limit(stand.Control(IDC_NOTES)), 500);
    EXPECT_EQ(limit(stand.Control(IDC_SUBJECT)), 50);
    EXPECT_EQ(limit(stand.Control(IDC_IMAGE)), 260);
    EXPECT_EQ(limit(stand.Control(IDC_BILLING_CODE)), 16);
}

TEST_F(FaxJobPageTest, TheRecipientListHasThreeEqualColumnsWithWholeRowsAndGridLines)
{
    stand.Show();
    const HWND list = stand.Control(IDC_RECIPIENTS);
    for (int column = 0; column < 3; ++column)
        EXPECT_EQ(ListView_GetColumnWidth(list, column), 112) << column;
    EXPECT_EQ(Header_GetItemCount(ListView_GetHeader(list)), 3);
    EXPECT_EQ(ListView_GetExtendedListViewStyle(list), static_cast<DWORD>(LVS_EX_FULLROWSELECT | LVS_EX_GRIDLINES));
    EXPECT_NE(GetWindowLongPtrW(list, GWL_STYLE) & LVS_SHOWSELALWAYS, 0);
}

TEST_F(FaxJobPageTest, TakesATypedRecipientIntoListAndRecord)
{
    stand.Show();
    Add(L"Anna", L"5550100", L"Orchard");
    EXPECT_EQ(stand.Rows(), (Rows{{L"Anna", L"5550100", L"Orchard"}}));
    EXPECT_EQ(stand.Recipients(), stand.Rows());
    EXPECT_EQ(stand.Job().RecipientCount, 1);
    EXPECT_EQ(Fields(), (Recipient{L"", L"", L""}));
    EXPECT_FALSE(stand.IsEnabled(IDC_TO));
}

TEST_F(FaxJobPageTest, FromRightToLeftTheListHasMarksAroundNumbersAndTheRecordHasThemAsTheyAre)
{
    const UiLanguage hebrew(0x040D);
    stand.Show();
    Add(L"Anna", L"(030)555-0123,,#4", L"Orchard");
    EXPECT_EQ(stand.Rows(), (Rows{{L"Anna", L"\u202A(030)555-0123,,#4\u202C", L"Orchard"}}));
    EXPECT_EQ(stand.Recipients(), (Rows{{L"Anna", L"(030)555-0123,,#4", L"Orchard"}}));
    ASSERT_TRUE(stand.Send());
    EXPECT_EQ(stand.Recipients(), (Rows{{L"Anna", L"(030)555-0123,,#4", L"Orchard"}}));
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
    EXPECT_EQ(Fields(), (Recipient{L"Anna", L"111", L"Orchard"}));
    EXPECT_TRUE(stand.IsEnabled(IDC_TO));
    EXPECT_TRUE(stand.IsEnabled(IDC_ADD_TO_PHONE_BOOK));
}

TEST_F(FaxJobPageTest, WithNamesakesTheChosenRowDecides)
{
    stand.AddRecentEntry(L"Anna", L"111");
    stand.AddRecentEntry(L"Anna", L"222");
    ShowAndPick(1);
    EXPECT_EQ(stand.Text(IDC_FAX_NUMBER), L"111");
    stand.PickName(0);
    EXPECT_EQ(stand.Text(IDC_FAX_NUMBER), L"222");
}

TEST_F(FaxJobPageTest, AStoredNumberThatTheFieldRefusesNeverBringsBackAnotherRecipients)
{
    stand.AddRecentEntry(L"Bad", L"555 12 x");
    stand.AddRecentEntry(L"Anna", L"111");
    ShowAndPick(0);
    stand.PickName(1);
    EXPECT_EQ(stand.Text(IDC_NAME_BOX), L"Bad");
    EXPECT_EQ(stand.Text(IDC_FAX_NUMBER), L"");
    EXPECT_FALSE(stand.IsEnabled(IDC_TO));
}

TEST_F(FaxJobPageTest, WithoutItsTextAGroupCannotBeTaken)
{
    stand.AddRecentGroup(L"Team", 2);
    ShowAndPick(0);
    EXPECT_TRUE(stand.IsVisible(IDC_GROUP_TEXT));
    EXPECT_FALSE(stand.IsVisible(IDC_FAX_NUMBER));
    EXPECT_FALSE(stand.IsEnabled(IDC_COMPANY));
    EXPECT_EQ(stand.Text(IDC_GROUP_TEXT), L"");
    EXPECT_FALSE(stand.IsEnabled(IDC_TO));
}

TEST_F(FaxJobPageTest, AGroupOfAtMostOneMemberHasATextOfItsOwn)
{
    stand.Page().hStringDll = ModuleInstance(); // of the test, where the two texts differ
    stand.AddRecentGroup(L"Duo", 2);
    stand.AddRecentGroup(L"Nobody", 0);
    stand.AddRecentGroup(L"Solo", 1);
    ShowAndPick(0);
    EXPECT_EQ(stand.Text(IDC_GROUP_TEXT), L"member: 1");
    stand.PickName(1);
    EXPECT_EQ(stand.Text(IDC_GROUP_TEXT), L"member: 0");
    stand.PickName(2);
    EXPECT_EQ(stand.Text(IDC_GROUP_TEXT), L"members: 2");
    EXPECT_TRUE(stand.IsEnabled(IDC_TO));
}

// In some languages one member needs no number.
TEST(GroupText, WithoutAPlaceholderIsShownAsItIsAndWithAWrongOneNotAtAll)
{
    const UiLanguage hebrew(0x040D);
    FaxJobPageStand stand;
    stand.Page().hStringDll = ModuleInstance(); // of the test
    stand.AddRecentGroup(L"Duo", 2);
    stand.AddRecentGroup(L"Solo", 1);
    stand.Show();
    stand.DropNames(true);
    stand.PickName(0);
    EXPECT_EQ(stand.Text(IDC_GROUP_TEXT), L"one member");
    EXPECT_TRUE(stand.IsEnabled(IDC_TO));
    stand.PickName(1);
    EXPECT_EQ(stand.Text(IDC_GROUP_TEXT), L"");
    EXPECT_FALSE(stand.IsEnabled(IDC_TO));
}

// As picking many groups from the phone book does: what comes in last may lie where the first one lay.
TEST_F(FaxJobPageTest, AGroupThatDropsOutOfTheRecentListLeavesTheFields)
{
    std::vector<UniqueItem<PhoneBookGroup>> groups;
    for (int i = 0; i < 2 * kMaxRecentRecipients; ++i) {
        groups.emplace_back(new PhoneBookGroup);
        groups.back()->SetName((L"Other " + std::to_wstring(i)).c_str());
    }
    stand.AddRecentGroup(L"Team", 2);
    ShowAndPick(0);
    ASSERT_TRUE(stand.IsVisible(IDC_GROUP_TEXT));
    SetFocus(stand.Control(IDC_GROUP_TEXT));
    for (const auto& group : groups)
        stand.Page().recent->AddRecent(group.get(), &stand.Book());
    stand.Notify(static_cast<UINT>(PSN_SETACTIVE));
    EXPECT_EQ(stand.Page().fields.group, nullptr);
    EXPECT_FALSE(stand.IsVisible(IDC_GROUP_TEXT));
    EXPECT_TRUE(stand.IsVisible(IDC_FAX_NUMBER));
    EXPECT_EQ(GetFocus(), stand.Control(IDC_FAX_NUMBER)); // where the group's text had it
    EXPECT_EQ(stand.Text(IDC_NAME_BOX), L"Team");
    EXPECT_FALSE(stand.IsEnabled(IDC_TO));
}

// As when memory is short: the recent list has changed, and the name box could not be told.
TEST_F(FaxJobPageTest, ANameThatDroppedOutOfTheRecentListUnnoticedHasItsOwnNumber)
{
    stand.AddRecentEntry(L"Anna", L"111", L"Orchard");
    stand.Show();
    stand.DropNames(true);
    for (int i = 0; i < 2 * kMaxRecentRecipients; ++i)
        stand.AddRecentEntry((L"Other " + std::to_wstring(i)).c_str(), L"999");
    stand.PickName(0);
    EXPECT_EQ(stand.Text(IDC_FAX_NUMBER), L"111");
    stand.Press(IDC_TO);
    EXPECT_EQ(stand.Recipients(), (Rows{{L"Anna", L"111", L"Orchard"}}));
}

TEST_F(FaxJobPageTest, AGroupThatStaysInTheRecentListStaysInTheFields)
{
    stand.AddRecentGroup(L"Team", 2);
    ShowAndPick(0);
    stand.AddRecentGroup(L"Others", 2);
    stand.Notify(static_cast<UINT>(PSN_SETACTIVE));
    ASSERT_NE(stand.Page().fields.group, nullptr);
    EXPECT_STREQ(stand.Page().fields.group->GetName(), L"Team");
    EXPECT_TRUE(stand.IsVisible(IDC_GROUP_TEXT));
}

// ---- the list of recipients

TEST_F(FaxJobPageTest, TheNumberOfRecipientsStandsAtTheirList)
{
    stand.Page().hStringDll = ModuleInstance(); // of the test, where a group has its text
    stand.AddRecentGroup(L"Team", 3);
    stand.Show();
    EXPECT_EQ(stand.Text(IDC_RECIPIENT_COUNT), L"0 / 100");
    Add(L"Anna", L"1");
    EXPECT_EQ(stand.Text(IDC_RECIPIENT_COUNT), L"1 / 100");
    stand.DropNames(true);
    stand.PickName(1); // behind Anna
    stand.Press(IDC_TO);
    EXPECT_EQ(stand.Text(IDC_RECIPIENT_COUNT), L"4 / 100");
    stand.SelectRows({0, 2});
    stand.Press(IDC_DELETE);
    EXPECT_EQ(stand.Text(IDC_RECIPIENT_COUNT), L"2 / 100");
}

TEST_F(FaxJobPageTest, FromRightToLeftTheNumberOfRecipientsStaysBeforeTheirLimit)
{
    const UiLanguage hebrew(0x040D);
    stand.Show();
    EXPECT_EQ(stand.Text(IDC_RECIPIENT_COUNT), L"\u200E0 / 100");
}

TEST_F(FaxJobPageTest, WhatWasAddedIsInSight)
{
    stand.Page().hStringDll = ModuleInstance(); // of the test, where a group has its text
    stand.AddRecentGroup(L"Team", 30);
    stand.Show();
    const HWND list = stand.Control(IDC_RECIPIENTS);
    const auto lastInSight = [list] { return ListView_GetTopIndex(list) + ListView_GetCountPerPage(list) - 1; };
    for (int i = 0; i < 20; ++i) {
        Add(L"Anna", L"1");
        ASSERT_GE(lastInSight(), i);
    }
    stand.SetText(IDC_NAME_BOX, L"Team");
    stand.Press(IDC_TO);
    EXPECT_EQ(stand.Rows().size(), 50u);
    EXPECT_GE(lastInSight(), 49);
}

TEST_F(FaxJobPageTest, AListThatIsThereFromTheStartBeginsWithItsFirst)
{
    for (int i = 0; i < 30; ++i)
        AddRecipient(stand.Job(), AsRecipient(MakeRecipient({L"Anna", L"1", L""}).release()));
    stand.Show();
    EXPECT_EQ(ListView_GetTopIndex(stand.Control(IDC_RECIPIENTS)), 0);
}

TEST_F(FaxJobPageTest, AfterDeleteTheKeysGoOnFromTheNextRow)
{
    stand.Show();
    for (const wchar_t* const name : {L"A", L"B", L"C", L"D", L"E"})
        Add(name, L"1");
    const auto focused = [&] { return ListView_GetNextItem(stand.Control(IDC_RECIPIENTS), -1, LVNI_FOCUSED); };
    stand.SelectRows({0, 2}); // D comes to where B was
    stand.Press(IDC_DELETE);
    EXPECT_EQ(focused(), 1);
    EXPECT_EQ(stand.Rows()[1].name, L"D");
    EXPECT_FALSE(stand.IsEnabled(IDC_DELETE)); // nothing is selected
    stand.SelectRows({2});
    stand.Press(IDC_DELETE);
    EXPECT_EQ(focused(), 1); // the last one now
    stand.SelectRows({0, 1});
    stand.Press(IDC_DELETE);
    EXPECT_EQ(focused(), -1);
}

// ---- its lay-out

TEST_F(FaxJobPageTest, TheListTakesTheRoomOfABillingCodeThatIsNotAskedFor)
{
    FaxJobPageStand asking;
    asking.Job().BillingCodeEnabled = 1;
    asking.Show();
    stand.Show();
    const auto place = [](const FaxJobPageStand& page, int id) { return PlaceOf(page.Control(id)); };
    const LONG room = place(asking, IDC_BILLING_GROUP).bottom - place(asking, IDC_COVER_PAGE_GROUP).bottom;
    ASSERT_GT(room, 0);
    for (const int id : {IDC_FAX_TO_GROUP, IDC_RECIPIENTS}) {
        EXPECT_EQ(place(stand, id).top, place(asking, id).top) << id;
        EXPECT_EQ(place(stand, id).bottom, place(asking, id).bottom + room) << id;
    }
    for (const int id : {IDC_COVER_PAGE_GROUP, IDC_COVER_PAGE, IDC_NOTES_LABEL, IDC_NOTES, IDC_SUBJECT_LABEL,
                         IDC_SUBJECT, IDC_IMAGE_LABEL, IDC_IMAGE, IDC_BROWSE}) {
        RECT moved = place(asking, id);
        OffsetRect(&moved, 0, room);
        const RECT found = place(stand, id);
        EXPECT_TRUE(EqualRect(&found, &moved)) << id;
    }
    const RECT unmoved = place(asking, IDC_DELETE), found = place(stand, IDC_DELETE);
    EXPECT_TRUE(EqualRect(&found, &unmoved));
}

// ---- the phone book

TEST_F(FaxJobPageTest, AFullPhoneBookTakesNoMore)
{
    for (DWORD i = 0; i < 10000; ++i)
        stand.AddBookEntry(std::to_wstring(i).c_str(), L"1");
    stand.Show();
    Fill(L"Anna", L"111");
    stand.Press(IDC_ADD_TO_PHONE_BOOK);
    EXPECT_EQ(stand.Boxes().Take(),
              (std::vector<MessageBoxes::Box>{
                  {L"QX MFP Send Fax Warning", L"The maximum number of phone book entries has been entered."}}));
    EXPECT_EQ(stand.Book().GetCount(), 10000u);
}

TEST_F(FaxJobPageTest, ARefusedDuplicateLeavesAGapInTheIds)
{
    stand.AddBookEntry(L"Anna", L"111");
    stand.Show();
    Fill(L"ANNA", L"111", L"Elsewhere");
    const DWORD before = stand.Book().NextId();
    stand.Press(IDC_ADD_TO_PHONE_BOOK);
    EXPECT_EQ(stand.Boxes().TakeTexts(),
              Texts{L"This is a duplicate entry.Please enter a different name or fax number"});
    EXPECT_EQ(stand.Book().NextId(), before + 2);
    EXPECT_EQ(stand.Book().GetCount(), 1u);
}

TEST_F(FaxJobPageTest, ARowThatTheListDoesNotGiveUpStaysWithThoseBehindIt)
{
    stand.Show();
    Add(L"Bob", L"2");
    Add(L"Anna", L"1");
    stand.SelectRows({0, 1});
    FailingCalls<decltype(SendMessageW), struct DeleteCalls> calls(
        nullptr, "SendMessageW", 0, 0, [](HWND, UINT message, WPARAM, LPARAM) { return message == LVM_DELETEITEM; });
    calls.FailOnly(1);
    stand.Press(IDC_DELETE);
    EXPECT_TRUE(calls.HasFailed());
    EXPECT_EQ(stand.Rows().size(), 2u);
    EXPECT_EQ(stand.Recipients(), stand.Rows());
}

// What the rows show would be somebody else than whom the record has at their places.
TEST_F(FaxJobPageTest, WhileARowIsMissingNobodyIsAddedOrDeleted)
{
    const Rows both{{L"Bob", L"2", L""}, {L"Anna", L"1", L""}};
    const auto loseTheFirstRow = [this] { ListView_DeleteItem(stand.Control(IDC_RECIPIENTS), 0); };
    stand.Show();
    Add(L"Bob", L"2");
    Add(L"Anna", L"1");
    loseTheFirstRow();
    Fill(L"Zoe", L"9");
    stand.Press(IDC_TO);
    EXPECT_EQ(stand.Recipients(), both);
    EXPECT_EQ(stand.Rows(), both);
    EXPECT_EQ(stand.Text(IDC_FAX_NUMBER), L"9");

    loseTheFirstRow();
    stand.SelectRows({0}); // Anna, where the record has Bob
    stand.Press(IDC_DELETE);
    EXPECT_EQ(stand.Recipients(), both);
    EXPECT_EQ(stand.Rows(), both);
    EXPECT_FALSE(stand.IsEnabled(IDC_DELETE));

    stand.Press(IDC_TO);
    EXPECT_EQ(stand.Recipients().size(), 3u);
    EXPECT_EQ(stand.Recipients(), stand.Rows());
}

TEST_F(FaxJobPageTest, AGroupWhoseMembersTheListDoesNotTakeIsNotTakenAtAll)
{
    stand.Page().hStringDll = ModuleInstance(); // of the test, which has a text for it
    stand.AddRecentGroup(L"Trio", 3);
    ShowAndPick(0);
    ASSERT_TRUE(stand.IsEnabled(IDC_TO));
    FailingCalls<decltype(SendMessageW), struct InsertCalls> calls(
        nullptr, "SendMessageW", -1, 0, [](HWND, UINT message, WPARAM, LPARAM) { return message == LVM_INSERTITEMW; });
    for (const long row : {1, 2, 3}) {
        calls.FailOnly(row);
        stand.Press(IDC_TO);
        EXPECT_TRUE(calls.HasFailed());
        EXPECT_EQ(stand.Recipients(), Rows{}) << row;
        EXPECT_EQ(stand.Rows(), Rows{}) << row;
    }
    calls.FailNone();
    stand.Press(IDC_TO);
    EXPECT_EQ(stand.Recipients().size(), 3u);
}

// As much of it as the texts of a job hold.
TEST_F(FaxJobPageTest, ARecentNameThatIsLongerThanItCouldBeTypedIsTakenWithTheFirst255Characters)
{
    stand.AddRecentEntry(std::wstring(300, L'n').c_str(), L"5");
    stand.Show();
    stand.DropNames(true);
    stand.PickName(0);
    stand.Press(IDC_TO);
    ASSERT_EQ(stand.Recipients().size(), 1u);
    EXPECT_EQ(stand.Recipients()[0].name.size(), 255u);
}

// ---- cover page

class CoverPageTest : public FaxJobPageTest {
protected:
    void ExpectFields(bool enabled)
    {
        for (const int id : {IDC_NOTES, IDC_SUBJECT, IDC_IMAGE, IDC_BROWSE})
            EXPECT_EQ(stand.IsEnabled(id), enabled) << id;
    }
    bool Checked() { return IsDlgButtonChecked(stand.Page().dialog, IDC_COVER_PAGE) == BST_CHECKED; }
};

TEST_F(CoverPageTest, FieldsAndImageCheckFollowTheCheckBox)
{
    stand.Show();
    ExpectFields(false);
    stand.Press(IDC_COVER_PAGE);
    ExpectFields(true);
    EXPECT_TRUE(stand.Page().coverPage.checkImage);
    stand.Press(IDC_COVER_PAGE);
    ExpectFields(false);
    EXPECT_FALSE(stand.Page().coverPage.checkImage);
}

TEST_F(CoverPageTest, DefaultsThatWereJustSavedAreShownAtTheNextActivation)
{
    stand.Show();
    FaxJobData& job = stand.Job();
    job.AddCoverPage = 1;
    SetCoverPageNotes(job, L"From the defaults");
    job.DefaultsSaved = 1;
    job.CoverPageFromDefaults = 1;
    stand.Notify(static_cast<UINT>(PSN_SETACTIVE));
    EXPECT_EQ(stand.Text(IDC_NOTES), L"From the defaults");
    EXPECT_TRUE(Checked());
    EXPECT_EQ(job.DefaultsSaved, 0u);
    EXPECT_EQ(job.CoverPageFromDefaults, 0u);
}

TEST_F(CoverPageTest, AppliedDefaultsAreShownOnceAndOnlyWhenTheyReplacedTheCoverPage)
{
    stand.Show();
    FaxJobData& job = stand.Job();
    SetCoverPageNotes(job, L"From the defaults");
    job.ApplyDefaults = 1;
    stand.Notify(static_cast<UINT>(PSN_SETACTIVE));
    EXPECT_EQ(stand.Text(IDC_NOTES), L"");
    job.CoverPageFromDefaults = 1;
    stand.Notify(static_cast<UINT>(PSN_SETACTIVE));
    EXPECT_EQ(stand.Text(IDC_NOTES), L"From the defaults");
    EXPECT_EQ(job.CoverPageFromDefaults, 0u);
}

TEST_F(CoverPageTest, AReloadKeepsTheOverlayLock)
{
    stand.Job().CoverPageLock = 1;
    stand.Show();
    stand.Job().DefaultsSaved = 1;
    stand.Notify(static_cast<UINT>(PSN_SETACTIVE));
    EXPECT_TRUE(Checked());
    EXPECT_FALSE(stand.IsEnabled(IDC_COVER_PAGE));
    EXPECT_FALSE(stand.IsEnabled(IDC_IMAGE));
    EXPECT_FALSE(stand.Page().coverPage.checkImage);
}

TEST_F(CoverPageTest, SettingsThatTheDefaultsReplacedAreNotOverwrittenBySend)
{
    stand.Show();
    Fill(L"Anna", L"1");
    SetCoverPageNotes(stand.Job(), L"From the defaults");
    stand.Job().CoverPageFromDefaults = 1;
    EXPECT_TRUE(stand.Send());
    EXPECT_STREQ(stand.Job().CoverPageNotes, L"From the defaults");
}

// They would put the cover page of before into the job.
TEST_F(CoverPageTest, FieldsThatDidNotTakeTheDefaultsAreShownAnewBeforeASend)
{
    stand.Show();
    Fill(L"Anna", L"1");
    SetCoverPageNotes(stand.Job(), L"From the defaults");
    stand.Job().DefaultsSaved = 1;
    {
        FailingCalls<decltype(SetWindowTextW), struct FillCalls> calls(nullptr, "SetWindowTextW", FALSE);
        calls.FailFrom(1);
        stand.Notify(static_cast<UINT>(PSN_SETACTIVE));
    }
    EXPECT_EQ(stand.Text(IDC_NOTES), L"");
    EXPECT_FALSE(stand.Send());
    EXPECT_EQ(stand.Text(IDC_NOTES), L"From the defaults");
    EXPECT_TRUE(stand.Send());
    EXPECT_STREQ(stand.Job().CoverPageNotes, L"From the defaults");
}

// ---- Send

TEST_F(FaxJobPageTest, AHiddenBillingCodeIsSavedEmpty)
{
    SetBillingCode(stand.Job(), L"99");
    stand.Show();
    EXPECT_FALSE(stand.IsVisible(IDC_BILLING_CODE));
    Fill(L"Anna", L"1");
    EXPECT_TRUE(stand.Send());
    EXPECT_STREQ(stand.Job().BillingCode, L"");
    EXPECT_EQ(stand.Job().Cancelled, 0u);
}

TEST_F(FaxJobPageTest, AStoredBillingCodeComesBackAfterARefusedPaste)
{
    stand.Job().BillingCodeEnabled = 1;
    SetBillingCode(stand.Job(), L"99");
    stand.Show();
    stand.SetText(IDC_BILLING_CODE, L"12-3");
    EXPECT_EQ(stand.Text(IDC_BILLING_CODE), L"99");
}

TEST_F(FaxJobPageTest, AfterAFailedSendThePageOpensOnTheLastFailingFieldForGood)
{
    stand.Show();
    EXPECT_EQ(stand.Notify(static_cast<UINT>(PSN_QUERYINITIALFOCUS)), 0);
    EXPECT_FALSE(stand.Send());
    EXPECT_EQ(stand.Boxes().TakeTexts(), Texts{L"At least one fax number is required."});
    Fill(L"Anna", L"1");
    EXPECT_TRUE(stand.Send());
    const auto field = reinterpret_cast<HWND>(stand.Notify(static_cast<UINT>(PSN_QUERYINITIALFOCUS)));
    EXPECT_EQ(field, stand.Control(IDC_FAX_NUMBER));
    EXPECT_EQ(SendMessageW(field, EM_GETSEL, 0, 0), MAKELRESULT(0, 1)); // all of its text
}

TEST_F(CoverPageTest, AFieldThatHasBeenDisabledSinceItFailedIsNotWhereThePageOpens)
{
    stand.Show();
    stand.Press(IDC_COVER_PAGE);
    Fill(L"Anna", L"1");
    stand.SetText(IDC_IMAGE, L"C:\\no\\such.bmp");
    EXPECT_FALSE(stand.Send());
    stand.Boxes().TakeTexts();
    const auto opensOn = [&] { return reinterpret_cast<HWND>(stand.Notify(static_cast<UINT>(PSN_QUERYINITIALFOCUS))); };
    EXPECT_EQ(opensOn(), stand.Control(IDC_IMAGE));
    stand.Press(IDC_COVER_PAGE);
    EXPECT_EQ(opensOn(), nullptr);
    stand.Press(IDC_COVER_PAGE);
    EXPECT_EQ(opensOn(), stand.Control(IDC_IMAGE));
}

// ---- the focus

TEST_F(FaxJobPageTest, AButtonThatGoesOffWithTheFocusHandsItOn)
{
    stand.AddRecentEntry(L"Bob", L"2");
    stand.Show();
    const auto press = [&](int id) {
        SendMessageW(stand.SheetWindow(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(stand.Control(id)), TRUE);
        ASSERT_EQ(GetFocus(), stand.Control(id));
        stand.Press(id);
        EXPECT_FALSE(stand.IsEnabled(id)) << id;
        ASSERT_NE(GetFocus(), nullptr) << id;
        EXPECT_TRUE(IsWindowEnabled(GetFocus())) << id;
        EXPECT_EQ(SendMessageW(stand.Control(id), WM_GETDLGCODE, 0, 0) & DLGC_DEFPUSHBUTTON, 0) << id;
    };
    Fill(L"Anna", L"1");
    press(IDC_TO);
    Fill(L"Anna", L"1");
    press(IDC_CLEAR_FIELDS);
    stand.SelectRows({0});
    press(IDC_DELETE);
}

// While the user is elsewhere on the page, the phone book may be changed by another program.
TEST_F(FaxJobPageTest, AButtonThatGoesOffByItselfHandsTheFocusOn)
{
    stand.Show();
    Fill(L"Anna", L"1");
    SetFocus(stand.Control(IDC_ADD_TO_PHONE_BOOK));
    stand.SetText(IDC_FAX_NUMBER, L"");
    EXPECT_FALSE(stand.IsEnabled(IDC_ADD_TO_PHONE_BOOK));
    EXPECT_EQ(GetFocus(), stand.Control(IDC_RECIPIENTS)); // not on to the button that clears what was typed
}

// An Enter or Space that was meant for the button comes too late: it must do nothing else.
TEST_F(FaxJobPageTest, NoButtonInheritsTheFocusOfOneThatGoesOff)
{
    stand.AddRecentGroup(L"Team", 2);
    stand.Show();
    for (const int id : {IDC_TO, IDC_ADD_TO_PHONE_BOOK, IDC_CLEAR_FIELDS, IDC_DELETE}) {
        Fill(L"Anna", L"1");
        stand.Press(IDC_TO);
        Fill(L"Anna", L"1");
        stand.SelectRows({0});
        SetFocus(stand.Control(id));
        ASSERT_EQ(GetFocus(), stand.Control(id));
        EnableControl(stand.Page().dialog, id, false);
        EXPECT_EQ(SendMessageW(GetFocus(), WM_GETDLGCODE, 0, 0) & DLGC_BUTTON, 0) << id;
    }
}

// On the way there the name turns out to be a group's, which has neither a number nor a company.
TEST_F(FaxJobPageTest, AFieldThatGoesOffWhileItGetsTheFocusHandsItToTheGroup)
{
    stand.AddRecentGroup(L"Team", 2);
    stand.AddRecentEntry(L"Anna", L"111");
    stand.Show();
    for (const int id : {IDC_FAX_NUMBER, IDC_COMPANY}) {
        SetFocus(stand.Page().fields.nameBox.edit);
        stand.DropNames(true);
        stand.PickName(0);
        ASSERT_EQ(stand.Text(IDC_FAX_NUMBER), L"111");
        stand.SetText(IDC_NAME_BOX, L"Team");
        SetFocus(stand.Control(id));
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageW(&message);
        EXPECT_EQ(stand.Text(IDC_FAX_NUMBER), L"");
        EXPECT_EQ(GetFocus(), stand.Control(IDC_GROUP_TEXT)) << id;
    }
}

TEST_F(CoverPageTest, AReloadThatDisablesTheFocusedFieldHandsTheFocusOn)
{
    stand.Job().AddCoverPage = 1;
    stand.Show();
    SetFocus(stand.Control(IDC_SUBJECT));
    stand.Job().AddCoverPage = 0;
    stand.Job().DefaultsSaved = 1;
    stand.Notify(static_cast<UINT>(PSN_SETACTIVE));
    ASSERT_FALSE(stand.IsEnabled(IDC_SUBJECT));
    ASSERT_NE(GetFocus(), nullptr);
    EXPECT_TRUE(IsWindowEnabled(GetFocus()));
    EXPECT_TRUE(IsChild(stand.Page().dialog, GetFocus())); // not on to the button that sends
}

TEST_F(FaxJobPageTest, NumbersAreTypedWithoutAnInputMethod)
{
    stand.Show();
    for (const int id : {IDC_FAX_NUMBER, IDC_BILLING_CODE})
        EXPECT_FALSE(TakesInputMethod(stand.Control(id))) << id;
    for (const int id : {IDC_COMPANY, IDC_NOTES, IDC_SUBJECT, IDC_IMAGE})
        EXPECT_TRUE(TakesInputMethod(stand.Control(id))) << id;
    EXPECT_TRUE(TakesInputMethod(stand.Page().fields.nameBox.edit));
}

TEST_F(FaxJobPageTest, ASendThatTheOtherPageRefusesLeavesTheJobAsItWas)
{
    stand.Job().Cancelled = 7;
    SetBillingCode(stand.Job(), L"99");
    SetCoverPageSubject(stand.Job(), L"Before");
    stand.Show();
    Add(L"Bob", L"2");
    const Rows rows = stand.Rows();
    Fill(L"Anna", L"1");
    stand.SetText(IDC_SUBJECT, L"Typed");
    stand.LetTheOtherPageRefuse(true);
    for (int press = 0; press < 2; ++press) {
        EXPECT_TRUE(stand.Send());
        EXPECT_EQ(stand.Recipients(), rows);
        EXPECT_EQ(stand.Job().Cancelled, 7u);
        EXPECT_STREQ(stand.Job().BillingCode, L"99");
        EXPECT_STREQ(stand.Job().CoverPageSubject, L"Before");
    }
    EXPECT_EQ(stand.Page().recent->Slots()[0]->GetName(), std::wstring(L"Bob")); // only who was taken into the list
    stand.LetTheOtherPageRefuse(false);
    EXPECT_TRUE(stand.Send());
    EXPECT_EQ(stand.Recipients(), (Rows{{L"Bob", L"2", L""}, {L"Anna", L"1", L""}}));
    EXPECT_EQ(stand.Job().Cancelled, 0u);
    EXPECT_STREQ(stand.Job().BillingCode, L"");
    EXPECT_STREQ(stand.Job().CoverPageSubject, L"Typed");
    EXPECT_EQ(stand.Page().recent->Slots()[0]->GetName(), std::wstring(L"Anna"));
}

TEST_F(FaxJobPageTest, ARecordThatComesWithRecipientsShowsThem)
{
    AddRecipient(stand.Job(), AsRecipient(MakeRecipient({L"Anna", L"1", L"Orchard"}).release()));
    stand.Show();
    EXPECT_EQ(stand.Rows(), (Rows{{L"Anna", L"1", L"Orchard"}}));
}

TEST_F(FaxJobPageTest, ASendThatThrowsIsRefused)
{
    stand.Show();
    Fill(L"Anna", L"1");
    DestroyWindow(stand.Control(IDC_NOTES));
    EXPECT_FALSE(stand.Send());
    EXPECT_EQ(stand.Recipients(), Rows{});
    EXPECT_EQ(stand.Text(IDC_FAX_NUMBER), L"1");
}

TEST_F(FaxJobPageTest, ASendWithARecipientThatNoRowShowsIsRefusedAndShowsIt)
{
    stand.Show();
    AddRecipient(stand.Job(), AsRecipient(MakeRecipient({L"Anna", L"1", L"Orchard"}).release()));
    EXPECT_FALSE(stand.Send());
    EXPECT_EQ(stand.Rows(), (Rows{{L"Anna", L"1", L"Orchard"}}));
    EXPECT_TRUE(stand.Send());
}

TEST(FaxJobPageWithoutState, IsNotHandledAndSaysInvalidData)
{
    const HWND window = CreateWindowExW(0, WC_DIALOG, L"", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(PageProcedure<kFaxJobPage>(window, WM_COMMAND, MAKEWPARAM(IDC_TO, BN_CLICKED), 0), FALSE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_DATA));
    DestroyWindow(window);
}

// ---- the print host for 32-bit programs

// Also run by the test below, in a process of that host's name.
TEST_F(CoverPageTest, IsThereUnlessThePageRunsInThePrintHost)
{
    const bool inPrintHost = IsSpoolerThunkHost();
    stand.Job().AddCoverPage = 1;
    stand.Job().CoverPageLock = 1; // the host wins over the lock
    stand.Show();
    EXPECT_EQ(Checked(), !inPrintHost);
    EXPECT_EQ(stand.IsEnabled(IDC_NOTES), !inPrintHost);
    EXPECT_EQ(stand.IsEnabled(IDC_SUBJECT), !inPrintHost);
    EXPECT_FALSE(stand.IsEnabled(IDC_COVER_PAGE));
    EXPECT_FALSE(stand.IsEnabled(IDC_IMAGE));
    EXPECT_FALSE(stand.Page().coverPage.checkImage);
    EXPECT_EQ(inPrintHost, InPrintHost());
}

TEST(PrintHost, RunsThePageWithoutACoverPage)
{
    EXPECT_EQ(RunInPrintHost("CoverPageTest.IsThereUnlessThePageRunsInThePrintHost"), 0u);
}

} // namespace
} // namespace qx::test
