// The completing name box on the real page, with the messages that keyboard and mouse send to it.
#include "support/failing_calls.h"
#include "support/fax_job_page_stand.h"
#include "support/redirected_import.h"
#include "support/string_library.h"

#include <gtest/gtest.h>
#include <memory>
#include <utility>

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

    HWND Edit() { return stand.Page().fields.nameBox.edit; }
    HWND List() { return stand.Page().fields.nameBox.list; }
    HWND Combo() { return stand.Page().fields.nameBox.combo; }
    std::wstring Name() { return stand.Text(IDC_NAME_BOX); }
    std::wstring Fax() { return stand.Text(IDC_FAX_NUMBER); }
    Texts NameAndFax() { return {Name(), Fax()}; }
    int SelectedRow() { return static_cast<int>(SendMessageW(List(), LB_GETCURSEL, 0, 0)); }

    void Hover(int row) { HoverRow(List(), row); }
    void Click(int row) { ClickRow(List(), row); }
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

TEST_F(NameBox, ADeletionInACompletedNameThatIsNoLongerSelectedDoesNotCompleteAgain)
{
    using Deletion = void (*)(FaxJobPageStand&);
    constexpr Deletion kDeletions[] = {
        [](FaxJobPageStand& s) { s.PressNameKey(VK_BACK); },
        [](FaxJobPageStand& s) {
            s.PressNameKey(VK_LEFT);
            s.PressNameKey(VK_DELETE);
        },
        [](FaxJobPageStand& s) {
            SendMessageW(s.Page().fields.nameBox.edit, EM_SETSEL, 3, 4);
            SendMessageW(s.Page().fields.nameBox.edit, WM_CUT, 0, 0);
        },
        [](FaxJobPageStand& s) {
            SendMessageW(s.Page().fields.nameBox.edit, EM_SETSEL, 3, 4);
            SendMessageW(s.Page().fields.nameBox.edit, WM_CLEAR, 0, 0);
        },
    };
    ShowWith({L"Anna"});
    for (const Deletion& deletion : kDeletions) {
        stand.Press(IDC_CLEAR_FIELDS);
        stand.TypeName(L"a");
        ASSERT_EQ(Name(), L"Anna");
        stand.PressNameKey(VK_END);
        ASSERT_EQ(stand.SelectedTail(), L"");
        deletion(stand);
        EXPECT_EQ(Name(), L"Ann") << &deletion - kDeletions;
        stand.TypeName(L"a");
        EXPECT_EQ(Name(), L"Anna");
    }
}

TEST_F(NameBox, BackspaceAfterAClickIntoTheCompletedNameDeletesOneLetter)
{
    ShowWith({L"Anna"});
    stand.TypeName(L"a");
    SendMessageW(Edit(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(60, 5)); // behind the text
    SendMessageW(Edit(), WM_LBUTTONUP, 0, MAKELPARAM(60, 5));
    stand.PressNameKey(VK_BACK);
    EXPECT_EQ(Name(), L"Ann");
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

TEST_F(NameBox, ATypedBlankMatchesNothing)
{
    ShowWith({L"Anna"});
    stand.TypeName(L" ");
    EXPECT_FALSE(stand.NamesShown());
    EXPECT_EQ(stand.Names(), Texts{});
    EXPECT_EQ(Name(), L" ");
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

// ---- from one name to another

class Typist : public NameBox { // who knows Anna (and her number 101), Andrew (102), and a group
protected:
    Typist()
    {
        stand.Page().hStringDll = library_.Module();
        stand.AddRecentGroup(L"Andes", 2);
        stand.AddRecentEntry(L"Andrew", L"102", L"Mill");
        stand.AddRecentEntry(L"Anna", L"101", L"Orchard");
        stand.Show();
    }
    void Leave() { SetFocus(stand.Control(IDC_RECIPIENTS)); }
    void AddSomebody()
    {
        stand.SetText(IDC_FAX_NUMBER, L"999");
        stand.Press(IDC_TO);
    }
    static void DispatchPosted()
    {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageW(&message);
    }
    void ExpectSendOnlyAfterALook()
    {
        EXPECT_FALSE(stand.Send());
        EXPECT_EQ(Fax(), L"");
        DispatchPosted();
        EXPECT_EQ(GetFocus(), stand.Control(NumberFieldOf(stand.Page().fields)));
        EXPECT_TRUE(stand.Send());
        EXPECT_EQ(stand.Recipients(), (std::vector<Recipient>{{L"", L"999", L""}}));
    }
    void ExpectFields(const wchar_t* name, const wchar_t* faxNumber, const wchar_t* company)
    {
        EXPECT_EQ(Name(), name);
        EXPECT_EQ(Fax(), faxNumber);
        EXPECT_EQ(stand.Text(IDC_COMPANY), company);
    }

private:
    qx::test::StringLibrary library_;
};

TEST_F(Typist, WhoTypesOnToAnotherNameFindsItsNumberOnLeaving)
{
    stand.TypeName(L"and");
    stand.PressNameKey(VK_BACK);
    stand.TypeName(L"r");
    ExpectFields(L"Andrew", L"101", L"Orchard"); // typing refills empty fields only
    Leave();
    ExpectFields(L"Andrew", L"102", L"Mill");
}

TEST_F(Typist, WhoTypesOnToAGroupFindsItOnLeaving)
{
    stand.TypeName(L"ande");
    ASSERT_EQ(Name(), L"Andes");
    Leave();
    EXPECT_TRUE(stand.IsVisible(IDC_GROUP_TEXT));
    EXPECT_EQ(Fax(), L"");
    stand.Press(IDC_TO);
    EXPECT_EQ(stand.Recipients().size(), 2u);
}

TEST_F(Typist, WhoTypesOnToAGroupIsNotLeftInTheFieldThatItReplaces)
{
    for (const int field : {IDC_FAX_NUMBER, IDC_COMPANY}) {
        stand.Press(IDC_CLEAR_FIELDS);
        stand.TypeName(L"ande");
        SetFocus(stand.Control(field)); // as Tab or a click does
        DispatchPosted();
        EXPECT_EQ(GetFocus(), stand.Control(IDC_GROUP_TEXT)) << field;
    }
}

TEST_F(Typist, WhoTypesOnToAnotherNameAndPressesAButtonTakesThatOnesNumber)
{
    stand.TypeName(L"andr");
    SendMessageW(stand.Page().dialog, WM_COMMAND, MAKEWPARAM(IDC_TO, BN_CLICKED), 0); // the focus stays in the name
    EXPECT_EQ(stand.Recipients(), (std::vector<Recipient>{{L"Andrew", L"102", L"Mill"}}));
}

TEST_F(Typist, WhoTypesOnToANameWithoutNumberTakesNobody)
{
    stand.AddRecentEntry(L"Annabel", L"");
    stand.Notify(static_cast<UINT>(PSN_SETACTIVE));
    stand.SetText(IDC_NAME_BOX, L"Andrew");
    stand.PressNameKey(VK_RETURN);
    ASSERT_EQ(Fax(), L"102");
    stand.SetText(IDC_NAME_BOX, L"Annabel");
    SendMessageW(stand.Page().dialog, WM_COMMAND, MAKEWPARAM(IDC_TO, BN_CLICKED), 0);
    ExpectFields(L"Annabel", L"", L"");
    EXPECT_TRUE(stand.Recipients().empty());
}

TEST_F(Typist, WhoTypesOnToAnotherNameAndSendsFaxesToThatOne)
{
    stand.TypeName(L"andr");
    EXPECT_TRUE(stand.Send());
    EXPECT_EQ(stand.Recipients(), (std::vector<Recipient>{{L"Andrew", L"102", L"Mill"}}));
}

TEST_F(Typist, WhoTypesOnToAGroupSeesItBeforeASendLeavesItOut)
{
    AddSomebody();
    stand.TypeName(L"ande");
    ASSERT_EQ(Fax(), L"101");
    Leave();
    RefreshNameBoxList(stand.Page()); // as the sheet does when another program has changed the phone book
    ExpectSendOnlyAfterALook();
    EXPECT_TRUE(stand.IsVisible(IDC_GROUP_TEXT));
}

TEST_F(Typist, WhoSendsFromWithinTheNameOfAGroupSeesItFirst)
{
    AddSomebody();
    stand.TypeName(L"ande");
    ExpectSendOnlyAfterALook();
}

TEST_F(Typist, WhoTypesOnToANameWithoutNumberSeesThatBeforeASendLeavesItOut)
{
    stand.AddRecentEntry(L"Annabel", L"");
    stand.AddRecentEntry(L"Annabella", L"no number");
    stand.Notify(static_cast<UINT>(PSN_SETACTIVE));
    for (const wchar_t* const name : {L"Annabel", L"Annabella"}) {
        AddSomebody();
        stand.SetText(IDC_NAME_BOX, L"Andrew");
        stand.PressNameKey(VK_RETURN);
        ASSERT_EQ(Fax(), L"102");
        stand.SetText(IDC_NAME_BOX, name);
        Leave();
        ExpectSendOnlyAfterALook();
        stand.Press(IDC_CLEAR_FIELDS);
        stand.SelectRows({0});
        stand.Press(IDC_DELETE);
    }
}

TEST_F(Typist, WhoGoesOnToAnotherFieldHasSeenTheGroup)
{
    AddSomebody();
    stand.TypeName(L"ande");
    Leave();
    DispatchPosted();
    EXPECT_TRUE(stand.Send());
    EXPECT_EQ(stand.Recipients(), (std::vector<Recipient>{{L"", L"999", L""}}));
}

TEST_F(Typist, WhoGoesToTheButtonThatSendsHasNot)
{
    AddSomebody();
    stand.TypeName(L"ande");
    const HWND ofTheSheet = CreateWindowExW(0, WC_BUTTONW, L"Send", WS_CHILD | WS_VISIBLE, 0, 500, 80, 24,
                                            stand.SheetWindow(), nullptr, ModuleInstance(), nullptr);
    SetFocus(ofTheSheet);
    DispatchPosted();
    ExpectSendOnlyAfterALook();
}

TEST_F(Typist, WhoHasSeenTheGroupSendsAtOnce)
{
    using Act = void (*)(FaxJobPageStand&);
    constexpr Act kActs[] = {
        [](FaxJobPageStand& s) { s.SetText(IDC_NAME_BOX, L"Andes"); },
        [](FaxJobPageStand& s) {
            s.TypeName(L"ande");
            s.PressNameKey(VK_RETURN);
        },
        [](FaxJobPageStand& s) {
            s.TypeName(L"ande");
            SetFocus(s.Control(IDC_RECIPIENTS));
            s.Press(IDC_CLEAR_FIELDS);
        },
        [](FaxJobPageStand& s) {
            s.TypeName(L"ande");
            SetFocus(s.Control(IDC_RECIPIENTS));
            s.TypeName(L"s");
        },
    };
    AddSomebody();
    for (const Act& act : kActs) {
        stand.Press(IDC_CLEAR_FIELDS);
        stand.LetTheOtherPageRefuse(true);
        act(stand);
        EXPECT_TRUE(stand.Send()) << &act - kActs;
    }
}

HWND g_watched = nullptr;
int g_timesOff = 0;
decltype(EnableWindow)* g_enableWindow = nullptr;

BOOL WINAPI CountTimesOff(HWND window, BOOL enable)
{
    g_timesOff += window == g_watched && !enable ? 1 : 0;
    return g_enableWindow(window, enable);
}

TEST_F(Typist, FindsNoButtonGoOffThatIsOnAfterwards)
{
    const RedirectedImport<decltype(EnableWindow)> counting("EnableWindow", CountTimesOff);
    g_enableWindow = counting.Original();
    const std::pair<const wchar_t*, int> names[] = {
        {L"andr", IDC_TO}, {L"andr", IDC_ADD_TO_PHONE_BOOK}, {L"andr", IDC_CLEAR_FIELDS}, {L"ande", IDC_TO}};
    for (const auto& [name, button] : names) {
        stand.Press(IDC_CLEAR_FIELDS);
        stand.TypeName(name);
        ASSERT_EQ(Fax(), L"101");
        g_watched = stand.Control(button);
        g_timesOff = 0;
        Leave();
        EXPECT_NE(Fax(), L"101");
        EXPECT_TRUE(stand.IsEnabled(button));
        EXPECT_EQ(g_timesOff, 0) << button << (name[3] == L'e' ? " with a group" : "");
        SetFocus(Edit());
    }
}

decltype(SetWindowTextW)* g_setWindowText = nullptr;

BOOL WINAPI RefuseAndrewsNumber(HWND window, const wchar_t* text)
{
    return wcscmp(text, L"102") == 0 ? FALSE : g_setWindowText(window, text);
}

TEST_F(Typist, NeverFindsTheNumberOfOneNameBesideAnotherWhenTheFieldDoesNotTakeTheOthers)
{
    const RedirectedImport<decltype(SetWindowTextW)> refusing("SetWindowTextW", RefuseAndrewsNumber);
    g_setWindowText = refusing.Original();
    stand.TypeName(L"andr");
    ASSERT_EQ(Fax(), L"101");
    Leave();
    ExpectFields(L"Andrew", L"", L"Mill");
}

// With the first, the second, ... call failing, alone or with all later ones.
template <class Function, class Failure>
void SendWhileEachFails(FaxJobPageStand& stand, const char* function, Failure failure)
{
    FailingCalls<Function, struct FieldCalls> calls(nullptr, function, failure);
    for (const bool alone : {true, false}) {
        const auto send = [&](long call) {
            if (!stand.Send())
                return false;
            const bool failed = calls.HasFailed();
            calls.FailNone();
            const Texts fields{stand.Text(IDC_NAME_BOX), stand.Text(IDC_FAX_NUMBER)};
            EXPECT_FALSE(fields == Texts({L"Andrew", L"101"}) || fields == Texts({L"Anna", L"102"}))
                << function << (alone ? " " : " from ") << call;
            return !failed || testing::Test::HasFailure();
        };
        bool sentWhole = false;
        for (long call = 1; !sentWhole; call = alone ? call + 1 : call * 2) {
            if (alone)
                calls.FailOnly(call);
            else
                calls.FailFrom(call);
            stand.TypeName(L"andr"); // past Anna
            sentWhole = send(call);
            calls.FailNone();
            send(call);
            ClearFields(stand.Page().fields);
        }
    }
}

TEST_F(Typist, NeverSendsTheNumberOfOneNameBesideAnotherWhateverFails)
{
    stand.LetTheOtherPageRefuse(true);
    SendWhileEachFails<decltype(GetWindowTextW)>(stand, "GetWindowTextW", 0);
    SendWhileEachFails<decltype(GetWindowTextLengthW)>(stand, "GetWindowTextLengthW", 0);
    SendWhileEachFails<decltype(SetWindowTextW)>(stand, "SetWindowTextW", FALSE);
    SendWhileEachFails<decltype(GetDlgItem)>(stand, "GetDlgItem", nullptr);
}

// The number before it may be somebody else's.
TEST_F(Typist, WhoseNumberCannotBeReadFindsNone)
{
    stand.SetText(IDC_FAX_NUMBER, L"22");
    FailingCalls<decltype(GetWindowTextW), struct NumberCalls> calls(nullptr, "GetWindowTextW", 0);
    calls.FailOnly(1);
    stand.SetText(IDC_FAX_NUMBER, L"11");
    EXPECT_TRUE(calls.HasFailed());
    calls.FailNone();
    EXPECT_EQ(Fax(), L"");
    stand.SetText(IDC_FAX_NUMBER, L"33");
    EXPECT_EQ(Fax(), L"33");
}

TEST_F(Typist, WhoTypesOnToAnotherNameAndClicksTheButtonTakesThatOne)
{
    constexpr LPARAM kInside = MAKELPARAM(5, 5);
    const HWND to = stand.Control(IDC_TO);
    const auto click = [&] {
        SendMessageW(to, WM_LBUTTONDOWN, MK_LBUTTON, kInside);
        DispatchPosted();
        SendMessageW(to, WM_LBUTTONUP, 0, kInside);
    };
    stand.TypeName(L"andr");
    click();
    EXPECT_EQ(stand.Recipients(), (std::vector<Recipient>{{L"Andrew", L"102", L"Mill"}}));
    SetFocus(Edit());
    stand.TypeName(L"an"); // Andrew is now the first of them
    stand.PressNameKey(VK_BACK);
    stand.TypeName(L"des");
    ASSERT_EQ(Fax(), L"102");
    click();
    EXPECT_EQ(stand.Recipients().size(), 3u);
}

TEST_F(Typist, WhoTypesOnToAnotherNameAddsThatOneToThePhoneBook)
{
    stand.TypeName(L"andr");
    SendMessageW(stand.Page().dialog, WM_COMMAND, MAKEWPARAM(IDC_ADD_TO_PHONE_BOOK, BN_CLICKED), 0);
    ASSERT_EQ(stand.Book().GetCount(), 1u);
    EXPECT_STREQ(AsEntry(stand.Book().GetAt(0))->FaxNumber(), L"102");
}

TEST_F(Typist, WhoseNumberItIsKeepsIt)
{
    stand.TypeName(L"a");
    stand.SetText(IDC_FAX_NUMBER, L"555");
    stand.TypeName(L"ndr");
    Leave();
    ExpectFields(L"Andrew", L"555", L"Orchard");
    stand.SetText(IDC_FAX_NUMBER, L"101"); // typed by the user, whosever it is
    SetFocus(Edit());
    Leave();
    ExpectFields(L"Andrew", L"101", L"Orchard");
}

TEST_F(Typist, WhoChangedTheCompanyKeepsBoth)
{
    stand.TypeName(L"a");
    stand.SetText(IDC_COMPANY, L"Elsewhere");
    stand.TypeName(L"ndr");
    Leave();
    ExpectFields(L"Andrew", L"101", L"Elsewhere");
}

TEST_F(Typist, WhoseCharactersTheNumberRefusesHasChangedNothing)
{
    stand.TypeName(L"a");
    stand.SetText(IDC_FAX_NUMBER, L"+49");
    stand.TypeName(L"ndr");
    Leave();
    ExpectFields(L"Andrew", L"102", L"Mill");
}

TEST_F(Typist, WhoTypesAnUnknownNameKeepsTheFields)
{
    stand.TypeName(L"annabel");
    Leave();
    ExpectFields(L"Annabel", L"101", L"Orchard");
}

TEST_F(Typist, WhoEmptiedTheNumberIsNotGivenItBackOnLeaving)
{
    stand.TypeName(L"a");
    stand.SetText(IDC_FAX_NUMBER, L"");
    stand.SetText(IDC_COMPANY, L"");
    SetFocus(Edit());
    Leave();
    ExpectFields(L"Anna", L"", L"");
}

TEST_F(NameBox, ANamesakeThatWasChosenKeepsItsNumberOnLeaving)
{
    ShowWith({L"Anna", L"Anna", L"ANNA"});
    stand.DropNames(true);
    stand.PickName(2);
    ASSERT_EQ(Fax(), L"100");
    SetFocus(stand.Control(IDC_COMPANY));
    EXPECT_EQ(Fax(), L"100");
}

TEST_F(NameBox, ANameIsFirstOfAllTheOneOfTheSameLetters)
{
    ShowWith({L"anna", L"Anna"}); // 100, 101
    stand.SetText(IDC_NAME_BOX, L"anna2");
    stand.PressNameKey(VK_BACK);
    ASSERT_EQ(Name(), L"anna");
    EXPECT_EQ(Fax(), L"100");
    stand.SetText(IDC_NAME_BOX, L"");
    EXPECT_EQ(Fax(), L"100");
    stand.SetText(IDC_FAX_NUMBER, L"");
    stand.SetText(IDC_NAME_BOX, L"ANNAX");
    stand.PressNameKey(VK_BACK);
    ASSERT_EQ(Name(), L"ANNA");
    EXPECT_EQ(Fax(), L"101"); // the first one
    SetFocus(stand.Control(IDC_COMPANY));
    EXPECT_EQ(Fax(), L"101");
    stand.SetText(IDC_NAME_BOX, L"anna");
    SetFocus(Edit());
    SetFocus(stand.Control(IDC_COMPANY));
    EXPECT_EQ(Fax(), L"100");
}

// ---- an input method

TEST_F(NameBox, DuringACompositionNothingIsCompletedAndAfterItTheWholeTextIs)
{
    ShowWith({L"\x5C71\x672C", L"\x5C71\x7530"}); // 100, 101
    stand.Compose(L"\x5C71");
    EXPECT_EQ(NameAndFax(), (Texts{L"\x5C71", L""}));
    EXPECT_FALSE(stand.NamesShown());
    stand.EndComposition();
    EXPECT_EQ(Name(), L"\x5C71\x7530");
    EXPECT_EQ(stand.SelectedTail(), L"\x7530");
    EXPECT_EQ(Fax(), L"101");
}

TEST_F(NameBox, ACompositionHidesTheListAndHasItsKeysToItself)
{
    ShowWith({L"Bob", L"Anna"});
    stand.TypeName(L"a");
    ASSERT_TRUE(stand.NamesShown());
    stand.Compose(L"b");
    EXPECT_FALSE(stand.NamesShown());
    for (const WPARAM key : {VK_RETURN, VK_ESCAPE}) {
        MSG message{Edit(), WM_KEYDOWN, key, 1, 0, {}};
        const LRESULT wanted = SendMessageW(Edit(), WM_GETDLGCODE, key, reinterpret_cast<LPARAM>(&message));
        EXPECT_NE(wanted & DLGC_WANTMESSAGE, 0) << key; // else it presses Send or Cancel
        SendMessageW(Edit(), WM_KEYDOWN, key, 1);
    }
    for (const WPARAM key : {VK_DOWN, VK_UP, VK_NEXT, VK_PRIOR, VK_F4})
        stand.PressNameKey(key);
    EXPECT_EQ(NameAndFax(), (Texts{L"Ab", L"101"}));
    EXPECT_FALSE(stand.NamesShown());
}

TEST_F(NameBox, ACompositionThatTheUserLeftIsAnsweredWithoutCompletingIt)
{
    ShowWith({L"Bob", L"Bo"}); // 100, 101
    stand.Compose(L"bob");
    SetFocus(stand.Control(IDC_RECIPIENTS));
    EXPECT_EQ(NameAndFax(), (Texts{L"bob", L"100"}));
    stand.EndComposition();
    EXPECT_FALSE(stand.NamesShown());
    SetFocus(Edit());
    SendMessageW(Edit(), EM_SETSEL, 0, -1);
    stand.PressNameKey(VK_BACK);
    stand.TypeName(L"b");
    EXPECT_EQ(Name(), L"Bo");
}

// Some input methods hand over what they have composed only when the user has already left the field, as characters.
TEST_F(NameBox, WhatComesAfterTheUserHasLeftIsNotCompleted)
{
    stand.UseWindowsComboBox();
    ShowWith({L"Bob", L"Anna"}); // 100, 101
    stand.SetText(IDC_FAX_NUMBER, L"555");
    stand.Compose(L"");
    SetFocus(stand.Control(IDC_COMPANY));
    stand.TypeName(L"an");
    EXPECT_EQ(Name(), L"an");
    EXPECT_FALSE(stand.NamesShown());
    EXPECT_EQ(Fax(), L"555");
    stand.Press(IDC_TO);
    EXPECT_EQ(stand.Recipients(), (std::vector<Recipient>{{L"an", L"555", L""}}));
}

// ---- a combo box as on Windows

// Only for what was chosen in its list may a combo box write into its edit.
TEST_F(NameBox, TheComboBoxWritesNoNameBecauseOfWhatTheEditTellsIt)
{
    ShowWith({L"Anna"});
    static WNDPROC original;
    WNDPROC& procedure = stand.Page().fields.nameBox.comboProcedure;
    original = std::exchange(procedure, [](HWND window, UINT message, WPARAM w, LPARAM l) {
        if (message == WM_COMMAND && HIWORD(w) == EN_UPDATE)
            SetWindowTextW(reinterpret_cast<HWND>(l), L"Anna");
        return CallWindowProcW(original, window, message, w, l);
    });
    SendMessageW(Combo(), WM_COMMAND, MAKEWPARAM(0, EN_UPDATE), reinterpret_cast<LPARAM>(Edit()));
    procedure = original;
    EXPECT_EQ(Name(), L"");
}

TEST_F(NameBox, TheCompletedRowStaysChosenAlthoughTheComboBoxDeselectsItAfterItsNotification)
{
    stand.UseWindowsComboBox();
    ShowWith({L"Bob", L"Anna"});
    stand.TypeName(L"a");
    EXPECT_EQ(SelectedRow(), 0);
    stand.PressNameKey(VK_RETURN);
    EXPECT_EQ(NameAndFax(), (Texts{L"Anna", L"101"}));
}

TEST_F(NameBox, NoKeyAndNoWheelPutsAnotherNameBesideANumber)
{
    using Act = void (*)(FaxJobPageStand&);
    constexpr Act kActs[] = {
        [](FaxJobPageStand& s) { s.PressNameKey(VK_F4); },
        [](FaxJobPageStand& s) { s.PressAltNameKey(VK_DOWN); },
        [](FaxJobPageStand& s) { s.PressAltNameKey(VK_UP); },
        [](FaxJobPageStand& s) { s.PressNameKey(VK_NEXT); },
        [](FaxJobPageStand& s) { s.PressNameKey(VK_PRIOR); },
        [](FaxJobPageStand& s) { s.PressNameKey(VK_DOWN); },
        [](FaxJobPageStand& s) { s.PressNameKey(VK_UP); },
        [](FaxJobPageStand& s) {
            SendMessageW(s.Page().fields.nameBox.edit, WM_MOUSEWHEEL, MAKEWPARAM(0, -WHEEL_DELTA), 0);
        },
        [](FaxJobPageStand& s) {
            SendMessageW(s.Page().fields.nameBox.combo, WM_MOUSEWHEEL, MAKEWPARAM(0, -WHEEL_DELTA), 0);
        },
        [](FaxJobPageStand& s) { SendMessageW(s.Page().fields.nameBox.combo, WM_KEYDOWN, VK_DOWN, 1); },
    };
    stand.UseWindowsComboBox();
    ShowWith({L"Bob", L"Anna"});
    for (const Act& act : kActs) {
        for (const bool open : {false, true}) {
            stand.Press(IDC_CLEAR_FIELDS);
            stand.SetText(IDC_FAX_NUMBER, L"555");
            stand.SetText(IDC_NAME_BOX, L"Ax");
            stand.PressNameKey(VK_BACK);
            if (!open)
                SendMessageW(Combo(), CB_SHOWDROPDOWN, FALSE, 0);
            ASSERT_EQ(Name(), L"A");
            act(stand);
            const Recipient shown{Name(), Fax(), L""};
            const bool one = shown == Recipient{L"A", L"555", L""} || shown == Recipient{L"Anna", L"101", L""};
            EXPECT_TRUE(one) << ::testing::PrintToString(shown) << " after act " << &act - kActs
                             << (open ? ", open" : "");
        }
    }
}

TEST_F(NameBox, TheListKeysOpenAndCloseTheListOfAllNames)
{
    stand.UseWindowsComboBox();
    ShowWith({L"Bob", L"Anna"});
    stand.SetText(IDC_NAME_BOX, L"Ax");
    stand.PressNameKey(VK_F4);
    EXPECT_TRUE(stand.NamesShown());
    EXPECT_EQ(stand.Names(), (Texts{L"Anna", L"Bob"}));
    stand.PressNameKey(VK_F4);
    EXPECT_FALSE(stand.NamesShown());
    stand.PressAltNameKey(VK_DOWN);
    EXPECT_TRUE(stand.NamesShown());
    stand.PressAltNameKey(VK_UP);
    EXPECT_FALSE(stand.NamesShown());
    EXPECT_EQ(Name(), L"Ax");
}

TEST_F(NameBox, PageDownAndPageUpGoToTheTenthNameAndBack)
{
    for (int i = 11; i >= 0; --i)
        stand.AddRecentEntry((L"Anna " + std::to_wstring(i)).c_str(), std::to_wstring(i).c_str());
    stand.Show();
    stand.PressNameKey(VK_NEXT);
    EXPECT_EQ(Fax(), L"0");
    stand.PressNameKey(VK_NEXT);
    EXPECT_EQ(Fax(), L"9");
    stand.PressNameKey(VK_NEXT);
    EXPECT_EQ(Fax(), L"11");
    stand.PressNameKey(VK_PRIOR);
    EXPECT_EQ(Fax(), L"2");
    EXPECT_EQ(Name(), L"Anna 2");
}

TEST_F(NameBox, AKeyThatStaysOnTheChosenNameLeavesANumberThatTheUserChanged)
{
    ShowWith({L"Anna"});
    stand.PressNameKey(VK_DOWN);
    stand.SetText(IDC_FAX_NUMBER, L"555");
    stand.PressNameKey(VK_DOWN);
    EXPECT_EQ(Fax(), L"555");
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
    EXPECT_EQ(NameAndFax(), (Texts{L"A", L"555"}));
    stand.PressNameKey(VK_DOWN);
    EXPECT_EQ(NameAndFax(), (Texts{L"Anna", L"100"}));
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

// Takes a message out of the queue as the message loop does, and leaves it at that.
void Retrieve(HWND window, UINT message, WPARAM w = 0, LPARAM l = 0)
{
    PostMessageW(window, message, w, l);
    MSG retrieved;
    while (PeekMessageW(&retrieved, window, message, message, PM_REMOVE)) {
    }
}

TEST_F(NameBox, HidesTheListWhenTheSheetMoves)
{
    ShowWith({L"Anna"});
    stand.TypeName(L"a");
    Retrieve(stand.SheetWindow(), WM_APP);
    EXPECT_TRUE(stand.NamesShown());
    SetWindowPos(stand.SheetWindow(), nullptr, 80, 90, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    Retrieve(stand.SheetWindow(), WM_APP); // a moved sheet is never without messages
    EXPECT_FALSE(stand.NamesShown());
    EXPECT_EQ(NameAndFax(), (Texts{L"Anna", L"100"}));
    stand.PressNameKey(VK_F4);
    Retrieve(stand.SheetWindow(), WM_APP);
    EXPECT_TRUE(stand.NamesShown());
}

TEST_F(NameBox, HidesTheListOnAClickOrATurnOfTheWheelAnywhereElse)
{
    ShowWith({L"Anna"});
    const std::pair<HWND, UINT> acts[] = {
        {stand.SheetWindow(), WM_NCLBUTTONDOWN}, {stand.SheetWindow(), WM_LBUTTONDOWN},
        {stand.Page().dialog, WM_RBUTTONDOWN},   {stand.Control(IDC_FAX_TO_GROUP), WM_LBUTTONDOWN},
        {stand.Page().dialog, WM_MOUSEWHEEL},    {stand.Control(IDC_RECIPIENTS), WM_MOUSEWHEEL},
    };
    for (const auto& [window, message] : acts) {
        stand.Press(IDC_CLEAR_FIELDS);
        stand.TypeName(L"a");
        ASSERT_TRUE(stand.NamesShown());
        Retrieve(window, message);
        EXPECT_FALSE(stand.NamesShown()) << message;
    }
}

TEST_F(NameBox, TheMouseInTheListAndInTheNameLeavesTheListOpen)
{
    ShowWith({L"Anna"});
    stand.TypeName(L"a");
    for (const HWND window : {List(), Edit(), Combo()}) {
        for (const UINT message : {WM_LBUTTONDOWN, WM_MOUSEWHEEL})
            Retrieve(window, message);
    }
    EXPECT_TRUE(stand.NamesShown());
}

TEST_F(NameBox, TheWheelScrollsTheOpenList)
{
    for (int i = 0; i < 15; ++i)
        stand.AddRecentEntry((L"Anna " + std::to_wstring(i)).c_str(), L"1");
    stand.Show();
    stand.TypeName(L"a");
    SendMessageW(Edit(), WM_MOUSEWHEEL, MAKEWPARAM(0, -WHEEL_DELTA), 0);
    EXPECT_GT(SendMessageW(List(), LB_GETTOPINDEX, 0, 0), 0);
    EXPECT_EQ(Name(), L"Anna 14");
}

TEST_F(NameBox, HidesTheListWhenAnotherWindowBecomesActive)
{
    ShowWith({L"Anna"});
    stand.TypeName(L"a");
    const HWND other = CreateWindowExW(0, WC_STATIC, L"Other", WS_POPUP | WS_VISIBLE, 0, 0, 50, 50, nullptr, nullptr,
                                       nullptr, nullptr);
    SetActiveWindow(other);
    EXPECT_FALSE(stand.NamesShown());
    DestroyWindow(other);
}

TEST_F(NameBox, AnOpenListWhoseNamesHaveNotChangedStaysAsItIs)
{
    ShowWith({L"Andrew", L"Anna"});
    stand.TypeName(L"an");
    stand.PressNameKey(VK_DOWN);
    RefreshNameBoxList(stand.Page()); // as the sheet does when another program has changed the phone book
    EXPECT_TRUE(stand.NamesShown());
    EXPECT_EQ(stand.Names(), (Texts{L"Anna", L"Andrew"}));
    EXPECT_EQ(SelectedRow(), 1);
    stand.PressNameKey(VK_RETURN);
    EXPECT_EQ(NameAndFax(), (Texts{L"Andrew", L"100"}));
}

TEST_F(NameBox, AChangeOfTheRecentListHidesTheOldNames)
{
    ShowWith({L"Bob", L"Anna"});
    stand.TypeName(L"a");
    stand.AddRecentEntry(L"Carla", L"102");
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
    EXPECT_EQ(NameAndFax(), (Texts{L"Andrew", L"100"}));
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
    EXPECT_EQ(NameAndFax(), (Texts{L"Anna", L"101"}));
    EXPECT_FALSE(stand.NamesShown());
}

TEST_F(NameBox, EscapeClearsTheNameAndTheFields)
{
    ShowWith({L"Anna"});
    stand.TypeName(L"a");
    ASSERT_EQ(Fax(), L"100");
    stand.PressNameKey(VK_ESCAPE);
    EXPECT_FALSE(stand.NamesShown());
    EXPECT_EQ(NameAndFax(), (Texts{L"", L""}));
    EXPECT_FALSE(stand.IsEnabled(IDC_TO));
    EXPECT_FALSE(stand.IsEnabled(IDC_CLEAR_FIELDS));
}

TEST_F(NameBox, KeepsEnterAndEscapeFromTheSheetOnlyWhileTheListShows)
{
    ShowWith({L"Anna"});
    for (const WPARAM key : {VK_RETURN, VK_ESCAPE}) {
        MSG message{Edit(), WM_KEYDOWN, key, 1, 0, {}};
        const auto wanted = [&] {
            return (SendMessageW(Edit(), WM_GETDLGCODE, key, reinterpret_cast<LPARAM>(&message)) & DLGC_WANTMESSAGE) !=
                   0;
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
    EXPECT_EQ(NameAndFax(), (Texts{L"Anna", L"101"}));
    stand.PressNameKey(VK_DOWN);
    EXPECT_EQ(NameAndFax(), (Texts{L"Bob", L"100"}));
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
    EXPECT_EQ(NameAndFax(), (Texts{L"Andrew", L"100"}));
    EXPECT_TRUE(stand.IsEnabled(IDC_ADD_TO_PHONE_BOOK));
    EXPECT_EQ(GetCapture(), nullptr);
}

TEST_F(NameBox, AClickInTheListThatTheArrowOpenedDoesTheSame)
{
    ShowWith({L"Bob", L"Anna"});
    stand.DropNames(true);
    Click(1);
    EXPECT_FALSE(stand.NamesShown());
    EXPECT_EQ(NameAndFax(), (Texts{L"Bob", L"100"}));
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

// As a rule the list of a combo box follows the pointer by itself.
TEST_F(NameBox, HoveringSelectsTheRowOfAListThatLeavesThePointerAlone)
{
    ShowWith({L"Andrew", L"Anna"});
    static WNDPROC original;
    WNDPROC& procedure = stand.Page().fields.nameBox.listProcedure;
    original = std::exchange(procedure, [](HWND window, UINT message, WPARAM w, LPARAM l) {
        return message == WM_MOUSEMOVE ? LRESULT{0} : CallWindowProcW(original, window, message, w, l);
    });
    stand.TypeName(L"an");
    Hover(1);
    procedure = original;
    EXPECT_EQ(SelectedRow(), 1);
}

TEST_F(NameBox, AnArrowKeyGoesFromTheHoveredRowAlsoBackToTheChosenOne)
{
    ShowWith({L"Andrew", L"Anna"}); // 100, 101
    stand.TypeName(L"an");
    Hover(1);
    stand.PressNameKey(VK_UP);
    EXPECT_EQ(SelectedRow(), 0);
    stand.PressNameKey(VK_RETURN);
    EXPECT_EQ(NameAndFax(), (Texts{L"Anna", L"101"}));
}

TEST_F(NameBox, AListThatOpensUnderARestingPointerIsNotHoveredOver)
{
    ShowWith({L"Andrew", L"Anna"});
    stand.TypeName(L"an");
    POINT point = MiddleOfRow(List(), 1);
    ClientToScreen(List(), &point);
    stand.Page().fields.nameBox.pointerWhenShown = point;
    Hover(1);
    EXPECT_EQ(SelectedRow(), 0);
}

TEST_F(NameBox, ARowThatWasOnlyHoveredOverDoesNotStandForTheName)
{
    ShowWith({L"Andrew", L"Anna"});
    stand.TypeName(L"an");
    Hover(1);
    SetFocus(stand.Control(IDC_COMPANY));
    EXPECT_EQ(static_cast<const PhoneBookItem*>(GetChosenItemData(stand.Page().fields.nameBox))->GetName(),
              std::wstring(L"Anna"));
    EXPECT_EQ(SelectedRow(), 0);
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
    EXPECT_EQ(stand.Rows().size(), 3u);
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
    EXPECT_EQ(stand.Recipients(), (std::vector<Recipient>{{L"Team", L"555", L""}}));
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
    SetFocus(state.edit);
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
