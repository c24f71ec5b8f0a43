#include "phonebook/csv/csv_text.h"

#include <algorithm>

namespace qx {

namespace {

constexpr std::size_t kSmallestFile = 4; // bytes
constexpr std::size_t kUsualFieldUnits = 8;

bool StartsWith(std::span<const unsigned char> bytes, std::initializer_list<unsigned char> mark)
{
    return std::ranges::equal(bytes.first(std::min(mark.size(), bytes.size())), mark);
}

// Carriage return, line feed, and the printable characters of ASCII; not the tab.
bool IsPlain(unsigned char byte) noexcept
{
    return byte == '\r' || byte == '\n' || (byte >= ' ' && byte <= '~');
}

} // namespace

CsvEncoding DetectEncoding(std::span<const unsigned char> bytes,
                           bool (*looksLikeUtf16)(std::span<const unsigned char> bytes))
{
    if (bytes.size() < kSmallestFile)
        return CsvEncoding::Unknown;
    if (StartsWith(bytes, {0xEF, 0xBB, 0xBF}))
        return CsvEncoding::Utf8;
    if (StartsWith(bytes, {0xFF, 0xFE}))
        return CsvEncoding::Utf16LittleEndian;
    if (StartsWith(bytes, {0xFE, 0xFF}))
        return CsvEncoding::Utf16BigEndian;
    if (looksLikeUtf16(bytes))
        return CsvEncoding::Utf16LittleEndian;
    return std::ranges::all_of(bytes, IsPlain) ? CsvEncoding::Ansi : CsvEncoding::Unknown;
}

CsvStatus CsvFields::Parse(std::wstring_view text)
{
    *this = {};
    text_ = text;
    fields_.reserve(text.size() / kUsualFieldUnits); // room that is not used costs nothing, growing does
    for (std::size_t at = 0; at < text_.size();) {
        const std::size_t firstField = fields_.size();
        const std::size_t lineEnd = ParseLine(at);
        const std::size_t count = fields_.size() - firstField;
        if (count == 0 && lineEnd == text_.size()) // a zero: the text ended with the line before
            break;
        if (firstFields_.empty())
            columns_ = count;
        if (count == 0 || count > columns_) {
            *this = {};
            return count == 0 ? CsvStatus::EmptyLine : CsvStatus::TooManyFields;
        }
        firstFields_.push_back(static_cast<std::uint32_t>(firstField));
        at = lineEnd + 2;
    }
    return CsvStatus::Good;
}

// Appends the fields of the line that begins at a position and answers where it ends: at CR LF, or with the text.
std::size_t CsvFields::ParseLine(std::size_t at)
{
    std::size_t field = at;
    for (; at < text_.size(); ++at) {
        const wchar_t unit = text_[at];
        if (unit > L',') // nearly all text: nothing that matters lies above the comma
            continue;
        if (unit == L',') {
            AppendField(field, at);
            field = at + 1;
        } else if (unit == L'"') {
            at = SkipQuoted(at);
        } else if (unit == L'\0') {
            text_ = text_.substr(0, at);
        } else if (unit == L'\r' && at + 1 < text_.size() && text_[at + 1] == L'\n') {
            break;
        }
    }
    at = std::min(at, text_.size());
    if (field < at) // a comma at the very end adds no further field
        AppendField(field, at);
    return at;
}

// From a quote to its partner, or to the last unit before the text ends.
std::size_t CsvFields::SkipQuoted(std::size_t at) const noexcept
{
    do
        ++at;
    while (at < text_.size() && text_[at] != L'"' && text_[at] != L'\0');
    return at < text_.size() && text_[at] == L'"' ? at : at - 1;
}

void CsvFields::AppendField(std::size_t begin, std::size_t end)
{
    fields_.push_back({static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(end - begin)});
}

std::wstring_view CsvFields::Field(std::size_t row, std::size_t column) const noexcept
{
    if (row >= Rows())
        return {};
    const std::size_t end = row + 1 < Rows() ? firstFields_[row + 1] : fields_.size();
    if (column >= end - firstFields_[row])
        return {};
    const Extent field = fields_[firstFields_[row] + column];
    return text_.substr(field.begin, field.units);
}

void ReadField(std::wstring_view field, std::wstring& text)
{
    if (!field.starts_with(L'"')) {
        text = field;
        return;
    }
    field.remove_prefix(1);
    if (field.ends_with(L'"'))
        field.remove_suffix(1);
    text.clear();
    for (std::size_t quote; (quote = field.find(L"\"\"")) != std::wstring_view::npos;) {
        text += field.substr(0, quote + 1);
        field.remove_prefix(quote + 2);
    }
    text += field;
}

wchar_t* QuoteField(std::wstring_view text, wchar_t* to) noexcept
{
    *to++ = L'"';
    for (const wchar_t unit : text) {
        if (unit == L'"')
            *to++ = L'"';
        *to++ = unit;
    }
    *to++ = L'"';
    return to;
}

} // namespace qx
