// The dialog procedure that all dialogs share, on the entry dialog's template.
#include "dialog/dialog.h"

#include "res/entry_ids.h"
#include "support/failing_calls.h"
#include "support/patched_function.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <utility>

namespace qx {
namespace {

int g_buttonPressed = -1; // of the sheet

struct Probe : TextOwner {
    HWND dialog = nullptr;
    int accepted = 0, initialized = 0;
    bool focusesCompany = false, throws = false, cancelsWhenFilled = false, throwsWhenFilled = false;
    std::wstring captionWhenFilled;
};

void Accept(Probe& probe)
{
    ++probe.accepted;
    if (probe.throws)
        throw std::runtime_error("a command failed");
}

constexpr Route<Probe> kRoutes[] = {{IDOK, BN_CLICKED, Accept}};

void Fill(Probe& probe)
{
    ++probe.initialized;
    probe.captionWhenFilled = WindowText(GetDlgItem(probe.dialog, IDC_ENTRY_NAME_LABEL));
    if (probe.throwsWhenFilled)
        throw std::runtime_error("filling failed");
    if (probe.cancelsWhenFilled)
        PostMessageW(probe.dialog, WM_CLOSE, 0, 0);
    if (probe.focusesCompany)
        SetFocus(GetDlgItem(probe.dialog, IDC_ENTRY_COMPANY));
}

INT_PTR AnswerOther(Probe&, UINT message, WPARAM, LPARAM)
{
    return message == WM_APP;
}

constexpr Control kControls[] = {
    {.id = IDC_ENTRY_NAME_LABEL, .text = 1, .fallback = L"Who"},
    {.id = IDC_ENTRY_NAME, .limit = 3},
};

constexpr Dialog<Probe> kProbe{
    .ids = {IDD_ENTRY, IDD_ENTRY_RTL},
    .title = {2, L"A probe"},
    .controls = kControls,
    .routes = kRoutes,
    .fill = Fill,
    .other = AnswerOther,
    .couldNotBeFilled = [](Probe&) noexcept {},
};

// Stands for the sheet of a page.
INT_PTR CALLBACK SheetProcedure(HWND, UINT message, WPARAM w, LPARAM)
{
    if (message == PSM_PRESSBUTTON)
        g_buttonPressed = static_cast<int>(w);
    return FALSE;
}

TEST(Field, OneThatCannotBeReadIsNotTakenForAnEmptyOne)
{
    const HWND field =
        CreateWindowExW(0, WC_EDITW, L"555", WS_POPUP, 0, 0, 100, 20, nullptr, nullptr, ModuleInstance(), nullptr);
    EXPECT_EQ(FieldText(field), L"555");
    EXPECT_THROW(FieldText(nullptr), std::runtime_error);
    {
        test::FailingCalls<decltype(GetWindowTextW), struct TextCalls> texts(nullptr, "GetWindowTextW", 0);
        texts.FailFrom(1);
        EXPECT_EQ(WindowText(field), L"");
        EXPECT_THROW(FieldText(field), std::runtime_error);
    }
    test::FailingCalls<decltype(GetWindowTextLengthW), struct LengthCalls> lengths(nullptr, "GetWindowTextLengthW", 0);
    for (const long call : {1, 2}) {
        lengths.FailOnly(call);
        EXPECT_THROW(FieldText(field), std::runtime_error) << call;
    }
    DestroyWindow(field);
}

class DialogTest : public ::testing::Test {
protected:
    HWND dialog = nullptr;

    void Create(Probe* probe)
    {
        dialog = CreateDialogParamW(ModuleInstance(), MAKEINTRESOURCEW(IDD_ENTRY), nullptr, DialogProcedure<kProbe>,
                                    reinterpret_cast<LPARAM>(probe));
        ASSERT_NE(dialog, nullptr);
        ShowWindow(dialog, SW_SHOW);
    }
    // The dialog's procedure answers as a page's would.
    INT_PTR AskPage(UINT message, WPARAM w = 0, LPARAM l = 0) const
    {
        return PageProcedure<kProbe>(dialog, message, w, l);
    }
    INT_PTR Ask(UINT message, WPARAM w = 0) const { return DialogProcedure<kProbe>(dialog, message, w, 0); }
    ~DialogTest() override { DestroyWindow(dialog); }
};

TEST_F(DialogTest, WithoutAStateNothingIsHandledAndTheLastErrorSaysInvalidData)
{
    Create(nullptr);
    for (const UINT message : {WM_INITDIALOG, WM_COMMAND, WM_APP, WM_HELP}) {
        SetLastError(0);
        EXPECT_EQ(Ask(message, IDOK), FALSE);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_DATA));
    }
}

TEST_F(DialogTest, RouteAnswersForItsControlAndCodeAlone)
{
    Probe probe;
    Create(&probe);
    EXPECT_EQ(probe.initialized, 1);
    EXPECT_EQ(Ask(WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED)), TRUE);
    EXPECT_EQ(Ask(WM_COMMAND, MAKEWPARAM(IDOK, BN_DOUBLECLICKED)), FALSE);
    EXPECT_EQ(Ask(WM_COMMAND, MAKEWPARAM(IDC_ENTRY_NAME, BN_CLICKED)), FALSE);
    EXPECT_EQ(Ask(WM_APP), TRUE);
    EXPECT_EQ(probe.accepted, 1);
}

TEST_F(DialogTest, TitleCaptionsAndLimitsStandBeforeTheDialogIsFilled)
{
    Probe probe;
    Create(&probe);
    EXPECT_EQ(WindowText(dialog), L"A probe");
    EXPECT_EQ(probe.captionWhenFilled, L"Who");
    EXPECT_EQ(SendDlgItemMessageW(dialog, IDC_ENTRY_NAME, EM_GETLIMITTEXT, 0, 0), 3);
}

template <DWORD kMajor> BOOL WINAPI IsWindows(OSVERSIONINFOW* version) noexcept
{
    version->dwMajorVersion = kMajor;
    return TRUE;
}

TEST_F(DialogTest, OnlyBeforeWindows6TheTitleBarOffersHelp)
{
    const auto offersHelp = [this](auto* version) {
        const test::PatchedFunction patch(L"kernel32.dll", "GetVersionExW", version);
        Probe probe;
        Create(&probe);
        const bool offers = (GetWindowLongPtrW(dialog, GWL_EXSTYLE) & WS_EX_CONTEXTHELP) != 0;
        DestroyWindow(std::exchange(dialog, nullptr));
        return offers;
    };
    EXPECT_TRUE(offersHelp(IsWindows<5>));
    EXPECT_FALSE(offersHelp(IsWindows<6>));
}

TEST_F(DialogTest, CancelEndsADialogThatHasNoRouteForIt)
{
    Probe probe;
    probe.cancelsWhenFilled = true;
    EXPECT_EQ(ShowModal<kProbe>(nullptr, probe), IDCANCEL);
}

TEST_F(DialogTest, AnExceptionWhileItIsFilledEndsADialogAtOnce)
{
    Probe probe;
    probe.throwsWhenFilled = true;
    EXPECT_EQ(ShowModal<kProbe>(nullptr, probe), -1);
}

TEST_F(DialogTest, HelpThatNobodyHasEndsAtTheDialog)
{
    Probe probe;
    Create(&probe);
    HELPINFO help{};
    help.cbSize = sizeof help;
    help.hItemHandle = GetDlgItem(dialog, IDC_ENTRY_COMPANY);
    EXPECT_EQ(DialogProcedure<kProbe>(dialog, WM_HELP, 0, reinterpret_cast<LPARAM>(&help)), TRUE);
}

TEST_F(DialogTest, ExceptionOfACommandStopsAtTheProcedure)
{
    Probe probe;
    probe.throws = true;
    Create(&probe);
    EXPECT_EQ(Ask(WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED)), FALSE);
    EXPECT_EQ(probe.accepted, 1);
}

TEST_F(DialogTest, AListThatIsEmptiedDoesNotTellOfEachRow)
{
    Probe probe;
    Create(&probe);
    const HWND list = CreateWindowExW(0, WC_LISTVIEWW, L"", WS_CHILD | LVS_REPORT, 0, 0, 90, 90, dialog, nullptr,
                                      ModuleInstance(), nullptr);
    NMLISTVIEW emptied{};
    emptied.hdr = {.hwndFrom = list, .idFrom = 0, .code = static_cast<UINT>(LVN_DELETEALLITEMS)};
    EXPECT_EQ(SendMessageW(dialog, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&emptied)), TRUE);
}

TEST_F(DialogTest, FocusThatStartUpSetsIsKept)
{
    Probe probe;
    probe.focusesCompany = true;
    Create(&probe);
    EXPECT_EQ(GetDlgCtrlID(GetFocus()), IDC_ENTRY_COMPANY);
}

TEST_F(DialogTest, OtherwiseTheFirstFieldGetsTheFocus)
{
    Probe probe;
    Create(&probe);
    EXPECT_EQ(GetDlgCtrlID(GetFocus()), IDC_ENTRY_NAME);
}

TEST_F(DialogTest, DisabledControlHandsTheFocusOn)
{
    Probe probe;
    Create(&probe);
    FocusControl(dialog, IDC_ENTRY_COMPANY);
    EnableControl(dialog, IDC_ENTRY_COMPANY, false);
    EXPECT_EQ(GetDlgCtrlID(GetFocus()), IDC_ENTRY_FAX_NUMBER);
    EnableControl(dialog, IDC_ENTRY_COMPANY, true);
    EXPECT_EQ(GetDlgCtrlID(GetFocus()), IDC_ENTRY_FAX_NUMBER);
}

TEST_F(DialogTest, HiddenControlHandsTheFocusOn)
{
    Probe probe;
    Create(&probe);
    FocusControl(dialog, IDC_ENTRY_COMPANY);
    ShowControl(dialog, IDC_ENTRY_COMPANY, false);
    EXPECT_EQ(GetDlgCtrlID(GetFocus()), IDC_ENTRY_FAX_NUMBER);
    EXPECT_FALSE(IsWindowVisible(GetDlgItem(dialog, IDC_ENTRY_COMPANY)));
    ShowControl(dialog, IDC_ENTRY_COMPANY, true);
    EXPECT_TRUE(IsWindowVisible(GetDlgItem(dialog, IDC_ENTRY_COMPANY)));
}

TEST_F(DialogTest, TheFirstFieldHandsTheFocusOnToTheLast)
{
    Probe probe;
    Create(&probe);
    FocusControl(dialog, IDC_ENTRY_NAME);
    EnableControl(dialog, IDC_ENTRY_NAME, false);
    EXPECT_EQ(GetDlgCtrlID(GetFocus()), IDC_ENTRY_COMPANY);
}

// Where a key that comes too late presses nothing.
TEST_F(DialogTest, AButtonHandsTheFocusOnToTheFieldBeforeItAndNotToTheNextButton)
{
    Probe probe;
    Create(&probe);
    for (const int button : {IDOK, IDCANCEL}) {
        FocusControl(dialog, button);
        EnableControl(dialog, button, false);
        EXPECT_EQ(GetDlgCtrlID(GetFocus()), IDC_ENTRY_COMPANY);
        EnableControl(dialog, button, true);
    }
}

TEST_F(DialogTest, WithoutAnyFieldTheNextButtonTakesTheFocus)
{
    Probe probe;
    Create(&probe);
    for (const int field : {IDC_ENTRY_NAME, IDC_ENTRY_FAX_NUMBER, IDC_ENTRY_COMPANY})
        EnableControl(dialog, field, false);
    FocusControl(dialog, IDOK);
    EnableControl(dialog, IDOK, false);
    EXPECT_EQ(GetDlgCtrlID(GetFocus()), IDCANCEL);
}

TEST_F(DialogTest, ButtonThatIsDisabledWithTheFocusIsNoLongerTheDefaultButton)
{
    Probe probe;
    Create(&probe);
    const auto isDefault = [&](int id) {
        return (SendDlgItemMessageW(dialog, id, WM_GETDLGCODE, 0, 0) & DLGC_DEFPUSHBUTTON) != 0;
    };
    FocusControl(dialog, IDCANCEL);
    ASSERT_TRUE(isDefault(IDCANCEL));
    EnableControl(dialog, IDCANCEL, false);
    EXPECT_FALSE(isDefault(IDCANCEL));
    EXPECT_TRUE(isDefault(IDOK));
}

TEST_F(DialogTest, DisabledOrHiddenControlCannotTakeTheFocus)
{
    Probe probe;
    Create(&probe);
    const HWND company = GetDlgItem(dialog, IDC_ENTRY_COMPANY);
    EXPECT_TRUE(CanTakeFocus(company));
    EnableControl(dialog, IDC_ENTRY_COMPANY, false);
    EXPECT_FALSE(CanTakeFocus(company));
    EnableControl(dialog, IDC_ENTRY_COMPANY, true);
    ShowControl(dialog, IDC_ENTRY_COMPANY, false);
    EXPECT_FALSE(CanTakeFocus(company));
    ShowControl(dialog, IDC_ENTRY_COMPANY, true);
    ShowWindow(dialog, SW_HIDE); // another page of the sheet is shown
    EXPECT_TRUE(CanTakeFocus(company));
}

TEST_F(DialogTest, ADisabledButtonIsNotPressedByEnterEither)
{
    Probe probe;
    Create(&probe);
    EnableControl(dialog, IDOK, false);
    EXPECT_EQ(Ask(WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED)), TRUE);
    EXPECT_EQ(probe.accepted, 0);
    EnableControl(dialog, IDOK, true);
    EXPECT_EQ(Ask(WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED)), TRUE);
    EXPECT_EQ(probe.accepted, 1);
}

TEST_F(DialogTest, APageThatIsToCloseCancelsItsSheet)
{
    const HWND sheet =
        CreateWindowW(WC_DIALOG, L"", WS_OVERLAPPEDWINDOW, 0, 0, 300, 300, nullptr, nullptr, nullptr, nullptr);
    SetWindowLongPtrW(sheet, DWLP_DLGPROC, reinterpret_cast<LONG_PTR>(SheetProcedure));
    Probe probe;
    Create(&probe);
    SetWindowLongPtrW(dialog, GWL_STYLE, (GetWindowLongPtrW(dialog, GWL_STYLE) & ~LONG_PTR{WS_POPUP}) | WS_CHILD);
    SetParent(dialog, sheet);
    const auto pressed = [&](UINT message, WPARAM w) {
        g_buttonPressed = -1;
        EXPECT_NE(AskPage(message, w), FALSE);
        EXPECT_EQ(g_buttonPressed, -1) << "while the page is still at work";
        MSG posted;
        while (PeekMessageW(&posted, sheet, 0, 0, PM_REMOVE))
            DispatchMessageW(&posted);
        return g_buttonPressed;
    };
    EXPECT_EQ(pressed(WM_CLOSE, 0), PSBTN_CANCEL);
    EXPECT_EQ(pressed(WM_COMMAND, IDCANCEL), PSBTN_CANCEL);
    DestroyWindow(sheet);
}

TEST_F(DialogTest, AFieldOfAPageThatCannotBeEditedHasTheGroundOfItsKind)
{
    Probe probe;
    Create(&probe);
    const HWND company = GetDlgItem(dialog, IDC_ENTRY_COMPANY);
    const HDC dc = GetDC(company);
    const auto ask = [&](HWND control) {
        return AskPage(WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(dc), reinterpret_cast<LPARAM>(control));
    };
    EnableWindow(company, FALSE);
    EXPECT_EQ(ask(company), reinterpret_cast<INT_PTR>(GetSysColorBrush(COLOR_BTNFACE)));
    EXPECT_EQ(GetTextColor(dc), GetSysColor(COLOR_GRAYTEXT));
    EXPECT_EQ(GetBkColor(dc), GetSysColor(COLOR_BTNFACE));
    EnableWindow(company, TRUE); // read-only fields that can have the focus
    EXPECT_EQ(ask(company), reinterpret_cast<INT_PTR>(GetSysColorBrush(COLOR_BTNFACE)));
    EXPECT_EQ(GetTextColor(dc), GetSysColor(COLOR_BTNTEXT));
    EXPECT_EQ(ask(GetDlgItem(dialog, IDC_ENTRY_COMPANY_LABEL)), FALSE); // the theme's business
    ReleaseDC(company, dc);
}

} // namespace
} // namespace qx
