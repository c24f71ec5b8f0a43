// The text of a CSV file, taken apart and put together. No files and no windows here.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qx {

enum class CsvEncoding { Ansi, Utf16LittleEndian, Utf16BigEndian, Utf8, Unknown };

// How reading a table ended. Only a good one has rows.
enum class CsvStatus {
    UnusableEncoding = 0,
    TooManyFields = 1, // a line has more fields than the first one
    EmptyLine = 2,
    OutOfMemory = 3,
    Good = 4,
    Unreadable = 5, // the file's content could not be read
};

// Judges a file by its marks, then by looksLikeUtf16, which is asked about all bytes, then by its bytes being plain
// ones. A file below four bytes stays unknown. Kept: accented ANSI text is refused, since nobody knows the code page it
// was written in.
CsvEncoding DetectEncoding(std::span<const unsigned char> bytes,
                           bool (*looksLikeUtf16)(std::span<const unsigned char> bytes));

// Where the fields of a text are: it points into the text, which has to live as long.
class CsvFields {
public:
    // Lines end with CR LF, fields with a comma; neither counts inside quotes. The first line, the header, gives the
    // number of columns. The text ends at its first zero, and holds less than 2^32 units. Any status but Good leaves
    // no rows. Throws std::bad_alloc.
    CsvStatus Parse(std::wstring_view text);

    std::size_t Rows() const noexcept { return firstFields_.size(); }
    std::size_t Columns() const noexcept { return columns_; }

    // The field as it stands in the text, quotes included; empty for an empty cell: a field without characters, one
    // that its line lacks, or one outside the table.
    std::wstring_view Field(std::size_t row, std::size_t column) const noexcept;

private:
    struct Extent {
        std::uint32_t begin, units;
    };

    std::size_t ParseLine(std::size_t at);
    std::size_t SkipQuoted(std::size_t at) const noexcept;
    void AppendField(std::size_t begin, std::size_t end);

    std::wstring_view text_;
    std::vector<Extent> fields_;
    std::vector<std::uint32_t> firstFields_; // of each row: its place in fields_
    std::size_t columns_ = 0;
};

// What a field says: quotes around it removed, then doubled quotes made single. Quotes in a field that does not begin
// with one are ordinary characters.
void ReadField(std::wstring_view field, std::wstring& text);

// Units that QuoteField needs at most for a text of that many units.
constexpr std::size_t QuotedUnits(std::size_t units) noexcept
{
    return 2 * units + 2;
}

// Writes the text in quotes, each quote inside doubled, and answers the end of what it wrote.
wchar_t* QuoteField(std::wstring_view text, wchar_t* to) noexcept;

} // namespace qx
