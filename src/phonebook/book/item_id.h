// Item ids as files hold them: signed decimal numbers.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cwchar>
#include <iterator>
#include <limits>
#include <string>

namespace qx {

// As far as text is a decimal number, leading spaces and sign included; 0 when it is none. Beyond 32 bits it stays at
// the end of the range.
inline std::uint32_t ParseId(const wchar_t* text) noexcept
{
    using Limits = std::numeric_limits<std::int32_t>;
    const long long number = std::wcstol(text, nullptr, 10);
    return static_cast<std::uint32_t>(std::clamp<long long>(number, Limits::min(), Limits::max()));
}

inline std::wstring FormatId(std::uint32_t id)
{
    char digits[std::numeric_limits<std::int32_t>::digits10 + 2]; // and a sign
    return {digits, std::to_chars(std::begin(digits), std::end(digits), static_cast<std::int32_t>(id)).ptr};
}

} // namespace qx
