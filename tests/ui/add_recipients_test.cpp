// The phone book picker.
#include "res/add_recipients_ids.h"
#include "res/details_ids.h"
#include "res/edit_phone_book_ids.h"
#include "res/entry_ids.h"
#include "res/fax_job_page_ids.h"
#include "support/phone_book_session.h"

#include <gtest/gtest.h>

namespace qx::test {
namespace {

using host::BoxContents;
using host::UiDriver;
using Names = std::vector<std::wstring>;

BookText Acquaintances()
{
    return BookText()
        .Entry(1, L"Ann", L"111", L"Acme")
        .Entry(2, L"Bob", L"222")
        .Entry(3, L"Cat", L"333", L"Cats")
        .Group(4, L"Sales", {3, 1});
}

const BoxContents kTooManyRecipients = ErrorBox(L"The maximum number of fax numbers has been entered.");

// The first text of a value of a recent recipient, which is named by its place.
std::wstring RecentText(const PhoneBookSession& session, const std::wstring& place, const wchar_t* value)
{
    wchar_t text[256] = L"";
    DWORD bytes = sizeof text;
    RegGetValueW(HKEY_CURRENT_USER, (session.SettingsKey() + L"\\QX-FAX\\MRUList\\" + place).c_str(), value,
                 RRF_RT_REG_SZ | RRF_RT_REG_MULTI_SZ, nullptr, text, &bytes);
    return text;
}

TEST(AddRecipients, ShowsTheBookInItsOrderAndGroupsWithTheirNameOnly)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenPicker();
    EXPECT_EQ(ui.Title(), L"Add Recipients From Phone Book");
    EXPECT_EQ(NamesIn(ui, IDC_PICK_LIST), (Names{L"Ann", L"Bob", L"Cat", L"Sales"}));
    EXPECT_EQ(ui.Row(IDC_PICK_LIST, 0), (Names{L"Ann", L"111", L"Acme"}));
    EXPECT_EQ(ui.Row(IDC_PICK_LIST, 1), (Names{L"Bob", L"222", L""}));
    EXPECT_EQ(ui.Row(IDC_PICK_LIST, 3), (Names{L"Sales", L"", L""}));
    EXPECT_EQ(ui.ColumnTitle(IDC_PICK_LIST, 1), L"Fax Number");
    EXPECT_EQ(ui.ColumnTitle(IDC_PICK_CHOSEN, 2), L"Company");
}

TEST(AddRecipients, WithoutTheTextLibraryTheBuiltInTextsStandAsTheyAre)
{
    PhoneBookSession session(Acquaintances(), WithoutTextLibrary());
    UiDriver& ui = session.OpenPicker();
    EXPECT_EQ(ui.Title(), L"-Add Recipients From Phone Book");
    EXPECT_EQ(ui.Text(IDC_PICK_TYPED_LABEL), L"Type Name or Select From list");
    EXPECT_EQ(ui.Text(IDC_PICK_TO), L"To ->");
    EXPECT_EQ(ui.Text(IDC_PICK_CHOSEN_LABEL), L"Fax Recipients");
    EXPECT_EQ(ui.Text(IDC_PICK_DETAILS), L"Details...");
    EXPECT_EQ(ui.Text(IDC_PICK_EDIT_BOOK), L"Edit PhoneBook...");
    EXPECT_EQ(ui.Text(IDC_PICK_DELETE), L"Delete...");
    EXPECT_EQ(ui.Text(IDOK), L"OK");
    EXPECT_EQ(ui.Text(IDCANCEL), L"Cancel");
    EXPECT_EQ(ui.ColumnTitle(IDC_PICK_LIST, 0), L"");
}

TEST(AddRecipients, ButtonsFollowTheSelection)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenPicker();
    EXPECT_FALSE(ui.IsEnabled(IDC_PICK_DETAILS));
    EXPECT_FALSE(ui.IsEnabled(IDC_PICK_TO));
    EXPECT_TRUE(ui.IsEnabled(IDC_PICK_EDIT_BOOK));
    EXPECT_FALSE(ui.IsEnabled(IDC_PICK_DELETE));
    ui.SelectRows(IDC_PICK_LIST, {0, 1});
    EXPECT_FALSE(ui.IsEnabled(IDC_PICK_DETAILS));
    EXPECT_TRUE(ui.IsEnabled(IDC_PICK_TO));
    ui.SelectRows(IDC_PICK_LIST, {1});
    EXPECT_TRUE(ui.IsEnabled(IDC_PICK_DETAILS));
    ui.SelectRows(IDC_PICK_LIST, {});
    EXPECT_FALSE(ui.IsEnabled(IDC_PICK_DETAILS));
    EXPECT_FALSE(ui.IsEnabled(IDC_PICK_TO));
}

TEST(AddRecipients, GroupAndOneOfItsMembersTogetherGiveTheMemberTwice)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenPicker();
    Pick(ui, {0, 3});
    EXPECT_EQ(NamesIn(ui, IDC_PICK_CHOSEN), (Names{L"Ann", L"Cat", L"Ann"}));
    ui.Press(IDOK);
    EXPECT_EQ(NamesIn(ui, IDC_RECIPIENTS), (Names{L"Ann", L"Cat", L"Ann"}));
    session.Send();
    EXPECT_EQ(
        session.Recipients(),
        (std::vector<Recipient>{{L"Ann", L"111", L"Acme"}, {L"Cat", L"333", L"Cats"}, {L"Ann", L"111", L"Acme"}}));
    EXPECT_EQ(session.Record().RecipientCount, 3);
}

TEST(AddRecipients, HundredthRecipientIsTakenAndTheNextRefusedWithAMessage)
{
    PhoneBookSession session(BookText().People(120));
    UiDriver& ui = session.OpenPicker();
    Pick(ui, RowsUpTo(99));
    EXPECT_EQ(ui.RowCount(IDC_PICK_CHOSEN), 99);
    Pick(ui, {100});
    EXPECT_EQ(ui.RowCount(IDC_PICK_CHOSEN), 100);
    Pick(ui, {101});
    EXPECT_EQ(ui.AnswerBox(IDOK), kTooManyRecipients);
    EXPECT_EQ(ui.RowCount(IDC_PICK_CHOSEN), 100);
    EXPECT_EQ(ui.CellText(IDC_PICK_CHOSEN, 99, 0), L"Person 00100");
}

TEST(AddRecipients, WhatWasTakenBeforeTheLimitStays)
{
    PhoneBookSession session(BookText().People(120));
    UiDriver& ui = session.OpenPicker();
    Pick(ui, RowsUpTo(120));
    EXPECT_EQ(ui.AnswerBox(IDOK), kTooManyRecipients);
    EXPECT_EQ(ui.RowCount(IDC_PICK_CHOSEN), 100);
}

TEST(AddRecipients, GroupThatWouldPassTheLimitIsRefusedWholeEvenIfMembersAreGone)
{
    PhoneBookSession session(BookText().People(95).Group(200, L"Sales", {0, 1, 991, 992, 993, 994}));
    UiDriver& ui = session.OpenPicker();
    Pick(ui, RowsUpTo(95));
    Pick(ui, {95});
    EXPECT_EQ(ui.AnswerBox(IDOK), kTooManyRecipients);
    EXPECT_EQ(ui.RowCount(IDC_PICK_CHOSEN), 95);
}

TEST(AddRecipients, CancelAfterAddingAndDeletingLeavesTheRecipientsAsTheyWere)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenPicker();
    Pick(ui, {1});
    ui.Press(IDOK);
    ui.Press(IDC_PHONE_BOOK);
    EXPECT_EQ(NamesIn(ui, IDC_PICK_CHOSEN), Names{L"Bob"});
    Pick(ui, {3});
    ui.SelectRows(IDC_PICK_CHOSEN, {0, 1});
    ui.Press(IDC_PICK_DELETE);
    EXPECT_EQ(NamesIn(ui, IDC_PICK_CHOSEN), Names{L"Ann"});
    ui.Press(IDCANCEL);
    EXPECT_EQ(NamesIn(ui, IDC_RECIPIENTS), Names{L"Bob"});
    session.Send();
    EXPECT_EQ(session.Recipients(), (std::vector<Recipient>{{L"Bob", L"222", L""}}));
}

TEST(AddRecipients, DeleteTakesExactlyTheSelectedRowsAndGoesOff)
{
    PhoneBookSession session(BookText().People(6));
    UiDriver& ui = session.OpenPicker();
    Pick(ui, RowsUpTo(6));
    ui.SelectRows(IDC_PICK_CHOSEN, {0, 3, 5});
    EXPECT_TRUE(ui.IsEnabled(IDC_PICK_DELETE));
    ui.Focus(IDC_PICK_DELETE);
    ui.Press(IDC_PICK_DELETE);
    EXPECT_EQ(NamesIn(ui, IDC_PICK_CHOSEN), (Names{L"Person 00001", L"Person 00002", L"Person 00004"}));
    EXPECT_FALSE(ui.IsEnabled(IDC_PICK_DELETE));
    EXPECT_EQ(ui.FocusedControl(), IDC_PICK_CHOSEN);
    ui.Press(IDOK);
    session.Send();
    EXPECT_EQ(session.Recipients().size(), 3u);
    EXPECT_EQ(session.Recipients()[2].name, L"Person 00004");
}

TEST(AddRecipients, DeletingAllLeavesTheJobWithoutRecipients)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenPicker();
    Pick(ui, {0, 1});
    ui.Press(IDOK);
    ui.Press(IDC_PHONE_BOOK);
    ui.SelectRows(IDC_PICK_CHOSEN, {0, 1});
    ui.Press(IDC_PICK_DELETE);
    ui.Press(IDOK);
    EXPECT_EQ(ui.RowCount(IDC_RECIPIENTS), 0);
    session.Cancel();
    EXPECT_EQ(session.Record().RecipientCount, 0);
    EXPECT_EQ(session.Record().Recipients.Count, 0);
}

TEST(AddRecipients, TypedPrefixBringsTheNameToTheTopAndSelectsNothing)
{
    PhoneBookSession session(BookText().People(10000));
    UiDriver& ui = session.OpenPicker();
    ui.Type(IDC_PICK_TYPED, L"pERSON 07");
    EXPECT_EQ(TopRow(ui, IDC_PICK_LIST), 7000);
    EXPECT_TRUE(ui.SelectedRows(IDC_PICK_LIST).empty());
    ui.TypeMore(IDC_PICK_TYPED, L"777");
    EXPECT_EQ(TopRow(ui, IDC_PICK_LIST), 7777);
    ui.Type(IDC_PICK_TYPED, L"Person 00123"); // and up again
    EXPECT_EQ(TopRow(ui, IDC_PICK_LIST), 123);
}

TEST(AddRecipients, BlanksAndTextLongerThanEveryNameDoNotMoveTheList)
{
    PhoneBookSession session(BookText().People(200));
    UiDriver& ui = session.OpenPicker();
    ui.Type(IDC_PICK_TYPED, L"Person 0010");
    ASSERT_EQ(TopRow(ui, IDC_PICK_LIST), 100);
    for (const wchar_t* const text : {L"  ", L"Person 00000 and more", L"Q", L""}) {
        ui.Paste(IDC_PICK_TYPED, text);
        EXPECT_EQ(TopRow(ui, IDC_PICK_LIST), 100);
    }
}

TEST(AddRecipients, FiftyCharactersCanBeTyped)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenPicker();
    ui.Type(IDC_PICK_TYPED, std::wstring(60, L'x'));
    EXPECT_EQ(ui.Text(IDC_PICK_TYPED), std::wstring(50, L'x'));
}

TEST(AddRecipients, DetailsShowTheEntryOrTheGroupAndGiveTheFocusBackToTheList)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenPicker();
    ui.SelectRows(IDC_PICK_LIST, {2});
    ui.Press(IDC_PICK_DETAILS);
    EXPECT_EQ(ui.Title(), L"Details");
    EXPECT_EQ(ui.Text(IDC_DETAILS_NAME), L"Cat");
    EXPECT_EQ(ui.Text(IDC_DETAILS_FAX_NUMBER), L"333");
    EXPECT_EQ(ui.Text(IDC_DETAILS_COMPANY), L"Cats");
    ui.Press(IDOK);
    EXPECT_EQ(ui.FocusedControl(), IDC_PICK_LIST);
    ui.SelectRows(IDC_PICK_LIST, {3});
    ui.Press(IDC_PICK_DETAILS);
    EXPECT_EQ(ui.Title(), L"Group Details");
    EXPECT_EQ(NamesIn(ui, IDC_DETAILS_MEMBERS), (Names{L"Ann", L"Cat"}));
    ui.Press(IDOK);
    EXPECT_EQ(ui.FocusedControl(), IDC_PICK_LIST);
}

TEST(AddRecipients, PickedItemsComeFirstAmongTheRecentOnesAGroupAsItself)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenPicker();
    Pick(ui, {1, 3});
    ui.Press(IDCANCEL); // picked is used, sent or not
    EXPECT_EQ(RecentText(session, L"0", L"Name"), L"Sales");
    EXPECT_EQ(RecentText(session, L"1", nullptr), L"Bob");
    EXPECT_EQ(RecentText(session, L"2", nullptr), L"");
}

TEST(AddRecipients, WhatWasChosenOutlivesTheEntryInThePhoneBook)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenPicker();
    Pick(ui, {0, 1, 2});
    ui.Press(IDC_PICK_EDIT_BOOK);
    DeleteRows(ui, {0, 1});
    ui.Press(IDOK);
    EXPECT_EQ(NamesIn(ui, IDC_PICK_LIST), (Names{L"Cat", L"Sales"}));
    EXPECT_EQ(NamesIn(ui, IDC_PICK_CHOSEN), (Names{L"Ann", L"Bob", L"Cat"}));
    EXPECT_FALSE(ui.IsEnabled(IDC_PICK_TO));
    ui.Press(IDOK);
    session.Send();
    EXPECT_EQ(session.Recipients(),
              (std::vector<Recipient>{{L"Ann", L"111", L"Acme"}, {L"Bob", L"222", L""}, {L"Cat", L"333", L"Cats"}}));
}

TEST(AddRecipients, CancelledEditOfAChosenEntryDoesNotReachTheJob)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenPicker();
    Pick(ui, {0});
    ui.Press(IDC_PICK_EDIT_BOOK);
    EditRow(ui, 0);
    ui.Type(IDC_ENTRY_FAX_NUMBER, L"999");
    ui.Press(IDOK);
    ui.Press(IDCANCEL);
    EXPECT_EQ(ui.Row(IDC_PICK_CHOSEN, 0), (Names{L"Ann", L"111", L"Acme"}));
    ui.Press(IDOK);
    session.Send();
    EXPECT_EQ(session.Recipients(), (std::vector<Recipient>{{L"Ann", L"111", L"Acme"}}));
}

TEST(AddRecipients, CancelledEditsAreGoneFromTheListWhichIsSortedNow)
{
    PhoneBookSession session(BookText().Entry(1, L"Zoe", L"1").Entry(2, L"Ann", L"2"));
    UiDriver& ui = session.OpenPicker();
    EXPECT_EQ(NamesIn(ui, IDC_PICK_LIST), (Names{L"Zoe", L"Ann"}));
    ui.Press(IDC_PICK_EDIT_BOOK);
    DeleteRows(ui, {0});
    ui.Press(IDCANCEL);
    EXPECT_EQ(NamesIn(ui, IDC_PICK_LIST), (Names{L"Ann", L"Zoe"}));
}

TEST(AddRecipients, DoubleClickAndEnterMoveTheRowAndTheDeleteKeyTakesItBack)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenPicker();
    ui.DoubleClickRow(IDC_PICK_LIST, 1);
    EXPECT_EQ(NamesIn(ui, IDC_PICK_CHOSEN), Names{L"Bob"});
    ui.Focus(IDC_PICK_LIST);
    ui.PressKey(VK_RETURN);
    EXPECT_EQ(NamesIn(ui, IDC_PICK_CHOSEN), (Names{L"Bob", L"Bob"}));
    ui.Focus(IDC_PICK_CHOSEN);
    ui.PressKey('A', {VK_CONTROL});
    EXPECT_EQ(ui.SelectedRows(IDC_PICK_CHOSEN), (std::vector<int>{0, 1}));
    ui.PressKey(VK_DELETE);
    EXPECT_EQ(ui.RowCount(IDC_PICK_CHOSEN), 0);
}

TEST(AddRecipients, KeysHeldDownInAListPressTheirButtonOnce)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenPicker();
    ui.SelectRows(IDC_PICK_LIST, {1});
    ui.Focus(IDC_PICK_LIST);
    ui.HoldKey(VK_RETURN, 5);
    EXPECT_EQ(NamesIn(ui, IDC_PICK_CHOSEN), Names{L"Bob"});
    ui.PressKey(VK_RETURN); // pressed again, not held
    EXPECT_EQ(NamesIn(ui, IDC_PICK_CHOSEN), (Names{L"Bob", L"Bob"}));
    ui.SelectRows(IDC_PICK_CHOSEN, {0});
    ui.Focus(IDC_PICK_CHOSEN);
    ui.HoldKey(VK_DELETE, 5);
    EXPECT_EQ(NamesIn(ui, IDC_PICK_CHOSEN), Names{L"Bob"});
}

// It opens the entry and closes it again; the list that has been filled anew has no selected row to answer for it.
TEST(AddRecipients, EnterHeldDownInTheEditorDoesNotWalkOnIntoItsOk)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenPicker();
    ui.Press(IDC_PICK_EDIT_BOOK);
    ui.SelectRows(IDC_BOOK_LIST, {1});
    ui.Focus(IDC_BOOK_LIST);
    ui.HoldKey(VK_RETURN, 6);
    EXPECT_EQ(ui.Title(), L"Edit Phone Book");
}

TEST(AddRecipients, EnterOnAListWithoutSelectionConfirmsTheDialog)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenPicker();
    ui.Focus(IDC_PICK_LIST);
    ui.PressKey(VK_RETURN);
    EXPECT_TRUE(ui.HasControl(IDC_NAME_BOX));
}

// A record that is used again may hold recipients from before the module was unloaded and loaded elsewhere.
TEST(AddRecipients, RecipientsOfAnEarlierModuleAreShown)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenFaxJobPage();
    ui.Type(IDC_NAME_BOX, L"Zoe");
    ui.Type(IDC_FAX_NUMBER, L"555");
    ui.Press(IDC_TO);
    session.Record().Recipients.Items[0]->Reserved = nullptr;
    ui.Press(IDC_PHONE_BOOK);
    EXPECT_EQ(NamesIn(ui, IDC_PICK_CHOSEN), Names{L"Zoe"});
    ui.Press(IDOK);
    EXPECT_EQ(session.Send().Cancelled, 0u);
    EXPECT_EQ(session.Recipients(), (std::vector<Recipient>{{L"Zoe", L"555", L""}}));
}

} // namespace
} // namespace qx::test
