#include "phonebook/csv/import_rules.h"

#include "base/limits.h"

namespace qx {

namespace {

bool IsLineBreak(wchar_t unit) noexcept
{
    return unit == L'\r' || unit == L'\n';
}

// The text of a field; false for an empty cell or a column that is not mapped.
bool ReadColumn(const CsvFields& fields, std::size_t row, int column, std::wstring& text)
{
    const std::wstring_view field =
        column == kNotMapped ? std::wstring_view() : fields.Field(row, static_cast<std::size_t>(column));
    ReadField(field, text);
    return !field.empty();
}

void CutToEntry(std::wstring& text)
{
    text.resize(UpToLineBreak(std::wstring_view(text).substr(0, kNameLimit)).size());
}

// Shorter fax numbers and companies keep their line breaks: a company may have several lines, and a fax number with
// one is invalid. Names are always cut.
void CutToEntryIfTooLong(std::wstring& text)
{
    if (text.size() > kNameLimit)
        CutToEntry(text);
}

constexpr unsigned kOneRowRefused = 6245;
constexpr unsigned kRowsRefused = 6103;
constexpr unsigned kOneDuplicate = 6232;
constexpr unsigned kDuplicates = 6104;
constexpr unsigned kOneInvalidFaxNumber = 6233;
constexpr unsigned kInvalidFaxNumbers = 6105;

} // namespace

std::wstring_view UpToLineBreak(std::wstring_view text) noexcept
{
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (IsLineBreak(text[i]) && !IsLineBreak(text[i - 1]))
            return text.substr(0, i);
    }
    return text;
}

void FindMappedSource(std::span<const FieldMapping> mapping, int destination, int& source) noexcept
{
    for (const FieldMapping& pair : mapping) {
        if (pair.destination == destination) {
            source = pair.source;
            return;
        }
        source = kNotMapped;
    }
}

ImportColumns ColumnsOf(std::span<const FieldMapping> mapping) noexcept
{
    ImportColumns columns;
    FindMappedSource(mapping, kMappedName, columns.name);
    FindMappedSource(mapping, kMappedFaxNumber, columns.faxNumber);
    FindMappedSource(mapping, kMappedCompany, columns.company);
    return columns;
}

std::vector<std::optional<std::wstring>> HeaderTexts(const CsvFields& fields)
{
    std::vector<std::optional<std::wstring>> texts(fields.Columns());
    for (std::size_t column = 0; column < texts.size(); ++column) {
        const std::wstring_view field = fields.Field(0, column);
        if (!field.empty())
            ReadField(field, texts[column].emplace());
    }
    return texts;
}

void ReadImportRow(const CsvFields& fields, std::size_t row, const ImportColumns& columns, ImportRow& read)
{
    ReadColumn(fields, row, columns.name, read.name);
    CutToEntry(read.name);
    read.hasFaxNumberField = ReadColumn(fields, row, columns.faxNumber, read.faxNumber);
    CutToEntryIfTooLong(read.faxNumber);
    ReadColumn(fields, row, columns.company, read.company);
    CutToEntryIfTooLong(read.company);
}

CountMessage CountMessageFor(int duplicates, int invalidFaxNumbers)
{
    const int all = duplicates + invalidFaxNumbers;
    if (all == 0)
        return {};
    // Kept: a gap, these counts are not told.
    if ((duplicates == 2 && invalidFaxNumbers >= 2) || (duplicates >= 3 && invalidFaxNumbers == 2))
        return {};

    CountMessage message;
    message.lines.push_back({all == 1 ? kOneRowRefused : kRowsRefused, all});
    // A single duplicate is told before the fax numbers, several after them.
    if (duplicates == 1)
        message.lines.push_back({kOneDuplicate, 1});
    if (invalidFaxNumbers != 0)
        message.lines.push_back(
            {invalidFaxNumbers == 1 ? kOneInvalidFaxNumber : kInvalidFaxNumbers, invalidFaxNumbers});
    if (duplicates > 1)
        message.lines.push_back({kDuplicates, duplicates});
    message.replacesStatusMessage = duplicates >= 3 && invalidFaxNumbers >= 3;
    return message;
}

} // namespace qx
