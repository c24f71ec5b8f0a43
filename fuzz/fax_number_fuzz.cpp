// Fax numbers as people write them: what comes out is what the field accepts, and no digit is lost or made up unless
// the changes say so.
#include "admin/contacts/fax_number.h"

#include "base/number_text.h"
#include "fuzz.h"

#include <algorithm>

namespace {

using namespace qx;
using namespace qx::admin;
using fuzz::Check;

std::wstring DigitsOf(std::wstring_view text)
{
    std::wstring digits;
    for (const wchar_t c : text) {
        if (c >= L'0' && c <= L'9')
            digits += c;
        for (const wchar_t zero : {L'\x0660', L'\x06F0', L'\x0966', L'\xFF10'}) {
            if (c >= zero && c < zero + 10)
                digits += static_cast<wchar_t>(L'0' + (c - zero));
        }
    }
    return digits;
}

bool Has(const FaxNumber& number, NumberChange change)
{
    return std::ranges::find(number.changes, change) != number.changes.end();
}

void CheckNumber(const std::wstring& written, const DialingRules& rules)
{
    const FaxNumber number = NormalFaxNumber(written, rules);
    Check(number.number.empty() != number.why.empty());
    if (number.number.empty())
        return;
    Check(IsValidFaxNumber(number.number) && number.number.size() <= 50);
    std::wstring expected = DigitsOf(written);
    if (Has(number, NumberChange::TrunkZeroLeft)) {
        // The zero behind a country's code of at most three digits.
        std::wstring found = DigitsOf(number.number);
        Check(found.size() + 1 >= expected.size());
        return;
    }
    if (Has(number, NumberChange::National))
        expected = rules.trunk + expected.substr(rules.country.size());
    if (Has(number, NumberChange::International))
        expected = rules.international + expected;
    if (Has(number, NumberChange::OutsideLine))
        expected = rules.outsideLine + expected;
    Check(DigitsOf(number.number) == expected);
    if (number.changes.empty())
        Check(number.number == written);
    // What was made once stays.
    const FaxNumber again = NormalFaxNumber(number.number, {});
    Check(again.number.empty() || again.number == number.number);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // Mostly characters of numbers: others are refused at once.
    constexpr wchar_t kAlphabet[] = L"0123456789+()-./, *#[]0049tel:'=\"E;\x00A0\x2013\x0663\xFF15";
    std::wstring written;
    for (std::size_t i = 0; i < size; ++i)
        written += kAlphabet[data[i] % (std::size(kAlphabet) - 1)];
    CheckNumber(written, {});
    CheckNumber(written, {.outsideLine = {}, .international = L"00", .country = {}, .trunk = {}, .extensionDigits = 0});
    CheckNumber(written,
                {.outsideLine = L"9", .international = L"011", .country = L"1", .trunk = {}, .extensionDigits = 4});
    CheckNumber(written,
                {.outsideLine = {}, .international = L"00", .country = L"49", .trunk = L"0", .extensionDigits = 0});
    CheckNumber(fuzz::Utf16(data, size), {});
    return 0;
}
