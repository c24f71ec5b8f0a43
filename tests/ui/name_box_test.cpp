// The completing name box on the real page, with the messages that keyboard and mouse send to it.
#include "support/fax_job_page_stand.h"
#include "support/string_library.h"

#include <gtest/gtest.h>
#include <memory>

namespace qx::test {
namespace {

using Texts = std::vector<std::wstring>;

class NameBox : public ::testing::Test {
protected:
    // The last one is the most recent, and the first one in the list.
    void ShowWith(std::initializer_list<const wchar_t*> namesOldestFirst)
    {
        int number = 100;
        for (const wchar_t* name : namesOldestFirst)
            stand.AddRecentEntry(name, std::to_wstring(number++).c_str());
        stand.Show();
    }

    HWND Edit() { return stand.Page().nameBox.edit; }
    HWND List() { return stand.Page().nameBox.list; }
    HWND Combo() { return stand.Page().nameBox.combo; }
    std::wstring Name() { return stand.Text(IDC_NAME_BOX); }
    std::wstring Fax() { return stand.Text(IDC_FAX_NUMBER); }
    int SelectedRow() { return static_cast<int>(SendMessageW(List(), LB_GETCURSEL, 0, 0)); }

    static LPARAM MiddleOf(const RECT& rectangle)
    {
        return MAKELPARAM((rectangle.left + rectangle.right) / 2, (rectangle.top + rectangle.bottom) / 2);
    }
    LPARAM PointOfRow(int row)
    {
        RECT rectangle{};
        SendMessageW(List(), LB_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&rectangle));
        return MiddleOf(rectangle);
    }
    void Hover(int row) { SendMessageW(List(), WM_MOUSEMOVE, 0, PointOfRow(row)); }
    void Click(int row)
    {
        const LPARAM point = PointOfRow(row);
        SendMessageW(List(), WM_MOUSEMOVE, 0, point);
        SendMessageW(List(), WM_LBUTTONDOWN, MK_LBUTTON, point);
        SendMessageW(List(), WM_LBUTTONUP, 0, point);
    }
    int RowHeight() { return static_cast<int>(SendMessageW(List(), LB_GETITEMHEIGHT, 0, 0)); }
    RECT ListRectangle()
    {
        RECT rectangle{};
        GetWindowRect(List(), &rectangle);
        return rectangle;
    }

    FaxJobPageStand stand;
};

// ---- typing

TEST_F(NameBox, CompletesTheFirstNameThatBeginsWithTheTypedLettersAndSelectsTheTail)
{
    ShowWith({L"Bob", L"andrew", L"Anna"});
    stand.TypeName(L"an");
    EXPECT_EQ(stand.Names(), (Texts{L"Anna", L"andrew"}));
    EXPECT_EQ(Name(), L"Anna");
    EXPECT_EQ(stand.SelectedTail(), L"na");
    EXPECT_TRUE(stand.NamesShown());
    EXPECT_EQ(SelectedRow(), 0);
}

TEST_F(NameBox, TheNextKeystrokeReplacesTheCompletedTail)
{
    ShowWith({L"Bob", L"andrew", L"Anna"});
    stand.TypeName(L"and");
    EXPECT_EQ(Name(), L"andrew");
    EXPECT_EQ(stand.SelectedTail(), L"rew");
    EXPECT_EQ(stand.Names(), (Texts{L"andrew"}));
}

TEST_F(NameBox, BackspaceAfterACompletionDoesNotCompleteAgain)
{
    ShowWith({L"Bob", L"andrew", L"Anna"});
    stand.TypeName(L"an");
    stand.PressNameKey(VK_BACK);
    EXPECT_EQ(Name(), L"An"); // the completion has brought the name's own letters
    EXPECT_EQ(stand.Names(), (Texts{L"Anna", L"andrew"}));
    EXPECT_TRUE(stand.NamesShown());
    stand.PressNameKey(VK_BACK);
    EXPECT_EQ(Name(), L"A");
}

TEST_F(NameBox, AfterAChoiceBackspaceDeletesFromTheWholeName)
{
    ShowWith({L"Anna"});
    stand.TypeName(L"a");
    stand.PressNameKey(VK_RETURN);
    SendMessageW(Edit(), EM_SETSEL, 4, 4);
    stand.PressNameKey(VK_BACK);
    EXPECT_EQ(Name(), L"Ann");
}

TEST_F(NameBox, BlanksMatchNothingAndHideTheList)
{
    ShowWith({L"Anna"});
    stand.TypeName(L"a");
    ASSERT_TRUE(stand.NamesShown());
    stand.SetText(IDC_NAME_BOX, L"  ");
    EXPECT_FALSE(stand.NamesShown());
    EXPECT_EQ(stand.Names(), Texts{});
    EXPECT_EQ(Name(), L"  ");
}

TEST_F(NameBox, AnUnknownNameHidesTheListAndStaysAsTyped)
{
    ShowWith({L"Anna"});
    stand.TypeName(L"ax");
    EXPECT_FALSE(stand.NamesShown());
    EXPECT_EQ(Name(), L"Ax");
}

TEST_F(NameBox, ACharacterOutsideTheBasicPlaneIsCompletedOnlyWhenItIsWhole)
{
    ShowWith({L"\xD83D\xDE00 Smile", L"\xD83D\xDE03 Grin"}); // both begin with the same half
    stand.TypeName(L"\xD83D");
    EXPECT_EQ(Name(), L"\xD83D");
    stand.TypeName(L"\xDE00");
    EXPECT_EQ(Name(), L"\xD83D\xDE00 Smile");
    EXPECT_EQ(stand.SelectedTail(), L" Smile");
}

TEST_F(NameBox, ACombiningCharacterReplacesTheTailThatBeganWithIt)
{
    ShowWith({L"E\x0301mile"});
    stand.TypeName(L"e");
    stand.TypeName(L"\x0301");
    EXPECT_EQ(Name(), L"E\x0301mile");
    EXPECT_EQ(stand.SelectedTail(), L"mile");
}

TEST_F(NameBox, TypingFillsTheFieldsWhileTheyAreEmptyOnly)
{
    ShowWith({L"Bob", L"Anna"});
    stand.TypeName(L"a");
    EXPECT_EQ(Fax(), L"101");
    stand.SetText(IDC_NAME_BOX, L"Bob");
    EXPECT_EQ(Fax(), L"101");
    stand.PressNameKey(VK_RETURN); // in any case
    EXPECT_EQ(Fax(), L"100");
}

TEST_F(NameBox, AfterClearFieldsTypingCompletesFromTheFirstLetter)
{
    ShowWith({L"Anna"});
    stand.SetText(IDC_NAME_BOX, L"Somebody");
    stand.Press(IDC_CLEAR_FIELDS);
    stand.TypeName(L"A");
    EXPECT_EQ(Name(), L"Anna");
}

void PutOnClipboard(const std::wstring& text)
{
    const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, bytes);
    CopyMemory(GlobalLock(block), text.c_str(), bytes);
    GlobalUnlock(block);
    ASSERT_TRUE(OpenClipboard(nullptr));
    EmptyClipboard();
    SetClipboardData(CF_UNICODETEXT, block);
    CloseClipboard();
}

TEST_F(NameBox, OfAHundredThousandPastedCharactersTheFirstFiftyStay)
{
    ShowWith({L"Anna"});
    PutOnClipboard(std::wstring(100000, L'x'));
    for (const HWND field : {Edit(), stand.Control(IDC_COMPANY), stand.Control(IDC_SUBJECT)}) {
        SendMessageW(field, WM_PASTE, 0, 0);
        EXPECT_EQ(WindowText(field), std::wstring(50, L'x'));
    }
    SendMessageW(stand.Control(IDC_FAX_NUMBER), WM_PASTE, 0, 0);
    EXPECT_EQ(Fax(), L"");
    EXPECT_FALSE(stand.NamesShown());
}

// ---- the list

TEST_F(NameBox, TheArrowListsEveryNameThatIsNotBlank)
{
    ShowWith({L"Bob", L" \t", L"Anna"});
    stand.DropNames(true);
    EXPECT_TRUE(stand.NamesShown());
    EXPECT_EQ(stand.Names(), (Texts{L"Anna", L"Bob"}));
}

TEST_F(NameBox, OpeningTheListLeavesTheTypedTextAlone)
{
    ShowWith({L"Anna"});
    stand.SetText(IDC_FAX_NUMBER, L"555");
    stand.SetText(IDC_NAME_BOX, L"A");
    stand.SetText(IDC_NAME_BOX, L"B");
    stand.SetText(IDC_NAME_BOX, L"A"); // as long as before: not completed
    ASSERT_EQ(Name(), L"A");
    SetFocus(stand.Control(IDC_COMPANY));
    SetFocus(Edit());
    stand.DropNames(true);
    EXPECT_TRUE(stand.NamesShown());
    EXPECT_EQ(Name(), L"A");
    EXPECT_EQ(Fax(), L"555");
    stand.PressNameKey(VK_DOWN);
    EXPECT_EQ(Name(), L"Anna");
    EXPECT_EQ(Fax(), L"100");
}

TEST_F(NameBox, TheListStandsBelowTheEditOnePixelNarrowerOnEachSide)
{
    ShowWith({L"Anna"});
    stand.TypeName(L"a");
    RECT combo{};
    GetWindowRect(Combo(), &combo);
    const RECT list = ListRectangle();
    EXPECT_EQ(list.left, combo.left + 1);
    EXPECT_EQ(list.right, combo.right - 1);
    EXPECT_EQ(list.top, combo.top + SendMessageW(Combo(), CB_GETITEMHEIGHT, static_cast<WPARAM>(-1), 0) + 6);
}

TEST_F(NameBox, MoreThanTenNamesShowElevenRowsHeightAndScroll)
{
    for (int i = 0; i < 15; ++i)
        stand.AddRecentEntry((L"Anna " + std::to_wstring(i)).c_str(), L"1");
    stand.Show();
    stand.TypeName(L"a");
    EXPECT_EQ(stand.Names().size(), 15u);
    const RECT list = ListRectangle();
    // The list box itself shows whole rows only.
    EXPECT_LE(list.bottom - list.top, 11 * RowHeight());
    EXPECT_GT(list.bottom - list.top, 10 * RowHeight());
    SCROLLINFO scroll{sizeof scroll, SIF_RANGE | SIF_PAGE, 0, 0, 0, 0, 0};
    EXPECT_TRUE(GetScrollInfo(List(), SB_VERT, &scroll));
    EXPECT_GT(scroll.nMax, static_cast<int>(scroll.nPage) - 1);
}

TEST_F(NameBox, TheListIsTwoRowsHighForOneName)
{
    ShowWith({L"Anna"});
    stand.TypeName(L"a");
    const RECT list = ListRectangle();
    EXPECT_LE(list.bottom - list.top, 2 * RowHeight());
    EXPECT_GT(list.bottom - list.top, RowHeight());
}

TEST_F(NameBox, ClearingItsContentKeepsTheTextInTheEdit)
{
    ShowWith({L"Anna"});
    stand.TypeName(L"a");
    SendMessageW(Combo(), CB_RESETCONTENT, 0, 0);
    EXPECT_EQ(stand.Names(), Texts{});
    EXPECT_EQ(Name(), L"Anna");
}

TEST_F(NameBox, IsDroppedDownExactlyWhileTheListShows)
{
    ShowWith({L"Anna"});
    EXPECT_FALSE(SendMessageW(Combo(), CB_GETDROPPEDSTATE, 0, 0));
    stand.TypeName(L"a");
    EXPECT_TRUE(SendMessageW(Combo(), CB_GETDROPPEDSTATE, 0, 0));
    SendMessageW(Combo(), CB_SHOWDROPDOWN, FALSE, 0);
    EXPECT_FALSE(stand.NamesShown());
    EXPECT_FALSE(SendMessageW(Combo(), CB_GETDROPPEDSTATE, 0, 0));
}

TEST_F(NameBox, AListThatTheArrowOpenedAndEscapeClosedOpensAgainAtOnce)
{
    ShowWith({L"Anna"});
    stand.DropNames(true);
    stand.PressNameKey(VK_ESCAPE);
    ASSERT_FALSE(stand.NamesShown());
    stand.DropNames(true);
    EXPECT_TRUE(stand.NamesShown());
}

TEST_F(NameBox, HidesTheListWhenItLosesTheFocus)
{
    ShowWith({L"Anna"});
    stand.TypeName(L"a");
    SetFocus(stand.Control(IDC_COMPANY));
    EXPECT_FALSE(stand.NamesShown());
    EXPECT_EQ(Name(), L"Anna");
}

TEST_F(NameBox, HidesTheListOnAClickBesideAllControls)
{
    ShowWith({L"Anna"});
    stand.TypeName(L"a");
    SendMessageW(stand.Page().dialog, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(1, 1));
    EXPECT_FALSE(stand.NamesShown());
}

TEST_F(NameBox, AChangeOfTheRecentListHidesTheOldNames)
{
    ShowWith({L"Bob", L"Anna"});
    stand.TypeName(L"a");
    RefreshNameBoxList(stand.Page());
    EXPECT_FALSE(stand.NamesShown());
    EXPECT_EQ(Name(), L"Anna");
    stand.PressNameKey(VK_RETURN);
    EXPECT_EQ(Fax(), L"101");
}

// ---- Enter and Escape

TEST_F(NameBox, EnterTakesTheSelectedRow)
{
    ShowWith({L"Andrew", L"Anna"});
    stand.TypeName(L"an");
    stand.PressNameKey(VK_DOWN);
    stand.PressNameKey(VK_RETURN);
    EXPECT_FALSE(stand.NamesShown());
    EXPECT_EQ(Name(), L"Andrew");
    EXPECT_EQ(Fax(), L"100");
}

TEST_F(NameBox, EnterWithoutASelectedRowKeepsWhatWasTyped)
{
    ShowWith({L"Anna"});
    stand.TypeName(L"an");
    SendMessageW(List(), LB_SETCURSEL, static_cast<WPARAM>(-1), 0);
    stand.PressNameKey(VK_RETURN);
    EXPECT_EQ(Name(), L"An");
    EXPECT_FALSE(stand.NamesShown());
    EXPECT_EQ(Fax(), L"");
}

TEST_F(NameBox, EnterWithTheListHiddenChoosesTheFirstRowThatBeginsWithTheTypedText)
{
    ShowWith({L"Andrew", L"Anna"});
    stand.TypeName(L"an");
    SendMessageW(Combo(), CB_SHOWDROPDOWN, FALSE, 0);
    stand.PressNameKey(VK_RETURN);
    EXPECT_EQ(Name(), L"Anna");
    EXPECT_EQ(Fax(), L"101");
    EXPECT_FALSE(stand.NamesShown());
}

TEST_F(NameBox, EscapeClearsTheNameAndTheFields)
{
    ShowWith({L"Anna"});
    stand.TypeName(L"a");
    ASSERT_EQ(Fax(), L"100");
    stand.PressNameKey(VK_ESCAPE);
    EXPECT_FALSE(stand.NamesShown());
    EXPECT_EQ(Name(), L"");
    EXPECT_EQ(Fax(), L"");
    EXPECT_FALSE(stand.IsEnabled(IDC_TO));
    EXPECT_FALSE(stand.IsEnabled(IDC_CLEAR_FIELDS));
}

TEST_F(NameBox, KeepsEnterAndEscapeFromTheSheetOnlyWhileTheListShows)
{
    ShowWith({L"Anna"});
    for (const WPARAM key : {VK_RETURN, VK_ESCAPE}) {
        MSG message{Edit(), WM_KEYDOWN, key, 1, 0, {}};
        const auto wanted = [&] {
            return (SendMessageW(Edit(), WM_GETDLGCODE, key, reinterpret_cast<LPARAM>(&message)) & DLGC_WANTMESSAGE) != 0;
        };
        EXPECT_FALSE(wanted());
        stand.TypeName(L"a");
        EXPECT_TRUE(wanted());
        stand.PressNameKey(VK_ESCAPE);
    }
}

TEST_F(NameBox, TheArrowKeysWalkThroughTheNamesAlsoWithTheListHidden)
{
    ShowWith({L"Bob", L"Anna"});
    stand.PressNameKey(VK_DOWN);
    EXPECT_EQ(Name(), L"Anna");
    EXPECT_EQ(Fax(), L"101");
    stand.PressNameKey(VK_DOWN);
    EXPECT_EQ(Name(), L"Bob");
    EXPECT_EQ(Fax(), L"100");
}

TEST_F(NameBox, AProgramThatOpensTheListFindsTheNamesInIt)
{
    ShowWith({L"Bob", L"Anna"});
    SendMessageW(Combo(), CB_SHOWDROPDOWN, TRUE, 0); // as assistive technology does
    EXPECT_EQ(stand.Names(), (Texts{L"Anna", L"Bob"}));
    EXPECT_TRUE(stand.NamesShown());
}

// ---- the mouse

TEST_F(NameBox, AClickOnARowTakesItsNameAndFillsTheFields)
{
    ShowWith({L"Andrew", L"Anna"});
    stand.TypeName(L"an");
    Click(1);
    EXPECT_FALSE(stand.NamesShown());
    EXPECT_EQ(Name(), L"Andrew");
    EXPECT_EQ(Fax(), L"100");
    EXPECT_TRUE(stand.IsEnabled(IDC_ADD_TO_PHONE_BOOK));
    EXPECT_EQ(GetCapture(), nullptr);
}

TEST_F(NameBox, AClickInTheListThatTheArrowOpenedDoesTheSame)
{
    ShowWith({L"Bob", L"Anna"});
    stand.DropNames(true);
    Click(1);
    EXPECT_FALSE(stand.NamesShown());
    EXPECT_EQ(Name(), L"Bob");
    EXPECT_EQ(Fax(), L"100");
    stand.DropNames(true);
    EXPECT_TRUE(stand.NamesShown());
}

TEST_F(NameBox, HoveringSelectsTheRowUnderThePointer)
{
    ShowWith({L"Andrew", L"Anna"});
    stand.TypeName(L"an");
    Hover(1);
    EXPECT_EQ(SelectedRow(), 1);
    EXPECT_EQ(Name(), L"Anna"); // not chosen yet
    stand.PressNameKey(VK_RETURN);
    EXPECT_EQ(Name(), L"Andrew");
}

TEST_F(NameBox, AListThatOpensUnderARestingPointerIsNotHoveredOver)
{
    ShowWith({L"Andrew", L"Anna"});
    stand.TypeName(L"an");
    POINT point{static_cast<short>(LOWORD(PointOfRow(1))), static_cast<short>(HIWORD(PointOfRow(1)))};
    ClientToScreen(List(), &point);
    stand.Page().nameBox.pointerWhenShown = point;
    Hover(1);
    EXPECT_EQ(SelectedRow(), 0);
}

TEST_F(NameBox, ARowThatWasOnlyHoveredOverDoesNotStandForTheName)
{
    ShowWith({L"Andrew", L"Anna"});
    stand.TypeName(L"an");
    Hover(1);
    SetFocus(stand.Control(IDC_COMPANY));
    EXPECT_EQ(static_cast<const PhoneBookItem*>(GetChosenItemData(stand.Page().nameBox))->GetName(),
              std::wstring(L"Anna"));
}

TEST_F(NameBox, TheListTakesAndReleasesTheMouse)
{
    ShowWith({L"Anna"});
    stand.TypeName(L"a");
    SendMessageW(List(), WM_USER + 102, 0, 1);
    EXPECT_EQ(GetCapture(), List());
    SendMessageW(List(), WM_USER + 102, 0, 0);
    EXPECT_EQ(GetCapture(), nullptr);
}

// ---- groups

class NameBoxWithTexts : public NameBox {
protected:
    NameBoxWithTexts() { stand.Page().hStringDll = library_.Module(); }

private:
    qx::test::StringLibrary library_;
};

TEST_F(NameBoxWithTexts, ATypedGroupShowsItsTextInPlaceOfTheNumber)
{
    stand.AddRecentGroup(L"Team", 3);
    stand.Show();
    stand.TypeName(L"t");
    EXPECT_EQ(Name(), L"Team");
    EXPECT_TRUE(stand.IsVisible(IDC_GROUP_TEXT));
    EXPECT_NE(stand.Text(IDC_GROUP_TEXT).find(L'3'), std::wstring::npos);
    EXPECT_TRUE(stand.IsEnabled(IDC_TO));
    stand.Press(IDC_TO);
    EXPECT_EQ(stand.Recipients().size(), 3u);
    EXPECT_EQ(stand.Recipients(), stand.Rows());
    EXPECT_FALSE(stand.IsVisible(IDC_GROUP_TEXT));
    EXPECT_TRUE(stand.IsVisible(IDC_FAX_NUMBER));
}

TEST_F(NameBoxWithTexts, TypingOnAfterAGroupBringsTheNumberFieldBack)
{
    stand.AddRecentGroup(L"Team", 3);
    stand.Show();
    stand.TypeName(L"teams");
    EXPECT_EQ(Name(), L"Teams");
    EXPECT_FALSE(stand.IsVisible(IDC_GROUP_TEXT));
    EXPECT_TRUE(stand.IsEnabled(IDC_FAX_NUMBER));
    EXPECT_FALSE(stand.IsEnabled(IDC_TO));
}

TEST_F(NameBoxWithTexts, ANumberThatStandsInTheFieldsIsWhatIsAddedNotAGroupOfThatName)
{
    stand.AddRecentGroup(L"Team", 3);
    stand.Show();
    stand.SetText(IDC_FAX_NUMBER, L"555");
    stand.TypeName(L"team");
    stand.Press(IDC_TO);
    EXPECT_EQ(stand.Recipients(), (std::vector<Row>{{L"Team", L"555", L""}}));
}

// ---- the registry

// Creates bare combo boxes: the registry knows nothing of pages.
class Combos {
public:
    Combos() : owner_(CreateWindowExW(0, WC_STATIC, L"", WS_POPUP, 0, 0, 400, 400, nullptr, nullptr, nullptr, nullptr))
    {
    }
    ~Combos()
    {
        for (const auto& state : states_)
            DetachTypeAhead(*state);
        DestroyWindow(owner_);
    }
    TypeAheadState& Attach()
    {
        const HWND combo = CreateWindowExW(0, WC_COMBOBOXW, L"", WS_CHILD | CBS_DROPDOWN, 0, 0, 100, 100, owner_,
                                           nullptr, nullptr, nullptr);
        states_.push_back(std::make_unique<TypeAheadState>());
        AttachTypeAhead(*states_.back(), combo, owner_);
        SetSuggestionItems(*states_.back(), {{L"Anna", nullptr}});
        return *states_.back();
    }

private:
    HWND owner_;
    std::vector<std::unique_ptr<TypeAheadState>> states_;
};

std::wstring Completed(TypeAheadState& state)
{
    SetWindowTextW(state.edit, L"a");
    state.previousLength = 0;
    OnEditChange(state);
    return WindowText(state.edit);
}

TEST(NameBoxRegistry, HasRoomForThirtyTwoAndTheMessagesOfTheNextGoToTheDefaultProcedure)
{
    Combos combos;
    for (int i = 0; i < 32; ++i)
        EXPECT_EQ(Completed(combos.Attach()), L"Anna") << i;
    TypeAheadState& oneTooMany = combos.Attach();
    EXPECT_EQ(SendMessageW(oneTooMany.combo, CB_GETITEMHEIGHT, 0, 0), 0); // no combo box any more
    EXPECT_EQ(SendMessageW(oneTooMany.list, LB_GETCURSEL, 0, 0), 0);
}

TEST(NameBoxRegistry, FreesThePlaceOfAPageThatGoes)
{
    for (int session = 0; session < 40; ++session) {
        FaxJobPageStand stand;
        stand.AddRecentEntry(L"Anna", L"1");
        stand.Show();
        stand.TypeName(L"a");
        ASSERT_EQ(stand.Text(IDC_NAME_BOX), L"Anna") << session;
    }
}

} // namespace
} // namespace qx::test
