// The dialog that adds or edits an entry, opened from the phone book editor.
#include "res/edit_phone_book_ids.h"
#include "res/entry_ids.h"
#include "support/input_method.h"
#include "support/phone_book_session.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace qx::test {
namespace {

using host::BoxContents;
using host::UiDriver;
using Names = std::vector<std::wstring>;

const BoxContents kDuplicate =
    WarningBox(L"This is a duplicate entry. Please enter a different name or fax number.", MB_ICONERROR);

class EntryDialog : public ::testing::Test {
protected:
    PhoneBookSession session{
        BookText().Entry(1, L"Ann", L"111", L"Acme").Entry(2, L"Bob", L"222", L" ").Entry(3, L" ", L"333")};

    UiDriver& Add()
    {
        UiDriver& ui = session.OpenEditor();
        ui.Press(IDC_BOOK_ADD_ENTRY);
        return ui;
    }
    UiDriver& Edit(int row)
    {
        UiDriver& ui = session.OpenEditor();
        EditRow(ui, row);
        return ui;
    }
};

TEST_F(EntryDialog, BlankTypedIntoTheFaxNumberIsTakenBack)
{
    UiDriver& ui = Add();
    ui.Type(IDC_ENTRY_FAX_NUMBER, L"555");
    ui.TypeMore(IDC_ENTRY_FAX_NUMBER, L" ");
    EXPECT_EQ(ui.Text(IDC_ENTRY_FAX_NUMBER), L"555");
    ui.TypeMore(IDC_ENTRY_FAX_NUMBER, L"7"); // the caret is at the end
    EXPECT_EQ(ui.Text(IDC_ENTRY_FAX_NUMBER), L"5557");
}

TEST_F(EntryDialog, PastedNumberWithABlankIsRefusedWhole)
{
    UiDriver& ui = Add();
    ui.Type(IDC_ENTRY_FAX_NUMBER, L"42");
    ui.Paste(IDC_ENTRY_FAX_NUMBER, L"(555) 123-4567");
    EXPECT_EQ(ui.Text(IDC_ENTRY_FAX_NUMBER), L"42");
    ui.Paste(IDC_ENTRY_FAX_NUMBER, L"(555)123-4567,,*#[9]");
    EXPECT_EQ(ui.Text(IDC_ENTRY_FAX_NUMBER), L"(555)123-4567,,*#[9]");
}

// More than the field takes from the user, but not more than another program can put there.
TEST_F(EntryDialog, TheFilterReads255CharactersOfTheFaxNumber)
{
    UiDriver& ui = Add();
    const HWND edit = ui.Control(IDC_ENTRY_FAX_NUMBER);
    const auto put = [&](const std::wstring& text) { ui.Do([&] { SetWindowTextW(edit, text.c_str()); }); };
    const std::wstring read(255, L'5');
    put(read + L"x");
    EXPECT_EQ(ui.Text(IDC_ENTRY_FAX_NUMBER), read + L"x");
    put(L"x");
    EXPECT_EQ(ui.Text(IDC_ENTRY_FAX_NUMBER), read);
    put(L"42");
    put(read.substr(1) + L"x");
    EXPECT_EQ(ui.Text(IDC_ENTRY_FAX_NUMBER), L"42");
}

TEST_F(EntryDialog, OkNeedsANameAndAFaxNumberAndNoCompany)
{
    UiDriver& ui = Add();
    EXPECT_EQ(ui.Title(), L"Add Entry to Phone Book");
    EXPECT_FALSE(ui.IsEnabled(IDOK));
    ui.Type(IDC_ENTRY_COMPANY, L"Acme");
    EXPECT_FALSE(ui.IsEnabled(IDOK));
    ui.Type(IDC_ENTRY_NAME, L"Zoe");
    EXPECT_FALSE(ui.IsEnabled(IDOK));
    ui.Type(IDC_ENTRY_FAX_NUMBER, L"5");
    EXPECT_TRUE(ui.IsEnabled(IDOK));
    ui.Paste(IDC_ENTRY_NAME, L"");
    EXPECT_FALSE(ui.IsEnabled(IDOK));
}

TEST_F(EntryDialog, EnterDoesNotConfirmWhileOkIsOff)
{
    UiDriver& ui = Add();
    ui.Focus(IDC_ENTRY_NAME);
    ui.PressKey(VK_RETURN);
    EXPECT_EQ(ui.Title(), L"Add Entry to Phone Book");
}

TEST_F(EntryDialog, TheFaxNumberIsTypedWithoutAnInputMethod)
{
    UiDriver& ui = Add();
    EXPECT_FALSE(TakesInputMethod(ui.Control(IDC_ENTRY_FAX_NUMBER)));
    EXPECT_TRUE(TakesInputMethod(ui.Control(IDC_ENTRY_NAME)));
    EXPECT_TRUE(TakesInputMethod(ui.Control(IDC_ENTRY_COMPANY)));
}

TEST_F(EntryDialog, EditingWithoutAChangeIsNoDuplicate)
{
    UiDriver& ui = Edit(0);
    EXPECT_EQ(ui.Title(), L"Edit Phone Book Entry");
    EXPECT_EQ(ui.Text(IDC_ENTRY_NAME), L"Ann");
    EXPECT_EQ(ui.Text(IDC_ENTRY_FAX_NUMBER), L"111");
    EXPECT_EQ(ui.Text(IDC_ENTRY_COMPANY), L"Acme");
    ui.Press(IDOK);
    EXPECT_EQ(ui.Title(), L"Edit Phone Book");
    EXPECT_EQ(ui.RowCount(IDC_BOOK_LIST), 3);
}

TEST_F(EntryDialog, SameNameInAnotherLetterCaseAndSameNumberIsADuplicate)
{
    UiDriver& ui = Add();
    TypeEntry(ui, L"ANN", L"111");
    ui.Type(IDC_ENTRY_COMPANY, L"Other");
    ui.Press(IDOK);
    EXPECT_EQ(ui.AnswerBox(IDOK), kDuplicate);
    EXPECT_EQ(ui.Text(IDC_ENTRY_NAME), L"ANN"); // nothing typed is lost
    EXPECT_EQ(ui.Text(IDC_ENTRY_COMPANY), L"Other");
    ui.Type(IDC_ENTRY_FAX_NUMBER, L"112");
    ui.Press(IDOK);
    EXPECT_EQ(ui.RowCount(IDC_BOOK_LIST), 4);
}

TEST_F(EntryDialog, EntryThatWasRefusedAsADuplicateKeepsItsOldValues)
{
    UiDriver& ui = Edit(1);
    TypeEntry(ui, L"Ann", L"111");
    ui.Press(IDOK);
    EXPECT_EQ(ui.AnswerBox(IDOK), kDuplicate);
    ui.Press(IDCANCEL);
    ui.Press(IDOK);
    EXPECT_EQ(session.SavedBook()[0], (SavedItem{L"Ann", L"111", L"Acme", {}}));
    EXPECT_EQ(session.SavedBook()[1], (SavedItem{L"Bob", L"222", L" ", {}}));
}

TEST_F(EntryDialog, BlankCompanyShowsAsEmptyAndIsSavedAsBlankAgain)
{
    UiDriver& ui = Edit(1);
    EXPECT_EQ(ui.Text(IDC_ENTRY_COMPANY), L"");
    OkAndSave(ui);
    EXPECT_EQ(session.SavedBook()[2], (SavedItem{L"Bob", L"222", L" ", {}}));
}

TEST_F(EntryDialog, BlankNameShowsAsEmptyAndHasToBeFilled)
{
    UiDriver& ui = Edit(2);
    EXPECT_EQ(ui.Text(IDC_ENTRY_NAME), L"");
    EXPECT_FALSE(ui.IsEnabled(IDOK));
}

TEST_F(EntryDialog, EmptyCompanyIsStoredAsABlank)
{
    UiDriver& ui = Add();
    TypeEntry(ui, L"Zoe", L"5");
    OkAndSave(ui);
    EXPECT_EQ(session.SavedBook().back(), (SavedItem{L"Zoe", L"5", L" ", {}}));
}

TEST_F(EntryDialog, EveryFieldTakesFiftyCharacters)
{
    UiDriver& ui = Add();
    for (const int field : {IDC_ENTRY_NAME, IDC_ENTRY_FAX_NUMBER, IDC_ENTRY_COMPANY})
        ui.Type(field, std::wstring(52, L'7'));
    ui.Press(IDOK);
    ui.Press(IDOK);
    const std::wstring fifty(50, L'7');
    const std::vector<SavedItem> saved = session.SavedBook();
    EXPECT_NE(std::ranges::find(saved, SavedItem{fifty, fifty, fifty, {}}), saved.end());
}

TEST_F(EntryDialog, CancelAddsNothing)
{
    UiDriver& ui = Add();
    TypeEntry(ui, L"Zoe", L"5");
    ui.Press(IDCANCEL);
    EXPECT_EQ(ui.RowCount(IDC_BOOK_LIST), 3);
}

TEST(EntryDialogTexts, WithoutTheTextLibraryLabelsHaveTheirBuiltInTexts)
{
    PhoneBookSession session(BookText().Entry(1, L"Ann", L"1"), WithoutTextLibrary());
    UiDriver& ui = session.OpenEditor();
    ui.Press(IDC_BOOK_ADD_ENTRY);
    EXPECT_EQ(ui.Title(), L"-Add Entry To Phone Book");
    EXPECT_EQ(ui.Text(IDC_ENTRY_NAME_LABEL), L"Recipient Name:");
    EXPECT_EQ(ui.Text(IDC_ENTRY_FAX_NUMBER_LABEL), L"Fax Number");
    EXPECT_EQ(ui.Text(IDC_ENTRY_COMPANY_LABEL), L"Company Name");
    EXPECT_EQ(ui.Text(IDOK), L"OK");
    EXPECT_EQ(ui.Text(IDCANCEL), L"Cancel");
    TypeEntry(ui, L"Ann", L"1");
    ui.Press(IDOK);
    EXPECT_EQ(ui.AnswerBox(IDOK).text, L"This is a duplicate entry.  Please enter a different name or fax number");
    ui.Press(IDCANCEL);
    EditRow(ui, 0);
    EXPECT_EQ(ui.Title(), L"Edit Phone Book Entry");
}

} // namespace
} // namespace qx::test
