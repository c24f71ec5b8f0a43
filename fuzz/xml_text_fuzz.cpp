// Names that go into a document.
#include "phonebook/file/xml_text.h"

#include "fuzz.h"

using namespace qx;
using fuzz::Check;

namespace {

// One character of a legal text, at the place; the number of its units, or 0.
std::size_t LegalUnits(const std::wstring& text, std::size_t at)
{
    const auto c = static_cast<std::uint32_t>(text[at]);
    if (0xD800 <= c && c <= 0xDBFF && at + 1 < text.size()) {
        const auto low = static_cast<std::uint32_t>(text[at + 1]);
        return 0xDC00 <= low && low <= 0xDFFF ? 2 : 0;
    }
    const bool legal = c == 9 || c == 10 || c == 13 || (c >= 0x20 && c < 0xD800) || (c >= 0xE000 && c < 0xFFFE);
    return legal ? 1 : 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::wstring text = fuzz::Utf16(data, size);
    std::wstring expected;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t units = LegalUnits(text, at);
        expected += text.substr(at, units);
        at += units != 0 ? units : 1;
    }
    Check(XmlText(text) == expected);
    Check(FitsXml(text) == (text == expected));
    Check(XmlText(expected) == expected);
    return 0;
}
