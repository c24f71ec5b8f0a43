#include "phonebook/xml_text.h"

namespace qx {

namespace {

constexpr bool IsHighSurrogate(wchar_t c) noexcept { return 0xD800 <= c && c <= 0xDBFF; }
constexpr bool IsLowSurrogate(wchar_t c) noexcept { return 0xDC00 <= c && c <= 0xDFFF; }

constexpr bool StandsAlone(wchar_t c) noexcept
{
    return c == L'\t' || c == L'\n' || c == L'\r' || (0x20 <= c && c <= 0xD7FF) || (0xE000 <= c && c <= 0xFFFD);
}

} // namespace

std::wstring XmlText(std::wstring_view text)
{
    std::wstring kept;
    kept.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (StandsAlone(text[i])) {
            kept += text[i];
        } else if (IsHighSurrogate(text[i]) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
            kept += text.substr(i, 2);
            ++i;
        }
    }
    return kept;
}

} // namespace qx
