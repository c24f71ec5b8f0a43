// The dialog that adds or edits a group, opened from the phone book editor, and the read-only views.
#include "res/details_ids.h"
#include "res/edit_phone_book_ids.h"
#include "res/group_ids.h"
#include "support/phone_book_session.h"

#include <gtest/gtest.h>
#include <numeric>

namespace qx::test {
namespace {

using host::UiDriver;
using Names = std::vector<std::wstring>;
using Ids = std::vector<DWORD>;

BookText Acquaintances()
{
    return BookText()
        .Entry(1, L"Ann", L"111", L"Acme")
        .Entry(2, L"Bob", L"222")
        .Entry(3, L"Cat", L"333")
        .Group(4, L"Sales", {3, 99, 1})
        .Group(5, L"Support", {2});
}
constexpr int kSales = 3;
constexpr int kSupport = 4;

Ids IdsFrom(DWORD first, std::size_t count)
{
    Ids ids(count);
    std::iota(ids.begin(), ids.end(), first);
    return ids;
}

UiDriver& EditRow(PhoneBookSession& session, int row)
{
    UiDriver& ui = session.OpenEditor();
    test::EditRow(ui, row);
    return ui;
}

UiDriver& AddGroup(PhoneBookSession& session)
{
    UiDriver& ui = session.OpenEditor();
    ui.Press(IDC_BOOK_ADD_GROUP);
    return ui;
}

TEST(GroupDialog, NewGroupGetsItsMembersInTheOrderOfAdding)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = AddGroup(session);
    EXPECT_EQ(ui.Title(), L"Add Group to Phone Book");
    EXPECT_EQ(NamesIn(ui, IDC_GROUP_ENTRIES), (Names{L"Ann", L"Bob", L"Cat"}));
    AddMembers(ui, {2});
    AddMembers(ui, {0, 1});
    EXPECT_EQ(NamesIn(ui, IDC_GROUP_MEMBERS), (Names{L"Cat", L"Ann", L"Bob"}));
    EXPECT_EQ(ui.Row(IDC_GROUP_MEMBERS, 1), (Names{L"Ann", L"111", L"Acme"}));
    ui.Type(IDC_GROUP_NAME, L"All");
    OkAndSave(ui);
    EXPECT_EQ(session.Saved(L"All").members, (Ids{3, 1, 2}));
}

TEST(GroupDialog, ButtonsFollowTheSelectionOfBothLists)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = EditRow(session, kSales);
    EXPECT_EQ(ui.Title(), L"Edit Group");
    for (const int button : {IDC_GROUP_DETAILS, IDC_GROUP_ADD, IDC_GROUP_DELETE})
        EXPECT_FALSE(ui.IsEnabled(button));
    ui.SelectRows(IDC_GROUP_ENTRIES, {0});
    EXPECT_TRUE(ui.IsEnabled(IDC_GROUP_DETAILS));
    EXPECT_TRUE(ui.IsEnabled(IDC_GROUP_ADD));
    ui.SelectRows(IDC_GROUP_ENTRIES, {0, 1});
    EXPECT_FALSE(ui.IsEnabled(IDC_GROUP_DETAILS));
    EXPECT_TRUE(ui.IsEnabled(IDC_GROUP_ADD));
    ui.SelectRows(IDC_GROUP_ENTRIES, {});
    EXPECT_FALSE(ui.IsEnabled(IDC_GROUP_ADD));
    ui.SelectRows(IDC_GROUP_MEMBERS, {0, 1});
    EXPECT_TRUE(ui.IsEnabled(IDC_GROUP_DELETE));
}

TEST(GroupDialog, OkNeedsANameAndAMember)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = AddGroup(session);
    EXPECT_FALSE(ui.IsEnabled(IDOK));
    ui.Type(IDC_GROUP_NAME, L"All");
    EXPECT_FALSE(ui.IsEnabled(IDOK));
    AddMembers(ui, {0});
    EXPECT_TRUE(ui.IsEnabled(IDOK));
    ui.Paste(IDC_GROUP_NAME, L"");
    EXPECT_FALSE(ui.IsEnabled(IDOK));
    ui.Focus(IDC_GROUP_NAME);
    ui.PressKey(VK_RETURN); // does nothing while OK is off
    EXPECT_EQ(ui.Title(), L"Add Group to Phone Book");
}

TEST(GroupDialog, DeletingAllMembersTurnsOkOffAndGivesTheFocusToTheMembers)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = EditRow(session, kSupport);
    EXPECT_TRUE(ui.IsEnabled(IDOK));
    ui.SelectRows(IDC_GROUP_MEMBERS, {0});
    ui.Press(IDC_GROUP_DELETE);
    EXPECT_EQ(ui.RowCount(IDC_GROUP_MEMBERS), 0);
    EXPECT_FALSE(ui.IsEnabled(IDOK));
    EXPECT_FALSE(ui.IsEnabled(IDC_GROUP_DELETE));
    EXPECT_EQ(ui.FocusedControl(), IDC_GROUP_MEMBERS);
}

TEST(GroupDialog, AddingAMemberAgainChangesNothing)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = EditRow(session, kSales);
    EXPECT_EQ(NamesIn(ui, IDC_GROUP_MEMBERS), (Names{L"Cat", L"Ann"}));
    AddMembers(ui, {0});
    EXPECT_EQ(NamesIn(ui, IDC_GROUP_MEMBERS), (Names{L"Cat", L"Ann"}));
    OkAndSave(ui);
    EXPECT_EQ(session.Saved(L"Sales").members, (Ids{3, 99, 1}));
}

TEST(GroupDialog, MemberThatLeftTheBookHasNoRowButKeepsItsPlace)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = EditRow(session, kSales);
    AddMembers(ui, {1});
    ui.SelectRows(IDC_GROUP_MEMBERS, {0});
    ui.Press(IDC_GROUP_DELETE);
    OkAndSave(ui);
    EXPECT_EQ(session.Saved(L"Sales").members, (Ids{99, 1, 2}));
}

TEST(GroupDialog, HundredMembersLeaveNothingToAdd)
{
    // 99 are there, one of the ids has no entry: it counts as well.
    Ids members = IdsFrom(0, 99);
    members.push_back(5000);
    PhoneBookSession session(BookText().Group(900, L"All", members).People(120));
    UiDriver& ui = EditRow(session, 0);
    EXPECT_EQ(ui.RowCount(IDC_GROUP_MEMBERS), 99);
    EXPECT_FALSE(ui.IsEnabled(IDC_GROUP_ADD));
    ui.SelectRows(IDC_GROUP_ENTRIES, {110});
    EXPECT_FALSE(ui.IsEnabled(IDC_GROUP_ADD));
    ui.SelectRows(IDC_GROUP_MEMBERS, {0});
    ui.Press(IDC_GROUP_DELETE);
    ui.SelectRows(IDC_GROUP_ENTRIES, {110, 111});
    EXPECT_TRUE(ui.IsEnabled(IDC_GROUP_ADD));
    ui.Press(IDC_GROUP_ADD); // room for one
    EXPECT_EQ(ui.CellText(IDC_GROUP_MEMBERS, 98, 0), L"Person 00110");
    EXPECT_EQ(ui.RowCount(IDC_GROUP_MEMBERS), 99);
    EXPECT_FALSE(ui.IsEnabled(IDC_GROUP_ADD));
}

TEST(GroupDialog, GroupOfMoreThanAHundredShowsAHundredAndKeepsAll)
{
    PhoneBookSession session(BookText().Group(900, L"All", IdsFrom(0, 120)).People(120));
    UiDriver& ui = EditRow(session, 0);
    EXPECT_EQ(ui.RowCount(IDC_GROUP_MEMBERS), 100);
    OkAndSave(ui);
    EXPECT_EQ(session.Saved(L"All").members, IdsFrom(0, 120));
}

TEST(GroupDialog, AnotherGroupsNameInAnotherLetterCaseIsRefusedAndItsOwnAccepted)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = EditRow(session, kSales);
    ui.Type(IDC_GROUP_NAME, L"SUPPORT");
    ui.Press(IDOK);
    EXPECT_EQ(ui.AnswerBox(IDOK),
              WarningBox(L"This is a duplicate phone book entry. Please enter a different group name.", MB_ICONERROR));
    EXPECT_EQ(ui.Text(IDC_GROUP_NAME), L"SUPPORT");
    ui.Type(IDC_GROUP_NAME, L"sales");
    ui.Press(IDOK);
    EXPECT_EQ(ui.CellText(IDC_BOOK_LIST, kSales, 0), L"sales");
}

TEST(GroupDialog, NameOfFiftyCharactersIsStoredWithFortyNine)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = EditRow(session, kSales);
    ui.Type(IDC_GROUP_NAME, std::wstring(51, L'x'));
    EXPECT_EQ(ui.Text(IDC_GROUP_NAME).size(), 50u);
    OkAndSave(ui);
    EXPECT_EQ(session.SavedNames().back(), std::wstring(49, L'x'));
}

TEST(GroupDialog, CancelLeavesTheGroupAsItWas)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = EditRow(session, kSales);
    ui.Type(IDC_GROUP_NAME, L"Other");
    ui.SelectRows(IDC_GROUP_MEMBERS, {0, 1});
    ui.Press(IDC_GROUP_DELETE);
    ui.Press(IDCANCEL);
    ui.Press(IDOK);
    EXPECT_EQ(session.Saved(L"Sales").members, (Ids{3, 99, 1}));
}

TEST(GroupDialog, TypedPrefixMovesTheEntries)
{
    PhoneBookSession session(BookText().People(300));
    UiDriver& ui = AddGroup(session);
    ui.Type(IDC_GROUP_TYPED, L"person 002");
    EXPECT_EQ(TopRow(ui, IDC_GROUP_ENTRIES), 200);
}

TEST(GroupDialog, DetailsOfAnEntryKeepTheFocusOnTheirButton)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = AddGroup(session);
    ui.SelectRows(IDC_GROUP_ENTRIES, {0});
    ui.Press(IDC_GROUP_DETAILS);
    EXPECT_EQ(ui.Text(IDC_DETAILS_COMPANY), L"Acme");
    ui.PressKey(VK_ESCAPE);
    EXPECT_EQ(ui.FocusedControl(), IDC_GROUP_DETAILS);
    EXPECT_TRUE(ui.IsEnabled(IDC_GROUP_ADD));

    // Pressed by a program that helps the user, which moves no focus.
    ui.Focus(IDC_GROUP_NAME);
    PostMessageW(ui.Dialog(), WM_COMMAND, MAKEWPARAM(IDC_GROUP_DETAILS, BN_CLICKED),
                 reinterpret_cast<LPARAM>(ui.Control(IDC_GROUP_DETAILS)));
    ui.WaitForControl(IDC_DETAILS_COMPANY);
    ui.PressKey(VK_ESCAPE);
    EXPECT_EQ(ui.FocusedControl(), IDC_GROUP_DETAILS);
}

TEST(GroupDialog, KeysAndDoubleClickAddAndDelete)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = AddGroup(session);
    ui.DoubleClickRow(IDC_GROUP_ENTRIES, 1);
    ui.Focus(IDC_GROUP_ENTRIES);
    ui.PressKey('A', {VK_CONTROL});
    ui.PressKey(VK_RETURN);
    EXPECT_EQ(NamesIn(ui, IDC_GROUP_MEMBERS), (Names{L"Bob", L"Ann", L"Cat"}));
    ui.SelectRows(IDC_GROUP_MEMBERS, {1});
    ui.Focus(IDC_GROUP_MEMBERS);
    ui.PressKey(VK_DELETE);
    EXPECT_EQ(NamesIn(ui, IDC_GROUP_MEMBERS), (Names{L"Bob", L"Cat"}));
}

TEST(GroupDialog, WithoutTheTextLibraryTheBuiltInTextsKeepTheirDash)
{
    PhoneBookSession session(Acquaintances(), WithoutTextLibrary());
    UiDriver& ui = EditRow(session, kSales);
    EXPECT_EQ(ui.Title(), L"-Edit Group");
    EXPECT_EQ(ui.Text(IDC_GROUP_TYPED_LABEL), L"-Type Name or Select From list");
    EXPECT_EQ(ui.Text(IDC_GROUP_ADD), L"-Add->");
    EXPECT_EQ(ui.Text(IDC_GROUP_NAME_LABEL), L"-Group Name");
    EXPECT_EQ(ui.Text(IDC_GROUP_MEMBERS_LABEL), L"-Members");
    EXPECT_EQ(ui.Text(IDC_GROUP_DETAILS), L"-Details...");
    EXPECT_EQ(ui.Text(IDC_GROUP_DELETE), L"-Delete");
    EXPECT_EQ(ui.Text(IDOK), L"-OK");
    EXPECT_EQ(ui.Text(IDCANCEL), L"-Cancel");
    ui.Type(IDC_GROUP_NAME, L"Support");
    ui.Press(IDOK);
    EXPECT_EQ(ui.AnswerBox(IDOK).text, L"This is a duplicate entry.  This is a duplicate phone book entry. Please "
                                       L"enter a different Group Name.");
    ui.Press(IDCANCEL);
    ui.Press(IDC_BOOK_ADD_GROUP);
    EXPECT_EQ(ui.Title(), L"-Add Group To Phone Book");
}

UiDriver& ShowDetails(PhoneBookSession& session, int row)
{
    UiDriver& ui = session.OpenEditor();
    ui.SelectRows(IDC_BOOK_LIST, {row});
    ui.Press(IDC_BOOK_DETAILS);
    return ui;
}

TEST(GroupDetails, ShowTheMembersInTheBooksOrderWithTheFocusOnTheList)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = ShowDetails(session, kSales);
    EXPECT_EQ(ui.Title(), L"Group Details");
    EXPECT_EQ(ui.Text(IDC_DETAILS_GROUP_NAME), L"Sales");
    EXPECT_EQ(NamesIn(ui, IDC_DETAILS_MEMBERS), (Names{L"Ann", L"Cat"}));
    EXPECT_EQ(ui.Row(IDC_DETAILS_MEMBERS, 0), (Names{L"Ann", L"111", L"Acme"}));
    EXPECT_EQ(ui.FocusedControl(), IDC_DETAILS_MEMBERS);
    ui.PressKey(VK_RETURN); // OK
    EXPECT_EQ(ui.Title(), L"Edit Phone Book");
}

TEST(GroupDetails, LabelSaysCancelWithoutTheTextLibrary)
{
    PhoneBookSession session(Acquaintances(), WithoutTextLibrary());
    UiDriver& ui = ShowDetails(session, kSales);
    EXPECT_EQ(ui.Title(), L"-Group Details");
    EXPECT_EQ(ui.Text(IDC_DETAILS_GROUP_NAME_LABEL), L"Cancel");
}

TEST(EntryDetails, ShowTheEntryReadOnly)
{
    PhoneBookSession session(Acquaintances(), WithoutTextLibrary());
    UiDriver& ui = ShowDetails(session, 1);
    EXPECT_EQ(ui.Title(), L"-Details");
    EXPECT_EQ(ui.Text(IDC_DETAILS_NAME_LABEL), L"Recipient Name:");
    EXPECT_EQ(ui.Text(IDC_DETAILS_FAX_NUMBER_LABEL), L"Fax Number");
    EXPECT_EQ(ui.Text(IDC_DETAILS_COMPANY_LABEL), L"Company Name");
    EXPECT_EQ(ui.Text(IDC_DETAILS_NAME), L"Bob");
    EXPECT_EQ(ui.Text(IDC_DETAILS_FAX_NUMBER), L"222");
    EXPECT_EQ(ui.Text(IDC_DETAILS_COMPANY), L"");
    ui.Focus(IDC_DETAILS_NAME);
    ui.PressKey('X');
    EXPECT_EQ(ui.Text(IDC_DETAILS_NAME), L"Bob");
    EXPECT_FALSE(ui.HasControl(IDCANCEL));
    ui.PressKey(VK_ESCAPE);
    EXPECT_EQ(ui.Title(), L"-Edit Phone Book");
}

} // namespace
} // namespace qx::test
