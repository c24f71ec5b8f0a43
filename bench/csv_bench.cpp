// CSV files: parsing beside another reader and beside copying the bytes, whole imports beside what every import has to
// do, an export beside writing its bytes.
#include "phonebook/csv/csv_import.h"
#include "support/measure.h"
#include "support/phone_book.h"
#include "support/temporary_folder.h"

#define CSV_IO_NO_THREAD // its own thread only helps with slow disks, and there is none here
#include <csv.h>         // libfccp-dev, "Fast C++ CSV Parser"

#include <cstring>
#include <memory>

namespace {

using namespace qx;
using namespace qx::bench;
using namespace qx::test;

using OtherReader = io::CSVReader<3, io::trim_chars<>, io::double_quote_escape<',', '"'>>;

constexpr ImportColumns kInOrder{.name = 0, .faxNumber = 1, .company = 2};

volatile std::size_t g_sink; // keeps results from being optimised away

std::string Rows(int first, int count, bool quoted)
{
    const std::string quote = quoted ? "\"" : "";
    std::string text;
    for (int i = first; i < first + count; ++i) {
        text += quote + "Person Example " + std::to_string(i) + quote + "," + quote + "555-01" + std::to_string(i) +
                quote + "," + quote + "Sample Company " + std::to_string(i % 97) + quote + "\r\n";
    }
    return text;
}

std::string Table(int first, int count, bool quoted)
{
    return "Name,Fax Number,Company\r\n" + Rows(first, count, quoted);
}

std::wstring Decoded(const std::string& bytes)
{
    return {bytes.begin(), bytes.end()}; // plain ASCII
}

// ---- parsing -------------------------------------------------------------------------------------------------------

void ParseWithOtherReader(const std::string& bytes)
{
    OtherReader reader("table", bytes.data(), bytes.data() + bytes.size());
    reader.next_line();
    std::size_t units = 0;
    char *name = nullptr, *faxNumber = nullptr, *company = nullptr;
    while (reader.read_row(name, faxNumber, company))
        units +=
            static_cast<std::size_t>(*name) + static_cast<std::size_t>(*faxNumber) + static_cast<std::size_t>(*company);
    g_sink = units;
}

// Into fresh memory, as every file that is read goes.
void CopyAndScan(const std::wstring& text)
{
    const auto copy = std::make_unique_for_overwrite<wchar_t[]>(text.size());
    std::memcpy(copy.get(), text.data(), text.size() * sizeof(wchar_t));
    std::size_t found = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const wchar_t unit = copy[i];
        if (unit == L',' || unit == L'"' || unit == L'\r')
            ++found;
    }
    g_sink = found;
}

void ParseText(const std::wstring& text)
{
    CsvFields fields;
    fields.Parse(text);
    g_sink = fields.Rows();
}

void CompareParsing(Benchmark& benchmark, int count, bool quoted)
{
    const std::string bytes = Table(0, count, quoted);
    const std::wstring text = Decoded(bytes);
    const Work parse{"parse " + std::to_string(count) + (quoted ? " quoted rows" : " rows"), [&] { ParseText(text); }};
    benchmark.Compare(parse, {"libfccp on the same text", [&] { ParseWithOtherReader(bytes); }}, 1.0);
    benchmark.Compare(parse, {"copy and scan of the same bytes", [&] { CopyAndScan(text); }}, 2.0);
}

// ---- import --------------------------------------------------------------------------------------------------------

void ReadTable(const std::filesystem::path& file, CsvTable& table)
{
    table.Open(file);
    table.Read();
}

// Decodes, parses, and makes one sort key for each name.
void DecodeParseAndMakeKeys(const std::filesystem::path& file)
{
    CsvTable table;
    ReadTable(file, table);
    std::wstring name;
    BYTE key[512];
    std::size_t bytes = 0;
    for (std::size_t row = 1; row < table.Fields().Rows(); ++row) {
        ReadField(table.Fields().Field(row, 0), name);
        bytes += static_cast<std::size_t>(
            LCMapStringW(LOCALE_USER_DEFAULT, LCMAP_SORTKEY | NORM_IGNORECASE | SORT_STRINGSORT, name.data(),
                         static_cast<int>(name.size()), reinterpret_cast<wchar_t*>(key), sizeof key));
    }
    g_sink = bytes;
}

void Import(const std::filesystem::path& file, PhoneBook& book)
{
    CsvTable table;
    ReadTable(file, table);
    g_sink = static_cast<std::size_t>(ImportRows(table.Fields(), kInOrder, book).duplicates);
}

std::unique_ptr<TestBook> BookOf(const std::string& rows)
{
    auto book = std::make_unique<TestBook>();
    const std::wstring text = Decoded("Name,Fax Number,Company\r\n" + rows);
    CsvFields fields;
    fields.Parse(text);
    ImportRows(fields, kInOrder, **book);
    return book;
}

class Imports {
public:
    Imports(Benchmark& benchmark) : benchmark_(benchmark) {}

    void Compare(const std::string& name, const std::string& held, const std::string& imported)
    {
        WriteBytes(file_, kUtf16Mark + Utf16Bytes(Decoded("Name,Fax Number,Company\r\n" + imported)));
        benchmark_.Compare(ImportInto(name, held, file_),
                           {"decode, parse, a key for each name", [this] { DecodeParseAndMakeKeys(file_); }}, 2.0);
    }

    void CompareGrowth()
    {
        const std::filesystem::path quarter = folder_ / L"quarter.csv";
        WriteBytes(file_, Table(0, 10000, false));
        WriteBytes(quarter, Table(0, 2500, false));
        benchmark_.Compare(ImportInto("import 10000 rows", "", file_), ImportInto("import 2500 rows", "", quarter),
                           4.6);
    }

private:
    // Each import finds a book of its own.
    Work ImportInto(const std::string& name, const std::string& held, const std::filesystem::path& file)
    {
        const auto book = std::make_shared<std::unique_ptr<TestBook>>();
        return {name, [book, file] { Import(file, ***book); }, [book, held] { *book = BookOf(held); }};
    }

    Benchmark& benchmark_;
    TemporaryFolder folder_;
    std::filesystem::path file_ = folder_ / L"import.csv";
};

// ---- export --------------------------------------------------------------------------------------------------------

void WriteThroughMapping(const std::filesystem::path& file, const std::string& bytes)
{
    const UniqueFile out(
        CreateFileW(file.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    const UniqueKernelHandle mapping(
        CreateFileMappingW(out.Get(), nullptr, PAGE_READWRITE, 0, static_cast<DWORD>(bytes.size()), nullptr));
    void* const view = MapViewOfFile(mapping.Get(), FILE_MAP_WRITE, 0, 0, bytes.size());
    std::memcpy(view, bytes.data(), bytes.size());
    FlushViewOfFile(view, 0);
    UnmapViewOfFile(view);
}

void Export(const std::filesystem::path& file, const PhoneBook& book)
{
    CsvTableWriter writer;
    if (writer.Open(file) && ExportRows(book, writer))
        writer.Write();
}

void CompareExport(Benchmark& benchmark)
{
    const TemporaryFolder folder;
    const std::filesystem::path file = folder / L"export.csv";
    const std::unique_ptr<TestBook> book = BookOf(Rows(0, 10000, false));
    Export(file, **book);
    const std::string bytes = ReadBytes(file);
    benchmark.Compare({"export 10000 entries", [&] { Export(file, **book); }},
                      {"write the same bytes", [&] { WriteThroughMapping(file, bytes); }}, 1.5);
}

} // namespace

int main(int count, char** arguments)
{
    Benchmark benchmark(31);
    for (const int rows : {10000, 200000}) {
        CompareParsing(benchmark, rows, false);
        CompareParsing(benchmark, rows, true);
    }
    Imports imports(benchmark);
    imports.Compare("import 10000 rows into an empty book", "", Rows(0, 10000, false));
    imports.Compare("import 5000 new rows into a book of 5000", Rows(5000, 5000, false), Rows(0, 5000, false));
    imports.Compare("import 5000 rows that the book of 5000 holds", Rows(0, 5000, false), Rows(0, 5000, false));
    imports.CompareGrowth();
    CompareExport(benchmark);
    return benchmark.Report(count, arguments);
}
