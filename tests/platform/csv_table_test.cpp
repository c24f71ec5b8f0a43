#include "phonebook/csv/csv_table.h"

#include "support/built.h"
#include "support/failing_calls.h"
#include "support/failing_view.h"
#include "support/redirected_import.h"
#include "support/temporary_folder.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace qx {
namespace {

using namespace std::string_literals;
using namespace test;
using Row = std::vector<std::wstring>;
using Rows = std::vector<Row>;

Rows TextsOf(const CsvFields& fields)
{
    Rows rows(fields.Rows(), Row(fields.Columns()));
    for (std::size_t row = 0; row < rows.size(); ++row) {
        for (std::size_t column = 0; column < fields.Columns(); ++column)
            ReadField(fields.Field(row, column), rows[row][column]);
    }
    return rows;
}

class CsvTableTest : public testing::Test {
protected:
    std::filesystem::path File(const std::string& bytes)
    {
        WriteBytes(file_, bytes);
        return file_;
    }

    CsvStatus Read(const std::string& bytes)
    {
        CsvTable table;
        EXPECT_TRUE(table.Open(File(bytes)));
        const CsvStatus status = table.Read();
        rows_ = TextsOf(table.Fields());
        return status;
    }

    TemporaryFolder folder_;
    std::filesystem::path file_ = folder_ / L"book.csv";
    Rows rows_;
};
using CsvTableReading = CsvTableTest;
using CsvTableWriting = CsvTableTest;

// ---- reading -------------------------------------------------------------------------------------------------------

TEST_F(CsvTableReading, Utf8AndUtf16WithTheirMarksReadAlike)
{
    const std::wstring text = L"Name,Fax\r\nJörg Müller,1\r\nדנה,2\r\n山田,3\r\n";
    const Rows expected{{L"Name", L"Fax"}, {L"Jörg Müller", L"1"}, {L"דנה", L"2"}, {L"山田", L"3"}};
    EXPECT_EQ(Read(kUtf16Mark + Utf16Bytes(text)), CsvStatus::Good);
    EXPECT_EQ(rows_, expected);
    EXPECT_EQ(Read(kUtf8Mark + "Name,Fax\r\nJ\xC3\xB6rg M\xC3\xBCller,1\r\n\xD7\x93\xD7\xA0\xD7\x94,2\r\n"
                               "\xE5\xB1\xB1\xE7\x94\xB0,3\r\n"),
              CsvStatus::Good);
    EXPECT_EQ(rows_, expected);
}

TEST_F(CsvTableReading, PlainAnsiIsRead)
{
    EXPECT_EQ(Read("Name,Fax\r\n\"Smith, John\",\"(555) 01\"\r\n"), CsvStatus::Good);
    EXPECT_EQ(rows_, (Rows{{L"Name", L"Fax"}, {L"Smith, John", L"(555) 01"}}));
}

TEST_F(CsvTableReading, AnsiWithAByteAbove7EIsRefused)
{
    EXPECT_EQ(Read("Name,Fax\r\nJ\xF6rg,1\r\n"), CsvStatus::UnusableEncoding);
    EXPECT_EQ(Read("Name,Fax\r\nAnn\x7F,1\r\n"), CsvStatus::UnusableEncoding);
    EXPECT_EQ(Read("Name\tFax\r\nAnn\t1\r\n"), CsvStatus::UnusableEncoding);
    EXPECT_TRUE(rows_.empty());
}

TEST_F(CsvTableReading, Utf8WithoutItsMarkIsRefusedUnlessItIsPlain)
{
    EXPECT_EQ(Read("Name,Fax\r\nJ\xC3\xB6rg,1\r\n"), CsvStatus::UnusableEncoding);
}

TEST_F(CsvTableReading, BigEndianUtf16IsRefused)
{
    EXPECT_EQ(Read("\xFE\xFF\0a\0,\0b"s), CsvStatus::UnusableEncoding);
}

TEST_F(CsvTableReading, Utf16WithoutAMarkLosesItsFirstCharacter)
{
    EXPECT_EQ(Read(Utf16Bytes(L"Name,Fax\r\nAnn,555\r\n")), CsvStatus::Good);
    EXPECT_EQ(rows_, (Rows{{L"ame", L"Fax"}, {L"Ann", L"555"}}));
}

TEST_F(CsvTableReading, AnOddByteAtTheEndOfUtf16IsPassedOver)
{
    EXPECT_EQ(Read(kUtf16Mark + Utf16Bytes(L"a,b") + "c"), CsvStatus::Good);
    EXPECT_EQ(rows_, (Rows{{L"a", L"b"}}));
}

TEST_F(CsvTableReading, TheTextEndsAtItsFirstZeroInEveryEncoding)
{
    EXPECT_EQ(Read(kUtf16Mark + Utf16Bytes(L"a,b\0c\r\n"s)), CsvStatus::Good);
    EXPECT_EQ(rows_, (Rows{{L"a", L"b"}}));
    EXPECT_EQ(Read(kUtf8Mark + "a,b\0c\r\n"s), CsvStatus::Good);
    EXPECT_EQ(rows_, (Rows{{L"a", L"b"}}));
}

TEST_F(CsvTableReading, InvalidUtf8IsReadWithReplacementCharacters)
{
    EXPECT_EQ(Read(kUtf8Mark + "a,b\r\n\xFF\xFE,1\r\n"), CsvStatus::Good);
    ASSERT_EQ(rows_.size(), 2u);
    EXPECT_EQ(rows_[1][0].find(L'\xFFFD'), 0u);
}

TEST_F(CsvTableReading, FilesBelowFourBytesHaveNoRows)
{
    for (const std::string& bytes : {"a"s, "a,b"s, kUtf8Mark, kUtf16Mark, kUtf16Mark + "a"}) {
        Read(bytes);
        EXPECT_TRUE(rows_.empty()) << bytes;
    }
}

TEST_F(CsvTableReading, AMarkWithNothingBehindItHasNoRows)
{
    EXPECT_EQ(Read(kUtf8Mark + "\0"s), CsvStatus::Good);
    EXPECT_TRUE(rows_.empty());
    EXPECT_EQ(Read(kUtf16Mark + "\0\0"s), CsvStatus::Good);
    EXPECT_TRUE(rows_.empty());
}

TEST_F(CsvTableReading, AnEmptyFileCountsAsNotOpened)
{
    CsvTable table;
    EXPECT_FALSE(table.Open(File("")));
}

BOOL WINAPI TwoGigabytes(HANDLE, LARGE_INTEGER* size)
{
    size->QuadPart = LONGLONG{1} << 31;
    return TRUE;
}

TEST_F(CsvTableReading, AFileOfTwoGigabytesIsOutOfMemory)
{
    CsvTable table;
    const RedirectedImport<decltype(GetFileSizeEx)> size("GetFileSizeEx", TwoGigabytes);
    ASSERT_TRUE(table.Open(File("Name,Fax\r\n")));
    EXPECT_EQ(table.Read(), CsvStatus::OutOfMemory);
}

TEST_F(CsvTableReading, AFileThatIsMissingOrBeingWrittenIsNotOpened)
{
    EXPECT_FALSE(CsvTable().Open(folder_ / L"missing.csv"));
    EXPECT_FALSE(CsvTable().Open(folder_.Path()));
    const UniqueFile writer(CreateFileW(File("a,b\r\n").c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(writer);
    EXPECT_FALSE(CsvTable().Open(file_));
}

TEST_F(CsvTableReading, AMillionCharactersInOneFieldAreOneField)
{
    const std::wstring field(1000000, L'x');
    EXPECT_EQ(Read(kUtf16Mark + Utf16Bytes(L"Name,Fax\r\n\"" + field + L"\",1\r\n")), CsvStatus::Good);
    ASSERT_EQ(rows_.size(), 2u);
    EXPECT_EQ(rows_[1], (Row{field, L"1"}));
}

struct Sample {
    const wchar_t* file;
    std::size_t rows, columns;
    Row second; // the first row below the header, as far as given
};

// Files as spreadsheets, mail programs and other address books write them.
TEST_F(CsvTableReading, SamplesOfOtherProgramsAreReadWhole)
{
    const Sample samples[] = {
        {L"spreadsheet_utf8.csv", 4, 3, {L"Zoë Brontë", L"555-0101", L"Café \"Zum Bär\", Köln"}},
        {L"spreadsheet_utf16.csv", 4, 3, {L"Zoë Brontë", L"555-0101", L"Café \"Zum Bär\", Köln"}},
        {L"plain_ascii_unquoted.csv", 5, 2, {L"Ada Example", L"5550101"}},
        {L"plain_ascii_quoted.csv", 4, 3, {L"Example, Ada", L"(555)0101", L"Ada \"The First\" Ltd"}},
        {L"mail_program_40_columns.csv", 4, 40, {L"Mr.", L"Ada", L"", L"Example"}},
        {L"multiline_cells.csv", 3, 3, {L"Ada Example", L"5550101", L"Example Ltd\r\n1 Sample Street"}},
        {L"ragged_rows.csv", 4, 4, {L"Ada Example", L"5550101", L"", L""}},
    };
    for (const Sample& sample : samples) {
        CsvTable table;
        ASSERT_TRUE(table.Open(SourceFolder() / L"tests" / L"data" / L"csv" / sample.file));
        ASSERT_EQ(table.Read(), CsvStatus::Good) << std::filesystem::path(sample.file);
        EXPECT_EQ(table.Fields().Rows(), sample.rows) << std::filesystem::path(sample.file);
        EXPECT_EQ(table.Fields().Columns(), sample.columns) << std::filesystem::path(sample.file);
        Row second = TextsOf(table.Fields())[1];
        second.resize(sample.second.size());
        EXPECT_EQ(second, sample.second) << std::filesystem::path(sample.file);
    }
}

// ---- writing -------------------------------------------------------------------------------------------------------

TEST_F(CsvTableWriting, WritesTheMarkAndEveryCellInQuotes)
{
    {
        CsvTableWriter writer;
        ASSERT_TRUE(writer.Open(file_));
        ASSERT_TRUE(writer.SetSize(2, 2, 51));
        EXPECT_TRUE(writer.SetCell(0, 0, L"Name"));
        EXPECT_TRUE(writer.SetCell(0, 1, L"Fax"));
        EXPECT_TRUE(writer.SetCell(1, 0, L"Jörg \"J\"\r\nMüller, 山"));
        EXPECT_TRUE(writer.SetCell(1, 1, L""));
        EXPECT_TRUE(writer.Write());
    }
    EXPECT_EQ(ReadBytes(file_),
              kUtf16Mark + Utf16Bytes(L"\"Name\",\"Fax\"\r\n\"Jörg \"\"J\"\"\r\nMüller, 山\",\"\"\r\n"));
}

TEST_F(CsvTableWriting, CellsThatAreTooLongOrOutsideAreRefused)
{
    CsvTableWriter writer;
    ASSERT_TRUE(writer.Open(file_));
    ASSERT_TRUE(writer.SetSize(1, 2, 51));
    EXPECT_TRUE(writer.SetCell(0, 0, std::wstring(50, L'"')));
    EXPECT_FALSE(writer.SetCell(0, 1, std::wstring(51, L'x')));
    EXPECT_FALSE(writer.SetCell(0, 2, L"x"));
    EXPECT_FALSE(writer.SetCell(1, 0, L"x"));
    EXPECT_FALSE(CsvTableWriter().SetCell(0, 0, L"x"));
}

TEST_F(CsvTableWriting, ATableOfOneColumnIsRefused)
{
    EXPECT_FALSE(CsvTableWriter().SetSize(1, 1, 51));
}

TEST_F(CsvTableWriting, ATextForWhichTheStorageHasNoRoomIsRefused)
{
    {
        CsvTableWriter writer;
        ASSERT_TRUE(writer.Open(file_));
        ASSERT_TRUE(writer.SetSize(1, 2, 501));
        EXPECT_FALSE(writer.SetCell(0, 0, std::wstring(500, L'x')));
        EXPECT_TRUE(writer.SetCell(0, 1, L"Fax"));
        EXPECT_TRUE(writer.Write());
    }
    EXPECT_EQ(ReadBytes(file_), kUtf16Mark + Utf16Bytes(L"\"Fax\"\r\n"));
}

TEST_F(CsvTableWriting, AnEmptyCellWritesNothingNotEvenItsComma)
{
    {
        CsvTableWriter writer;
        ASSERT_TRUE(writer.Open(file_));
        ASSERT_TRUE(writer.SetSize(2, 3, 51));
        writer.SetCell(0, 2, L"c");
        writer.SetCell(1, 0, L"a");
        EXPECT_TRUE(writer.Write());
    }
    EXPECT_EQ(ReadBytes(file_), kUtf16Mark + Utf16Bytes(L"\"c\"\r\n\"a\",\r\n"));
}

TEST_F(CsvTableWriting, ALongerFileIsReplacedWhole)
{
    File(std::string(300000, 'x'));
    {
        CsvTableWriter writer;
        ASSERT_TRUE(writer.Open(file_));
        ASSERT_TRUE(writer.SetSize(1, 2, 51));
        EXPECT_TRUE(writer.Write());
    }
    EXPECT_EQ(ReadBytes(file_), kUtf16Mark + Utf16Bytes(L"\r\n"));
}

TEST_F(CsvTableWriting, RowsFullOfQuotesFitWhateverTheirNumber)
{
    const std::wstring text(50, L'"');
    for (const std::size_t rows : {1u, 52u, 53u, 54u, 105u, 106u, 2000u}) {
        {
            CsvTableWriter writer;
            ASSERT_TRUE(writer.Open(file_));
            ASSERT_TRUE(writer.SetSize(rows, 3, 51));
            for (std::size_t cell = 0; cell < 3 * rows; ++cell)
                ASSERT_TRUE(writer.SetCell(cell / 3, cell % 3, text));
            ASSERT_TRUE(writer.Write());
        }
        EXPECT_EQ(std::filesystem::file_size(file_), 2 + rows * 2 * (3 * 102 + 2 + 2));
        CsvTable table;
        ASSERT_TRUE(table.Open(file_));
        ASSERT_EQ(table.Read(), CsvStatus::Good);
        EXPECT_EQ(TextsOf(table.Fields()), Rows(rows, Row(3, text)));
    }
}

TEST_F(CsvTableWriting, EveryLengthAroundThatOfAWholeMappingIsExact)
{
    SYSTEM_INFO system;
    GetSystemInfo(&system);
    // A row of 44 characters and an empty text takes 104 bytes of the mapping. With six characters more in the first
    // one these rows fill it to the last byte.
    const std::size_t rows = system.dwAllocationGranularity / 104;
    for (std::size_t shorter = 0; shorter < 40; ++shorter) {
        std::size_t units = 0;
        {
            CsvTableWriter writer;
            ASSERT_TRUE(writer.Open(file_));
            ASSERT_TRUE(writer.SetSize(rows, 2, 51));
            for (std::size_t row = 0; row < rows; ++row) {
                const std::wstring text(row == 0 ? 50 - shorter : 44, L'x');
                ASSERT_TRUE(writer.SetCell(row, 0, text));
                ASSERT_TRUE(writer.SetCell(row, 1, L""));
                units += text.size() + 2 + 1 + 2 + 2;
            }
            ASSERT_TRUE(writer.Write());
        }
        ASSERT_EQ(std::filesystem::file_size(file_), 2 + 2 * units) << shorter;
    }
}

TEST_F(CsvTableWriting, AFileThatCannotBeCreatedIsNotOpened)
{
    EXPECT_FALSE(CsvTableWriter().Open(folder_ / L"no folder\\book.csv"));
    EXPECT_FALSE(CsvTableWriter().Open(folder_.Path()));
}

// ---- pages that fail -----------------------------------------------------------------------------------------------

TEST_F(CsvTableReading, AFileOfWhichAPageCannotBeReadIsUnreadable)
{
    CsvTable table;
    ASSERT_TRUE(table.Open(File("Name,Fax\r\n" + std::string(10000, 'x') + ",1\r\n")));
    const FailingView view;
    EXPECT_EQ(table.Read(), CsvStatus::Unreadable);
    EXPECT_EQ(table.Fields().Rows(), 0u);
    EXPECT_TRUE(FailingView::WasMappedOnceAndUnmapped());
}

TEST_F(CsvTableWriting, AFileOfWhichAPageCannotBeWrittenIsLeftEmpty)
{
    {
        CsvTableWriter writer;
        ASSERT_TRUE(writer.Open(file_));
        ASSERT_TRUE(writer.SetSize(200, 2, 51));
        for (std::size_t row = 0; row < 200; ++row)
            writer.SetCell(row, 0, std::wstring(40, L'x'));
        const FailingView view;
        EXPECT_FALSE(writer.Write());
        EXPECT_TRUE(FailingView::WasMappedOnceAndUnmapped());
    }
    EXPECT_EQ(std::filesystem::file_size(file_), 0u);
}

BOOL WINAPI DiskIsFull(LPCVOID, SIZE_T)
{
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

TEST_F(CsvTableWriting, AFileThatDoesNotReachTheDiskIsLeftEmpty)
{
    {
        CsvTableWriter writer;
        ASSERT_TRUE(writer.Open(file_));
        ASSERT_TRUE(writer.SetSize(2, 2, 51));
        const RedirectedImport<decltype(FlushViewOfFile)> flush("FlushViewOfFile", DiskIsFull);
        EXPECT_FALSE(writer.Write());
    }
    EXPECT_EQ(std::filesystem::file_size(file_), 0u);
}

// ---- calls that fail -----------------------------------------------------------------------------------------------

using FailingPages = FailingCalls<decltype(VirtualAlloc), struct PagesOfTables>;

TEST_F(CsvTableReading, AFileThatDoesNotFitIntoMemoryIsOutOfMemory)
{
    FailingPages pages(nullptr, "VirtualAlloc", nullptr);
    for (const long call : {1, 2}) { // for the file, for the text decoded from it
        pages.FailOnly(call);
        EXPECT_EQ(Read("Name,Fax\r\nAnn,1\r\n"), CsvStatus::OutOfMemory) << call;
        EXPECT_TRUE(pages.HasFailed()) << call;
        EXPECT_TRUE(rows_.empty()) << call;
    }
}

TEST_F(CsvTableReading, AFileThatCannotBeMappedIsOutOfMemory)
{
    FailingCalls<decltype(MapViewOfFile), struct ViewsOfTables> views(nullptr, "MapViewOfFile", nullptr);
    views.FailFrom(1);
    EXPECT_EQ(Read("Name,Fax\r\nAnn,1\r\n"), CsvStatus::OutOfMemory);
}

TEST_F(CsvTableReading, AFileWhoseSizeNobodyTellsIsNotOpened)
{
    FailingCalls<decltype(GetFileSizeEx), struct SizesOfTables> sizes(nullptr, "GetFileSizeEx", FALSE);
    sizes.FailFrom(1);
    EXPECT_FALSE(CsvTable().Open(File("Name,Fax\r\n")));
}

TEST_F(CsvTableWriting, ATableThatDoesNotFitIntoMemoryHasNoSize)
{
    FailingPages pages(nullptr, "VirtualAlloc", nullptr);
    pages.FailFrom(1);
    EXPECT_FALSE(CsvTableWriter().SetSize(1, 2, 51));
}

// Whatever fails on the way: half a file, or zeros, would be taken for a phone book.
TEST_F(CsvTableWriting, AFileThatCannotBeWrittenToItsEndIsLeftEmpty)
{
    const auto lengthLeftBy = [&] {
        CsvTableWriter writer;
        EXPECT_TRUE(writer.Open(file_) && writer.SetSize(1, 2, 51) && writer.SetCell(0, 0, L"Name"));
        return [&, writer = std::move(writer)]() mutable {
            EXPECT_FALSE(writer.Write());
            writer = {};
            return std::filesystem::file_size(file_);
        };
    };
    {
        auto length = lengthLeftBy();
        FailingPages pages(nullptr, "VirtualAlloc", nullptr);
        pages.FailFrom(1);
        EXPECT_EQ(length(), 0u);
    }
    {
        auto length = lengthLeftBy();
        FailingCalls<decltype(CreateFileMappingW), struct Mappings> mappings(nullptr, "CreateFileMappingW", nullptr);
        mappings.FailFrom(1);
        EXPECT_EQ(length(), 0u);
    }
    {
        auto length = lengthLeftBy();
        FailingCalls<decltype(SetEndOfFile), struct Ends> ends(nullptr, "SetEndOfFile", FALSE);
        ends.FailFrom(1);
        EXPECT_EQ(length(), 0u);
    }
    {
        auto length = lengthLeftBy();
        FailingCalls<decltype(MapViewOfFile), struct Views> views(nullptr, "MapViewOfFile", nullptr);
        views.FailFrom(1);
        EXPECT_EQ(length(), 0u);
    }
    {
        auto length = lengthLeftBy();
        FailingCalls<decltype(SetEndOfFile), struct Ends> ends(nullptr, "SetEndOfFile", FALSE);
        ends.FailOnly(1);
        EXPECT_EQ(length(), 0u);
    }
}

TEST_F(CsvTableWriting, AFileThatAScannerMapsForAMomentGetsItsLength)
{
    CsvTableWriter writer;
    ASSERT_TRUE(writer.Open(file_) && writer.SetSize(1, 2, 51) && writer.SetCell(0, 0, L"Name"));
    FailingCalls<decltype(SetEndOfFile), struct Ends> ends(nullptr, "SetEndOfFile", FALSE, ERROR_USER_MAPPED_FILE);
    ends.FailOnly(1);
    EXPECT_TRUE(writer.Write());
    EXPECT_TRUE(ends.HasFailed());
    writer = {};
    EXPECT_EQ(ReadBytes(file_), kUtf16Mark + Utf16Bytes(L"\"Name\",\r\n"));
}

TEST_F(CsvTableWriting, AFileThatAScannerMapsForAMomentIsEmptied)
{
    CsvTableWriter writer;
    ASSERT_TRUE(writer.Open(file_) && writer.SetSize(1, 2, 51) && writer.SetCell(0, 0, L"Name"));
    FailingCalls<decltype(SetEndOfFile), struct Ends> ends(nullptr, "SetEndOfFile", FALSE, ERROR_DISK_FULL);
    ends.FailFrom(1);
    FailingCalls<decltype(SetFileInformationByHandle), struct Lengths> lengths(nullptr, "SetFileInformationByHandle",
                                                                               FALSE, ERROR_USER_MAPPED_FILE);
    lengths.FailOnly(1);
    EXPECT_FALSE(writer.Write());
    writer = {};
    EXPECT_EQ(std::filesystem::file_size(file_), 0u);
}

} // namespace
} // namespace qx
