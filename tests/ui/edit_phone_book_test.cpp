// The phone book editor.
#include "res/add_recipients_ids.h"
#include "res/details_ids.h"
#include "res/edit_phone_book_ids.h"
#include "res/entry_ids.h"
#include "res/group_ids.h"
#include "res/setup_page_ids.h"
#include "support/phone_book_session.h"

#include <fstream>
#include <gtest/gtest.h>

namespace qx::test {
namespace {

using host::BoxContents;
using host::UiDriver;
using Names = std::vector<std::wstring>;

BookText Acquaintances()
{
    return BookText().Entry(1, L"Ann", L"111", L"Acme").Entry(2, L"Bob", L"222").Group(4, L"Sales", {2});
}

const BoxContents kBookIsFull = WarningBox(L"The maximum number of phone book entries has been entered.", MB_ICONERROR);

// A file that goes with its test.
class CsvFile {
public:
    explicit CsvFile(const std::string& text = {}) : path_(UsersDocuments() / L"phone book test.csv")
    {
        if (!text.empty())
            std::ofstream(path_, std::ios::binary) << text;
    }
    ~CsvFile() { std::filesystem::remove(path_); }
    const std::filesystem::path& Path() const { return path_; }

private:
    std::filesystem::path path_;
};

TEST(EditPhoneBook, WithoutTheTextLibraryTheBuiltInTextsKeepTheirDash)
{
    PhoneBookSession session(Acquaintances(), WithoutTextLibrary());
    UiDriver& ui = session.OpenEditor();
    EXPECT_EQ(ui.Title(), L"-Edit Phone Book");
    EXPECT_EQ(ui.Text(IDC_BOOK_FRAME), L"-Phone Book");
    EXPECT_EQ(ui.Text(IDC_BOOK_TYPED_LABEL), L"-Type Name or Select From list");
    EXPECT_EQ(ui.Text(IDC_BOOK_ADD_ENTRY), L"-Add Entry...");
    EXPECT_EQ(ui.Text(IDC_BOOK_ADD_GROUP), L"-Add Group...");
    EXPECT_EQ(ui.Text(IDC_BOOK_EXPORT), L"-Export");
    EXPECT_EQ(ui.Text(IDC_BOOK_IMPORT), L"-Import...");
    EXPECT_EQ(ui.Text(IDC_BOOK_EDIT), L"-Edit...");
    EXPECT_EQ(ui.Text(IDC_BOOK_DETAILS), L"-Details...");
    EXPECT_EQ(ui.Text(IDC_BOOK_DELETE), L"-Delete...");
    EXPECT_EQ(ui.Text(IDOK), L"-OK");
    EXPECT_EQ(ui.Text(IDCANCEL), L"-Cancel");
}

TEST(EditPhoneBook, FullBookRefusesToGrowButCanBeEditedDeletedAndExported)
{
    PhoneBookSession session(BookText().People(9999).Group(9999, L"Team", {0})); // groups count, too
    UiDriver& ui = session.OpenEditor();
    for (const int command : {IDC_BOOK_ADD_ENTRY, IDC_BOOK_ADD_GROUP, IDC_BOOK_IMPORT}) {
        ui.Press(command);
        EXPECT_EQ(ui.AnswerBox(IDOK), kBookIsFull);
        EXPECT_EQ(ui.Title(), L"Edit Phone Book");
    }
    EXPECT_EQ(ui.FocusedControl(), IDC_BOOK_IMPORT);

    EditRow(ui, 5000);
    EXPECT_EQ(ui.Text(IDC_ENTRY_NAME), L"Person 05000");
    ui.Type(IDC_ENTRY_NAME, L"Aaron");
    ui.Press(IDOK);
    EXPECT_EQ(ui.CellText(IDC_BOOK_LIST, 0, 0), L"Aaron");

    const CsvFile file;
    ExportFile(ui, file.Path());
    EXPECT_EQ(ui.AnswerBox(IDOK).text, L"The phone book entries were exported successfully.");
    EXPECT_GT(std::filesystem::file_size(file.Path()), 10000u * 20u);

    DeleteRows(ui, {0});
    EXPECT_EQ(ui.RowCount(IDC_BOOK_LIST), 9999);
    AddEntry(ui, L"Last one", L"1"); // there is room again
    EXPECT_EQ(ui.RowCount(IDC_BOOK_LIST), 10000);
}

TEST(EditPhoneBook, TwoSelectedRowsCanOnlyBeDeletedAndExported)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenEditor();
    ui.SelectRows(IDC_BOOK_LIST, {0, 1});
    EXPECT_FALSE(ui.IsEnabled(IDC_BOOK_EDIT));
    EXPECT_FALSE(ui.IsEnabled(IDC_BOOK_DETAILS));
    EXPECT_TRUE(ui.IsEnabled(IDC_BOOK_DELETE));
    EXPECT_TRUE(ui.IsEnabled(IDC_BOOK_EXPORT));
    ui.SelectRows(IDC_BOOK_LIST, {0});
    EXPECT_TRUE(ui.IsEnabled(IDC_BOOK_EDIT));
    EXPECT_TRUE(ui.IsEnabled(IDC_BOOK_DETAILS));
    ui.SelectRows(IDC_BOOK_LIST, {});
    EXPECT_FALSE(ui.IsEnabled(IDC_BOOK_EDIT));
    EXPECT_FALSE(ui.IsEnabled(IDC_BOOK_DETAILS));
    EXPECT_FALSE(ui.IsEnabled(IDC_BOOK_DELETE));
}

TEST(EditPhoneBook, EmptyBookCannotBeExportedUntilItHasAnEntry)
{
    PhoneBookSession session{BookText()};
    UiDriver& ui = session.OpenEditor();
    EXPECT_FALSE(ui.IsEnabled(IDC_BOOK_EXPORT));
    AddEntry(ui, L"Ann", L"1");
    EXPECT_TRUE(ui.IsEnabled(IDC_BOOK_EXPORT));
    DeleteRows(ui, {0});
    EXPECT_FALSE(ui.IsEnabled(IDC_BOOK_EXPORT));
}

TEST(EditPhoneBook, DeletedItemsAreBackAfterCancel)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenEditor();
    DeleteRows(ui, {0, 1});
    EXPECT_EQ(ui.RowCount(IDC_BOOK_LIST), 0);
    ui.Press(IDCANCEL);
    ui.WaitForControl(IDC_EDIT_PHONE_BOOK);
    ui.Press(IDC_EDIT_PHONE_BOOK);
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"Ann", L"Bob", L"Sales"}));
    EXPECT_EQ(session.SavedNames(), (Names{L"Ann", L"Bob", L"Sales"}));
}

TEST(EditPhoneBook, DeletingTheOnlyMemberOfAGroupRemovesTheGroup)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenEditor();
    DeleteRows(ui, {1});
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), Names{L"Ann"});
    ui.Press(IDOK);
    EXPECT_EQ(session.SavedNames(), Names{L"Ann"});
}

TEST(EditPhoneBook, EntryAndTheGroupThatItEmptiesCanBeDeletedTogether)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenEditor();
    DeleteRows(ui, {1, 2});
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), Names{L"Ann"});
}

TEST(EditPhoneBook, DeleteAsksFirstAndKeepsTheOrderOfTheBook)
{
    PhoneBookSession session(BookText().Entry(1, L"Zoe", L"1").Entry(2, L"Ann", L"2").Entry(3, L"Max", L"3"));
    UiDriver& ui = session.OpenEditor();
    ui.SelectRows(IDC_BOOK_LIST, {1});
    ui.Press(IDC_BOOK_DELETE);
    EXPECT_EQ(ui.AnswerBox(IDCANCEL),
              WarningBox(L"Select OK to permanently remove the selected entries from the phone book.", MB_ICONWARNING,
                         {IDOK, IDCANCEL}));
    EXPECT_EQ(ui.RowCount(IDC_BOOK_LIST), 3);
    DeleteRows(ui, {1});
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"Zoe", L"Max"}));
    EXPECT_EQ(ui.FocusedControl(), IDC_BOOK_LIST);
    EXPECT_FALSE(ui.IsEnabled(IDC_BOOK_DELETE));
}

TEST(EditPhoneBook, AddedAndRenamedEntriesTakeTheirPlaceAndAreSavedOnOk)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenEditor();
    AddEntry(ui, L"Amy", L"5");
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"Amy", L"Ann", L"Bob", L"Sales"}));
    EditRow(ui, 0);
    ui.Type(IDC_ENTRY_NAME, L"Zoe");
    ui.Press(IDOK);
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"Ann", L"Bob", L"Sales", L"Zoe"}));
    EXPECT_EQ(ui.FocusedControl(), IDC_BOOK_LIST);
    EXPECT_EQ(session.SavedNames(), (Names{L"Ann", L"Bob", L"Sales"})); // not before OK
    ui.Press(IDOK);
    EXPECT_EQ(session.SavedBook().back(), (SavedItem{L"Zoe", L"5", L" ", {}}));
}

// Alone among the commands Add Group has never refreshed the buttons: they stay on although nothing is selected, and
// then do nothing.
TEST(EditPhoneBook, AddGroupLeavesTheButtonsAsTheyWere)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenEditor();
    ui.SelectRows(IDC_BOOK_LIST, {0});
    ui.Press(IDC_BOOK_ADD_GROUP);
    ui.Type(IDC_GROUP_NAME, L"All");
    AddMembers(ui, {0, 1});
    ui.Press(IDOK);
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"All", L"Ann", L"Bob", L"Sales"}));
    EXPECT_TRUE(ui.SelectedRows(IDC_BOOK_LIST).empty());
    EXPECT_TRUE(ui.IsEnabled(IDC_BOOK_EDIT));
    ui.Press(IDC_BOOK_EDIT);
    EXPECT_EQ(ui.Title(), L"Edit Phone Book");
}

TEST(EditPhoneBook, DetailsGiveTheFocusBackToTheirButton)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenEditor();
    ui.SelectRows(IDC_BOOK_LIST, {2});
    ui.Press(IDC_BOOK_DETAILS);
    EXPECT_EQ(ui.Title(), L"Group Details");
    EXPECT_EQ(ui.Text(IDC_DETAILS_GROUP_NAME), L"Sales");
    ui.Press(IDOK);
    EXPECT_EQ(ui.FocusedControl(), IDC_BOOK_DETAILS);
    EXPECT_EQ(ui.SelectedRows(IDC_BOOK_LIST), std::vector<int>{2});
}

TEST(EditPhoneBook, ListStaysWhereItWasScrolledToWhenRowsAreDeleted)
{
    PhoneBookSession session(BookText().People(1000));
    UiDriver& ui = session.OpenEditor();
    ui.Type(IDC_BOOK_TYPED, L"Person 005");
    ASSERT_EQ(TopRow(ui, IDC_BOOK_LIST), 500);
    DeleteRows(ui, {502});
    EXPECT_EQ(TopRow(ui, IDC_BOOK_LIST), 500);
}

TEST(EditPhoneBook, ImportedRowsAreSortedInAndASuccessIsTold)
{
    const CsvFile file("Name,Fax Number,Company Name\r\nMia,77,Mines\r\nAda,88,\r\n");
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenEditor();
    ImportFile(ui, file.Path());
    EXPECT_EQ(ui.AnswerBox(IDOK), InformationBox(L"The phone book entries were imported successfully."));
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"Ada", L"Ann", L"Bob", L"Mia", L"Sales"}));
    EXPECT_EQ(ui.FocusedControl(), IDC_BOOK_IMPORT);
}

TEST(EditPhoneBook, ImportThatPassesTheLimitSaysSoAndShowsWhatItAdded)
{
    const CsvFile file("Name,Fax Number,Company Name\r\nAda,88,\r\nMia,77,Mines\r\n");
    PhoneBookSession session(BookText().People(9999));
    UiDriver& ui = session.OpenEditor();
    ImportFile(ui, file.Path());
    EXPECT_EQ(ui.AnswerBox(IDOK), ErrorBox(L"The file contains more entries than the phone book can hold. Not all of "
                                           L"them were imported."));
    EXPECT_EQ(ui.RowCount(IDC_BOOK_LIST), 10000);
    EXPECT_EQ(ui.CellText(IDC_BOOK_LIST, 0, 0), L"Ada");
}

TEST(EditPhoneBook, WithoutTheTextLibraryItsMessagesHaveTheirBuiltInTexts)
{
    const CsvFile file("Name,Fax Number,Company Name\r\nAda,88,\r\nMia,77,Mines\r\n");
    PhoneBookSession session(BookText().People(9998), WithoutTextLibrary());
    UiDriver& ui = session.OpenEditor();
    const auto importFile = [&] {
        ImportFile(ui, file.Path());
        return ui.AnswerBox(IDOK);
    };
    const BoxContents imported = importFile();
    EXPECT_EQ(imported.title, L"-QX MFP Send Fax");
    EXPECT_EQ(imported.text, L"-Phone book entries imported successfully.");

    ui.Press(IDC_BOOK_ADD_ENTRY);
    EXPECT_EQ(ui.AnswerBox(IDOK), kBookIsFull);
    ui.SelectRows(IDC_BOOK_LIST, {0});
    ui.Press(IDC_BOOK_DELETE);
    EXPECT_EQ(ui.AnswerBox(IDOK).text, L"Select OK to permanently remove the selected entries from the phone book.");
    DeleteRows(ui, {0});
    AddEntry(ui, L"Aaron", L"1");
    EXPECT_EQ(importFile().text, L"-Exceeded maximum phone book entries.");

    std::filesystem::remove(file.Path()); // nothing to be asked about
    ExportFile(ui, file.Path());
    const BoxContents exported = ui.AnswerBox(IDOK);
    EXPECT_EQ(exported.title, L"-QX MFP Send Fax");
    EXPECT_EQ(exported.text, L"-Phone book entries exported successfully.");
}

TEST(EditPhoneBook, CancelledImportAndExportTellNothing)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenEditor();
    for (const int command : {IDC_BOOK_IMPORT, IDC_BOOK_EXPORT}) {
        ui.Press(command);
        ui.Press(IDCANCEL);
        EXPECT_EQ(ui.Title(), L"Edit Phone Book");
        EXPECT_EQ(ui.FocusedControl(), command);
    }
}

TEST(EditPhoneBook, DoubleClickAndEnterEditAndTheDeleteKeyDeletes)
{
    PhoneBookSession session(Acquaintances());
    UiDriver& ui = session.OpenEditor();
    ui.DoubleClickRow(IDC_BOOK_LIST, 1);
    EXPECT_EQ(ui.Text(IDC_ENTRY_NAME), L"Bob");
    ui.Press(IDCANCEL);
    EXPECT_EQ(ui.FocusedControl(), IDC_BOOK_LIST);
    ui.PressKey(VK_RETURN);
    EXPECT_EQ(ui.Text(IDC_ENTRY_NAME), L"Bob");
    ui.Press(IDCANCEL);
    ui.PressKey('A', {VK_CONTROL});
    EXPECT_EQ(ui.SelectedRows(IDC_BOOK_LIST), (std::vector<int>{0, 1, 2}));
    ui.PressKey(VK_DELETE);
    ui.AnswerBox(IDOK);
    EXPECT_EQ(ui.RowCount(IDC_BOOK_LIST), 0);
}

// Doubled ids come from files that were written by hand. The selection finds the first of them, Edit stores at the
// last, Delete removes the first.
TEST(EditPhoneBook, OfDoubledIdsTheFirstIsFoundAndTheLastReplaced)
{
    PhoneBookSession session(BookText().Entry(7, L"First", L"1").Entry(7, L"Second", L"2").Entry(8, L"Other", L"3"));
    UiDriver& ui = session.OpenEditor();
    EditRow(ui, 1);
    EXPECT_EQ(ui.Text(IDC_ENTRY_NAME), L"First");
    ui.Press(IDOK);
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"First", L"First", L"Other"}));
    DeleteRows(ui, {1});
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"First", L"Other"}));
}

TEST(EditPhoneBook, BookWithGroupsIsBuiltEditedAndUsedWithTheKeyboardAlone)
{
    PhoneBookSession session{BookText()};
    UiDriver& ui = session.OpenPicker();
    const auto type = [&](const char* capitals) {
        for (; *capitals != '\0'; ++capitals)
            ui.PressKey(static_cast<WORD>(*capitals));
    };
    const auto alt = [&](WORD letter) { ui.PressKey(letter, {VK_MENU}); };
    const auto addEntry = [&](const char* name, const char* number) {
        alt('A');
        type(name);
        ui.PressKey(VK_TAB);
        type(number);
        ui.PressKey(VK_RETURN);
    };
    alt('B'); // Edit Phone Book...
    addEntry("ANN", "11");
    addEntry("BOB", "22");
    alt('G'); // Add Group...
    alt('N');
    type("TEAM");
    alt('L'); // the name to be typed, and behind it the list of entries
    ui.PressKey(VK_TAB);
    ui.PressKey('A', {VK_CONTROL});
    ui.PressKey(VK_RETURN); // adds them
    alt('N');
    ui.PressKey(VK_RETURN); // OK
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"ann", L"bob", L"team"}));

    alt('L');
    ui.PressKey(VK_TAB);
    ui.PressKey(VK_DOWN);
    ui.PressKey(VK_HOME);
    ui.PressKey(VK_RETURN); // edits the first row
    EXPECT_EQ(ui.Text(IDC_ENTRY_NAME), L"ann");
    type("AMY");
    ui.PressKey(VK_RETURN);
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"amy", L"bob", L"team"}));
    ui.PressKey(VK_TAB, {VK_SHIFT});
    ui.PressKey(VK_RETURN); // OK of the editor, from the edit field

    alt('L');
    ui.PressKey(VK_TAB);
    ui.PressKey(VK_END);
    ui.PressKey(VK_RETURN); // the group goes to the recipients
    EXPECT_EQ(NamesIn(ui, IDC_PICK_CHOSEN), (Names{L"amy", L"bob"}));
    alt('L');
    ui.PressKey(VK_RETURN);
    session.Send();
    EXPECT_EQ(session.Recipients().size(), 2u);
    EXPECT_EQ(session.SavedNames(), (Names{L"amy", L"bob", L"team"}));
}

} // namespace
} // namespace qx::test
