// What may stand in a number. The fields' keystroke filters and the checks of what comes from outside share these.
#pragma once

#include <algorithm>
#include <cwctype>
#include <string_view>

namespace qx {

// A decimal digit in the C library's sense; depending on the system that covers digits of other scripts too.
inline bool IsDigit(wchar_t c) noexcept
{
    return std::iswdigit(static_cast<std::wint_t>(c)) != 0;
}

inline bool AllowedInVoiceNumber(wchar_t c) noexcept
{
    return IsDigit(c) || std::wstring_view(L",-*#()").find(c) != std::wstring_view::npos;
}

inline bool AllowedInFaxNumber(wchar_t c) noexcept
{
    return AllowedInVoiceNumber(c) || c == L'[' || c == L']';
}

inline bool AllowedInBillingCode(wchar_t c) noexcept
{
    return IsDigit(c);
}

// Neither spaces nor "+". An empty text passes.
inline bool IsValidFaxNumber(std::wstring_view text) noexcept
{
    return std::all_of(text.begin(), text.end(), AllowedInFaxNumber);
}

} // namespace qx
