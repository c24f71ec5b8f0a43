// The driver of the dialogs against a dialog of the test's own.
#include "support/dialog_thread.h"

#include <commctrl.h>
#include <fstream>
#include <gtest/gtest.h>

namespace qx::host {
namespace {

constexpr int kEdit = 101, kAsk = 102, kOption = 103, kCombo = 104, kList = 105, kHidden = 106, kNested = 107;

struct SampleDialog {
    std::vector<std::wstring> edits; // what the edit field held after each change
    int boxAnswer = 0;
    int comboChanges = 0;
    int doubleClicked = -1, sortedBy = -1;
};

HWND Add(HWND dialog, const wchar_t* controlClass, const wchar_t* text, DWORD style, int id, int row)
{
    return CreateWindowExW(0, controlClass, text, WS_CHILD | WS_TABSTOP | style, 10, 10 + 40 * row, 200, 32, dialog,
                           reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
}

void Fill(HWND dialog)
{
    SetWindowTextW(dialog, L"Sample");
    Add(dialog, L"Edit", L"before", WS_VISIBLE | WS_BORDER, kEdit, 0);
    Add(dialog, L"Button", L"Ask", WS_VISIBLE, kAsk, 1);
    Add(dialog, L"Button", L"Option", WS_VISIBLE | BS_AUTOCHECKBOX, kOption, 2);
    const HWND combo = Add(dialog, L"ComboBox", L"", WS_VISIBLE | CBS_DROPDOWN, kCombo, 3);
    for (const wchar_t* item : {L"one", L"two"})
        SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(item));
    const HWND list = Add(dialog, WC_LISTVIEWW, L"", WS_VISIBLE | LVS_REPORT, kList, 4);
    SetWindowPos(list, nullptr, 0, 0, 200, 120, SWP_NOMOVE | SWP_NOZORDER);
    const wchar_t* const words[] = {L"a", L"b", L"c"};
    for (int i = 0; i < 2; ++i) {
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_WIDTH;
        column.cx = 80;
        column.pszText = const_cast<wchar_t*>(words[i]);
        ListView_InsertColumn(list, i, &column);
    }
    for (int i = 0; i < 3; ++i) {
        LVITEMW item{};
        item.mask = LVIF_TEXT;
        item.iItem = i;
        item.pszText = const_cast<wchar_t*>(words[i]);
        ListView_InsertItem(list, &item);
    }
    Add(dialog, L"Button", L"Hidden", 0, kHidden, 8);
    Add(dialog, L"Button", L"Nested", WS_VISIBLE, kNested, 8);
    Add(dialog, L"Button", L"OK", WS_VISIBLE, IDOK, 9);
}

INT_PTR ShowSample(SampleDialog& sample, HWND owner);

void Command(HWND dialog, SampleDialog& sample, int id, int code)
{
    wchar_t text[64];
    GetDlgItemTextW(dialog, kEdit, text, 64);
    if (id == kEdit && code == EN_CHANGE)
        sample.edits.emplace_back(text);
    else if (id == kAsk)
        sample.boxAnswer = MessageBoxW(dialog, L"Really?", L"Question", MB_YESNOCANCEL | MB_ICONQUESTION);
    else if (id == kCombo && code == CBN_SELCHANGE)
        ++sample.comboChanges;
    else if (id == kNested)
        ShowSample(sample, dialog);
    else if (id == IDOK || id == IDCANCEL)
        EndDialog(dialog, id);
}

INT_PTR CALLBACK SampleProcedure(HWND dialog, UINT message, WPARAM w, LPARAM l)
{
    if (message == WM_INITDIALOG) {
        Fill(dialog);
        SetWindowLongPtrW(dialog, GWLP_USERDATA, l);
        return TRUE;
    }
    auto* const sample = reinterpret_cast<SampleDialog*>(GetWindowLongPtrW(dialog, GWLP_USERDATA));
    if (sample == nullptr)
        return FALSE;
    if (message == WM_COMMAND)
        Command(dialog, *sample, LOWORD(w), HIWORD(w));
    if (message == WM_NOTIFY) {
        const auto& row = *reinterpret_cast<const NMLISTVIEW*>(l);
        if (row.hdr.code == NM_DBLCLK)
            sample->doubleClicked = row.iItem;
        if (row.hdr.code == LVN_COLUMNCLICK)
            sample->sortedBy = row.iSubItem;
    }
    return FALSE;
}

INT_PTR ShowSample(SampleDialog& sample, HWND owner)
{
    struct {
        DLGTEMPLATE header{WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_CENTER, 0, 0, 0, 0, 180, 250};
        WORD noMenuNoClassNoTitle[3]{};
    } dialog;
    return DialogBoxIndirectParamW(nullptr, &dialog.header, owner, SampleProcedure, reinterpret_cast<LPARAM>(&sample));
}

class UiDriverTest : public testing::Test {
protected:
    UiDriver& Ui() { return thread_.Ui(); }

    SampleDialog sample;
    INT_PTR result = 0;

private:
    test::DialogThread thread_{[this] {
        InitCommonControls();
        result = ShowSample(sample, nullptr);
    }};
};

TEST_F(UiDriverTest, TypesKeyByKey)
{
    Ui().Type(kEdit, L"12\u05D0");
    EXPECT_EQ(Ui().Text(kEdit), L"12\u05D0");
    EXPECT_EQ(sample.edits, (std::vector<std::wstring>{L"", L"1", L"12", L"12\u05D0"}));
    EXPECT_EQ(Ui().FocusedControl(), kEdit);
}

TEST_F(UiDriverTest, PastesInOneStep)
{
    Ui().Paste(kEdit, L"pasted");
    EXPECT_EQ(sample.edits, std::vector<std::wstring>{L"pasted"});
}

TEST_F(UiDriverTest, TypesIntoTheEditFieldOfAComboBox)
{
    Ui().Type(kCombo, L"three");
    EXPECT_EQ(Ui().Text(kCombo), L"three");
    EXPECT_EQ(Ui().FocusedControl(), kCombo);
}

TEST_F(UiDriverTest, ReadsAndAnswersAMessageBox)
{
    const HWND dialog = Ui().Dialog();
    Ui().Press(kAsk);
    EXPECT_NE(Ui().DialogNow(), dialog);
    const BoxContents box = Ui().AnswerBox(IDNO);
    EXPECT_EQ(box.title, L"Question");
    EXPECT_EQ(box.text, L"Really?");
    EXPECT_EQ(box.icon, static_cast<UINT>(MB_ICONQUESTION));
    EXPECT_EQ(box.buttons, (std::vector<int>{IDYES, IDNO, IDCANCEL}));
    EXPECT_EQ(sample.boxAnswer, IDNO);
    EXPECT_EQ(Ui().Dialog(), dialog);
}

TEST_F(UiDriverTest, FindsTheInnermostDialog)
{
    const HWND outer = Ui().Dialog();
    Ui().Press(kNested);
    EXPECT_NE(Ui().Dialog(), outer);
    Ui().Press(IDOK);
    EXPECT_EQ(Ui().Dialog(), outer);
    EXPECT_FALSE(Ui().Finished());
}

TEST_F(UiDriverTest, SwitchesChecksAndChooses)
{
    Ui().Check(kOption, true);
    Ui().Check(kOption, true);
    EXPECT_TRUE(Ui().IsChecked(kOption));
    Ui().Check(kOption, false);
    EXPECT_FALSE(Ui().IsChecked(kOption));

    EXPECT_EQ(Ui().ComboItems(kCombo), (std::vector<std::wstring>{L"one", L"two"}));
    Ui().Select(kCombo, 1);
    EXPECT_EQ(Ui().Text(kCombo), L"two");
    EXPECT_EQ(sample.comboChanges, 1);
}

TEST_F(UiDriverTest, ReadsSelectsAndClicksRows)
{
    EXPECT_EQ(Ui().RowCount(kList), 3);
    EXPECT_EQ(Ui().Row(kList, 1), (std::vector<std::wstring>{L"b", L""}));
    EXPECT_EQ(Ui().ColumnTitle(kList, 0), L"a");
    Ui().SelectRows(kList, {0, 2});
    EXPECT_EQ(Ui().SelectedRows(kList), (std::vector<int>{0, 2}));
    Ui().DoubleClickRow(kList, 1);
    EXPECT_EQ(sample.doubleClicked, 1);
    Ui().ClickColumn(kList, 1);
    EXPECT_EQ(sample.sortedBy, 1);
}

TEST_F(UiDriverTest, RealKeysReachTheFocus)
{
    Ui().Focus(kEdit);
    Ui().PressKey(VK_END);
    Ui().PressKey('X', {VK_SHIFT});
    EXPECT_EQ(Ui().Text(kEdit), L"beforeX");
    Ui().PressKey(VK_TAB);
    EXPECT_EQ(Ui().FocusedControl(), kAsk);
    Ui().PressKey(VK_SPACE);
    EXPECT_EQ(Ui().WaitForBox().text, L"Really?");
    Ui().PressKey(VK_ESCAPE);
    EXPECT_EQ(sample.boxAnswer, IDCANCEL);
}

TEST_F(UiDriverTest, RefusesWhatAUserCouldNotDo)
{
    Ui().SetPatience(std::chrono::milliseconds(200));
    EXPECT_THROW(Ui().Press(999), UiFailure);
    EXPECT_THROW(Ui().Press(kHidden), UiFailure);
    EXPECT_THROW(Ui().SelectRows(kList, {3}), UiFailure);
    EXPECT_THROW(Ui().Select(kCombo, 2), UiFailure);
    EXPECT_THROW(Ui().GoToPage(0), UiFailure);
    EXPECT_THROW(Ui().WaitForBox(), UiFailure);
    EnableWindow(Ui().Control(kAsk), FALSE);
    try {
        Ui().Press(kAsk);
        FAIL() << "a disabled button was pressed";
    } catch (const UiFailure& failure) {
        EXPECT_STREQ(failure.what(), "control 102 is disabled [on screen: 'Sample']");
    }
    Ui().SetPatience(std::chrono::seconds(20));
}

TEST_F(UiDriverTest, TakesAPictureOfTheDialog)
{
    const std::filesystem::path file = std::filesystem::temp_directory_path() / "ui_driver_test.png";
    Ui().SavePicture(file);
    EXPECT_GT(std::filesystem::file_size(file), 1000u);
    std::filesystem::remove(file);
}

TEST_F(UiDriverTest, SeesTheEnd)
{
    Ui().Press(IDOK);
    Ui().WaitForEnd();
    EXPECT_EQ(result, IDOK);
    EXPECT_THROW(Ui().Dialog(), UiFailure);
}

} // namespace
} // namespace qx::host
