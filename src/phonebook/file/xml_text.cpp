#include "phonebook/file/xml_text.h"

namespace qx {

namespace {

constexpr bool IsHighSurrogate(wchar_t c) noexcept
{
    return 0xD800 <= c && c <= 0xDBFF;
}
constexpr bool IsLowSurrogate(wchar_t c) noexcept
{
    return 0xDC00 <= c && c <= 0xDFFF;
}

constexpr bool StandsAlone(wchar_t c) noexcept
{
    return c == L'\t' || c == L'\n' || c == L'\r' || (0x20 <= c && c <= 0xD7FF) || (0xE000 <= c && c <= 0xFFFD);
}

// Units of the character at the front of text that a document may contain; 0 when it may not.
constexpr std::size_t LegalUnits(std::wstring_view text) noexcept
{
    if (StandsAlone(text[0]))
        return 1;
    return text.size() > 1 && IsHighSurrogate(text[0]) && IsLowSurrogate(text[1]) ? 2 : 0;
}

} // namespace

bool FitsXml(std::wstring_view text) noexcept
{
    while (!text.empty()) {
        const std::size_t units = LegalUnits(text);
        if (units == 0)
            return false;
        text.remove_prefix(units);
    }
    return true;
}

std::wstring XmlText(std::wstring_view text)
{
    std::wstring kept;
    while (!text.empty()) {
        const std::size_t units = LegalUnits(text);
        kept += text.substr(0, units);
        text.remove_prefix(units != 0 ? units : 1);
    }
    return kept;
}

} // namespace qx
