// Other programs' tables of any bytes, in any encoding.
#include "admin/contacts/csv_contacts.h"
#include "admin/contacts/delimited_text.h"
#include "admin/contacts/text_encoding.h"

#include "fuzz.h"

#include <algorithm>

namespace {

using namespace qx::admin;
using qx::fuzz::Check;

std::optional<std::wstring> Decode(std::string_view bytes, unsigned)
{
    return std::wstring(bytes.begin(), bytes.end());
}

void CheckRecords(const std::wstring& text)
{
    const DelimitedText table = ReadDelimited(text);
    std::size_t line = 0;
    std::size_t units = 0;
    for (const Record& record : table.records) {
        Check(record.line > line && !record.fields.empty());
        line = record.line;
        for (const std::wstring& field : record.fields)
            units += field.size();
    }
    Check(units <= text.size());
}

void CheckContacts(const ContactFile& file)
{
    Check(file.withoutNumber + file.unusable.size() <= file.people);
    for (const Contact& contact : file.contacts) {
        Check(!contact.name.empty() && !contact.faxNumber.empty() && contact.line >= 2);
        Check((contact.name + contact.faxNumber + contact.company).find_first_of(L"\r\n") == std::wstring::npos);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const DecodedFile decoded = DecodeFile(bytes, 1252, Decode);
    CheckRecords(decoded.text);
    CheckContacts(ReadCsvContacts(decoded.text, {}));
    CheckContacts(ReadCsvContacts(L"Name,Fax,Company\n" + decoded.text, {}));
    CheckContacts(ReadCsvContacts(L"Phone 1 - Type;Phone 1 - Value;Organization\n" + decoded.text, {}));
    CheckContacts(ReadCsvContacts(L"a\tb\tc\n" + decoded.text, {.name = {L"a", L"b"}, .fax = {L"c"}, .company = {}}));
    const auto utf8 = DecodeUtf8(bytes);
    Check(!utf8 || EncodeUtf8(*utf8) == bytes);
    CodePageOf(bytes);
    return 0;
}
