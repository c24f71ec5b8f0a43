// What the fuzz targets share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace qx::fuzz {

// A finding when it does not hold.
inline void Check(bool holds)
{
    if (!holds)
        std::abort();
}

// Each pair of bytes as one UTF-16 unit, an odd byte at the end left out: any text that Windows can hand over.
inline std::wstring Utf16(const std::uint8_t* data, std::size_t size)
{
    std::wstring text(size / 2, L'\0');
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = static_cast<wchar_t>(data[2 * i] | data[2 * i + 1] << 8);
    return text;
}

} // namespace qx::fuzz
