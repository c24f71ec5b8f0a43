// Bounded UTF-16 text, and the one way in which texts that users see are compared.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <windows.h>

namespace qx {

// Copies as much as fits and always terminates. E_INVALIDARG for a null text or an empty destination,
// STRSAFE_E_INSUFFICIENT_BUFFER (0x8007007A) when the text was cut.
HRESULT CopyText(std::span<wchar_t> to, const wchar_t* from) noexcept;
// The same, behind what the destination already holds.
HRESULT AppendText(std::span<wchar_t> to, const wchar_t* from) noexcept;

// text, cut to at most units UTF-16 units.
inline std::wstring_view Cut(std::wstring_view text, std::size_t units) noexcept
{
    return text.substr(0, units);
}

// CSTR_LESS_THAN, CSTR_EQUAL or CSTR_GREATER_THAN in the user's default locale, ignoring case, punctuation sorted as
// characters. 0 when a comparison is not possible.
int CompareUserText(std::wstring_view a, std::wstring_view b) noexcept;
inline bool EqualUserText(std::wstring_view a, std::wstring_view b) noexcept
{
    return a == b || CompareUserText(a, b) == CSTR_EQUAL; // a comparison costs far more than a look
}

// Never null: what a terminated text that may be absent shows.
inline const wchar_t* OrEmpty(const wchar_t* text) noexcept
{
    return text != nullptr ? text : L"";
}

} // namespace qx
