// What the phone book dialogs' lists share, on a bare list view.
#include "phonebook/ui/phone_book_list.h"

#include "base/activation_context.h"
#include "dialog/button_width.h"
#include "dialog/dialog.h"
#include "dialog/list_view.h"
#include "support/failing_calls.h"
#include "support/phone_book.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

using namespace test;

class PhoneBookListTest : public ::testing::Test {
protected:
    ActivationScope context;
    HWND parent = CreateWindowExW(0, L"#32770", L"", WS_POPUP | WS_VISIBLE, 0, 0, 600, 400, nullptr, nullptr,
                                  ModuleInstance(), nullptr);
    PhoneBookList list{.window = Child(WC_LISTVIEWW, LVS_REPORT), .names = {}};
    TestBook book;

    PhoneBookListTest() { SetUpPhoneBookList(TextOwner(), list.window, 90, {}); }
    ~PhoneBookListTest() override { DestroyWindow(parent); }

    HWND Child(const wchar_t* type, DWORD style, const wchar_t* text = L"", int width = 400)
    {
        return CreateWindowExW(0, type, text, WS_CHILD | WS_VISIBLE | style, 10, 10, width, 200, parent, nullptr,
                               ModuleInstance(), nullptr);
    }
    LRESULT Send(UINT message, WPARAM w = 0, void* l = nullptr) const
    {
        return SendMessageW(list.window, message, w, reinterpret_cast<LPARAM>(l));
    }
    LVITEMW Row(int row) const
    {
        LVITEMW item{};
        item.mask = LVIF_PARAM | LVIF_IMAGE;
        item.iItem = row;
        Send(LVM_GETITEMW, 0, &item);
        return item;
    }
    std::wstring CellText(int row, int column) const
    {
        wchar_t text[kTextUnits] = L"";
        LVITEMW item{};
        item.iSubItem = column;
        item.pszText = text;
        item.cchTextMax = kTextUnits;
        Send(LVM_GETITEMTEXTW, static_cast<WPARAM>(row), &item);
        return text;
    }
    void Select(int row) const
    {
        LVITEMW item{};
        item.stateMask = item.state = LVIS_SELECTED;
        Send(LVM_SETITEMSTATE, static_cast<WPARAM>(row), &item);
    }
    void AddPeople(DWORD count)
    {
        for (DWORD id = 0; id < count; ++id)
            book.AddEntry((L"Person " + std::to_wstring(1000 + id)).c_str(), L"1", L"", id);
    }
    int TopRow() const { return static_cast<int>(Send(LVM_GETTOPINDEX)); }
};

TEST_F(PhoneBookListTest, HasThreeColumnsWholeRowsGridLinesAndAStandingSelection)
{
    const auto header = reinterpret_cast<HWND>(Send(LVM_GETHEADER));
    EXPECT_EQ(SendMessageW(header, HDM_GETITEMCOUNT, 0, 0), 3);
    EXPECT_NE(GetWindowLongPtrW(list.window, GWL_STYLE) & LVS_SHOWSELALWAYS, 0);
    const LRESULT style = Send(LVM_GETEXTENDEDLISTVIEWSTYLE);
    EXPECT_EQ(style & (LVS_EX_FULLROWSELECT | LVS_EX_GRIDLINES | LVS_EX_SUBITEMIMAGES),
              LVS_EX_FULLROWSELECT | LVS_EX_GRIDLINES);
}

// On Windows a mirrored list shows a text in its own direction, and a number's signs in the order of the text.
TEST_F(PhoneBookListTest, NumbersReadFromLeftToRightInAMirroredListAndStayWhatTheyAre)
{
    const PhoneBookEntry* const entry = book.AddEntry(L"Ann", L"(030)555-0123,,#4", L"Harbour (Books)", 7);
    FillPhoneBookList(list, *book, ListedItems::All);
    EXPECT_EQ(CellText(0, 1), L"(030)555-0123,,#4");

    const LONG_PTR style = GetWindowLongPtrW(list.window, GWL_EXSTYLE);
    SetWindowLongPtrW(list.window, GWL_EXSTYLE, style | WS_EX_LAYOUTRTL);
    FillPhoneBookList(list, *book, ListedItems::All);
    EXPECT_EQ(CellText(0, 0), L"Ann");
    EXPECT_EQ(CellText(0, 1), L"\u202A(030)555-0123,,#4\u202C");
    EXPECT_EQ(CellText(0, 2), L"Harbour (Books)");
    Select(0);
    EXPECT_EQ(OnlySelectedItem(list, *book), entry);
    EXPECT_STREQ(entry->FaxNumber(), L"(030)555-0123,,#4");
}

TEST_F(PhoneBookListTest, ColumnsFollowTheScaleOfTheWindow)
{
    const HDC dc = GetDC(list.window);
    const int dotsPerInch = GetDeviceCaps(dc, LOGPIXELSX);
    ReleaseDC(list.window, dc);
    for (const WPARAM column : {0, 1, 2})
        EXPECT_EQ(Send(LVM_GETCOLUMNWIDTH, column), MulDiv(90, dotsPerInch, 96));
}

TEST_F(PhoneBookListTest, RowsCarryTheIdsAndGroupsTheIcon)
{
    book.AddEntry(L"Ann", L"1", nullptr, 7);
    book.AddGroup(L"Sales", {7}, 9);
    FillPhoneBookList(list, *book, ListedItems::All);
    EXPECT_EQ(Row(0).lParam, 7);
    EXPECT_EQ(Row(0).iImage, I_IMAGENONE);
    EXPECT_EQ(Row(1).lParam, 9);
    EXPECT_EQ(Row(1).iImage, 0);
    const auto icons = reinterpret_cast<HIMAGELIST>(Send(LVM_GETIMAGELIST, LVSIL_SMALL));
    int width = 0, height = 0;
    ASSERT_TRUE(ImageList_GetIconSize(icons, &width, &height));
    EXPECT_EQ(width, 16);
    EXPECT_EQ(height, 16);
    FillPhoneBookList(list, *book, ListedItems::All);
    EXPECT_EQ(reinterpret_cast<HIMAGELIST>(Send(LVM_GETIMAGELIST, LVSIL_SMALL)), icons); // made once
}

TEST_F(PhoneBookListTest, GroupsAreListedWithoutAnIconUntilThereIsOne)
{
    book.AddGroup(L"Sales", {7}, 9);
    const auto icons = [this] { return reinterpret_cast<HIMAGELIST>(Send(LVM_GETIMAGELIST, LVSIL_SMALL)); };
    const auto fill = [&](const std::string& what) {
        FillPhoneBookList(list, *book, ListedItems::All);
        EXPECT_EQ(CellText(0, 0), L"Sales") << what;
    };
    const auto begin = [&] {
        Send(LVM_SETIMAGELIST, LVSIL_SMALL, nullptr);
        EXPECT_EQ(icons(), nullptr);
    };
    WhileEachFails<decltype(LoadImageW)>("LoadImageW", nullptr, fill);
    EXPECT_NE(icons(), nullptr);
    begin();
    WhileEachFails<decltype(ImageList_Create)>("ImageList_Create", nullptr, fill);
    EXPECT_NE(icons(), nullptr);
    begin();
    WhileEachFails<decltype(ImageList_AddMasked)>("ImageList_AddMasked", -1, fill);
    EXPECT_NE(icons(), nullptr);
    begin();
    WhileEachFails<decltype(SystemParametersInfoW)>("SystemParametersInfoW", FALSE, fill); // then it has its colours
    EXPECT_NE(icons(), nullptr);
}

// It would leave its keys to the dialog, whose default button sends.
TEST_F(PhoneBookListTest, AListThatCannotBeHookedIsRefused)
{
    int refused = 0;
    WhileEachFails<decltype(SetWindowLongPtrW)>("SetWindowLongPtrW", LONG_PTR{0}, [&](const std::string&) {
        const HWND other = Child(WC_LISTVIEWW, LVS_REPORT);
        try {
            SetUpPhoneBookList(TextOwner(), other, 90, {});
        } catch (const std::runtime_error&) {
            ++refused;
        }
        DestroyWindow(other);
    });
    EXPECT_EQ(refused, 2); // its data, its procedure
}

TEST_F(PhoneBookListTest, EntriesOnlyLeavesGroupsAndIconsOut)
{
    book.AddGroup(L"Sales", {7}, 9);
    book.AddEntry(L"Ann", L"1", L"", 7);
    FillPhoneBookList(list, *book, ListedItems::EntriesOnly);
    EXPECT_EQ(RowCount(list.window), 1);
    EXPECT_EQ(Row(0).lParam, 7);
    EXPECT_EQ(Send(LVM_GETIMAGELIST, LVSIL_SMALL), 0);
}

TEST_F(PhoneBookListTest, CollectedItemsAreTheFirstWithEachRowsIdInRowOrder)
{
    PhoneBookEntry* const first = book.AddEntry(L"First", L"1", L"", 7);
    book.AddEntry(L"Second", L"2", L"", 7);
    PhoneBookEntry* const third = book.AddEntry(L"Third", L"3", L"", 8);
    FillPhoneBookList(list, *book, ListedItems::All);
    Select(2);
    Select(1);
    EXPECT_EQ(CollectSelectedItems(list, *book), (std::vector<PhoneBookItem*>{first, third}));
    EXPECT_EQ(OnlySelectedItem(list, *book), nullptr);
}

TEST_F(PhoneBookListTest, RowWhoseItemLeftTheBookIsSkipped)
{
    book.AddEntry(L"Ann", L"1", L"", 7);
    PhoneBookEntry* const bob = book.AddEntry(L"Bob", L"2", L"", 8);
    FillPhoneBookList(list, *book, ListedItems::All);
    Select(-1);
    book->Delete(0);
    EXPECT_EQ(CollectSelectedItems(list, *book), std::vector<PhoneBookItem*>{bob});
    EXPECT_EQ(OnlySelectedItem(list, *book), bob);
}

class ReloadedBookTest : public PhoneBookListTest {
protected:
    ReloadedBookTest()
    {
        book.AddEntry(L"Zoe", L"1", L"", 7);
        FillPhoneBookList(list, *book, ListedItems::All);
        Select(0);
        book->Reload();
        book.AddEntry(L"Amy", L"2", L"", 7);
    }
};

TEST_F(ReloadedBookTest, RowsOfABookThatWasLoadedAgainAreNobody)
{
    EXPECT_TRUE(CollectSelectedItems(list, *book).empty());
    FillPhoneBookList(list, *book, ListedItems::All);
    Select(0);
    EXPECT_EQ(CollectSelectedItems(list, *book).size(), 1u);
}

TEST_F(ReloadedBookTest, RowsThatStayBehindWhenTheyCannotBeReplacedAreNobody)
{
    FailingCalls<decltype(SendMessageW), struct Emptying> calls(
        nullptr, "SendMessageW", 0, ERROR_NOT_ENOUGH_MEMORY,
        [](HWND, UINT message, WPARAM, LPARAM) { return message == LVM_DELETEALLITEMS; });
    calls.FailOnly(1);
    EXPECT_THROW(FillPhoneBookList(list, *book, ListedItems::All), std::exception);
    EXPECT_TRUE(calls.HasFailed());
    EXPECT_TRUE(CollectSelectedItems(list, *book).empty());
}

// Zero is an id, too, and a group may have none.
TEST_F(PhoneBookListTest, RowThatCannotBeReadIsNobody)
{
    book.AddEntry(L"Ann", L"1", L"", 0);
    book.AddGroup(L"Old Friends", {0}, kNoId);
    FillPhoneBookList(list, *book, ListedItems::All);
    EXPECT_EQ(ItemOfRow(list.window, 0, *book), book->GetAt(0));
    EXPECT_EQ(ItemOfRow(list.window, 1, *book), book->GetAt(1));
    EXPECT_EQ(ItemOfRow(list.window, 2, *book), nullptr);
}

TEST_F(PhoneBookListTest, SelectedRowThatCannotBeReadIsNobody)
{
    book.AddEntry(L"Ann", L"1", L"", 0);
    book.AddGroup(L"Old Friends", {0}, kNoId);
    FillPhoneBookList(list, *book, ListedItems::All);
    ListView_SetItemState(list.window, 0, LVIS_SELECTED, LVIS_SELECTED);
    FailingCalls<decltype(SendMessageW), struct Reads> reads(
        nullptr, "SendMessageW", 0, 0, [](HWND, UINT message, WPARAM, LPARAM) { return message == LVM_GETITEMW; });
    reads.FailOnly(1);
    EXPECT_TRUE(CollectSelectedItems(list, *book).empty());
    EXPECT_TRUE(reads.HasFailed());
}

// As one that is empty already may answer.
TEST_F(PhoneBookListTest, EmptyListThatDoesNotSayThatItWasEmptiedIsFilled)
{
    AddPeople(3);
    FailingCalls<decltype(SendMessageW), struct Answers> answers(
        nullptr, "SendMessageW", 0, 0,
        [](HWND, UINT message, WPARAM, LPARAM) { return message == LVM_DELETEALLITEMS; });
    answers.FailOnly(1);
    FillPhoneBookList(list, *book, ListedItems::All);
    EXPECT_TRUE(answers.HasFailed());
    EXPECT_EQ(ListView_GetItemCount(list.window), 3);
}

TEST_F(PhoneBookListTest, RowIsScrolledToTheTopFromBothSides)
{
    AddPeople(200);
    FillPhoneBookList(list, *book, ListedItems::All);
    ScrollItemToTop(list.window, 120);
    EXPECT_EQ(TopRow(), 120);
    ScrollItemToTop(list.window, 30);
    EXPECT_EQ(TopRow(), 30);
    ScrollItemToTop(list.window, 30);
    EXPECT_EQ(TopRow(), 30);
    ScrollItemToTop(list.window, 199); // as far as the list goes
    EXPECT_LT(TopRow(), 199);
    EXPECT_GT(TopRow(), 180);
}

TEST_F(PhoneBookListTest, NameIsComparedUpToItsNinetyEighthCharacter)
{
    AddPeople(100);
    book.AddEntry(std::wstring(98, L'x').append(20, L'y').c_str(), L"1", L"", 500);
    AddPeople(100);
    FillPhoneBookList(list, *book, ListedItems::All);
    const HWND edit = Child(L"EDIT", 0, std::wstring(50, L'X').c_str());
    FollowTypedName(list, edit);
    EXPECT_EQ(TopRow(), 100);
}

TEST_F(PhoneBookListTest, CaptionThatDoesNotFitWidensTheButtonToTheRightOnly)
{
    const HWND button = Child(L"BUTTON", 0, L"Edit a phone book with a very long caption...", 60);
    RECT before{}, after{};
    GetWindowRect(button, &before);
    FitButtonToText(button);
    GetWindowRect(button, &after);
    EXPECT_GT(after.right, before.right + 100);
    EXPECT_EQ(after.left, before.left);
    EXPECT_EQ(after.top, before.top);
    EXPECT_EQ(after.bottom, before.bottom);
    RECT again{};
    FitButtonToText(button);
    GetWindowRect(button, &again);
    EXPECT_EQ(again.right, after.right);
}

TEST_F(PhoneBookListTest, CaptionThatFitsLeavesTheButtonAlone)
{
    const HWND button = Child(L"BUTTON", 0, L"Edit...", 200);
    RECT before{}, after{};
    GetWindowRect(button, &before);
    FitButtonToText(button);
    GetWindowRect(button, &after);
    EXPECT_TRUE(EqualRect(&before, &after));
}

TEST_F(PhoneBookListTest, ACaptionThatCannotBeMeasuredLeavesTheButtonAlone)
{
    const HWND button = Child(L"Button", 0, L"Delete these entries from the phone book", 20);
    const auto widthOf = [button] { return PlaceOf(button).right - PlaceOf(button).left; };
    const auto fit = [&](const std::string& what) {
        FitButtonToText(button);
        EXPECT_GE(widthOf(), 20) << what;
    };
    FailingCalls<decltype(DrawTextW), struct Measures> measures(nullptr, "DrawTextW", 0);
    measures.FailFrom(1);
    FitButtonToText(button);
    EXPECT_EQ(widthOf(), 20);
    measures.FailNone();
    WhileEachFails<decltype(SetWindowPos)>("SetWindowPos", FALSE, fit);
    EXPECT_GT(widthOf(), 20);
    WhileEachFails<decltype(GetClientRect)>("GetClientRect", FALSE, fit);
}

TEST_F(PhoneBookListTest, AListWithoutItsColumnsIsNone)
{
    const HWND other = Child(WC_LISTVIEWW, LVS_REPORT);
    FailingCalls<decltype(SendMessageW), struct Columns> columns(
        nullptr, "SendMessageW", -1, ERROR_NOT_ENOUGH_MEMORY,
        [](HWND, UINT message, WPARAM, LPARAM) { return message == LVM_INSERTCOLUMNW; });
    columns.FailOnly(2);
    EXPECT_FALSE(SetUpListView(TextOwner(), other, RecipientColumns(90)));
}

TEST_F(PhoneBookListTest, AKeyWhoseButtonIsOffOrNotThereIsTakenAllTheSame)
{
    constexpr int kButton = 7;
    const HWND other = Child(WC_LISTVIEWW, LVS_REPORT);
    SetUpPhoneBookList(TextOwner(), other, 90, {.activate = kButton});
    static int pressed;
    pressed = 0;
    SetWindowLongPtrW(parent, DWLP_DLGPROC,
                      reinterpret_cast<LONG_PTR>(+[](HWND, UINT message, WPARAM w, LPARAM) -> INT_PTR {
                          pressed += message == WM_COMMAND && w == kButton ? 1 : 0;
                          return FALSE;
                      }));
    const auto press = [other](WPARAM key) { return SendMessageW(other, WM_KEYDOWN, key, 0); };
    EXPECT_EQ(press(VK_RETURN), 0);
    EXPECT_EQ(press(VK_DELETE), 0); // of no button
    const HWND button = Child(L"Button", WS_DISABLED);
    SetWindowLongPtrW(button, GWLP_ID, kButton);
    EXPECT_EQ(press(VK_RETURN), 0);
    EXPECT_EQ(pressed, 0);
    EnableWindow(button, TRUE);
    EXPECT_EQ(press(VK_RETURN), 0);
    EXPECT_EQ(pressed, 1);
}

} // namespace
} // namespace qx
