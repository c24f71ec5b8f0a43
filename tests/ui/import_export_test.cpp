#include "phonebook/ui/import_export.h"

#include "base/unique.h"
#include "dialog/file_dialog.h"
#include "phonebook/ui/phone_book_dialog.h"
#include "res/map_custom_fields_ids.h"
#include "support/built.h"
#include "support/dialog_thread.h"
#include "support/failing_calls.h"
#include "support/failing_view.h"
#include "support/phone_book.h"
#include "support/redirected_import.h"
#include "support/temporary_folder.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <utility>

namespace qx {
namespace {

using namespace std::string_literals;
using namespace test;
using Names = std::vector<std::wstring>;

class ImportExport : public testing::Test {
protected:
    void StartImport(bool rightToLeft = false)
    {
        Converse([this, rightToLeft] {
            SetCursor(LoadCursorW(nullptr, IDC_CROSS));
            result_ = ImportCsv(PhoneBookDialog(texts_, *book_.owned), rightToLeft);
            cursorAtTheEnd_ = GetCursor();
        });
    }

    void StartExport()
    {
        Converse([this] { result_ = ExportCsv(PhoneBookDialog(texts_, *book_.owned)); });
    }

    void StartReport(ImportExportStatus status, int duplicates, int invalidFaxNumbers)
    {
        Converse([=, this] {
            ReportImportExportResult(
                texts_, {{status, duplicates, invalidFaxNumbers}, L"C:\\My 100% files\\a.csv", L"a.csv"}, nullptr);
        });
    }

    void Converse(std::function<void()> show) { conversation_.emplace(std::move(show)); }

    host::UiDriver& Ui() { return conversation_->Ui(); }

    const ImportExportResult& End()
    {
        conversation_->End();
        return result_;
    }

    void MapFirstColumns(int columns)
    {
        Ui().WaitForControl(IDC_MAP);
        for (int column = 0; column < columns; ++column) {
            Ui().SelectRows(IDC_MAP_SOURCE_FIELDS, {column});
            Ui().SelectRows(IDC_MAP_DESTINATIONS, {column});
            Ui().Press(IDC_MAP);
        }
    }

    std::filesystem::path Import(const std::string& bytes)
    {
        const std::filesystem::path file = folder_ / L"book.csv";
        WriteBytes(file, bytes);
        StartImport();
        Ui().AnswerFileDialog(file);
        return file;
    }

    void UseTextLibrary()
    {
        library_.Reset(LoadLibraryExW((BuiltFolder() / L"QXTEXT64.DLL").c_str(), nullptr,
                                      LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
        ASSERT_TRUE(library_);
        texts_.hStringDll = library_.Get();
    }

    // The texts of the library with their numbers, line by line.
    std::wstring Lines(std::initializer_list<std::pair<unsigned, int>> lines)
    {
        std::wstring joined;
        for (const auto& [id, number] : lines) {
            std::wstring text = LocalizedText(texts_, {id, L"?"});
            const std::size_t place = text.find(L"%d");
            if (place != std::wstring::npos)
                text.replace(place, 2, std::to_wstring(number));
            joined += (joined.empty() ? L"" : L"\n") + text;
        }
        return joined;
    }

    TemporaryFolder folder_;
    TestBook book_;
    UniqueModule library_;
    TextOwner texts_;
    ImportExportResult result_;
    HCURSOR cursorAtTheEnd_ = nullptr;
    std::optional<DialogThread> conversation_;
};
using CsvImportDialog = ImportExport;
using CsvExportDialog = ImportExport;
using ImportExportReport = ImportExport;

HWND g_owner = nullptr;

BOOL WINAPI NoteOwner(OPENFILENAMEW* dialog)
{
    g_owner = dialog->hwndOwner;
    return FALSE;
}

TEST_F(ImportExport, TheFileDialogsBelongToTheEditor)
{
    const RedirectedImport<decltype(GetOpenFileNameW)> toOpen("GetOpenFileNameW", NoteOwner);
    const RedirectedImport<decltype(GetSaveFileNameW)> toSave("GetSaveFileNameW", NoteOwner);
    PhoneBookDialog editor(texts_, *book_.owned);
    editor.dialog = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    ImportCsv(editor, false);
    EXPECT_EQ(std::exchange(g_owner, nullptr), editor.dialog);
    ExportCsv(editor);
    EXPECT_EQ(g_owner, editor.dialog);
    DestroyWindow(editor.dialog);
}

// ---- import --------------------------------------------------------------------------------------------------------

TEST_F(CsvImportDialog, AsksForTheFileAndForItsColumnsAndImportsTheRows)
{
    const std::filesystem::path file = Import("Who,Fax,Firm\r\nAnn,555,Acme\r\nBob,556,\r\n");
    MapFirstColumns(3);
    EXPECT_EQ(Ui().Text(IDC_MAP_FILE_NAME), file.wstring());
    Ui().Press(IDOK);
    EXPECT_EQ(End().status, ImportExportStatus::Imported);
    EXPECT_EQ(result_.path, file.wstring());
    EXPECT_EQ(result_.title, L"book.csv");
    EXPECT_EQ(book_.Names(), (Names{L"Ann", L"Bob"}));
    EXPECT_STREQ(AsEntry(book_->GetAt(0))->Company(), L"Acme");
}

TEST_F(CsvImportDialog, Utf8AndUtf16WithTheirMarksGiveTheSameEntries)
{
    const std::string files[] = {
        kUtf8Mark + "Who,Fax,Firm\r\n\"J\xC3\xB6rg, \xE9\x88\xB4\xE6\x9C\xA8\",555,\xC5\x81\xC3\xB3\x64\xC5\xBA\r\n",
        kUtf16Mark + Utf16Bytes(L"Who,Fax,Firm\r\n\"J\u00F6rg, \u9234\u6728\",555,\u0141\u00F3d\u017A\r\n"),
    };
    for (const std::string& bytes : files) {
        book_->RemoveAll();
        Import(bytes);
        MapFirstColumns(3);
        Ui().Press(IDOK);
        EXPECT_EQ(End().status, ImportExportStatus::Imported);
        ASSERT_EQ(book_.Names(), Names{L"J\u00F6rg, \u9234\u6728"});
        EXPECT_STREQ(AsEntry(book_->GetAt(0))->FaxNumber(), L"555");
        EXPECT_STREQ(AsEntry(book_->GetAt(0))->Company(), L"\u0141\u00F3d\u017A");
    }
}

TEST_F(CsvImportDialog, TheMappingIsAskedForEvenWhenTheHeaderIsTheExportsOwn)
{
    Import("\"Name\",\"Fax Number\",\"Company Name\"\r\nAnn,555,Acme\r\n");
    Ui().WaitForControl(IDC_MAP);
    Ui().Press(IDCANCEL);
    EXPECT_EQ(End().status, ImportExportStatus::Cancelled);
    EXPECT_EQ(book_->GetCount(), 0u);
}

TEST_F(CsvImportDialog, CancellingTheFileDialogChangesNothing)
{
    StartImport();
    Ui().Dialog();
    Ui().Press(IDCANCEL);
    EXPECT_EQ(End().status, ImportExportStatus::Cancelled);
    EXPECT_TRUE(result_.path.empty());
}

TEST_F(CsvImportDialog, CountsDuplicatesAndInvalidFaxNumbers)
{
    Import("Who,Fax\r\nAnn,555\r\nANN,555\r\nBob,five\r\nCara\r\n");
    MapFirstColumns(2);
    Ui().Press(IDOK);
    EXPECT_EQ(End().status, ImportExportStatus::RowRefused);
    EXPECT_EQ(result_.duplicates, 1);
    EXPECT_EQ(result_.invalidFaxNumbers, 2);
}

TEST_F(CsvImportDialog, AFileWithOnlyAHeaderEndsAsIfCancelled)
{
    Import("Who,Fax\r\n");
    MapFirstColumns(2);
    Ui().Press(IDOK);
    EXPECT_EQ(End().status, ImportExportStatus::Cancelled);
}

TEST_F(CsvImportDialog, AFileThatIsNotUnderstoodIsAnInvalidFormat)
{
    const std::string files[] = {
        "Who,Fax\r\nJ\xF6rg,1\r\n", // ANSI with accents
        "\xFE\xFF\0W\0,\0F"s,       // big-endian
        "Who,Fax\r\nAnn,1\r\n\r\n", // an empty line
        "Who,Fax\r\nAnn,1,2\r\n",   // more fields than the header
        "a,b",                      // below four bytes
        "\xEF\xBB\xBF\0"s,          // a mark and no text
    };
    for (const std::string& bytes : files) {
        Import(bytes);
        EXPECT_EQ(End().status, ImportExportStatus::InvalidFormat) << bytes;
    }
}

TEST_F(CsvImportDialog, AFileWhoseHeaderDoesNotFitIntoMemoryIsAnInvalidFormat)
{
    const std::string file = std::string(300000, 'x') + ",Fax\r\nAnn,1\r\n";
    FailingCalls<void*(std::size_t), struct LongTexts> memory(nullptr, "malloc", nullptr, ERROR_NOT_ENOUGH_MEMORY,
                                                              [](std::size_t bytes) { return bytes > 500000; });
    memory.FailFrom(1);
    Import(file);
    EXPECT_EQ(End().status, ImportExportStatus::InvalidFormat);
    EXPECT_TRUE(memory.HasFailed());
}

TEST_F(CsvImportDialog, AnEmptyFileCannotBeOpened)
{
    Import("");
    EXPECT_EQ(End().status, ImportExportStatus::CannotOpen);
}

TEST_F(CsvImportDialog, AFileOfWhichAPageCannotBeReadCannotBeOpened)
{
    const FailingView view;
    const std::filesystem::path file = Import("Name,Fax\r\n" + std::string(10000, 'x') + ",1\r\n");
    EXPECT_EQ(End().status, ImportExportStatus::CannotOpen);
    EXPECT_TRUE(FailingView::WasMappedOnceAndUnmapped());
    Converse([this] { ReportImportExportResult(texts_, result_, nullptr); });
    EXPECT_EQ(Ui().AnswerBox(IDOK).text, L"Unable to open the file " + file.wstring() + L".");
    End();
}

TEST_F(CsvImportDialog, TheTwinOfTheMappingDialogIsShownFromRightToLeft)
{
    const std::filesystem::path file = folder_ / L"book.csv";
    WriteBytes(file, "Who,Fax\r\nAnn,555\r\n");
    StartImport(true);
    Ui().AnswerFileDialog(file);
    Ui().WaitForControl(IDC_MAP);
    EXPECT_TRUE(GetWindowLongPtrW(Ui().Dialog(), GWL_EXSTYLE) & WS_EX_LAYOUTRTL);
}

TEST_F(CsvImportDialog, TheUsualCursorIsShownInTheMappingDialogAndAfterwards)
{
    Import("Who,Fax\r\nAnn,555\r\n");
    MapFirstColumns(2);
    HCURSOR shown = nullptr;
    Ui().Do([&] { shown = GetCursor(); });
    Ui().Settle();
    EXPECT_NE(shown, LoadCursorW(nullptr, IDC_WAIT));
    Ui().Press(IDOK);
    End();
    EXPECT_NE(cursorAtTheEnd_, LoadCursorW(nullptr, IDC_WAIT));
}

TEST_F(CsvImportDialog, FortyColumnsOfAMailProgramAreMappedByTheirNames)
{
    Import(ReadBytes(SourceFolder() / L"tests/data/csv/mail_program_40_columns.csv"));
    Ui().WaitForControl(IDC_MAP);
    ASSERT_EQ(Ui().RowCount(IDC_MAP_SOURCE_FIELDS), 40);
    const std::wstring wanted[] = {L"Last Name", L"Business Fax", L"Company"};
    for (int field = 0; field < 3; ++field) {
        for (int row = 0; row < 40; ++row) {
            if (Ui().CellText(IDC_MAP_SOURCE_FIELDS, row, 0) == wanted[field])
                Ui().SelectRows(IDC_MAP_SOURCE_FIELDS, {row});
        }
        Ui().SelectRows(IDC_MAP_DESTINATIONS, {field});
        Ui().Press(IDC_MAP);
    }
    Ui().Press(IDOK);
    EXPECT_EQ(End().status, ImportExportStatus::RowRefused); // the last one has no fax number
    EXPECT_EQ(result_.invalidFaxNumbers, 1);
    EXPECT_EQ(book_.Names(), (Names{L"Example", L"Sample"}));
    EXPECT_STREQ(AsEntry(book_->GetAt(0))->Company(), L"Example, Ltd");
}

// ---- export --------------------------------------------------------------------------------------------------------

TEST_F(CsvExportDialog, WritesTheEntriesToTheChosenFile)
{
    book_.AddEntry(L"Ann", L"555", nullptr, 1);
    book_.AddGroup(L"Everyone", {1}, 2);
    StartExport();
    const std::filesystem::path file = folder_ / L"out.csv";
    Ui().AnswerFileDialog(file);
    EXPECT_EQ(End().status, ImportExportStatus::Exported);
    EXPECT_EQ(result_.path, file.wstring());
    EXPECT_EQ(ReadBytes(file), kUtf16Mark + Utf16Bytes(L"\"Name\",\"Fax Number\",\"Company Name\"\r\n"
                                                       L"\"Ann\",\"555\",\"\"\r\n"));
}

TEST_F(CsvExportDialog, AnExtensionInUpperCaseFails)
{
    StartExport();
    const std::filesystem::path file = folder_ / L"out.CSV";
    Ui().AnswerFileDialog(file);
    EXPECT_EQ(End().status, ImportExportStatus::ExportFailed);
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(CsvExportDialog, ANameWithoutExtensionGetsOne)
{
    StartExport();
    Ui().AnswerFileDialog(folder_ / L"out");
    EXPECT_EQ(End().status, ImportExportStatus::Exported);
    EXPECT_TRUE(std::filesystem::exists(folder_ / L"out.csv"));
}

// Where the dialog offers it: Wine's lets a read-only file through, while that of Windows may refuse it itself.
TEST_F(CsvExportDialog, AHiddenOrReadOnlyFileIsReplacedAndKeepsItsAttributes)
{
    book_.AddEntry(L"Ann", L"555", nullptr, 1);
    const std::filesystem::path file = folder_ / L"out.csv";
    WriteBytes(file, "old");
    for (const DWORD attribute : {FILE_ATTRIBUTE_HIDDEN, FILE_ATTRIBUTE_READONLY}) {
        const DWORD attributes = attribute | FILE_ATTRIBUTE_ARCHIVE;
        ASSERT_TRUE(SetFileAttributesW(file.c_str(), attributes));
        StartExport();
        Ui().AnswerFileDialog(file);
        Ui().AnswerBox(IDYES); // to be overwritten
        EXPECT_EQ(End().status, ImportExportStatus::Exported);
        EXPECT_TRUE(ReadBytes(file).starts_with(kUtf16Mark));
        EXPECT_EQ(GetFileAttributesW(file.c_str()) & attributes, attributes);
    }
    SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(CsvExportDialog, AFileThatAnotherProgramHoldsCannotBeOpenedAndKeepsItsAttributes)
{
    const std::filesystem::path file = folder_ / L"out.csv";
    WriteBytes(file, "old");
    ASSERT_TRUE(SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_HIDDEN));
    {
        const UniqueFile held(CreateFileW(file.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(held);
        StartExport();
        Ui().AnswerFileDialog(file);
        Ui().AnswerBox(IDYES);
        EXPECT_EQ(End().status, ImportExportStatus::CannotOpen);
    }
    EXPECT_EQ(ReadBytes(file), "old");
    EXPECT_TRUE(GetFileAttributesW(file.c_str()) & FILE_ATTRIBUTE_HIDDEN);
}

TEST_F(CsvExportDialog, ABookForWhichMemoryIsShortIsNotExported)
{
    FailingCalls<decltype(VirtualAlloc), struct PagesOfExport> pages(nullptr, "VirtualAlloc", nullptr);
    pages.FailFrom(1);
    StartExport();
    Ui().AnswerFileDialog(folder_ / L"book.csv");
    EXPECT_EQ(End().status, ImportExportStatus::ExportFailed);
}

TEST_F(CsvExportDialog, CancellingWritesNothing)
{
    StartExport();
    Ui().Dialog();
    Ui().Press(IDCANCEL);
    EXPECT_EQ(End().status, ImportExportStatus::Cancelled);
    EXPECT_TRUE(std::filesystem::is_empty(folder_.Path()));
}

// ---- report --------------------------------------------------------------------------------------------------------

TEST_F(ImportExportReport, TellsTheCountsInAWarning)
{
    ASSERT_NO_FATAL_FAILURE(UseTextLibrary());
    struct {
        int duplicates, invalid;
        std::wstring text;
    } const table[] = {
        {1, 0, Lines({{6245, 1}, {6232, 1}})},
        {0, 1, Lines({{6245, 1}, {6233, 1}})},
        {1, 1, Lines({{6103, 2}, {6232, 1}, {6233, 1}})},
        {1, 4, Lines({{6103, 5}, {6232, 1}, {6105, 4}})},
        {4, 1, Lines({{6103, 5}, {6233, 1}, {6104, 4}})},
        {0, 4, Lines({{6103, 4}, {6105, 4}})},
        {4, 0, Lines({{6103, 4}, {6104, 4}})},
        {4, 3, Lines({{6103, 7}, {6105, 3}, {6104, 4}})},
    };
    for (const auto& row : table) {
        StartReport(ImportExportStatus::RowRefused, row.duplicates, row.invalid);
        const host::BoxContents box = Ui().AnswerBox(IDOK);
        EXPECT_EQ(box.text, row.text) << row.duplicates << ", " << row.invalid;
        EXPECT_EQ(box.title, LocalizedText(texts_, {5327, L"?"}));
        EXPECT_EQ(box.icon, static_cast<UINT>(MB_ICONWARNING));
        End(); // no further box
    }
}

TEST_F(ImportExportReport, SaysNothingForTheCountsOfTheGap)
{
    ASSERT_NO_FATAL_FAILURE(UseTextLibrary());
    for (const auto& [duplicates, invalid] : {std::pair(0, 0), {2, 2}, {2, 9}, {3, 2}, {9, 2}}) {
        StartReport(ImportExportStatus::RowRefused, duplicates, invalid);
        End();
    }
}

TEST_F(ImportExportReport, WithoutALibraryThereAreNoCounts)
{
    StartReport(ImportExportStatus::RowRefused, 4, 4);
    End();
}

TEST_F(ImportExportReport, TellsWhatWentWrongAsAWholeInAnError)
{
    struct {
        ImportExportStatus status;
        const wchar_t* text;
    } const table[] = {
        {ImportExportStatus::InvalidFormat, L"-Invalid file format. Cannot import data from C:\\My 100% files\\a.csv."},
        {ImportExportStatus::CannotOpen, L"Unable to open the file C:\\My 100% files\\a.csv."},
        {ImportExportStatus::ExportFailed, L"-Failed to export phone book entries"},
    };
    for (const auto& row : table) {
        StartReport(row.status, 0, 0);
        const host::BoxContents box = Ui().AnswerBox(IDOK);
        EXPECT_EQ(box.text, row.text);
        EXPECT_EQ(box.title, L"QX MFP Send Fax Error");
        EXPECT_EQ(box.icon, static_cast<UINT>(MB_ICONERROR));
        End();
    }
}

TEST_F(ImportExportReport, CountsComeFirstAndReplaceTheRestWhenBothAreThreeOrMore)
{
    ASSERT_NO_FATAL_FAILURE(UseTextLibrary());
    StartReport(ImportExportStatus::ExportFailed, 1, 0);
    EXPECT_EQ(Ui().AnswerBox(IDOK).icon, static_cast<UINT>(MB_ICONWARNING));
    EXPECT_EQ(Ui().AnswerBox(IDOK).icon, static_cast<UINT>(MB_ICONERROR));
    End();
    StartReport(ImportExportStatus::ExportFailed, 3, 3);
    EXPECT_EQ(Ui().AnswerBox(IDOK).icon, static_cast<UINT>(MB_ICONWARNING));
    End();
}

TEST_F(ImportExportReport, ASuccessIsTheCallersToTell)
{
    for (const ImportExportStatus status :
         {ImportExportStatus::Cancelled, ImportExportStatus::Exported, ImportExportStatus::Imported,
          ImportExportStatus::BookFull, ImportExportStatus::RowRefused}) {
        StartReport(status, 0, 0);
        End();
    }
}

} // namespace
} // namespace qx
