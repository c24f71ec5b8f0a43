// In the phone book a single blank stands for a name or a company that the user left empty.
#pragma once

#include "base/text.h"

#include <string>

namespace qx {

inline constexpr std::wstring_view kStandIn = L" ";

inline std::wstring ToStored(std::wstring typed)
{
    return typed.empty() ? std::wstring(kStandIn) : std::move(typed);
}

// What an edit field shows of a stored text, which may be null.
inline const wchar_t* ToShown(const wchar_t* stored) noexcept
{
    return OrEmpty(stored) == kStandIn ? L"" : OrEmpty(stored);
}

} // namespace qx
