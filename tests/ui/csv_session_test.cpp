// CSV files in the hands of a user: from the driver's call to the phone book editor and back into the phone book file.
#include "res/edit_phone_book_ids.h"
#include "support/phone_book_session.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

namespace qx::test {
namespace {

using host::UiDriver;
using Names = std::vector<std::wstring>;

constexpr wchar_t kSuccessTitle[] = L"QX MFP Send Fax";

class CsvSession : public testing::Test {
protected:
    // Says yes to the first columns of the file, as they come.
    void Import(UiDriver& ui, const std::string& bytes, int columns)
    {
        WriteBytes(file_, bytes);
        ImportFile(ui, file_, columns);
    }

    TemporaryFolder folder_;
    std::filesystem::path file_ = folder_ / L"R&D friends.csv";
};

TEST_F(CsvSession, WhatOneUserExportsAnotherImportsAndSaves)
{
    {
        PhoneBookSession session(BookText()
                                     .Entry(1, L"Jörg \"J\" Müller", L"(555)01", L"Bäcker, Söhne")
                                     .Entry(2, L"דנה", L"555*02#")
                                     .Group(3, L"Everyone", {1, 2}));
        UiDriver& ui = session.OpenEditor();
        ExportFile(ui, file_);
        EXPECT_EQ(ui.AnswerBox(IDOK).title, kSuccessTitle);
        EXPECT_EQ(ui.FocusedControl(), IDC_BOOK_EXPORT);
    }
    const std::string exported = ReadBytes(file_);
    PhoneBookSession session(BookText{});
    UiDriver& ui = session.OpenEditor();
    Import(ui, exported, 3);
    EXPECT_EQ(ui.AnswerBox(IDOK).title, kSuccessTitle);
    EXPECT_EQ(ui.FocusedControl(), IDC_BOOK_IMPORT);
    ui.Press(IDOK);
    session.Cancel();
    std::vector<SavedItem> saved = session.SavedBook();
    ASSERT_EQ(saved.size(), 2u);
    EXPECT_EQ(saved[0], (SavedItem{L"Jörg \"J\" Müller", L"(555)01", L"Bäcker, Söhne", {}}));
    EXPECT_EQ(saved[1], (SavedItem{L"דנה", L"555*02#", L"", {}}));
}

TEST_F(CsvSession, RefusedRowsAreCountedAndTheRestIsShown)
{
    PhoneBookSession session(BookText().Entry(1, L"Ann", L"555"));
    UiDriver& ui = session.OpenEditor();
    Import(ui, "Who,Fax\r\nBob,556\r\nANN,555\r\nCara,five\r\nDan,fax\r\n", 2);
    EXPECT_EQ(ui.AnswerBox(IDOK),
              WarningBox(L"3 entries were not imported:\n1 duplicate entry\n2 entries with an invalid fax number"));
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), (Names{L"Ann", L"Bob"}));
}

TEST_F(CsvSession, ASuccessAtTheEndIsToldAfterTheCounts)
{
    PhoneBookSession session(BookText{});
    UiDriver& ui = session.OpenEditor();
    Import(ui, "Who,Fax\r\nBob,five\r\nAnn,555\r\n", 2);
    EXPECT_EQ(ui.AnswerBox(IDOK).text, L"1 entry was not imported:\n1 entry with an invalid fax number");
    EXPECT_EQ(ui.AnswerBox(IDOK).title, kSuccessTitle);
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), Names{L"Ann"});
}

TEST_F(CsvSession, ManyOfBothAreToldAndSoIsASuccessAtTheEnd)
{
    PhoneBookSession session(BookText().Entry(1, L"Ann", L"555"));
    UiDriver& ui = session.OpenEditor();
    Import(ui, "Who,Fax\r\nAnn,555\r\nAnn,555\r\nAnn,555\r\nB,x\r\nC,x\r\nD,x\r\nEva,557\r\n", 2);
    EXPECT_EQ(ui.AnswerBox(IDOK).text,
              L"6 entries were not imported:\n3 entries with an invalid fax number\n3 duplicate entries");
    EXPECT_EQ(ui.AnswerBox(IDOK).title, kSuccessTitle);
}

TEST_F(CsvSession, AFileThatIsNotUnderstoodIsNamedInTheError)
{
    PhoneBookSession session(BookText().Entry(1, L"Ann", L"555"));
    UiDriver& ui = session.OpenEditor();
    WriteBytes(file_, "Who,Fax\r\nJ\xF6rg,1\r\n");
    ui.Press(IDC_BOOK_IMPORT);
    ui.AnswerFileDialog(file_);
    EXPECT_EQ(ui.AnswerBox(IDOK), ErrorBox(L"Invalid file format. Cannot import data from " + file_.wstring() + L"."));
    EXPECT_EQ(NamesIn(ui, IDC_BOOK_LIST), Names{L"Ann"});
    EXPECT_EQ(ui.FocusedControl(), IDC_BOOK_IMPORT);
}

} // namespace
} // namespace qx::test
