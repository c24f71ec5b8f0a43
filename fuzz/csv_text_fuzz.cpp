// CSV files of any bytes: encoding, parsing, fields, import rows. What the fast reader finds is compared with the rules
// taken literally.
#include "base/limits.h"
#include "fuzz.h"
#include "phonebook/csv/csv_text.h"
#include "phonebook/csv/import_rules.h"
#include "support/literal_csv.h"

namespace {

using namespace qx;
using fuzz::Check;

bool LooksLikeUtf16(std::span<const unsigned char> bytes)
{
    return bytes[1] == 0;
}

// Bytes as ANSI, or pairs of them as UTF-16.
std::wstring TextOf(std::span<const unsigned char> bytes)
{
    if (DetectEncoding(bytes, LooksLikeUtf16) == CsvEncoding::Utf16LittleEndian)
        return fuzz::Utf16(bytes.data() + 2, bytes.size() - 2);
    return {bytes.begin(), bytes.end()};
}

void CheckQuoting(const std::wstring& text)
{
    std::wstring quoted(QuotedUnits(text.size()), L'?');
    quoted.resize(static_cast<std::size_t>(QuoteField(text, quoted.data()) - quoted.data()));
    std::wstring read;
    ReadField(quoted, read);
    Check(read == text);
}

void CheckFields(const CsvFields& fields, const test::LiteralTable& literal)
{
    Check(fields.Rows() == literal.rows.size() && fields.Columns() == literal.columns);
    std::wstring read;
    for (std::size_t row = 0; row < fields.Rows(); ++row) {
        for (std::size_t column = 0; column < fields.Columns(); ++column) {
            const std::wstring& raw = literal.rows[row][column];
            Check(fields.Field(row, column) == raw);
            ReadField(raw, read);
            Check(read == test::ReadLiterally(raw));
            CheckQuoting(read);
        }
    }
}

void CheckRows(const CsvFields& fields)
{
    Check(HeaderTexts(fields).size() == fields.Columns());
    ImportRow read;
    for (std::size_t row = 0; row < fields.Rows(); ++row) {
        ReadImportRow(fields, row, {.name = 0, .faxNumber = 1, .company = 2}, read);
        Check(read.name.size() <= kNameLimit && read.faxNumber.size() <= kNameLimit &&
              read.company.size() <= kNameLimit);
        Check(read.hasFaxNumberField == !fields.Field(row, 1).empty());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::wstring text = TextOf({data, size});
    CsvFields fields;
    const CsvStatus status = fields.Parse(text);
    const test::LiteralTable literal = test::ParseLiterally(text);
    Check(status == literal.status);
    CheckFields(fields, literal);
    CheckRows(fields);
    return 0;
}
